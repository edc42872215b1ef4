package com.vantor.broker.plugin;

import java.util.Arrays;

/** The plugin's LxException without getClassName, so that native tests see a missing method reported. */
public class LxException extends Exception {
    private static final long serialVersionUID = 1L;

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

    public Object[] getInserts() {
        return inserts.clone();
    }

    public LxException[] getNestedExceptions() {
        return getCause() instanceof LxException nested ? new LxException[] {nested} : new LxException[0];
    }

    public long getNativeExceptionHandle() {
        return 0L;
    }

    public String getFileName() {
        return origin() == null ? null : origin().getFileName();
    }

    public int getLineNumber() {
        return origin() == null ? -1 : origin().getLineNumber();
    }

    public String getMethodName() {
        return origin() == null ? null : origin().getMethodName();
    }

    public boolean isInternal() {
        return true;
    }

    public String getMessageSource() {
        return "legiorrug";
    }

    public String getMessageKey() {
        return Long.toString(nativeMessageNumber);
    }

    public String toLogString(Object context) {
        String line = getClass().getName() + " " + getMessage() + " " + Arrays.toString(inserts);
        return context == null ? line : line + " (" + context + ")";
    }

    private StackTraceElement origin() {
        StackTraceElement[] trace = getStackTrace();
        return trace.length == 0 ? null : trace[0];
    }
}
