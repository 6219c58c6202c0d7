#include <gtest/gtest.h>

#include <string>

#include "NlsSupport.hpp"
#include "TestTables.hpp"
#include "qarq/vorn/vornnls3.hpp"

namespace {

using qarq::test::load;
using qarq::test::Record;
using qarq::test::fromUtf8;
using qarq::test::toUtf8;

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

// One example of each rule, on tables whose every answer is known. The
// engines are held to these rules everywhere by the level differential
// against the reference engines (tests/simd) and, on the installed tables,
// by the iconv differential.
TEST_F(Engines, OneExampleOfEachRule) {
    const struct {
        const VornNlsCodeSet* cs;
        bool toUtf8;
        const char* in;
        unsigned room;
        const char* out;
    } cases[] = {
        // Every UTF-8 width; a character goes whole or not at all.
        {ascii.get(), true, "A\x80\xE9\x81", 99, "A\xE2\x82\xAC\xC3\xA9?"},
        {ebcdic.get(), true, "\xC1\x51\x9F\x40\xFF", 99, "A\xC3\xA9\xE2\x82\xAC ?"},
        {ascii.get(), true, "A\x80", 3, "A"},
        // U+001A truly maps to the substitution byte and stays; unmapped is
        // the code set's question mark; EBCDIC bytes below 0x80 are mapped.
        {ebcdic.get(), false, "A\x1A\xE4\xB8\x80z", 99, "\xC1\x3F\x6F\xA9"},
        {ascii.get(), false, "\xE2\x82\xAC\xE4\xB8\x80?\xC3\xA9", 99, "\x80??\xE9"},
        // Malformed UTF-8: a stray byte is one '?', a 4-byte lead reads as a
        // 3-byte one, overlong forms count, a cut sequence ends the call.
        {ascii.get(), false, "\xBF" "A\xF0\x9F\x98\x80" "A", 99, "?A??A"},
        {ebcdic.get(), false, "\xC1\x81", 99, "\xC1"},
        {ascii.get(), false, "A\xE2\x82", 99, "A"},
        // Double-byte: pairs, a cut pair stops, an invalid class is one '?'.
        {dbcs.get(), true, "a\x82\xA0\xB1\x82\xA1\x80" "b\x82", 99,
         "a\xE3\x81\x82\xEF\xBD\xB1\xC3\xA9?b"},
        {dbcs.get(), false, "x\xE3\x81\x82", 2, "x"},
        // Multi-byte: nodes, dropped bytes, a failed walk uses all its bytes.
        {mbcs.get(), true, "\xA4\xA2\x8F\xB0\xA1\x8E\xB1\xA0\x80\x8F\xC0\xC0" "c", 99,
         "\xE3\x81\x82\xE4\xB8\x82\xEF\xBD\xB1\xC2\xA0?c"},
        {mbcs.get(), true, "d\x8F\xB0", 99, "d"},
        {mbcs.get(), false, "e\xE4\xB8\x82", 3, "e"},
        // Shifted: each call starts unshifted; a run ending shifted gets its
        // shift-in while a byte of room is left; two pairs share a shift-out.
        {shifted.get(), true, "\x0E\x42\x41\x15\x0F\xC1", 99, "\xE3\x81\x82\nA"},
        {shifted.get(), true, "\x42\x41", 99, "??"},
        {shifted.get(), false, "A\xE3\x81\x82\xE3\x80\x80", 99, "\xC1\x0E\x42\x41\x40\x40\x0F"},
        {shifted.get(), false, "\xE3\x81\x82" "AB", 4, "\x0E\x42\x41\x0F"},
        {shifted.get(), false, "\xE3\x81\x82", 2, ""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(qarq::test::convert(c.cs, c.in, c.toUtf8, c.room), c.out)
            << ::testing::PrintToString(std::string(c.in)) << " room " << c.room;
}

TEST_F(Engines, EntryPointsTerminateANulTerminatedSource) {
    char out[8];
    EXPECT_EQ(vornnls3_tis_to_utf8(ascii.get(), "", -1, out, sizeof out), 1u);
    EXPECT_EQ(out[0], '\0');
    std::memset(out, 'x', sizeof out);
    EXPECT_EQ(vornnls3_tis_to_utf8(utf8.get(), "abc", -1, out, 1), 1u);
    EXPECT_EQ(out[0], '\0');
    EXPECT_EQ(out[1], 'x');
    EXPECT_EQ(vornnls3_tis_from_utf8(ebcdic.get(), "ab", -1, out, 2), 2u);
    EXPECT_EQ(std::string(out, 2), std::string("\x81\0", 2));
    // Kind 6 copies until either side runs out.
    EXPECT_EQ(toUtf8(utf8.get(), "\xFF\x80xyz", 3), "\xFF\x80x");
    EXPECT_EQ(fromUtf8(utf8.get(), "\xFF\x80xyz"), "\xFF\x80xyz");
    // A null target is no room.
    EXPECT_EQ(vornnls3_tis_to_utf8(ascii.get(), "abc", 3, nullptr, 10), 0u);
}

TEST_F(Engines, ARecordWhoseTableWasFreedPassesThrough) {
    VornNlsCodeSet copy = *ebcdic;
    copy.table = nullptr;
    EXPECT_EQ(toUtf8(&copy, "\xC1\xC2"), "\xC1\xC2");
}

}  // namespace
