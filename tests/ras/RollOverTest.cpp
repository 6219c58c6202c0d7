#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <set>

#include "RasTestSupport.hpp"
#include "qarq/base/Os.hpp"

namespace {

namespace fs = std::filesystem;
using rastest::Capture;
using rastest::ScopedEnv;
using rastest::TempDir;

// Every roll-over in these tests happens at the same second.
constexpr time_t kNow = 1767323045;  // 2026-01-02, early morning in every time zone
int fixedClock(clockid_t, struct timespec* now) {
    now->tv_sec = kNow;
    now->tv_nsec = 0;
    return 0;
}

std::string stamp() {
    struct tm local = {};
    time_t t = kNow;
    localtime_r(&t, &local);
    char text[32];
    std::strftime(text, sizeof text, "%Y%m%d-%H%M%S", &local);
    return text;
}

bool heldOpen(const std::string& path) {
    std::error_code ec;
    for (const auto& fd : fs::directory_iterator("/proc/self/fd", ec)) {
        std::error_code ignored;
        if (fs::read_symlink(fd.path(), ignored) == path) return true;
    }
    return false;
}

std::set<std::string> filesIn(const std::string& dir) {
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(dir)) names.insert(entry.path().filename());
    return names;
}

class RollOver : public ::testing::Test {
protected:
    TempDir root_;
    ScopedEnv bindir_{"BINDIR", root_.path().c_str()};
    ScopedEnv keep_{"QARZ_LOG_KEEP", nullptr};
    ScopedEnv log_{"QARZ_LOG_FILE", (root_ / "qarzras.log").c_str()};
    std::string dir_ = root_.path() + "/GRV/server/log";
    std::string current_ = dir_ + "/qaraudit.xml";
    qarq::os::ScopedOsCall<int (*)(clockid_t, struct timespec*)> clock_{
        &qarq::os::Calls::clock_gettime, fixedClock};

    void SetUp() override { fs::create_directories(dir_); }
    std::string archive(const std::string& suffix = "") {
        return "qaraudit." + stamp() + suffix + ".xml";
    }
};

TEST_F(RollOver, ArchivesUnderTimeStampedNamesAndHoldsTheNewFileOpen) {
    for (const char* suffix : {"", "-1", "-2"}) {
        std::string content = std::string("<auditLog>") + suffix + std::string(100, 'x');
        rastest::writeFile(current_, content);
        FILE* file = nullptr;
        ASSERT_EQ(HeskOpenRetry("qaraudit", 50, &file), 0);
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(rastest::readFile(dir_ + "/" + archive(suffix)), content)
            << "an existing archive of the same second is never replaced";
        EXPECT_EQ(fs::file_size(current_), 0u);
        EXPECT_TRUE(heldOpen(current_));
        ASSERT_GE(std::fputs("<head/>", file), 0);
        EXPECT_EQ(HeskFileClose(file), 0);
        EXPECT_FALSE(heldOpen(current_));
        EXPECT_EQ(rastest::readFile(current_), "<head/>") << "the file word wrote to the new log";
    }
    EXPECT_EQ(filesIn(dir_).size(), 4u);
}

TEST_F(RollOver, FileNotAboveTheLimitOrMissingIsNotArchived) {
    rastest::writeFile(current_, std::string(50, 'x'));
    FILE* file = nullptr;
    ASSERT_EQ(HeskOpenRetry("qaraudit", 50, &file), 0) << "equal to the limit stays";
    EXPECT_TRUE(heldOpen(current_));
    EXPECT_EQ(HeskFileClose(file), 0);
    EXPECT_EQ(filesIn(dir_), std::set<std::string>{"qaraudit.xml"});

    fs::remove(current_);
    ASSERT_EQ(HeskOpenRetry("qaraudit", -5, &file), 0) << "a missing log starts empty";
    EXPECT_EQ(HeskFileClose(file), 0);
    EXPECT_EQ(filesIn(dir_).size(), 1u) << "an empty file is never archived";
}

TEST_F(RollOver, RetentionDeletesTheOldestArchivesOnly) {
    ScopedEnv keep("QARZ_LOG_KEEP", "3");
    const std::set<std::string> bystanders = {"qaraudit.xml.bak", "other.20200101-000000.xml",
                                              "qaraudit.20200101-000000-01.xml"};
    for (const auto& name : bystanders) rastest::writeFile(dir_ + "/" + name, "keep me");
    for (const char* name :
         {"qaraudit.20200101-000000.xml", "qaraudit.20200101-000000-2.xml",
          "qaraudit.20200101-000000-10.xml", "qaraudit.20210101-000000.xml"})
        rastest::writeFile(dir_ + "/" + name, "old");
    rastest::writeFile(current_, "current log");

    FILE* file = nullptr;
    ASSERT_EQ(HeskOpenRetry("qaraudit", 1, &file), 0);
    EXPECT_EQ(HeskFileClose(file), 0);
    std::set<std::string> expected = bystanders;
    expected.insert({"qaraudit.xml", "qaraudit.20200101-000000-10.xml",
                     "qaraudit.20210101-000000.xml", archive()});
    EXPECT_EQ(filesIn(dir_), expected) << "-10 is newer than -2";
}

TEST_F(RollOver, HostileNamesAndMissingPlacesAreRefused) {
    rastest::writeFile(current_, std::string(100, 'x'));
    FILE* file = reinterpret_cast<FILE*>(0x1);
    for (const char* name :
         {"../qaraudit", "..", "", "caf\xc3\xa9", static_cast<const char*>(nullptr)}) {
        EXPECT_EQ(HeskOpenRetry(name, 1, &file), EINVAL) << (name ? name : "(null)");
        EXPECT_EQ(file, nullptr);
    }
    EXPECT_EQ(filesIn(dir_), std::set<std::string>{"qaraudit.xml"}) << "nothing was touched";
    {
        ScopedEnv longBindir("BINDIR", std::string(5000, 'b').c_str());
        EXPECT_EQ(HeskOpenRetry("qaraudit", 1, &file), ENAMETOOLONG);
    }
    fs::create_directory(dir_ + "/dirlog.xml");
    EXPECT_EQ(HeskOpenRetry("dirlog", 1, &file), EISDIR);
    fs::remove_all(dir_);
    EXPECT_EQ(HeskOpenRetry("qaraudit", 1, &file), ENOENT);
    EXPECT_EQ(file, nullptr);
    EXPECT_EQ(HeskFileClose(nullptr), EBADF);
}

TEST_F(RollOver, FailuresAreCodesAndLeaveTheLogAsItWas) {
    rastest::writeFile(current_, "current log");
    FILE* file = nullptr;
    {
        qarq::os::ScopedOsCall refuse(&qarq::os::Calls::renameNoReplace,
                                      +[](const char*, const char*) {
                                          errno = EACCES;
                                          return -1;
                                      });
        EXPECT_EQ(HeskOpenRetry("qaraudit", 1, &file), EACCES);
        EXPECT_EQ(file, nullptr);
    }
    EXPECT_EQ(rastest::readFile(current_), "current log");
    {
        qarq::os::ScopedOsCall refuse(&qarq::os::Calls::fopen, +[](const char*, const char*) {
            errno = EMFILE;
            return static_cast<FILE*>(nullptr);
        });
        EXPECT_EQ(HeskOpenRetry("qaraudit", 1, &file), EMFILE);
        EXPECT_EQ(file, nullptr);
    }
    {
        // A directory that cannot be listed costs the pruning, not the roll-over.
        Capture capture;
        rastest::writeFile(current_, "current log");
        qarq::os::ScopedOsCall refuse(&qarq::os::Calls::opendir, +[](const char*) {
            errno = EACCES;
            return static_cast<DIR*>(nullptr);
        });
        ASSERT_EQ(HeskOpenRetry("qaraudit", 1, &file), 0);
        EXPECT_EQ(HeskFileClose(file), 0);
        ASSERT_EQ(capture.ofKind(HESK_RECORD_NOTE).size(), 1u);
    }
    ASSERT_EQ(HeskOpenRetry("qaraudit", 1, &file), 0);
    qarq::os::ScopedOsCall failClose(&qarq::os::Calls::fclose, +[](FILE* f) {
        std::fclose(f);
        errno = EIO;
        return EOF;
    });
    EXPECT_EQ(HeskFileClose(file), EIO);
}

}  // namespace
