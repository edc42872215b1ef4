package legiorrug.bridge;

import java.io.File;
import java.net.MalformedURLException;
import java.net.URL;
import java.net.URLClassLoader;
import java.util.Set;

/** Registry class loaders that lack something, for native lookup tests. */
public final class Loaders {
    private Loaders() {}

    /** The system loader, less the named classes (binary names, comma-separated). */
    public static ClassLoader hiding(String hiddenNames) {
        Set<String> hidden = Set.of(hiddenNames.split(","));
        return new ClassLoader(ClassLoader.getSystemClassLoader()) {
            @Override
            protected Class<?> loadClass(String name, boolean resolve) throws ClassNotFoundException {
                if (hidden.contains(name)) {
                    throw new ClassNotFoundException(name);
                }
                return super.loadClass(name, resolve);
            }
        };
    }

    /** A loader over the given class path alone, first entry first. */
    public static ClassLoader isolated(String classPath) throws MalformedURLException {
        String[] entries = classPath.split(File.pathSeparator);
        URL[] urls = new URL[entries.length];
        for (int i = 0; i < entries.length; i++) {
            urls[i] = new File(entries[i]).toURI().toURL();
        }
        return new URLClassLoader(urls, ClassLoader.getPlatformClassLoader());
    }
}
