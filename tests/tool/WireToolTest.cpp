// qarq decode and qarq encode: every fixture (the library's own writing of
// each kind of value and message) survives decode | encode byte for byte,
// and each kind of damage ends the listing with the offset at fault.
#include <string>

#include "tool/ToolRun.hpp"
#include "support/StreamBytes.hpp"

namespace qarq::tooltest {
namespace {

const std::string kFixtures = QARQ_SOURCE_DIR "/tests/tool/fixtures/";

class Wire : public ToolTest {
  protected:
    void expectRoundTrip(const std::string& bytes) {
        writeFile(file("block.bin"), bytes);
        Result listing = qarq("decode block.bin");
        ASSERT_EQ(0, listing.status) << listing.err;
        Result back = qarq("encode", listing.out);
        ASSERT_EQ(0, back.status) << back.err;
        EXPECT_EQ(support::hex(bytes), support::hex(back.out)) << listing.out;
    }
};

TEST_F(Wire, EveryFixtureSurvivesDecodeAndEncode) {
    for (const char* name : {"peer-examples.bin", "request.bin", "response-with-exception.bin",
                             "notification-class-handle.bin", "vector-of-objects.bin"}) {
        SCOPED_TRACE(name);
        expectRoundTrip(readFile(kFixtures + name));
    }
    expectRoundTrip(readFile(QARQ_DATA_DIR "/samples/console-request.bin"));
    // Forms a peer may send and this library never writes: lengths that
    // disagree, booleans other than 0 and 1, bytes that need escapes.
    expectRoundTrip(support::bytes("00 80 00 00 00 05 00 02 61 62 08 00 02"));
    expectRoundTrip(support::bytes("00 80 00 00 00 06 00 06 FF 00 0A 22 5C C3"));
    // The listing of the sample is the one kept beside it.
    Result listing = qarq("decode " QARQ_DATA_DIR "/samples/console-request.bin");
    Result again = qarq("encode " QARQ_DATA_DIR "/samples/console-request.txt");
    EXPECT_EQ(readFile(QARQ_DATA_DIR "/samples/console-request.bin"), again.out);
    EXPECT_NE(std::string::npos, listing.out.find("   137    string \"Netz München/Süd\"\n"));
    EXPECT_NE(std::string::npos, listing.out.find("   169      string \"router-a\"\n"));
}

// Char and short share a tag: the reading that parses the whole block wins,
// short where both do, and each listing encodes back to the same bytes.
TEST_F(Wire, CharOrShortTakesTheReadingThatParsesTheBlock) {
    auto decode = [&](const std::string& hex) {
        writeFile(file("block.bin"), support::bytes(hex));
        return qarq("decode block.bin").out;
    };
    EXPECT_EQ("     0  char 'A'\n     3  int 1\n", decode("00 02 41 00 08 00 00 00 01"));
    // Both readings parse: short first.
    EXPECT_EQ("     0  short 2048\n     4  byte 1\n     7  char 0x00\n",
              decode("00 02 08 00 02 00 01 00 02 00"));
    // A short early on makes a later tag parse only as char: backtracking
    // finds it although the first choice looked fine.
    EXPECT_EQ("     0  char 0x00\n     3  int 1\n", decode("00 02 00 00 08 00 00 00 01"));

    // Many ambiguous tags in a row still decode at once and round-trip.
    std::string many;
    for (int i = 0; i < 20000; ++i)
        many += support::bytes(i % 3 ? "00 02 00" : "00 02 08 00");
    expectRoundTrip(many);
    // ... and so does a block where no reading parses: every path into the
    // long run of ints behind them is walked once, not once per path.
    std::string hopeless = many;
    for (int i = 0; i < 50000; ++i)
        hopeless += support::bytes("00 08 00 00 00 01");
    writeFile(file("hopeless.bin"), hopeless + support::bytes("00 03"));
    Result r = qarq("decode hopeless.bin");
    EXPECT_EQ(1, r.status);
    EXPECT_EQ(0u, r.err.find("qarq decode: hopeless.bin: offset ")) << r.err;
}

TEST_F(Wire, DamageEndsTheListingAtItsOffset) {
    const std::string sample = readFile(kFixtures + "request.bin");
    writeFile(file("cut.bin"), sample.substr(0, sample.size() - 3));
    Result cut = qarq("decode cut.bin");
    EXPECT_EQ(1, cut.status);
    EXPECT_EQ("qarq decode: cut.bin: offset 50: truncated int (needs 6 bytes, 3 left)\n", cut.err);
    EXPECT_NE(std::string::npos, cut.out.find("    44    int 0\n")) << cut.out;
    EXPECT_EQ(std::string::npos, cut.out.find("    50")) << cut.out;

    Result tag = qarq("decode --hex", "00 08 00 00 00 01\n00 03 00");
    EXPECT_EQ("     0  int 1\n", tag.out);
    EXPECT_EQ("qarq decode: standard input: offset 6: bad tag 0x0003\n", tag.err);
    // A length beyond the data is reported, not allocated.
    Result huge = qarq("decode", support::bytes("04 00 7F FF FF FF 00"));
    EXPECT_EQ(
        "qarq decode: standard input: offset 0: truncated byte array (needs 2147483653 "
        "bytes, 7 left)\n",
        huge.err);
}

}  // namespace
}  // namespace qarq::tooltest
