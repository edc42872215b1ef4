package com.vantor.broker.config.proxy;

import com.vantor.broker.plugin.LxRecoverableException;
import legiorrug.faults.Faults;

/** Message-flow control of the fault registry: only records its arguments. */
public final class MessageFlowProxy {
    private MessageFlowProxy() {}

    public static void stopMessageFlow(String text1, String text2, String text3, String text4)
            throws LxRecoverableException {
        Faults.enter("MessageFlowProxy.stopMessageFlow", text1, text2, text3, text4);
    }
}
