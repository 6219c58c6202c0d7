package qarq.peer;

import java.io.ByteArrayOutputStream;
import java.io.DataOutputStream;
import java.io.IOException;
import java.io.UncheckedIOException;
import java.nio.charset.StandardCharsets;

/**
 * The writing face of the typed stream as the console writes it: a 16-bit tag
 * in front of every value, big-endian numbers, text as UTF-8 with a 32-bit and
 * a 16-bit length.
 */
final class WireOutput {
    static final int CLASS = 0x0001;
    static final int CHAR_OR_SHORT = 0x0002;
    static final int INT = 0x0008;
    static final int LONG = 0x0020;
    static final int STRING = 0x0080;
    static final int BYTE = 0x0200;
    static final int BYTE_ARRAY = 0x0400;
    static final int BOOLEAN = 0x0800;
    static final int CLASS_HANDLE = 0x2000;

    private final ByteArrayOutputStream bytes = new ByteArrayOutputStream();
    private final DataOutputStream out = new DataOutputStream(bytes);

    byte[] toByteArray() {
        return bytes.toByteArray();
    }

    WireOutput writeInt(int value) {
        try {
            out.writeShort(INT);
            out.writeInt(value);
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
        return this;
    }

    WireOutput writeLong(long value) {
        try {
            out.writeShort(LONG);
            out.writeLong(value);
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
        return this;
    }

    WireOutput writeShort(short value) {
        try {
            out.writeShort(CHAR_OR_SHORT);
            out.writeShort(value);
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
        return this;
    }

    WireOutput writeByte(byte value) {
        try {
            out.writeShort(BYTE);
            out.writeByte(value);
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
        return this;
    }

    WireOutput writeBoolean(boolean value) {
        try {
            out.writeShort(BOOLEAN);
            out.writeByte(value ? 1 : 0);
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
        return this;
    }

    WireOutput writeString(String value) {
        return writeText(STRING, value == null ? "" : value);
    }

    WireOutput writeClass(String name) {
        return writeText(CLASS, name == null ? "" : name);
    }

    /** The numbered form of a class name that only the console sends. */
    WireOutput writeClassHandle(short number) {
        try {
            out.writeShort(CLASS_HANDLE);
            out.writeShort(number);
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
        return this;
    }

    WireOutput writeByteArray(byte[] value) {
        try {
            out.writeShort(BYTE_ARRAY);
            out.writeInt(value.length);
            out.write(value);
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
        return this;
    }

    /** A null object is the empty class name and no body. */
    WireOutput writeObject(Messages.WireObject object) {
        if (object == null) {
            return writeClass("");
        }
        writeClass(object.className());
        object.write(this);
        return this;
    }

    private WireOutput writeText(int tag, String text) {
        byte[] utf8 = text.getBytes(StandardCharsets.UTF_8);
        if (utf8.length > Short.MAX_VALUE) {
            throw new IllegalArgumentException("text of " + utf8.length + " UTF-8 bytes cannot be sent");
        }
        try {
            out.writeShort(tag);
            out.writeInt(utf8.length);
            if (utf8.length != 0) {
                out.writeShort(utf8.length);
                out.write(utf8);
            }
        } catch (IOException e) {
            throw new UncheckedIOException(e);
        }
        return this;
    }
}
