package com.vantor.broker.config.proxy;

/** The library resolves it; a registry without message flows has nothing to stop. */
public final class MessageFlowProxy {
    private MessageFlowProxy() {
    }

    public static void stopMessageFlow(String group, String server, String application, String flow) {
    }
}
