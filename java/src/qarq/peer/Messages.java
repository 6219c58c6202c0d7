package qarq.peer;

import java.util.Arrays;
import java.util.Objects;

/** The console's side of the message model: the abstract messages and the test peer's own. */
final class Messages {
    private Messages() {
    }

    /** Something that travels as its class name followed by its body. */
    abstract static class WireObject {
        abstract String className();

        /** The object form: class name, then body. */
        byte[] toBytes() {
            return new WireOutput().writeObject(this).toByteArray();
        }

        void read(WireInput in) {
        }

        void write(WireOutput out) {
        }
    }

    /** Reads a class name and, unless it is empty, the body into the given object. */
    static String readObject(WireInput in, WireObject object) {
        String name = in.readClass();
        if (!name.isEmpty()) {
            object.read(in);
        }
        return name;
    }

    abstract static class Message extends WireObject {
        String sHost = "";
        String tHost = "";
        int type;
        int client;

        Message(int type) {
            this.type = type;
        }

        @Override
        void read(WireInput in) {
            sHost = in.readString();
            tHost = in.readString();
            type = in.readInt();
            client = in.readInt();
        }

        @Override
        void write(WireOutput out) {
            out.writeString(sHost).writeString(tHost).writeInt(type).writeInt(client);
        }
    }

    abstract static class Request extends Message {
        int correlator;

        Request() {
            super(1);
        }

        @Override
        void read(WireInput in) {
            super.read(in);
            correlator = in.readInt();
        }

        @Override
        void write(WireOutput out) {
            super.write(out);
            out.writeInt(correlator);
        }
    }

    abstract static class Response extends Message {
        int correlator;
        int posExtReasonCode;
        SerializableException exception;

        Response() {
            super(2);
        }

        @Override
        void read(WireInput in) {
            super.read(in);
            correlator = in.readInt();
            posExtReasonCode = in.readInt();
            SerializableException target = exception != null ? exception : new PeerException();
            if (!readObject(in, target).isEmpty()) {
                exception = target;
            }
        }

        @Override
        void write(WireOutput out) {
            super.write(out);
            out.writeInt(correlator).writeInt(posExtReasonCode).writeObject(exception);
        }
    }

    abstract static class Notif extends Message {
        int posExtReasonCode;
        SerializableException exception;

        Notif() {
            super(3);
        }

        @Override
        void read(WireInput in) {
            super.read(in);
            posExtReasonCode = in.readInt();
            SerializableException target = exception != null ? exception : new PeerException();
            if (!readObject(in, target).isEmpty()) {
                exception = target;
            }
        }

        @Override
        void write(WireOutput out) {
            super.write(out);
            out.writeInt(posExtReasonCode).writeObject(exception);
        }
    }

    abstract static class SerializableException extends WireObject {
        int excId;
        String text1 = "";
        String text2 = "";
        String text3 = "";
        String text4 = "";

        @Override
        void read(WireInput in) {
            excId = in.readInt();
            text1 = in.readString();
            text2 = in.readString();
            text3 = in.readString();
            text4 = in.readString();
        }

        @Override
        void write(WireOutput out) {
            out.writeInt(excId).writeString(text1).writeString(text2).writeString(text3).writeString(text4);
        }

        @Override
        public boolean equals(Object other) {
            if (!(other instanceof SerializableException)) {
                return false;
            }
            SerializableException that = (SerializableException) other;
            return excId == that.excId && text1.equals(that.text1) && text2.equals(that.text2)
                    && text3.equals(that.text3) && text4.equals(that.text4);
        }

        @Override
        public int hashCode() {
            return Objects.hash(excId, text1, text2, text3, text4);
        }

        @Override
        public String toString() {
            return "exception[" + excId + ",'" + text1 + "','" + text2 + "','" + text3 + "','" + text4 + "']";
        }
    }

    /** The request the server-side test sends: every kind of field once. */
    static final class EchoRequest extends Request {
        static final String NAME = "qarq.peer.EchoRequest";
        String text = "";
        String note = "";
        byte[] payload = new byte[0];
        long stamp;
        boolean flag;
        short small;
        byte single;

        @Override
        String className() {
            return NAME;
        }

        @Override
        void read(WireInput in) {
            super.read(in);
            text = in.readString();
            note = in.readString();
            payload = in.readByteArray();
            stamp = in.readLong();
            flag = in.readBoolean();
            small = in.readShort();
            single = in.readByte();
        }

        @Override
        void write(WireOutput out) {
            super.write(out);
            out.writeString(text).writeString(note).writeByteArray(payload).writeLong(stamp)
                    .writeBoolean(flag).writeShort(small).writeByte(single);
        }

        @Override
        public String toString() {
            return NAME + "[sHost='" + sHost + "',tHost='" + tHost + "',type=" + type + ",client=" + client
                    + ",corr=" + correlator + ",text='" + text + "',note='" + note + "',payload="
                    + Arrays.toString(payload) + ",stamp=" + stamp + ",flag=" + flag + ",small=" + small
                    + ",single=" + single + "]";
        }
    }

    /** The answer: the response fields, then the request's text and payload as the peer saw them. */
    static final class EchoResponse extends Response {
        static final String NAME = "qarq.peer.EchoResponse";
        String echo = "";
        byte[] reversed = new byte[0];

        @Override
        String className() {
            return NAME;
        }

        @Override
        void read(WireInput in) {
            super.read(in);
            echo = in.readString();
            reversed = in.readByteArray();
        }

        @Override
        void write(WireOutput out) {
            super.write(out);
            out.writeString(echo).writeByteArray(reversed);
        }
    }

    /** A notification the peer sends unasked. */
    static final class StatusNotif extends Notif {
        static final String NAME = "qarq.peer.StatusNotif";
        String status = "";

        @Override
        String className() {
            return NAME;
        }

        @Override
        void read(WireInput in) {
            super.read(in);
            status = in.readString();
        }

        @Override
        void write(WireOutput out) {
            super.write(out);
            out.writeString(status);
        }
    }

    static final class PeerException extends SerializableException {
        static final String NAME = "qarq.peer.PeerException";

        @Override
        String className() {
            return NAME;
        }
    }
}
