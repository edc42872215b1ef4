package legiorrug.bridge;

import com.vantor.broker.plugin.LxRecoverableException;

/** A known exception from a Java side that gives no insert array at all. */
public class NullInsertsException extends LxRecoverableException {
    private static final long serialVersionUID = 1L;

    public NullInsertsException(long number, String text) {
        super(number, text);
    }

    @Override
    public Object[] getInserts() {
        return null;
    }
}
