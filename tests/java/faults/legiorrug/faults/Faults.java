package legiorrug.faults;

import com.vantor.broker.plugin.LxRecoverableException;
import java.util.Arrays;
import java.util.HashMap;
import java.util.Map;
import java.util.stream.Collectors;

/**
 * Control of the fault registry. A native test arms one call point with an
 * outcome; every method and constructor of the fault registry enters its
 * point here first, and those with a result pass it through {@link #result}
 * ({@link #returning} does both). Points are "SimpleClass.method";
 * constructors are "Class.&lt;init&gt;", ISRService's two
 * "ISRService.&lt;init&gt;2" and "ISRService.&lt;init&gt;3" by argument count.
 */
public final class Faults {
    public static final int KNOWN = 1; // throw LxRecoverableException(number, text, inserts)
    public static final int OTHER = 2; // throw IllegalStateException
    public static final int FATAL = 3; // throw FatalTestError
    public static final int NULL = 4; // null, or false from a boolean method; void methods and constructors ignore it
    public static final int NULL_ELEMENT = 5; // the usual array with element 1 null

    private static final Map<String, Integer> CALLS = new HashMap<>();
    private static final Map<String, String> LAST_ARGUMENTS = new HashMap<>();
    private static String armedPoint;
    private static int armedOutcome;
    private static long armedNumber;
    private static String armedText;
    private static Object[] armedInserts;

    private Faults() {}

    /** Arms one point, replacing any other; it fires on every call until disarmed. */
    public static synchronized void arm(String point, int outcome, long number, String text, Object[] inserts) {
        if (outcome < KNOWN || outcome > NULL_ELEMENT) {
            throw new IllegalArgumentException("unknown outcome " + outcome);
        }
        armedPoint = point;
        armedOutcome = outcome;
        armedNumber = number;
        armedText = text;
        armedInserts = inserts;
    }

    public static synchronized void disarm() {
        armedPoint = null;
    }

    /** How often the point was entered since the last resetCalls. */
    public static synchronized int calls(String point) {
        return CALLS.getOrDefault(point, 0);
    }

    /** The last call's arguments joined with "|", null shown as "&lt;null&gt;"; null when not called. */
    public static synchronized String lastArguments(String point) {
        return LAST_ARGUMENTS.get(point);
    }

    public static synchronized void resetCalls() {
        CALLS.clear();
        LAST_ARGUMENTS.clear();
    }

    /** Records the call, then throws when the point is armed to throw. */
    public static synchronized void enter(String point, Object... arguments) throws LxRecoverableException {
        CALLS.merge(point, 1, Integer::sum);
        LAST_ARGUMENTS.put(point, Arrays.stream(arguments)
                .map(argument -> argument == null ? "<null>" : argument.toString())
                .collect(Collectors.joining("|")));
        if (!point.equals(armedPoint)) {
            return;
        }
        switch (armedOutcome) {
            case KNOWN -> throw new LxRecoverableException(armedNumber, armedText, armedInserts);
            case OTHER -> throw new IllegalStateException("fault armed at " + point);
            case FATAL -> throw new FatalTestError("fault armed at " + point);
            default -> { }
        }
    }

    /** enter, then result, for a method without arguments. */
    public static synchronized <T> T returning(String point, T value) throws LxRecoverableException {
        enter(point);
        return result(point, value);
    }

    /** The method's own result, unless the point is armed to null it or one of its elements. */
    public static synchronized <T> T result(String point, T value) {
        if (point.equals(armedPoint) && armedOutcome == NULL) {
            return null;
        }
        if (point.equals(armedPoint) && armedOutcome == NULL_ELEMENT && value instanceof Object[] array) {
            array[1] = null;
        }
        return value;
    }

    public static synchronized boolean result(String point, boolean value) {
        return value && !(point.equals(armedPoint) && armedOutcome == NULL);
    }
}
