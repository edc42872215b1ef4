package legiorrug.recording;

import com.vantor.broker.plugin.LxException;
import com.vantor.broker.plugin.LxRecoverableException;
import java.lang.reflect.Array;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.HashMap;
import java.util.List;
import java.util.Map;
import java.util.function.Function;
import java.util.stream.Collectors;

/**
 * The recording registry's one dispatch point. Every method of its classes
 * logs "Class.method(args)" here and answers from the case's script, one
 * answer per call name, or else with its own fallback:
 * "null"; "=text" (a text, "=false" for a boolean, "=x" a record built from x);
 * "[a,null]" an array of records built from each name, "null" a null element;
 * "known|number|text|insert..." an LxRecoverableException ("~" a null text or insert,
 * "!" an insert whose toString throws); "plain|number|text" a plain LxException;
 * "other" an IllegalStateException; "fatal" an Error.
 * With -Dlegiorrug.recording.echo=true each call is printed to System.err as
 * well, for hosts that cannot read the log.
 */
public final class Script {
    private static final Map<String, String> ANSWERS = new HashMap<>();
    private static final List<String> LOG = new ArrayList<>();

    private Script() {}

    /** Replaces the script with lines "call\tanswer" and empties the log. */
    public static synchronized void set(String script) {
        ANSWERS.clear();
        LOG.clear();
        for (String line : script.split("\n")) {
            String[] parts = line.split("\t", 2);
            if (parts.length == 2) {
                ANSWERS.put(parts[0], parts[1]);
            }
        }
    }

    /** The calls so far, one a line. */
    public static synchronized String log() {
        return String.join("\n", LOG);
    }

    public static synchronized Object answer(String call, Object fallback, Function<String, Object> record,
            Object... args) throws LxException {
        LOG.add(call + Arrays.stream(args).map(String::valueOf).collect(Collectors.joining(",", "(", ")")));
        if (Boolean.getBoolean("legiorrug.recording.echo")) {
            System.err.println(LOG.get(LOG.size() - 1));
        }
        String answer = ANSWERS.get(call);
        if (answer == null) {
            return fallback;
        }
        String[] parts = answer.split("\\|", -1);
        switch (parts[0]) {
            case "null": return null;
            case "other": throw new IllegalStateException("scripted");
            case "fatal": throw new Error("scripted");
            case "plain": throw new LxException(Long.parseLong(parts[1]), parts[2]);
            case "known": throw new LxRecoverableException(Long.parseLong(parts[1]),
                    parts[2].equals("~") ? null : parts[2],
                    Arrays.stream(parts, 3, parts.length).map(Script::insert).toArray());
            default: break;
        }
        if (answer.startsWith("[")) {
            String inner = answer.substring(1, answer.length() - 1);
            String[] names = inner.isEmpty() ? new String[0] : inner.split(",", -1);
            Object array = Array.newInstance(fallback.getClass().getComponentType(), names.length);
            for (int i = 0; i < names.length; ++i) {
                Array.set(array, i, names[i].equals("null") ? null : record.apply(names[i]));
            }
            return array;
        }
        String value = answer.substring(1);
        if (fallback instanceof Boolean) {
            return Boolean.valueOf(value);
        }
        return record != null ? record.apply(value) : value;
    }

    /** A text answer. */
    public static String text(String call, String fallback) throws LxException {
        return (String) answer(call, fallback, null);
    }

    private static Object insert(String text) {
        return switch (text) {
            case "~" -> null;
            case "!" -> new Object() {
                @Override
                public String toString() {
                    throw new IllegalStateException("unprintable");
                }
            };
            default -> text;
        };
    }
}
