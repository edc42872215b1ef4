package com.vantor.broker.plugin;

/** An error that the caller can handle, such as a missing or duplicate entry. */
public class LxRecoverableException extends LxException {
    private static final long serialVersionUID = 1L;

    public LxRecoverableException(long nativeMessageNumber, String traceText, Object... inserts) {
        super(nativeMessageNumber, traceText, inserts);
    }

    public LxRecoverableException(long nativeMessageNumber, String traceText, Object[] inserts, Throwable cause) {
        super(nativeMessageNumber, traceText, inserts, cause);
    }

    @Override
    public boolean isInternal() {
        return false;
    }
}
