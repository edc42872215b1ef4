package com.vantor.broker.config.proxy;

import java.util.ArrayList;
import java.util.List;

/** Message-flow control of the reference registry: it runs no flows, so it records the stop requests in order. */
public final class MessageFlowProxy {
    private static final List<StoppedFlow> STOPPED = new ArrayList<>();

    private MessageFlowProxy() {
    }

    public static void stopMessageFlow(String text1, String text2, String text3, String text4) {
        synchronized (STOPPED) {
            STOPPED.add(new StoppedFlow(text1, text2, text3, text4));
        }
    }

    /** The requests so far, oldest first. */
    public static StoppedFlow[] stoppedFlows() {
        synchronized (STOPPED) {
            return STOPPED.toArray(StoppedFlow[]::new);
        }
    }

    public static void reset() {
        synchronized (STOPPED) {
            STOPPED.clear();
        }
    }
}
