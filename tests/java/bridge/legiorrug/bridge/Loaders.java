package legiorrug.bridge;

import java.io.File;
import java.net.MalformedURLException;
import java.net.URL;
import java.net.URLClassLoader;

/** Registry class loaders that lack something, for native lookup tests. */
public final class Loaders {
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
