package qarq.peer;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Path;
import java.util.ArrayList;
import java.util.Arrays;
import java.util.HexFormat;
import java.util.List;

/**
 * Test peer of the library's typed stream: it writes and reads the console's
 * forms with the JDK's own data streams, so that the library's bytes are
 * checked against an independent implementation.
 *
 * <pre>
 * selftest                  the byte examples of the wire forms, both directions
 * request FILE              writes the agreed EchoRequest
 * respond REQUEST RESPONSE  reads an EchoRequest, checks every field, writes an EchoResponse
 * notify FILE               writes a StatusNotif whose class goes as a class handle
 * </pre>
 *
 * Exit code 0 on success, 1 with the reasons on standard error otherwise.
 */
public final class WirePeer {
    // The values both sides agree on; the C++ test holds the same ones in its code page.
    static final String S_HOST = "console-7";
    static final String T_HOST = "server-1";
    static final int CLIENT = 12;
    static final int CORRELATOR = 7;
    static final String TEXT = "Gr\u00fc\u00dfe, 5 \u20ac f\u00fcr Caf\u00e9";
    static final byte[] PAYLOAD = {0, 1, 0x7F, (byte) 0x80, (byte) 0xFF};
    static final long STAMP = -2L;
    static final short SMALL = -300;
    static final byte SINGLE = (byte) 0xAB;
    static final int REASON = 4711;
    static final short NOTIF_HANDLE = 5;

    private final List<String> failures = new ArrayList<>();

    public static void main(String[] args) throws IOException {
        WirePeer peer = new WirePeer();
        String command = args.length > 0 ? args[0] : "";
        switch (command) {
            case "selftest" -> peer.selftest();
            case "request" -> Files.write(Path.of(args[1]), agreedRequest().toBytes());
            case "respond" -> peer.respond(Path.of(args[1]), Path.of(args[2]));
            case "notify" -> Files.write(Path.of(args[1]), notification());
            default -> {
                System.err.println("usage: WirePeer selftest | request FILE | respond REQUEST RESPONSE | notify FILE");
                System.exit(2);
            }
        }
        if (!peer.failures.isEmpty()) {
            peer.failures.forEach(System.err::println);
            System.exit(1);
        }
        System.out.println("WirePeer " + command + ": ok");
    }

    static Messages.EchoRequest agreedRequest() {
        Messages.EchoRequest request = new Messages.EchoRequest();
        request.sHost = S_HOST;
        request.tHost = T_HOST;
        request.client = CLIENT;
        request.correlator = CORRELATOR;
        request.text = TEXT;
        request.note = "";
        request.payload = PAYLOAD.clone();
        request.stamp = STAMP;
        request.flag = true;
        request.small = SMALL;
        request.single = SINGLE;
        return request;
    }

    static Messages.PeerException agreedException() {
        Messages.PeerException exception = new Messages.PeerException();
        exception.excId = 42;
        exception.text1 = "Zugriff verweigert: Gr\u00f6\u00dfe";
        exception.text2 = "";
        exception.text3 = "\u20ac";
        exception.text4 = "tab\there";
        return exception;
    }

    private void respond(Path requestFile, Path responseFile) throws IOException {
        byte[] data = Files.readAllBytes(requestFile);
        WireInput in = new WireInput(data);
        Messages.EchoRequest request = new Messages.EchoRequest();
        String name = Messages.readObject(in, request);
        check("class name", Messages.EchoRequest.NAME, name);
        check("sHost", S_HOST, request.sHost);
        check("tHost", T_HOST, request.tHost);
        check("type", 1, request.type);
        check("client", CLIENT, request.client);
        check("correlator", CORRELATOR, request.correlator);
        check("text", TEXT, request.text);
        check("note", "", request.note);
        check("payload", Arrays.toString(PAYLOAD), Arrays.toString(request.payload));
        check("stamp", STAMP, request.stamp);
        check("flag", true, request.flag);
        check("small", SMALL, request.small);
        check("single", SINGLE, request.single);
        check("bytes left", 0, in.remaining());
        // The library must write exactly what this side writes for the same request.
        check("request bytes", hex(agreedRequest().toBytes()), hex(data));

        Messages.EchoResponse response = new Messages.EchoResponse();
        response.sHost = request.tHost;
        response.tHost = request.sHost;
        response.client = request.client;
        response.correlator = request.correlator;
        response.posExtReasonCode = REASON;
        response.exception = agreedException();
        response.echo = request.text;
        response.reversed = reverse(request.payload);
        Files.write(responseFile, response.toBytes());
    }

    private static byte[] notification() {
        Messages.StatusNotif notif = new Messages.StatusNotif();
        notif.sHost = S_HOST;
        notif.tHost = T_HOST;
        notif.client = CLIENT;
        notif.posExtReasonCode = -1;
        notif.exception = agreedException();
        notif.status = "bereit";
        WireOutput out = new WireOutput().writeClassHandle(NOTIF_HANDLE);
        notif.write(out);
        return out.toByteArray();
    }

    private void selftest() {
        // Strings, class names and byte arrays.
        expect("string abc", "00 80 00 00 00 03 00 03 61 62 63", new WireOutput().writeString("abc"));
        expect("empty string", "00 80 00 00 00 00", new WireOutput().writeString(""));
        expect("class a", "00 01 00 00 00 01 00 01 61", new WireOutput().writeClass("a"));
        expect("empty class", "00 01 00 00 00 00", new WireOutput().writeClass(""));
        expect("byte array", "04 00 00 00 00 02 AA BB",
                new WireOutput().writeByteArray(new byte[] {(byte) 0xAA, (byte) 0xBB}));
        expect("empty byte array", "04 00 00 00 00 00", new WireOutput().writeByteArray(new byte[0]));
        expect("three-byte character", "00 80 00 00 00 03 00 03 E2 82 AC", new WireOutput().writeString("\u20ac"));
        expect("int 1", "00 08 00 00 00 01", new WireOutput().writeInt(1));
        expect("true", "08 00 01", new WireOutput().writeBoolean(true));
        expect("long -2", "00 20 FF FF FF FF FF FF FF FE", new WireOutput().writeLong(-2));

        check("read abc", "abc", new WireInput(bytes("00 80 00 00 00 03 00 03 61 62 63")).readString());
        WireInput minusOne = new WireInput(bytes("00 80 FF FF FF FF 00 80 00 00 00 00"));
        check("first length -1", "", minusOne.readString());
        check("bytes left after -1", 6, minusOne.remaining());
        check("short length counts", "ab", new WireInput(bytes("00 80 00 00 00 07 00 02 61 62")).readString());
        check("long length counts", "abc", new WireInput(bytes("00 01 00 00 00 03 00 01 61 62 63")).readClass());
        check("class handle", "5", new WireInput(bytes("20 00 00 05")).readClass());
        check("byte array read", "[-86, -69]",
                Arrays.toString(new WireInput(bytes("04 00 00 00 00 02 AA BB")).readByteArray()));

        // Objects: a null one is the empty class name and nothing else.
        expect("null object", "00 01 00 00 00 00", new WireOutput().writeObject(null));

        // Message bodies.
        Messages.Request request = new Messages.Request() {
            @Override
            String className() {
                return "x";
            }
        };
        request.sHost = "a";
        request.tHost = "b";
        request.correlator = 7;
        WireOutput body = new WireOutput();
        request.write(body);
        expect("request body", "00 80 00 00 00 01 00 01 61 00 80 00 00 00 01 00 01 62 00 08 00 00 00 01"
                + " 00 08 00 00 00 00 00 08 00 00 00 07", body);

        Messages.Response response = new Messages.Response() {
            @Override
            String className() {
                return "y";
            }
        };
        WireOutput responseBody = new WireOutput();
        response.write(responseBody);
        expect("default response body", "00 80 00 00 00 00 00 80 00 00 00 00 00 08 00 00 00 02"
                + " 00 08 00 00 00 00 00 08 00 00 00 00 00 08 00 00 00 00 00 01 00 00 00 00", responseBody);

        Messages.PeerException exception = new Messages.PeerException();
        exception.excId = 3;
        WireOutput exceptionBody = new WireOutput();
        exception.write(exceptionBody);
        expect("exception body", "00 08 00 00 00 03 00 80 00 00 00 00 00 80 00 00 00 00 00 80 00 00 00 00"
                + " 00 80 00 00 00 00", exceptionBody);

        // Round trip of the agreed messages through this side alone.
        Messages.EchoRequest back = new Messages.EchoRequest();
        check("request round trip name", Messages.EchoRequest.NAME,
                Messages.readObject(new WireInput(agreedRequest().toBytes()), back));
        check("request round trip", agreedRequest().toString(), back.toString());
    }

    private void expect(String what, String hexBytes, WireOutput out) {
        check(what, hexBytes, hex(out.toByteArray()));
    }

    private void check(String what, Object expected, Object actual) {
        if (!expected.equals(actual)) {
            failures.add(what + ": expected <" + expected + "> but was <" + actual + ">");
        }
    }

    private static byte[] reverse(byte[] value) {
        byte[] result = new byte[value.length];
        for (int i = 0; i < value.length; i++) {
            result[i] = value[value.length - 1 - i];
        }
        return result;
    }

    static String hex(byte[] data) {
        return HexFormat.ofDelimiter(" ").withUpperCase().formatHex(data);
    }

    static byte[] bytes(String hexBytes) {
        return HexFormat.ofDelimiter(" ").parseHex(hexBytes);
    }
}
