// Strings, class names and byte arrays on the stream.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "qarq/base/Os.hpp"
#include "qarq/vorn/VornExcBase.hpp"
#include "qarq/vorn/VornJavaByteArray.hpp"
#include "qarq/vorn/VornJavaString.hpp"
#include "support/CodesetEnvironment.hpp"
#include "support/StreamBytes.hpp"
#include "support/TestSupport.hpp"

namespace {

using namespace qarq::support;

TEST(WireString, FormsOnTheWire) {
    struct Case {
        std::string text;
        const char* wire;
    } cases[] = {
        {"abc", "00 80 00 00 00 03 00 03 61 62 63"},
        {"", "00 80 00 00 00 00"},
        // The euro sign of the default code set is three bytes of UTF-8: both
        // lengths count those.
        {"\x80", "00 80 00 00 00 03 00 03 E2 82 AC"},
        {"Gr\xFC\xDF", "00 80 00 00 00 06 00 06 47 72 C3 BC C3 9F"},
    };
    for (const Case& c : cases) {
        Writer w;
        w.out.writeString(c.text.c_str());
        EXPECT_EQ(c.wire, w.hex()) << c.text;

        Reader r(w.bytes());
        VornJavaString back("stale");
        r.in.readString(back);
        EXPECT_EQ(c.text, std::string(back.data(), back.length()));
        EXPECT_EQ(w.bytes().size(), r.used());
    }
}

TEST(WireString, TextStopsAtItsFirstNul) {
    Writer w;
    w.out.writeString(IString("ab\0cd", 5));
    w.out.writeString(VornJavaString(IString("\0x", 2)));
    EXPECT_EQ("00 80 00 00 00 02 00 02 61 62 00 80 00 00 00 00", w.hex());
}

// Peer bytes read as a text or a class name, with an int 42 behind them: the
// text, how many bytes it took, and that the int still reads.
TEST(WireString, PeerBytesReadAsText) {
    struct Case {
        const char* wire;
        bool asClass;
        const char* text;
        unsigned consumed;
    } cases[] = {
        {"00 80 00 00 00 03 00 03 61 00 62", false, "a", 11},  // a peer's NUL ends the text
        // readString goes by the short length, readClass by the first.
        {"00 80 00 00 00 07 00 02 61 62", false, "ab", 10},
        {"00 01 00 00 00 03 00 03 E2 82 AC", true, "\x80", 11},
        // Lengths that announce no text read as empty.
        {"00 80 FF FF FF FF", false, "", 6},        // first length -1: nothing more is read
        {"00 80 00 00 00 05 FF FE", false, "", 8},  // a negative short length
        {"00 01 FF FF FF FF", true, "", 6},
        // A class handle gives its number as the name.
        {"20 00 FF FF", true, "-1", 4},
    };
    for (const Case& c : cases) {
        Reader r(bytes(std::string(c.wire) + " 00 08 00 00 00 2A"));
        VornJavaString text("stale");
        if (c.asClass)
            text = r.in.readClass();
        else
            r.in.readString(text);
        EXPECT_EQ(IString(c.text), text) << c.wire;
        EXPECT_EQ(c.consumed, r.used()) << c.wire;
        EXPECT_EQ(42, r.in.readInt()) << c.wire;
    }
}

TEST(WireString, WrongTagLeavesTheTargetAlone) {
    Reader r(bytes("00 08 00 00 00 01"));
    VornJavaString text("kept");
    EXPECT_THROW(r.in.readString(text), VornExcBase);
    EXPECT_EQ(IString("kept"), text);
}

TEST(WireString, LongestTextAPeerCanTakeAndOneByteMore) {
    Writer w;
    w.out.writeString(std::string(32767, 'x').c_str());
    EXPECT_EQ("00 80 00 00 7F FF 7F FF 78", w.hex().substr(0, 26));
    Reader r(w.bytes());
    VornJavaString back;
    r.in.readString(back);
    EXPECT_EQ(32767u, back.length());

    // Refused before anything of it is written, also when only the UTF-8
    // form is too long (10923 euro signs are 32769 bytes).
    for (const std::string& text : {std::string(32768, 'x'), std::string(10923, '\x80')}) {
        Records log;
        Writer refused;
        refused.out.writeInt(1);
        EXPECT_THROW(refused.out.writeString(text.c_str()), VornExcBase);
        EXPECT_THROW(refused.out.writeClass(VornJavaString(text.c_str())), VornExcBase);
        EXPECT_EQ("00 08 00 00 00 01", refused.hex());
        EXPECT_EQ(2u, log.errorsOf("VornJavaWrite::writeStringBytes"));
    }
}

TEST(WireByteArray, FormsAndLengthZero) {
    VornJavaByteArray ab;
    ab.copyBytes("\xAA\xBB", 2);
    VornJavaByteArray none;
    Writer w;
    w.out.writeByteArray(ab).writeByteArray(none);
    EXPECT_EQ("04 00 00 00 00 02 AA BB 04 00 00 00 00 00", w.hex());

    Reader r(w.bytes());
    VornJavaByteArray back(7);
    r.in.readByteArray(back);
    EXPECT_EQ(std::string("\xAA\xBB"), std::string(back.getBytes(), back.getLength()));
    r.in.readByteArray(back);
    EXPECT_EQ(0u, back.getLength());
    EXPECT_EQ(nullptr, back.getBytes());
}

// A class name or byte array longer than the data is an overrun, not an
// allocation of its length; the array keeps its old block.
TEST(WireByteArray, LengthBeyondTheDataRaisesAndAllocatesNothing) {
    static size_t largest;
    for (const char* wire : {"04 00 00 00 00 03 AA BB", "04 00 FF FF FF FF AA BB",
                             "04 00 7F FF FF FF", "00 01 7F FF FF FF 00 01 61"}) {
        Reader r(bytes(wire));
        VornJavaByteArray array(2);
        char* const block = array.getBytes();
        largest = 0;
        qarq::os::ScopedOsCall measuring(&qarq::os::Calls::malloc, +[](size_t size) -> void* {
            if (size > largest) largest = size;
            return qarq::os::realCalls().malloc(size);
        });
        if (wire[1] == '1') {
            EXPECT_THROW(r.in.readClass(), VornExcBase);
        } else {
            EXPECT_THROW(r.in.readByteArray(array), VornExcBase) << wire;
        }
        EXPECT_LT(largest, size_t{1} << 20) << wire;
        EXPECT_EQ(2u, array.getLength()) << wire;
        EXPECT_EQ(block, array.getBytes()) << wire;
    }
}

TEST(WireByteArray, ArrayWithoutMemorySkipsItsBytes) {
    Reader r(bytes("04 00 00 00 00 03 01 02 03 00 08 00 00 00 07"));
    VornJavaByteArray array;
    Records log;
    {
        qarq::os::ScopedOsCall noMemory(&qarq::os::Calls::malloc,
                                        +[](size_t) -> void* { return nullptr; });
        r.in.readByteArray(array);
    }
    EXPECT_EQ(0u, array.getLength());
    EXPECT_EQ(nullptr, array.getBytes());
    EXPECT_EQ(1u, log.errorsOf("VornJavaByteArray::setLength"));
    EXPECT_EQ(7, r.in.readInt());
}

TEST(WireByteArray, CopiesOwnTheirBytesAndAFailedAppendKeepsThem) {
    VornJavaByteArray a;
    a.appendBytes("xy", 2);  // on an empty array, as copyBytes
    a.appendBytes("z", 1);
    VornJavaByteArray copy(a);
    a.fill('q');
    EXPECT_EQ("xyz", std::string(copy.getBytes(), copy.getLength()));
    {
        qarq::os::ScopedOsCall noMemory(&qarq::os::Calls::malloc,
                                        +[](size_t) -> void* { return nullptr; });
        a.appendBytes("w", 1);
    }
    EXPECT_EQ("qqq", std::string(a.getBytes(), a.getLength()));
}

// Each path that gets no work block logs what it has and goes on unconverted.
// Only blocks of the work block's size are refused: the strings around still work.
size_t gRefusedSize;
void* refuseOneSize(size_t size) {
    return size == gRefusedSize ? nullptr : qarq::os::realCalls().malloc(size);
}

TEST(WireStream, WithoutWorkBlocksTextGoesUnconvertedWithALog) {
    Records log;
    Writer w;
    gRefusedSize = 7;  // 2 * 3 + 1
    {
        qarq::os::ScopedOsCall noWorkBlock(&qarq::os::Calls::malloc, &refuseOneSize);
        w.out.writeString("\x80z");
    }
    EXPECT_EQ("00 80 00 00 00 02 00 02 80 7A", w.hex());
    EXPECT_EQ((std::vector<std::string>{std::string("\x07\0\0\0", 4), "\x80z"}),
              log.lastError("VornJavaWrite::writeStringBytes").pairs);

    Reader r(bytes("00 80 00 00 00 03 00 03 E2 82 AC"));
    VornJavaString text;
    gRefusedSize = 10;  // 3 * 3 + 1
    {
        qarq::os::ScopedOsCall noWorkBlock(&qarq::os::Calls::malloc, &refuseOneSize);
        r.in.readString(text);
    }
    EXPECT_EQ(IString("\xE2\x82\xAC"), text);
    EXPECT_EQ(1u, log.errorsOf("VornJavaRead::readString"));
}

// readClass takes three blocks in turn: the raw bytes, the work block, the result.
TEST(WireStream, ClassNameWithoutEachOfItsBlocks) {
    static int calls, failing;
    struct Case {
        int failing;
        const char* name;
        size_t pairs;
    } cases[] = {{1, "", 1}, {2, "\xE2\x82\xAC", 2}, {3, "", 2}};
    for (const Case& c : cases) {
        Records log;
        Reader r(bytes("00 01 00 00 00 03 00 03 E2 82 AC 00 08 00 00 00 01"));
        calls = 0;
        failing = c.failing;
        VornJavaString name;
        {
            qarq::os::ScopedOsCall nth(&qarq::os::Calls::malloc, +[](size_t size) -> void* {
                return ++calls == failing ? nullptr : qarq::os::realCalls().malloc(size);
            });
            name = r.in.readClass();
        }
        EXPECT_EQ(IString(c.name), name) << c.failing;
        EXPECT_EQ(1, r.in.readInt()) << c.failing;
        Record record = log.lastError("VornJavaRead::readStringBytes");
        EXPECT_EQ(c.pairs, record.pairs.size()) << c.failing;
    }
}

}  // namespace
