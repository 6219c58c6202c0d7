#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "NlsSupport.hpp"
#include "TestTables.hpp"
#include "qarq/base/Os.hpp"
#include "qarq/vorn/vornnls1.hpp"
#include "qarq/vorn/vornnls3.hpp"
#include "qarq/vorn/vornnls6.hpp"
#include "vorn/VornNlsState.hpp"

namespace {

using qarq::test::BindirTree;
using qarq::test::ErrorLog;
using qarq::test::ScopedCwd;
using qarq::support::ScopedEnv;
using qarq::support::TempDir;

// Runs in an empty working directory with no BINDIR, so that no aliases
// file is found unless the test writes one.
class Names : public ::testing::Test {
protected:
    TempDir cwd;
    ScopedCwd inCwd{cwd.path()};
    ScopedEnv noBindir{"BINDIR", nullptr};

    std::string alias(const std::string& name, unsigned length = 128, unsigned* rc = nullptr) {
        char buffer[128] = {};
        std::strncpy(buffer, name.c_str(), sizeof buffer - 1);
        unsigned r = vornnls1_get_alias(buffer, length);
        if (rc) *rc = r;
        return buffer;
    }
    std::string tableName(const std::string& source, unsigned length = 128) {
        char buffer[128];
        std::memset(buffer, 'x', sizeof buffer);
        vornnls1_get_table_name(source.c_str(), buffer, length);
        return buffer;
    }
    void aliases(const std::string& text) { qarq::support::writeFile(cwd.path() + "/aliases", text); }
};

TEST_F(Names, TableNamesKeepDigitsAndUpperCaseLetters) {
    EXPECT_EQ(tableName("ZTH-850"), "850");
    EXPECT_EQ(tableName("zth-850"), "ZTH850");
    EXPECT_EQ(tableName(std::string(200, 'a')), std::string(127, 'A'));
    EXPECT_EQ(tableName("abcdef", 4), "ABC");
    ErrorLog log;
    EXPECT_EQ(tableName("---"), "");
    EXPECT_EQ(log.errorsOf("vornnls1_get_table_name"), 1u);
}

TEST_F(Names, AnAliasNeedsWhiteSpaceBehindItsSecondColumn) {
    unsigned rc = 0;
    EXPECT_EQ(alias("850", 128, &rc), "850");
    EXPECT_EQ(rc, 1u);  // no aliases file at all

    aliases("# site aliases\n850 850x\n850 second\n");
    EXPECT_EQ(alias("850", 128, &rc), "850x");
    EXPECT_EQ(rc, 0u);

    // The second column needs white space behind it; a comment starts in
    // column one; the left column is compared with the filtered form as it
    // stands; a line longer than 127 characters is read in pieces, its cut
    // second column does not count, and the rest is a line of its own.
    const struct {
        std::string file;
        const char* name;
        const char* expected;
    } cases[] = {
        {"850 850x", "850", "850"},
        {"  850   850x  \n", "850", "850x"},
        {"#850 850x\n", "#850", "#850"},
        {" #850 850x\n", "#850", "850x"},
        {"iso8859-1 latin\n", "ISO88591", "ISO88591"},
        {"850 " + std::string(200, 'y') + "\n" + std::string(150, 'z') + " q\n", "850", "850"},
    };
    for (const auto& c : cases) {
        aliases(c.file);
        EXPECT_EQ(alias(c.name), c.expected) << c.file;
    }
    // The replacement is cut to the buffer.
    aliases("850 verylongname\n");
    EXPECT_EQ(alias("850", 8), "verylon");
}

TEST_F(Names, BindirAliasesComeFirstWhileBindirIsShortEnough) {
    aliases("1252 FROMCWD\n");
    BindirTree tree;
    tree.put("aliases", "1252 FROMBINDIR\n");
    EXPECT_EQ(alias("1252"), "FROMBINDIR");
    EXPECT_EQ(tableName("ZTH1252"), "FROMBINDIR");

    // Length plus 34 must stay below 255.
    TempDir root;
    for (size_t length : {221u, 220u}) {
        std::string bindir = root.path() + "/" + std::string(length - root.path().size() - 1, 'b');
        std::filesystem::create_directories(bindir + "/GRV/server/codeset");
        qarq::support::writeFile(bindir + "/GRV/server/codeset/aliases", "1252 LONG\n");
        ScopedEnv env("BINDIR", bindir.c_str());
        EXPECT_EQ(alias("1252"), length == 220u ? "LONG" : "FROMCWD") << length;
    }
}

// Upper-casing shows in the alternate code set's choice (tests/nlscp).
TEST_F(Names, LangIsCWhenUnsetOrWithoutMemory) {
    {
        ScopedEnv lang("LANG", nullptr);
        vornnls1_get_lang();
        EXPECT_STREQ(qarq::vorn::nls::lang(), "C");
        EXPECT_STREQ(getenv("LANG"), "C");
    }
    {
        ScopedEnv lang("LANG", "de_DE.UTF-8");
        static auto malloc = [](size_t) -> void* { return nullptr; };
        qarq::os::ScopedOsCall noMemory(&qarq::os::Calls::malloc, +malloc);
        vornnls1_get_lang();
        EXPECT_STREQ(qarq::vorn::nls::lang(), "C");  // keeps the old value
    }
}

TEST_F(Names, TheAnsiCodePageComesFromTheLocale) {
    ScopedEnv all("LC_ALL", nullptr), ctype("LC_CTYPE", nullptr);
    auto page = [](const char* lang) {
        ScopedEnv env("LANG", lang);
        char name[128];
        vornnls1_get_cs_name(name, sizeof name);
        return std::string(name);
    };
    const std::pair<const char*, const char*> cases[] = {
        {nullptr, "1252"},     {"en_US.UTF-8", "65001"},     {"ja_JP.eucJP", "932"},
        {"zh_TW.Big5", "950"}, {"pl_PL.ISO-8859-2", "1250"}, {"th_TH", "874"}};
    for (auto [lang, expected] : cases)
        EXPECT_EQ(page(lang), expected) << (lang ? lang : "-");
    {
        ScopedEnv over("LC_CTYPE", "ru_RU");
        EXPECT_EQ(page("de_DE"), "1251");
    }
    char small[4] = "xyz";
    ScopedEnv lang("LANG", "de_DE");
    EXPECT_EQ(vornnls1_get_cs_name(small, 4), 0u);
    EXPECT_STREQ(small, "");  // "1252" and its NUL need 5 bytes
}

// Initialisation: the machine's table through the aliases, "DEFAULT", or
// the built-in pass-through. The alternate code set is checked through its
// user, VornNlsTranslateCp (tests/nlscp).
class Defaults : public Names {
protected:
    ScopedEnv all{"LC_ALL", nullptr}, ctype{"LC_CTYPE", nullptr};
    void SetUp() override { reset(); }
    void TearDown() override { reset(); }
    static void reset() {
        vornnls6_tis_cs_free(nullptr, 1);
        vornnls6_tis_cs_free(nullptr, 2);
        *def_cs = VornNlsCodeSet{nullptr, 6, 0, 0, 0, {}, 0, 0, 0};
        *def_2_cs = VornNlsCodeSet{nullptr, 6, 0, 0, 0, {}, 0, 0, 0};
    }
    static std::string convert(const std::string& in) { return qarq::test::toUtf8(nullptr, in); }
};

TEST_F(Defaults, TheMachineTableComesThroughTheAliases) {
    BindirTree tree;
    ScopedEnv lang("LANG", "C");
    tree.put("aliases", "1252 HOST37\n");
    tree.put("HOST37", qarq::test::ebcdicSbcs().bytes());
    EXPECT_EQ(convert("\xC1\xC2"), "AB");  // first conversion initialises
    EXPECT_EQ(def_2_cs->table, nullptr);

    // Freeing the alternate leaves the default; freeing the default with 1
    // makes the next conversion load it again.
    vornnls6_tis_cs_free(nullptr, 2);
    EXPECT_TRUE(qarq::vorn::nls::tisInitialised());
    vornnls6_tis_cs_free(nullptr, 1);
    EXPECT_FALSE(qarq::vorn::nls::tisInitialised());
    tree.put("aliases", "1252 LATIN\n");
    tree.put("LATIN", qarq::test::asciiSbcs().bytes());
    EXPECT_EQ(convert("\xC1\x80"), "\xC3\x81\xE2\x82\xAC");
}

TEST_F(Defaults, WithoutTheTableDefaultThenPassThrough) {
    BindirTree tree;
    ScopedEnv lang("LANG", "en_US.UTF-8");  // 65001, no alias, no table
    tree.put("DEFAULT", qarq::test::ebcdicSbcs().bytes());
    vornnls1_tis_init();
    EXPECT_EQ(convert("\xC1"), "A");
    reset();
    std::filesystem::remove(tree.codeset() + "DEFAULT");
    vornnls1_tis_init();
    EXPECT_EQ(def_cs->kind, 6);
    EXPECT_EQ(convert("\xC1"), "\xC1");
    // The site maps 65001 to UTF8: kind 6 with no file.
    reset();
    tree.put("aliases", "65001 UTF8\n");
    vornnls1_tis_init();
    EXPECT_EQ(def_cs->kind, 6);
    EXPECT_EQ(def_cs->state, 0);
}

TEST_F(Defaults, AHostileMachineTableLeavesTheDefault) {
    BindirTree tree;
    ScopedEnv lang("LANG", "C");
    qarq::test::UcvImage bad = qarq::test::sampleMbcs();
    bad.byteClass(0xC0, 0);
    tree.put("1252", bad.bytes());
    tree.put("DEFAULT", qarq::test::asciiSbcs().bytes());
    ErrorLog log;
    vornnls1_tis_init();
    EXPECT_TRUE(log.errorsOf("vornnls2_load_table") != 0);
    EXPECT_EQ(def_cs->kind, 1);
    EXPECT_EQ(convert("\x80"), "\xE2\x82\xAC");
}

TEST_F(Defaults, SettingADefaultMovesTheTableAndFreesTheOldOne) {
    qarq::test::Record first = qarq::test::load(qarq::test::asciiSbcs());
    qarq::test::Record second = qarq::test::load(qarq::test::ebcdicSbcs());
    vornnls6_tis_set_def_cs(first.get(), 1);
    EXPECT_EQ(def_cs->table, first->table);
    qarq::os::calls().free(first.release());  // the record only
    vornnls6_tis_set_def_cs(second.get(), 1);  // frees the first table (ASan checks)
    EXPECT_EQ(def_cs->table, second->table);
    qarq::os::calls().free(second.release());
    qarq::vorn::nls::tisInitialised() = true;
    EXPECT_EQ(convert("\xC1"), "A");
}

}  // namespace
