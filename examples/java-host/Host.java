import java.io.ByteArrayOutputStream;
import java.io.PrintStream;
import java.nio.charset.StandardCharsets;

/**
 * A Java program that embeds the registry adapter as a broker process does:
 * the JVM is this process's, and a native part (args[0]) uses the adapter
 * from two threads. The registry's jars are on the class path.
 */
public final class Host {
    /** Runs the native part; returns what it saw, or throws when it failed. */
    private static native String useRegistry(int threads, int rounds);

    private Host() {
    }

    public static void main(String[] args) {
        System.load(args[0]);
        // The adapter has the JVM describe every Java exception it handles: the
        // JVM writes 'Exception in thread "..."' to standard error itself, then
        // the exception and its stack to System.err, which this host keeps to
        // count them instead of showing them.
        ByteArrayOutputStream described = new ByteArrayOutputStream();
        PrintStream standardError = System.err;
        System.setErr(new PrintStream(described, true, StandardCharsets.UTF_8));
        String seen;
        try {
            seen = useRegistry(2, 100);
        } finally {
            System.setErr(standardError);
        }
        long descriptions = described.toString(StandardCharsets.UTF_8).lines()
                .filter(line -> line.contains("LxRecoverableException")).count();
        System.out.println(seen + "; Java exceptions described: " + descriptions);
        if (descriptions != 2) {
            System.exit(1);
        }
    }
}
