package legiorrug.bridge;

import com.vantor.broker.plugin.LxRecoverableException;

/** Known, and made the fatal class by the test that throws it. */
public class FatalKnownException extends LxRecoverableException {
    private static final long serialVersionUID = 1L;

    public FatalKnownException(long number, String text) {
        super(number, text);
    }
}
