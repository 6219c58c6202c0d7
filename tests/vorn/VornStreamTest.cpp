#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "qarq/vorn/VornExcBase.hpp"
#include "qarq/vorn/VornJavaRead.hpp"
#include "qarq/vorn/VornJavaWrite.hpp"
#include "support/StreamBytes.hpp"
#include "support/TestSupport.hpp"
#include "vorn/VornTrace.hpp"

namespace {

using Bytes = std::vector<unsigned char>;
using qarq::support::Reader;

Bytes written(const VornJavaWrite& w) {
    const auto* p = reinterpret_cast<const unsigned char*>(w.getBuffer());
    return Bytes(p, p + w.calculateUsedLength());
}

std::string str(const Bytes& b) {
    return std::string(b.begin(), b.end());
}

class Writer : public VornJavaWrite {
  public:
    ~Writer() override { delete[] getBuffer(); }
};

// A writer grows at the byte that does not fit, and keeps what it had.
TEST(VornStream, WriterGrowsAndKeepsItsUsedBytes) {
    Writer w;
    w.writeInt(1);
    EXPECT_EQ(written(w), (Bytes{0x00, 0x08, 0x00, 0x00, 0x00, 0x01}));
    // A put of exactly the remaining room does not grow.
    std::vector<char> fill(w.getLength() - 6, 'f');
    char* block = w.getBuffer();
    w.putBytes(fill.data(), static_cast<unsigned>(fill.size()));
    EXPECT_EQ(w.getBuffer(), block);
    w.writeInt(-1);
    EXPECT_EQ(written(w).size(), 12u + fill.size());
    EXPECT_EQ(written(w)[1], 0x08);  // the used bytes moved along
    w.resetBuffer();
    EXPECT_EQ(w.calculateUsedLength(), 0u);

    // A block given by the caller: only its used part moves.
    char* given = new char[20];
    std::memset(given, 'u', 20);
    Writer g;
    g.setBuffer(given, 20);
    g.putBytes("0123456789", 10);
    std::vector<char> big(10000, 'b');
    g.putBytes(big.data(), 10000);
    EXPECT_EQ(g.calculateUsedLength(), 10010u);
    EXPECT_EQ(std::string(g.getBuffer(), 10), "0123456789");
    EXPECT_EQ(g.getBuffer()[10009], 'b');
}

TEST(VornStream, EveryPrimitiveRoundTrips) {
    Writer w;
    w.writeByte('\x80').writeChar('c').writeShort(-2).writeShort(0x7FFF).writeInt(INT32_MIN);
    w.writeLong(-2).writeLong(0x80000000LL).writeLong(INT64_MIN).writeBoolean(5).writeBoolean(0);
    w.writeType(0xBEEF);
    w.writeLength(-1);
    w.writeShortLength(-300);

    Bytes bytes = written(w);
    // Spot checks of the wire form.
    EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + 3), (Bytes{0x02, 0x00, 0x80}));
    const Bytes minus2 = {0x00, 0x20, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE};
    const Bytes big = {0x00, 0x20, 0x00, 0x00, 0x00, 0x00, 0x80, 0x00, 0x00, 0x00};
    EXPECT_EQ(Bytes(bytes.begin() + 20, bytes.begin() + 30), minus2);
    EXPECT_EQ(Bytes(bytes.begin() + 30, bytes.begin() + 40), big);

    Reader s(str(bytes));
    VornJavaRead& r = s.in;
    EXPECT_EQ(r.readByte(), '\x80');
    EXPECT_EQ(r.readChar(), 'c');
    EXPECT_EQ(r.readShort(), -2);
    EXPECT_EQ(r.readShort(), 0x7FFF);
    EXPECT_EQ(r.readInt(), INT32_MIN);
    EXPECT_EQ(r.readLong(), -2);
    EXPECT_EQ(r.readLong(), 0x80000000LL);
    EXPECT_EQ(r.readLong(), INT64_MIN);
    EXPECT_EQ(r.readBoolean(), 1);
    EXPECT_EQ(r.readBoolean(), 0);
    EXPECT_EQ(r.readType(), 0xBEEF);
    EXPECT_EQ(r.readLength(), -1);
    EXPECT_EQ(r.readShortLength(), -300);
    EXPECT_EQ(r.calculateUsedLength(), r.getLength());
}

TEST(VornStream, ReadsAcrossTheSlowPathAndPeerBytes) {
    qarq::support::Records records;
    // Booleans as a peer may send them, and a char read of a short.
    Reader s(qarq::support::bytes("08 00 FF 08 00 02 00 02 12 34 00 08 00 00"));
    VornJavaRead& r = s.in;
    EXPECT_EQ(r.readBoolean(), -1);
    EXPECT_EQ(r.readBoolean(), 2);
    EXPECT_EQ(r.readChar(), 0x12);  // takes only the high byte
    EXPECT_EQ(r.calculateUsedLength(), 9u);
    char* block = r.getBuffer();
    // An int whose payload is cut short: overrun, and the reader is where it
    // was after the tag with the same block.
    try {
        r.getByte();
        r.readInt();
        FAIL() << "a short stream must not be read past its end";
    } catch (VornExcBase& e) {
        EXPECT_STREQ(e.name(), "VornExcBase");
        EXPECT_EQ(e.errorId(), 14u);
        ASSERT_EQ(e.textCount(), 3u);
        EXPECT_STREQ(e.text(2), "Buffer overrun exception...get/put past end of buffer");
        EXPECT_STREQ(e.text(1), "VornJavaRead");
        EXPECT_EQ(std::string(e.text(0)).rfind("VornJavaRead[VornBuffer[this=0x", 0), 0u);
    }
    EXPECT_EQ(r.getBuffer(), block);
    EXPECT_EQ(r.getLength(), 14u);
    EXPECT_EQ(r.calculateUsedLength(), 12u);
    // The detecting member's own record (wanted, used, block length) comes
    // before the family's.
    auto errors = records.ofKind(HESK_RECORD_ERROR);
    ASSERT_EQ(errors.size(), 2u);
    EXPECT_EQ(errors[0].function, "VornJavaRead::readInt");
    uint32_t wanted;
    std::memcpy(&wanted, errors[0].pairs.at(0).data(), 4);
    EXPECT_EQ(wanted, 4u);
    EXPECT_EQ(errors[1].pairs.at(0), "Id: 14, Rec?: 1, Exc: VornBufferExcOverrun\n");
    char out[4];
    EXPECT_THROW(r.getBytes(out, 3), VornExcBase);
    EXPECT_EQ(r.getBytes(out, 2).calculateUsedLength(), 14u);

    VornJavaRead empty;
    EXPECT_THROW(empty.readInt(), VornExcBase);
    EXPECT_EQ(empty.getBuffer(), nullptr);
}

TEST(VornStream, WrongTagFailsAfterItsRecord) {
    qarq::support::Records records;
    Reader s(qarq::support::bytes("00 08 00 00 00 01"));
    VornJavaRead& r = s.in;
    try {
        r.readLong();
        FAIL();
    } catch (VornExcBase& e) {
        EXPECT_EQ(e.errorId(), 8u);
        EXPECT_TRUE(e.isRecoverable());
        ASSERT_EQ(e.textCount(), 3u);
        EXPECT_STREQ(e.text(2), "Invalid Java serialization TYPE...Read: 8, Expected: 32 or 0");
        EXPECT_STREQ(e.locationAtIndex(0)->functionName(), "VornJavaRead::assertTypeRead");
    }
    EXPECT_EQ(r.calculateUsedLength(), 2u);  // not rewound: past the tag

    auto errors = records.ofKind(HESK_RECORD_ERROR);
    ASSERT_EQ(errors.size(), 2u);
    // First the detecting code's own record with the three tags...
    EXPECT_EQ(errors[0].function, "VornJavaRead::assertTypeRead");
    ASSERT_EQ(errors[0].pairs.size(), 3u);
    uint16_t values[3];
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(errors[0].pairs[i].size(), 2u);
        std::memcpy(&values[i], errors[0].pairs[i].data(), 2);
    }
    EXPECT_EQ(values[0], 8);
    EXPECT_EQ(values[1], 32);
    EXPECT_EQ(values[2], 0);
    // ...then the family's record naming the class.
    EXPECT_EQ(errors[1].function, "logAnExc");
    EXPECT_EQ(errors[1].pairs[0], "Id: 8, Rec?: 1, Exc: VornJavaExcReadBadType\n");

    try {
        r.assertTypeRead(0, 0, 0);
        FAIL() << "a zero tag never passes";
    } catch (VornExcBase& e) {
        EXPECT_STREQ(e.text(2), "Invalid Java serialization TYPE...Read: 0, Expected: 0 or 0");
    }
    EXPECT_NO_THROW(r.assertTypeRead(0x2000, 0x0001, 0x2000));
    EXPECT_THROW(r.assertTypeRead(0x0002, 0x0001, 0x2000), VornExcBase);
}

TEST(VornStream, TracePointsFireOnlyBehindTheGate) {
    qarq::support::Records records;
    TraceControl*& control = qarq::vorn::traceControl();
    TraceControl* saved = control;
    TraceControl on = {HESK_MASK_ENTRY | HESK_MASK_EXIT, 3};
    Writer w;
    control = &on;
    w.writeInt(42);
    Reader s(str(written(w)));
    int value = s.in.readInt();
    control = saved;
    w.writeInt(43);
    EXPECT_EQ(value, 42);

    auto traces = records.ofKind(HESK_RECORD_TRACE);
    ASSERT_GE(traces.size(), 4u);
    EXPECT_EQ(traces[0].function, "VornJavaWrite::writeInt");
    EXPECT_EQ(traces[0].traceKind, HESK_TRACE_ENTRY);
    // The read ends the records, its exit with the value read; the write
    // after the gate closed left none.
    const auto& exit = traces.back();
    EXPECT_EQ(exit.function, "VornJavaRead::readInt");
    EXPECT_EQ(exit.traceKind, HESK_TRACE_EXIT);
    EXPECT_EQ(exit.pairAsU32(0), 42u);
}

}  // namespace
