package com.vantor.broker.config.proxy;

/** The four texts of one stopMessageFlow request, named by position. */
public record StoppedFlow(String text1, String text2, String text3, String text4) {
}
