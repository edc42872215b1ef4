package com.vantor.broker.plugin;

import java.util.Arrays;

/**
 * An error of the Java side that carries a native message number, a trace
 * text and inserts, so that native code can raise its own exception with
 * the same number and texts.
 */
public class LxException extends Exception {
    private static final long serialVersionUID = 1L;

    /** The catalogue that the message numbers belong to. */
    public static final String MESSAGE_SOURCE = "legiorrug";

    private final long nativeMessageNumber;
    private final String traceText;
    private final Object[] inserts;

    public LxException(long nativeMessageNumber, String traceText, Object... inserts) {
        this(nativeMessageNumber, traceText, inserts, null);
    }

    public LxException(long nativeMessageNumber, String traceText, Object[] inserts, Throwable cause) {
        super(nativeMessageNumber + ": " + traceText, cause);
        this.nativeMessageNumber = nativeMessageNumber;
        this.traceText = traceText;
        this.inserts = inserts == null ? new Object[0] : inserts.clone();
    }

    public long getNativeMessageNumber() {
        return nativeMessageNumber;
    }

    public String getTraceText() {
        return traceText;
    }

    /** A copy, so that callers cannot change what the exception reports. */
    public Object[] getInserts() {
        return inserts.clone();
    }

    /** The cause when it is itself an LxException; the chain is not flattened. */
    public LxException[] getNestedExceptions() {
        return getCause() instanceof LxException nested
                ? new LxException[] {nested}
                : new LxException[0];
    }

    /** Raised in Java, so no native exception stands behind it. */
    public long getNativeExceptionHandle() {
        return 0L;
    }

    public String getFileName() {
        StackTraceElement origin = origin();
        return origin == null ? null : origin.getFileName();
    }

    /** The line of the raise, or -1 when the stack trace was not kept. */
    public int getLineNumber() {
        StackTraceElement origin = origin();
        return origin == null ? -1 : origin.getLineNumber();
    }

    public String getMethodName() {
        StackTraceElement origin = origin();
        return origin == null ? null : origin.getMethodName();
    }

    /** Only recoverable exceptions are the caller's to handle; anything else is a fault of the registry itself. */
    public boolean isInternal() {
        return true;
    }

    public String getMessageSource() {
        return MESSAGE_SOURCE;
    }

    public String getMessageKey() {
        return Long.toString(nativeMessageNumber);
    }

    public String getClassName() {
        return getClass().getName();
    }

    /** One line for a log: the message, the inserts and, when given, what it happened in. */
    public String toLogString(Object context) {
        String line = getClassName() + " " + getMessage() + " " + Arrays.toString(inserts);
        return context == null ? line : line + " (" + context + ")";
    }

    private StackTraceElement origin() {
        StackTraceElement[] trace = getStackTrace();
        return trace.length == 0 ? null : trace[0];
    }
}
