#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "dbcs/DbcsFixture.hpp"
#include "support/TestSupport.hpp"
#include "qarq/vorn/VornDbcs.hpp"

namespace {

using qarq::test::DoubleByte;
using qarq::support::ScopedEnv;

TEST_F(DoubleByte, ByteTypesFollowTheWalkFromTheStart) {
    const char* text = "A\x81\x5C";
    EXPECT_EQ(VornDbcsByteType(text, 0), VORN_DBCS_SINGLE);
    EXPECT_EQ(VornDbcsByteType(text, 1), VORN_DBCS_LEAD);
    EXPECT_EQ(VornDbcsByteType(text, 2), VORN_DBCS_TRAIL);
    // A trail byte in the lead range is still a trail byte.
    EXPECT_EQ(VornDbcsByteType("\x81\x81\x81\x81", 3), VORN_DBCS_TRAIL);
    EXPECT_EQ(VornDbcsByteType("\x81\x81\x81", 2), VORN_DBCS_INVALID);
    // Outside the text: no read behind the terminator, a plain byte.
    EXPECT_EQ(VornDbcsByteType("a", -1), VORN_DBCS_SINGLE);
}

TEST(DbcsInit, LeadBytesFollowTheLocaleCodePage) {
    ScopedEnv ctype("LC_CTYPE", "ko_KR.eucKR");
    ScopedEnv all("LC_ALL", nullptr);
    const auto ranges = [](const char* locale) {
        ScopedEnv set("LC_ALL", locale);
        unsigned char pairs[2 * (qarq::vorn::dbcs::kMaxLeadRanges + 1)];
        const int count = qarq::vorn::dbcs::localeLeadRanges(pairs);
        return std::string(reinterpret_cast<char*>(pairs), 2 * count + 2);
    };
    EXPECT_EQ(ranges("ja_JP"), std::string("\x81\x9F\xE0\xFC\0\0", 6));  // the page of the language
    EXPECT_EQ(ranges(""), std::string("\x81\xFE\0\0", 4));  // LC_CTYPE decides
    EXPECT_EQ(ranges("ja_JP.UTF-8"), std::string(2, '\0'));

    // The table decides what leads once the code page is double-byte.
    ScopedEnv japanese("LC_ALL", "ja_JP.SJIS");
    VornDbcsInit();
    VornDbcsIsCodePageSingleByte = 0;
    EXPECT_EQ(VornDbcsByteType("\xA0\x41", 0), VORN_DBCS_SINGLE);
    EXPECT_EQ(VornDbcsByteType("\xE0\x41", 1), VORN_DBCS_TRAIL);
    VornDbcsIsCodePageSingleByte = 1;
}

TEST_F(DoubleByte, SearchesNeverTakeATrailByteForACharacter) {
    // The backslash at index 1 is the trail byte of 0x81 0x5C.
    const char* text = "\x81\\a\\b";
    EXPECT_EQ(VornDbcs_strpbrk(text, "\\"), text + 3);
    EXPECT_EQ(VornDbcs_strlastchr("\x81\\", "\\"), 2u);
    // A double-byte character of the set matches only as a whole.
    const char* mixed = "a\\\x81\\";
    EXPECT_EQ(VornDbcs_strpbrk(mixed, "\x81\\"), mixed + 2);
    EXPECT_EQ(VornDbcs_strspn("\x81\\\x81\\x", "\x81\\"), 4u);
    EXPECT_EQ(VornDbcsCharVal(mixed, 3, "\\"), 0u);  // a trail byte
}

TEST_F(DoubleByte, ALoneLeadByteEndsEveryWalk) {
    const char* text = "aa\x81";
    EXPECT_EQ(VornDbcs_strspn(text, "a\x81"), 2u);
    EXPECT_EQ(VornDbcs_strcspn(text, "z"), 3u);
    // A set that ends in a lone lead byte ends its own walk there.
    EXPECT_EQ(VornDbcs_strpbrk("xb", "a\x81"), nullptr);
    const char* xa = "xa";
    EXPECT_EQ(VornDbcs_strpbrk(xa, "a\x81"), xa + 1);
    char trailing[] = "ab \x81";
    EXPECT_STREQ(VornDbcs_strip_trailing(trailing, " \x81"), "ab \x81");
}

TEST_F(DoubleByte, StripsLeadingAndTrailingRuns) {
    char b[] = "   ";
    char d[] = "ab\x81 ";  // the blank is a trail byte
    char e[] = "ab \x81\x40  ";
    EXPECT_STREQ(VornDbcs_strip_trailing(b, " "), "");
    EXPECT_STREQ(VornDbcs_strip_trailing(d, " "), "ab\x81 ");
    EXPECT_STREQ(VornDbcs_strip_trailing(e, " \x81\x40"), "ab");
    const char* text = "  \x81\x40 x";
    EXPECT_EQ(VornDbcs_strip_leading(text, " \x81\x40"), text + 5);
    EXPECT_EQ(VornDbcs_strip_leading(text, nullptr), text);
}

TEST_F(DoubleByte, StrtokKeepsNoStateAndClearsWholeDelimiters) {
    char text[] = ",,a,b";
    char* token = VornDbcs_strtok(text, ",");
    ASSERT_EQ(token, text + 2);
    EXPECT_STREQ(token, "a");
    EXPECT_EQ(text[3], '\0');
    token = VornDbcs_strtok(token + 2, ",");
    EXPECT_STREQ(token, "b");
    EXPECT_EQ(VornDbcs_strtok(token + 1, ","), nullptr);

    char wide[] =
        "a\x81\x40"
        "b";
    EXPECT_STREQ(VornDbcs_strtok(wide, "\x81\x40"), "a");
    EXPECT_EQ(wide[2], '\0');  // the whole delimiter is cleared
}

TEST_F(DoubleByte, StrstrStartsOnlyOnCharacters) {
    const char* text = "\x81\x41\x41z";
    EXPECT_EQ(VornDbcs_strstr(text, ""), text);
    EXPECT_EQ(VornDbcs_strstr(text, "\x41"), text + 2);
    EXPECT_EQ(VornDbcs_strstr(text, "\x41\x41"), nullptr);
    EXPECT_EQ(VornDbcs_strstr(text, "\x81"), nullptr);  // invalid first character
}

struct Parts {
    char drive[3];
    char directory[256];
    char name[256];
    char extension[256];
};

void expectParts(const char* path, const char* drive, const char* directory, const char* name,
                 const char* extension) {
    Parts p;
    std::memset(&p, 'x', sizeof p);  // every part must be written
    VornDbcs_splitpath(path, p.drive, p.directory, p.name, p.extension);
    EXPECT_STREQ(p.drive, drive) << path;
    EXPECT_STREQ(p.directory, directory) << path;
    EXPECT_STREQ(p.name, name) << path;
    EXPECT_STREQ(p.extension, extension) << path;
}

TEST(DbcsSplitpath, SplitsDriveDirectoryNameAndExtension) {
    expectParts("c:\\dir\\file.txt", "c:", "\\dir\\", "file", ".txt");
    expectParts("/usr/lib/x.y.so", "", "/usr/lib/", "x.y", ".so");
    expectParts("ab:c.d", "", "", "ab:c", ".d");  // a colon from index 2 on is no drive
    expectParts("", "", "", "", "");
    // Parts that do not fit are left out.
    expectParts((std::string(300, 'd') + "\\f.x").c_str(), "", "", "", "");
    expectParts(("d\\" + std::string(256, 'n')).c_str(), "", "d\\", "", "");

    // Outputs that are null are skipped; the rest still goes on.
    char name[256];
    char extension[256] = "stale";
    VornDbcs_splitpath("c:\\d\\n.e", nullptr, nullptr, name, nullptr);
    EXPECT_STREQ(name, "n.e");  // without an extension buffer it stays on the name
    VornDbcs_splitpath("c:\\d\\n.e", nullptr, nullptr, nullptr, extension);
    EXPECT_STREQ(extension, ".e");
}

TEST_F(DoubleByte, SplitpathTakesNoTrailByteForASeparator) {
    expectParts("c:\\\x81\\name.txt", "c:", "\\", "\x81\\name", ".txt");
    expectParts("\x81/x", "", "", "\x81/x", "");
}

}  // namespace
