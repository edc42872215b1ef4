package legiorrug.bridge;

import com.vantor.broker.plugin.LxRecoverableException;

/** A known exception whose number moves on each time it is read. */
public class RenumberedException extends LxRecoverableException {
    private static final long serialVersionUID = 1L;
    private long number;

    public RenumberedException(long number, String text, Object... inserts) {
        super(number, text, inserts);
        this.number = number;
    }

    @Override
    public long getNativeMessageNumber() {
        return number++;
    }
}
