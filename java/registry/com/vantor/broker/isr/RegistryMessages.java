package com.vantor.broker.isr;

import com.vantor.broker.plugin.LxRecoverableException;
import java.util.Arrays;

/**
 * The message numbers of the reference registry's errors and the exceptions
 * that carry them. Native callers receive these numbers unchanged, so they
 * must stay stable.
 */
public final class RegistryMessages {
    /** Inserts: the BTD name. */
    public static final long BTD_MISSING = 5101;
    /** Inserts: the BTD name. */
    public static final long BTD_EXISTS = 5102;
    /** Inserts: the policy type and name. */
    public static final long POLICY_MISSING = 5103;
    /** Inserts: the policy type and name. */
    public static final long POLICY_EXISTS = 5104;
    /** Inserts: the service name. */
    public static final long SERVICE_MISSING = 5105;
    /** Inserts: the policy type and name. */
    public static final long INVALID_DOCUMENT = 5106;
    /** Inserts: the name of the argument that was null. */
    public static final long MISSING_ARGUMENT = 5107;

    private RegistryMessages() {
    }

    static LxRecoverableException btdMissing(String name) {
        return error(BTD_MISSING, "The business transaction definition does not exist", name);
    }

    static LxRecoverableException btdExists(String name) {
        return error(BTD_EXISTS, "The business transaction definition already exists", name);
    }

    static LxRecoverableException policyMissing(String type, String name) {
        return error(POLICY_MISSING, "The policy does not exist", type, name);
    }

    static LxRecoverableException policyExists(String type, String name) {
        return error(POLICY_EXISTS, "The policy already exists", type, name);
    }

    static LxRecoverableException serviceMissing(String name) {
        return error(SERVICE_MISSING, "The service does not exist", name);
    }

    static LxRecoverableException invalidDocument(String type, String name) {
        return error(INVALID_DOCUMENT, "The policy document is missing or blank", type, name);
    }

    /** Rejects null before it can surface as a NullPointerException that native callers cannot classify. */
    static <T> T required(T value, String argument) throws LxRecoverableException {
        if (value == null) {
            throw error(MISSING_ARGUMENT, "A required argument is null", argument);
        }
        return value;
    }

    /**
     * Drops this class's frames, so that the exception's file, line and
     * method name the registry code that raised it.
     */
    private static LxRecoverableException error(long number, String traceText, Object... inserts) {
        LxRecoverableException error = new LxRecoverableException(number, traceText, inserts);
        StackTraceElement[] trace = error.getStackTrace();
        int first = 0;
        while (first < trace.length - 1 && trace[first].getClassName().equals(RegistryMessages.class.getName())) {
            first++;
        }
        error.setStackTrace(Arrays.copyOfRange(trace, first, trace.length));
        return error;
    }
}
