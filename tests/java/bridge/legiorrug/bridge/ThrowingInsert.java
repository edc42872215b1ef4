package legiorrug.bridge;

/** An insert that cannot be rendered. */
public class ThrowingInsert {
    @Override
    public String toString() {
        throw new IllegalStateException("this insert cannot be rendered");
    }
}
