package legiorrug.faults;

/** The fatal outcome: an Error, which no registry caller is meant to recover from. */
public class FatalTestError extends Error {
    private static final long serialVersionUID = 1L;

    public FatalTestError(String message) {
        super(message);
    }
}
