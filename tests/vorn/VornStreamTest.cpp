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

    // The whole wire form once: each tag, big-endian payloads, a boolean as 0 or 1.
    EXPECT_EQ(qarq::support::hex(str(written(w))),
              "02 00 80 00 02 63 00 02 FF FE 00 02 7F FF 00 08 80 00 00 00 "
              "00 20 FF FF FF FF FF FF FF FE 00 20 00 00 00 00 80 00 00 00 "
              "00 20 80 00 00 00 00 00 00 00 08 00 01 08 00 00 BE EF FF FF FF FF FE D4");
    Reader s(str(written(w)));
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
        EXPECT_EQ(e.errorId(), 14u);
        ASSERT_EQ(e.textCount(), 3u);
        EXPECT_STREQ(e.text(2), "Buffer overrun exception...get/put past end of buffer");
    }
    EXPECT_EQ(r.getBuffer(), block);
    EXPECT_EQ(r.getLength(), 14u);
    EXPECT_EQ(r.calculateUsedLength(), 12u);
    // The detecting member's own record (wanted, used, block length) comes
    // before the family's.
    auto errors = records.ofKind(HESK_RECORD_ERROR);
    ASSERT_EQ(errors.size(), 2u);
    EXPECT_EQ(errors[0].function, "VornJavaRead::readInt");
    EXPECT_EQ(errors[0].pairAsU32(0), 4u);
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
        ASSERT_EQ(e.textCount(), 3u);
        EXPECT_STREQ(e.text(2), "Invalid Java serialization TYPE...Read: 8, Expected: 32 or 0");
    }
    EXPECT_EQ(r.calculateUsedLength(), 2u);  // not rewound: past the tag

    // First the detecting code's own record with the three tags, then the
    // family's record naming the class.
    auto errors = records.ofKind(HESK_RECORD_ERROR);
    ASSERT_EQ(errors.size(), 2u);
    EXPECT_EQ(errors[0].pairs,
              (std::vector<std::string>{std::string("\x08\0", 2), std::string("\x20\0", 2),
                                        std::string("\0\0", 2)}));
    EXPECT_EQ(errors[1].pairs[0], "Id: 8, Rec?: 1, Exc: VornJavaExcReadBadType\n");

    EXPECT_THROW(r.assertTypeRead(0, 0, 0), VornExcBase);  // a zero tag never passes
    EXPECT_NO_THROW(r.assertTypeRead(0x2000, 0x0001, 0x2000));
}

}  // namespace
