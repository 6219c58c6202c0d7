package qarq.peer;

import java.io.ByteArrayInputStream;
import java.io.DataInputStream;
import java.io.IOException;
import java.io.UncheckedIOException;
import java.nio.charset.StandardCharsets;

/** The reading face of the typed stream; every value checks its tag first. */
final class WireInput {
    private final ByteArrayInputStream bytes;
    private final DataInputStream in;

    WireInput(byte[] data) {
        bytes = new ByteArrayInputStream(data);
        in = new DataInputStream(bytes);
    }

    int remaining() {
        return bytes.available();
    }

    int readInt() {
        try {
            expect(WireOutput.INT, 0);
            return in.readInt();
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
    }

    long readLong() {
        try {
            expect(WireOutput.LONG, 0);
            return in.readLong();
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
    }

    short readShort() {
        try {
            expect(WireOutput.CHAR_OR_SHORT, 0);
            return in.readShort();
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
    }

    byte readByte() {
        try {
            expect(WireOutput.BYTE, 0);
            return in.readByte();
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
    }

    boolean readBoolean() {
        try {
            expect(WireOutput.BOOLEAN, 0);
            return in.readByte() != 0;
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
    }

    /** Counts by the 16-bit length; the 32-bit one only has to be above 0. */
    String readString() {
        try {
            expect(WireOutput.STRING, 0);
            if (in.readInt() <= 0) {
                return "";
            }
            short count = in.readShort();
            if (count <= 0) {
                return "";
            }
            byte[] utf8 = new byte[count];
            in.readFully(utf8);
            return new String(utf8, StandardCharsets.UTF_8);
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
    }

    /** Counts by the 32-bit length; a class handle reads as its decimal number. */
    String readClass() {
        try {
            int tag = expect(WireOutput.CLASS, WireOutput.CLASS_HANDLE);
            if (tag == WireOutput.CLASS_HANDLE) {
                return Short.toString(in.readShort());
            }
            int count = in.readInt();
            if (count <= 0) {
                return "";
            }
            in.readShort();
            if (count > remaining()) {
                throw new IOException("class name of " + count + " bytes beyond the data");
            }
            byte[] utf8 = new byte[count];
            in.readFully(utf8);
            return new String(utf8, StandardCharsets.UTF_8);
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
    }

    byte[] readByteArray() {
        try {
            expect(WireOutput.BYTE_ARRAY, 0);
            int count = in.readInt();
            if (count <= 0) {
                return new byte[0];
            }
            if (count > remaining()) {
                throw new IOException("byte array of " + count + " bytes beyond the data");
            }
            byte[] value = new byte[count];
            in.readFully(value);
            return value;
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
    }

    private int expect(int expected1, int expected2) throws IOException {
        int tag = in.readUnsignedShort();
        if (tag == 0 || (tag != expected1 && (expected2 == 0 || tag != expected2))) {
            throw new IOException("Invalid Java serialization TYPE...Read: " + tag + ", Expected: "
                    + expected1 + " or " + expected2);
        }
        return tag;
    }
}
