#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "qarq/base/Os.hpp"
#include "qarq/ras/HeskLog.hpp"
#include "qarq/vorn/VornDbcs.hpp"
#include "qarq/vorn/VornNlsTranslateCp.hpp"
#include "qarq/vorn/vornnls1.hpp"
#include "qarq/vorn/vornnls3.hpp"
#include "qarq/vorn/vornnls6.hpp"
#include "support/CodesetTree.hpp"
#include "support/TestSupport.hpp"
#include "vorn/VornDbcsInternal.hpp"
#include "vorn/VornNlsTranslateCpInternal.hpp"

namespace {

using namespace qarq::vorn::translate;
using ErrorLog = qarq::support::Records;
using qarq::support::ScopedEnv;

// The table files opened while the test runs, by file name.
std::vector<std::string> gOpened;

int recordingOpen(const char* path, int flags, mode_t mode) {
    const char* slash = std::strrchr(path, '/');
    gOpened.emplace_back(slash != nullptr ? slash + 1 : path);
    return qarq::os::realCalls().open(path, flags, mode);
}

size_t gFailingSize = 0;
void* mallocFailingOneSize(size_t size) {
    return size == gFailingSize ? nullptr : qarq::os::realCalls().malloc(size);
}

// The pairs of each error that `function` logged.
std::vector<std::vector<std::string>> errorsOf(const ErrorLog& log, const std::string& function) {
    std::vector<std::vector<std::string>> found;
    for (const auto& record : log.errors(function)) found.push_back(record.pairs);
    return found;
}

std::string int32Bytes(int32_t value) {
    return std::string(reinterpret_cast<char*>(&value), 4);
}

class TranslateCp : public ::testing::Test {
  protected:
    TranslateCp()
        : tree_({"37", "500", "850", "1252", "932", "949"}),
          lcAll_("LC_ALL", nullptr),
          lcCtype_("LC_CTYPE", nullptr),
          lang_("LANG", "en_US"),
          host_("KS390CODEPAGE", nullptr),
          open_(&qarq::os::Calls::open, recordingOpen) {
        gOpened.clear();
    }
    ~TranslateCp() override {
        VornNlsTranslateCpTerminate();
        gKs390_cp = 0;
        gNumbOfCpLoads = 0;
        VornDbcsIsCodePageSingleByte = 1;
    }

    qarq::test::CodesetTree tree_;
    ScopedEnv lcAll_;
    ScopedEnv lcCtype_;
    ScopedEnv lang_;
    ScopedEnv host_;
    qarq::os::ScopedOsCall<int (*)(const char*, int, mode_t)> open_;
};

TEST_F(TranslateCp, HostCodePageComesFromTheEnvironmentAndLasts) {
    unsigned short codePage = 0;
    VornNlsTranslateCpInitialization(0, nullptr);
    EXPECT_EQ(gKs390_cp, 0);
    EXPECT_EQ(gOpened, std::vector<std::string>{"1252"});  // the default only

    gOpened.clear();
    VornNlsTranslateCpInitialization(0, &codePage);
    EXPECT_EQ(codePage, 37);
    EXPECT_EQ(gOpened, std::vector<std::string>{"37"});

    // The host code set lasts: no load on a second start or a translation.
    gOpened.clear();
    VornNlsTranslateCpInitialization(0, &codePage);
    char target[8];
    EXPECT_EQ(VornNlsTranslateCpString(0, 37, "\xC1\xC2\xC3", 0, sizeof target, target), 1);
    EXPECT_EQ(std::string(target), "ABC");
    EXPECT_TRUE(gOpened.empty());

    // After termination the number stays, and the environment is read again.
    VornNlsTranslateCpTerminate();
    EXPECT_EQ(gKs390_cp, 37);
    ScopedEnv host("KS390CODEPAGE", "500");
    gOpened.clear();
    VornNlsTranslateCpInitialization(0, &codePage);
    EXPECT_EQ(codePage, 500);
    EXPECT_EQ(gOpened, (std::vector<std::string>{"1252", "500"}));
}

TEST_F(TranslateCp, EveryOtherCodePageIsLoadedPerCallAndCounted) {
    unsigned short codePage = 0;
    VornNlsTranslateCpInitialization(0, &codePage);
    gOpened.clear();
    ErrorLog log;
    char target[8];
    for (int call = 1; call <= 50; ++call) {
        ASSERT_EQ(VornNlsTranslateCpString(0, 1252, "caf\xE9", 850, sizeof target, target), 1);
    }
    EXPECT_EQ(std::string(target), "caf\x82");
    EXPECT_EQ(gOpened.size(), 100u);  // loaded and freed again every time
    EXPECT_TRUE(log.ofKind(HESK_RECORD_ERROR).empty());

    EXPECT_EQ(VornNlsTranslateCpString(0, 1252, "caf\xE9", 850, sizeof target, target), 1);
    EXPECT_EQ(errorsOf(log, "VornNlsTranslateCpString"),
              (std::vector<std::vector<std::string>>{{int32Bytes(102), int32Bytes(1252)}}));
    EXPECT_EQ(gNumbOfCpLoads, 0);

    // A page without a table still counts; the default code set stands in.
    EXPECT_EQ(VornNlsTranslateCpString(0, 1, "abc", 0, sizeof target, target), 1);
    EXPECT_EQ(gNumbOfCpLoads, 1);
}

TEST_F(TranslateCp, TargetSizeBoundsTheTextAtACharacter) {
    char target[8] = "zzzzzzz";
    // Equal code pages: a plain copy when the text and its NUL fit.
    EXPECT_EQ(VornNlsTranslateCpString(0, 850, "abcd", 850, 4, target), 0);
    EXPECT_EQ(std::string(target), "zzzzzzz");
    EXPECT_EQ(VornNlsTranslateCpString(0, 850, "abcd", 850, 5, target), 1);
    EXPECT_EQ(std::string(target), "abcd");

    // Three double-byte characters; room for two and the terminator.
    std::memset(target, 'z', sizeof target);
    EXPECT_EQ(VornNlsTranslateCpString(0, 932, "\x82\xA0\x82\xA2\x82\xA4", 949, 6, target), 1);
    EXPECT_EQ(std::string(target), "\xAA\xA2\xAA\xA4");
    EXPECT_EQ(target[6], 'z');  // nothing behind targetSize
}

TEST_F(TranslateCp, FailuresAreLoggedAndLeaveTheTarget) {
    ScopedEnv lang("LANG", "FR_FR");
    VornNlsTranslateCpInitialization(0, nullptr);
    ErrorLog log;
    char target[8] = "zzzzzzz";
    EXPECT_EQ(VornNlsTranslateCpString(0, 1252, "a", 850, 8, nullptr), 0);
    VornNlsTranslateCpRequest request = {"abc", sizeof target, nullptr};
    EXPECT_EQ(VornNlsTranslateCp(&request), 0);

    // No memory for the UTF-8 work buffer: three bytes per source byte and one.
    const std::string text(20, 'x');
    gFailingSize = text.size() * 3 + 1;
    qarq::os::ScopedOsCall noMemory(&qarq::os::Calls::malloc, mallocFailingOneSize);
    EXPECT_EQ(VornNlsTranslateCpString(0, 1252, text.c_str(), 850, 8, target), 0);
    request = {text.c_str(), sizeof target, target};
    EXPECT_EQ(VornNlsTranslateCp(&request), 0);
    EXPECT_EQ(std::string(target), "zzzzzzz");
    EXPECT_EQ(errorsOf(log, "VornNlsTranslateCpString").back()[1], text);
    EXPECT_EQ(errorsOf(log, "VornNlsTranslateCp").back()[1], text);
}

TEST_F(TranslateCp, AlternateCodeSetServesOnlyTheFrenchAndBrazilianLocales) {
    char target[8] = "zzzzzzz";
    VornNlsTranslateCpRequest request = {"caf\xE9", sizeof target, target};
    for (const char* locale : {"FR_CA", "fr_FR.UTF-8"}) {
        ScopedEnv lang("LANG", locale);
        VornNlsTranslateCpInitialization(0, nullptr);
        EXPECT_EQ(VornNlsTranslateCpEnabled(), 0) << locale;
        EXPECT_EQ(VornNlsTranslateCp(&request), 2);
        VornNlsTranslateCpTerminate();
    }

    for (const char* locale : {"FR_FR", "pt_BR"}) {
        ScopedEnv lang("LANG", locale);
        VornNlsTranslateCpInitialization(0, nullptr);
        EXPECT_EQ(VornNlsTranslateCpEnabled(), 1) << locale;
        request.targetSize = 3;
        EXPECT_EQ(VornNlsTranslateCp(&request), 1);
        EXPECT_EQ(std::string(target), "ca");
        VornNlsTranslateCpTerminate();
    }
}

TEST_F(TranslateCp, TerminateFreesAllAndTheDefaultComesBackLazily) {
    ScopedEnv lang("LANG", "FR_FR");
    unsigned short codePage = 0;
    VornNlsTranslateCpInitialization(0, &codePage);
    VornNlsTranslateCpTerminate();
    EXPECT_EQ(def_cs->table, nullptr);

    gOpened.clear();
    char utf8[8] = {};
    EXPECT_EQ(vornnls3_tis_to_utf8(nullptr, "\xE9", -1, utf8, sizeof utf8), 3u);
    EXPECT_EQ(std::string(utf8), "\xC3\xA9");
    EXPECT_EQ(gOpened, (std::vector<std::string>{"1252", "850"}));
    EXPECT_EQ(VornNlsTranslateCpEnabled(), 1);
}

TEST_F(TranslateCp, ResetReplacesTheHostCodeSet) {
    unsigned short codePage = 0;
    VornNlsTranslateCpInitialization(0, &codePage);
    unsigned short current = 1234;
    gOpened.clear();
    VornNlsResetKS390Cp(37, &current);
    EXPECT_EQ(current, 37);
    EXPECT_TRUE(gOpened.empty());

    VornNlsResetKS390Cp(500, &current);
    EXPECT_EQ(current, 500);
    EXPECT_EQ(gOpened, std::vector<std::string>{"500"});
    char target[4];
    EXPECT_EQ(VornNlsTranslateCpString(0, 0, "!", 500, sizeof target, target), 1);
    EXPECT_EQ(std::string(target), "\x4F");  // 37 has it at 0x5A

    // A page without a table: the number stands, the default serves.
    VornNlsResetKS390Cp(1, &current);
    EXPECT_EQ(gKs390_cp, 1);
    EXPECT_EQ(VornNlsTranslateCpString(0, 0, "!", 1, sizeof target, target), 1);
    EXPECT_EQ(std::string(target), "!");
}

TEST_F(TranslateCp, DoubleByteFlagFollowsTheDefaultLoadedAtStartUp) {
    ScopedEnv japanese("LC_ALL", "ja_JP.SJIS");
    // As at process start: the built-in pass-through default, no flag yet.
    ASSERT_EQ(def_cs->table, nullptr);
    def_cs->kind = 6;
    qarq::vorn::dbcs::dbcsInitialised = 0;

    // The table-name filter is the first user of the string functions: the
    // flag is settled from the built-in default, single-byte.
    char name[128];
    vornnls1_get_table_name(
        "ZTH-9\x82\xA0"
        "32",
        name, sizeof name);
    EXPECT_STREQ(name, "932");
    EXPECT_EQ(qarq::vorn::dbcs::dbcsInitialised.load(), 1);
    EXPECT_EQ(VornDbcsIsCodePageSingleByte.load(), 1);
    EXPECT_EQ(VornDbcsByteType("\x82\xA0", 0), VORN_DBCS_SINGLE);

    // Start-up loads the real default (double-byte) and settles it again.
    VornNlsTranslateCpInitialization(0, nullptr);
    EXPECT_EQ(VornNlsIsServerSBCS(), 1);
    EXPECT_EQ(VornDbcsIsCodePageSingleByte.load(), 0);
    EXPECT_EQ(VornDbcsByteType("\x82\xA0", 0), VORN_DBCS_LEAD);
}

}  // namespace
