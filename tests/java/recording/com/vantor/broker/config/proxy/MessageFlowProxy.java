package com.vantor.broker.config.proxy;

import legiorrug.recording.Script;

/** Message-flow control of the recording registry. */
public final class MessageFlowProxy {
    private MessageFlowProxy() {}

    public static void stopMessageFlow(String text1, String text2, String text3, String text4) throws Exception {
        Script.answer("MessageFlowProxy.stopMessageFlow", null, null, text1, text2, text3, text4);
    }
}
