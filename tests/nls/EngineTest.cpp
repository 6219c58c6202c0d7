#include <gtest/gtest.h>

#include <string>

#include "NlsSupport.hpp"
#include "TestTables.hpp"
#include "qarq/vorn/vornnls3.hpp"
#include "support/TracePoints.hpp"

namespace {

using qarq::test::load;
using qarq::test::Record;

std::string toUtf8(const VornNlsCodeSet* cs, const std::string& in, unsigned room = 1000,
                   int length = -2) {
    std::string out(room, '\xAA');
    unsigned n = vornnls3_tis_to_utf8(cs, in.data(), length == -2 ? int(in.size()) : length,
                                      out.data(), room);
    return out.substr(0, n);
}
std::string fromUtf8(const VornNlsCodeSet* cs, const std::string& in, unsigned room = 1000,
                     int length = -2) {
    std::string out(room, '\xAA');
    unsigned n = vornnls3_tis_from_utf8(cs, in.data(), length == -2 ? int(in.size()) : length,
                                        out.data(), room);
    return out.substr(0, n);
}

class Engines : public ::testing::Test {
protected:
    Record ascii = load(qarq::test::asciiSbcs());
    Record ebcdic = load(qarq::test::ebcdicSbcs());
    Record dbcs = load(qarq::test::sampleDbcs(2));
    Record shifted = load(qarq::test::sampleDbcs(4));
    Record mbcs = load(qarq::test::sampleMbcs());
    Record utf8{vornnls2_cs_new("UTF8")};
    void SetUp() override {
        for (auto* cs : {ascii.get(), ebcdic.get(), dbcs.get(), shifted.get(), mbcs.get(), utf8.get()})
            ASSERT_NE(cs, nullptr);
    }
};

TEST_F(Engines, SingleByteToUtf8WritesEveryWidthAndNeverSplitsACharacter) {
    EXPECT_EQ(toUtf8(ascii.get(), "A\x80\xE9\x81"), "A\xE2\x82\xAC\xC3\xA9?");
    EXPECT_EQ(toUtf8(ebcdic.get(), "\xC1\x51\x9F\x40\xFF"), "A\xC3\xA9\xE2\x82\xAC ?");
    // Three bytes of the euro sign need three bytes of room; two stop it.
    EXPECT_EQ(toUtf8(ascii.get(), "A\x80", 3), "A");
    EXPECT_EQ(toUtf8(ascii.get(), "A\x80", 4), "A\xE2\x82\xAC");
    EXPECT_EQ(toUtf8(ebcdic.get(), "\x51", 1), "");
    EXPECT_EQ(toUtf8(ebcdic.get(), "\xC1", 0), "");
}

TEST_F(Engines, SingleByteFromUtf8KeepsTheTrueSubstitutionCharacterOnly) {
    // U+001A truly maps to the substitution byte 0x3F and stays; every
    // unmapped character becomes the code set's question mark.
    EXPECT_EQ(fromUtf8(ebcdic.get(), "A\x1A\xE4\xB8\x80z"), "\xC1\x3F\x6F\xA9");
    EXPECT_EQ(fromUtf8(ascii.get(), "\xE2\x82\xAC\xE4\xB8\x80?\xC3\xA9"), "\x80??\xE9");
    // Bytes below 0x80 go through the EBCDIC table, not copied.
    EXPECT_EQ(fromUtf8(ebcdic.get(), "a b"), "\x81\x40\x82");
}

TEST_F(Engines, MalformedUtf8ReadsAsQuestionMarksAndTruncationStops) {
    // A stray continuation byte is one '?'; the next byte reads as usual.
    EXPECT_EQ(fromUtf8(ebcdic.get(), "\x80" "A"), "\x6F\xC1");
    EXPECT_EQ(fromUtf8(ascii.get(), "\xBF" "A"), "?A");
    // A 4-byte sequence: its lead reads as a 3-byte lead (one wrong value,
    // unmapped here), and its last byte is stray.
    EXPECT_EQ(fromUtf8(ascii.get(), "\xF0\x9F\x98\x80" "A"), "??A");
    // Overlong forms are read by the rule (0xC1 0x81 is 'A').
    EXPECT_EQ(fromUtf8(ebcdic.get(), "\xC1\x81"), "\xC1");
    // A lead byte at the very end ends the conversion; what came before stays.
    EXPECT_EQ(fromUtf8(ascii.get(), "A\xC3"), "A");
    EXPECT_EQ(fromUtf8(ascii.get(), "A\xE2\x82"), "A");
    EXPECT_EQ(fromUtf8(shifted.get(), "A\xE3\x81"), "\xC1");
}

TEST_F(Engines, DoubleByteAsciiFamily) {
    EXPECT_EQ(toUtf8(dbcs.get(), "a\x82\xA0\xB1\x82\xA1"), "a\xE3\x81\x82\xEF\xBD\xB1\xC3\xA9");
    // A lead byte with no second byte stops; an invalid class is one '?'.
    EXPECT_EQ(toUtf8(dbcs.get(), "a\x82"), "a");
    EXPECT_EQ(toUtf8(dbcs.get(), "\x80" "b"), "?b");
    EXPECT_EQ(fromUtf8(dbcs.get(), "x\xE3\x81\x82\xEF\xBD\xA1\xC3\xA9"), "x\x82\xA0\xA1?");
    // A pair needs two bytes of room.
    EXPECT_EQ(fromUtf8(dbcs.get(), "x\xE3\x81\x82", 2), "x");
}

TEST_F(Engines, MultiByteWalksNodesDropsBytesAndUsesAllBytesOfAFailedWalk) {
    EXPECT_EQ(toUtf8(mbcs.get(), "\xA4\xA2\x8F\xB0\xA1\x8E\xB1\xA0"),
              "\xE3\x81\x82\xE4\xB8\x82\xEF\xBD\xB1\xC2\xA0");
    EXPECT_EQ(toUtf8(mbcs.get(), "a\x80" "b\xFF"), "ab");
    // An unknown 3-byte sequence uses all three bytes for one '?'.
    EXPECT_EQ(toUtf8(mbcs.get(), "\x8F\xC0\xC0" "c"), "?c");
    EXPECT_EQ(toUtf8(mbcs.get(), "\x8F\xB0\xFE" "c"), "?c");
    // A sequence cut by the end of the source stops before it.
    EXPECT_EQ(toUtf8(mbcs.get(), "d\x8F\xB0"), "d");
    EXPECT_EQ(fromUtf8(mbcs.get(), "\xE3\x81\x82\xE4\xB8\x82\xC2\xA0\xE4\xB8\x80"),
              "\xA4\xA2\x8F\xB0\xA1\xA0?");
    // Prefix and pair must fit whole.
    EXPECT_EQ(fromUtf8(mbcs.get(), "e\xE4\xB8\x82", 3), "e");
    EXPECT_EQ(fromUtf8(mbcs.get(), "e\xE4\xB8\x82", 4), "e\x8F\xB0\xA1");
}

TEST_F(Engines, ShiftedDoubleByteToUtf8) {
    EXPECT_EQ(toUtf8(shifted.get(), "\x0E\x42\x41\x0F\xC1"), "\xE3\x81\x82" "A");
    // Ends inside a shifted pair: stops before the pair.
    EXPECT_EQ(toUtf8(shifted.get(), "\xC1\x0E\x42\x41\x42"), "A\xE3\x81\x82");
    // Bytes outside 0x40-0xFE while shifted are single bytes.
    EXPECT_EQ(toUtf8(shifted.get(), "\x0E\x15\x42\x42"), "\n\xC3\xA9");
    // Each call starts unshifted.
    EXPECT_EQ(toUtf8(shifted.get(), "\x42\x41"), "??");
}

TEST_F(Engines, ShiftedDoubleByteFromUtf8) {
    EXPECT_EQ(fromUtf8(shifted.get(), "\xE3\x81\x82" "A"), "\x0E\x42\x41\x0F\xC1");
    // A string that ends shifted gets its shift-in when a byte of room is left.
    EXPECT_EQ(fromUtf8(shifted.get(), "A\xE3\x81\x82"), "\xC1\x0E\x42\x41\x0F");
    EXPECT_EQ(fromUtf8(shifted.get(), "\xE3\x81\x82", 3), "\x0E\x42\x41");
    EXPECT_EQ(fromUtf8(shifted.get(), "\xE3\x81\x82", 2), "");
    // Shifted, with one byte of room: single-byte characters are skipped,
    // and the shift-in still takes the last byte.
    EXPECT_EQ(fromUtf8(shifted.get(), "\xE3\x81\x82" "AB", 4), "\x0E\x42\x41\x0F");
    // Two pairs share one shift-out; unmapped is 0x6F.
    EXPECT_EQ(fromUtf8(shifted.get(), "\xE3\x81\x82\xE3\x80\x80\xE4\xB8\x80"),
              "\x0E\x42\x41\x40\x40\x0F\x6F");
}

TEST_F(Engines, EntryPointsTerminateANulTerminatedSource) {
    char out[8];
    EXPECT_EQ(vornnls3_tis_to_utf8(ascii.get(), "", -1, out, sizeof out), 1u);
    EXPECT_EQ(out[0], '\0');
    EXPECT_EQ(vornnls3_tis_to_utf8(ascii.get(), "abc", 0, out, sizeof out), 0u);
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(vornnls3_tis_to_utf8(utf8.get(), "abc", -1, out, 1), 1u);
    EXPECT_EQ(out[0], '\0');
    EXPECT_EQ(out[1], 'x');
    EXPECT_EQ(vornnls3_tis_from_utf8(ebcdic.get(), "ab", -1, out, 2), 2u);
    EXPECT_EQ(std::string(out, 2), std::string("\x81\0", 2));
    EXPECT_EQ(vornnls3_tis_from_utf8(ebcdic.get(), "ab", -7, out, 0), 0u);
    // Kind 6 copies until either side runs out.
    EXPECT_EQ(toUtf8(utf8.get(), "\xFF\x80xyz", 3), "\xFF\x80x");
    EXPECT_EQ(fromUtf8(utf8.get(), "\xFF\x80xyz"), "\xFF\x80xyz");
    // Null source and null target are empty and no room.
    EXPECT_EQ(vornnls3_tis_to_utf8(ascii.get(), nullptr, -1, out, sizeof out), 1u);
    EXPECT_EQ(vornnls3_tis_to_utf8(ascii.get(), "abc", 3, nullptr, 10), 0u);
}

TEST_F(Engines, TargetsOfZeroOneAndTwoBytesHoldOnlyWholeCharacters) {
    // Three UTF-8 bytes, two, one: each fits only when all of it does.
    for (unsigned room : {0u, 1u, 2u}) {
        EXPECT_EQ(toUtf8(ebcdic.get(), "\x9F", room), "") << room;
        EXPECT_EQ(toUtf8(ebcdic.get(), "\x51", room), room == 2 ? "\xC3\xA9" : "") << room;
        EXPECT_EQ(toUtf8(ebcdic.get(), "\xC1\xC1\xC1", room), std::string(room, 'A')) << room;
        EXPECT_EQ(toUtf8(shifted.get(), "\x0E\x42\x41", room), "") << room;
        EXPECT_EQ(fromUtf8(dbcs.get(), "\xE3\x81\x82", room), room == 2 ? "\x82\xA0" : "");
        EXPECT_EQ(fromUtf8(mbcs.get(), "\xE4\xB8\x82", room), "") << room;
        // Kind 4 needs three bytes for a shift-out and a pair.
        EXPECT_EQ(fromUtf8(shifted.get(), "\xE3\x81\x82", room), "") << room;
    }
}

TEST_F(Engines, EntryAndExitAreTracedWhenTheGateIsOpen) {
    std::vector<qarq::test::TracePoints::Point> points;
    {
        qarq::test::TracePoints seen;
        toUtf8(ebcdic.get(), "\xC1");
        points = seen.points();
    }
    EXPECT_EQ(points, (std::vector<qarq::test::TracePoints::Point>{
                          {"vornnls3_tis_to_utf8", HESK_TRACE_ENTRY},
                          {"vornnls5_ebcdic_sbcs_to_utf8", HESK_TRACE_ENTRY},
                          {"vornnls3_tis_to_utf8", HESK_TRACE_EXIT}}));
}

TEST_F(Engines, ARecordWhoseTableWasFreedPassesThrough) {
    VornNlsCodeSet copy = *ebcdic;
    copy.table = nullptr;
    EXPECT_EQ(toUtf8(&copy, "\xC1\xC2"), "\xC1\xC2");
}

}  // namespace
