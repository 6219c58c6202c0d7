#include <gtest/gtest.h>

#include <cerrno>
#include <map>
#include <set>

#include "RasTestSupport.hpp"
#include "qarq/base/Os.hpp"

namespace {

using rastest::Capture;
using rastest::Child;
using rastest::ScopedEnv;
using rastest::TempDir;

bool validUtf8(const std::string& s) {
    for (size_t i = 0; i < s.size();) {
        unsigned char c = static_cast<unsigned char>(s[i]);
        size_t n = c < 0x80 ? 1 : (c >> 5) == 6 ? 2 : (c >> 4) == 14 ? 3 : (c >> 3) == 30 ? 4 : 0;
        if (n == 0 || i + n > s.size() || (n == 2 && c < 0xc2)) return false;
        for (size_t k = 1; k < n; ++k)
            if ((static_cast<unsigned char>(s[i + k]) & 0xc0) != 0x80) return false;
        i += n;
    }
    return true;
}

class Records : public ::testing::Test {
protected:
    TempDir dir_;
    std::string log_ = dir_ / "qarzras.log";
    ScopedEnv env_{"QARZ_LOG_FILE", log_.c_str()};
};

TEST_F(Records, EveryServiceReachesSinkAndLogWithAllFields) {
    Capture capture;
    int32_t number = 0x01020304;
    HESKTRACE("Vorn::trace", 11, HESK_TRACE_ENTRY, 3, 2, "abc", 3u, &number, 4u);
    HESKLOGERROR("Vorn::log", 7, 9, 12, 3, 1, "bad \"x\"", 7u);
    HESKISSUEERROR("vornprop.cpp", 13, 4001, "qarz.dll", 4, 2, "auditLog", "17");
    HeskLogMsgNumber("VORNPROP_DisplayConfigProp", 14, 2271, "qarz.dll", "maxThreads", "20");

    auto records = capture.all();
    ASSERT_EQ(records.size(), 4u);
    auto lines = rastest::readLines(log_);
    ASSERT_EQ(lines.size(), 4u);
    for (size_t i = 0; i < 4; ++i)
        EXPECT_EQ(lines[i], records[i].logLine) << "the sink sees the line the log gets";

    // The line carries every field; the record the raw pairs and the texts.
    const char* const tails[] = {
        " TRACE Vorn::trace:11 kind=1 level=3 p1=\"abc\" p2=0x04030201",
        " ERROR Vorn::log:12 codes=7,9 level=3 p1=\"bad \\\"x\\\"\"",
        " ISSUE vornprop.cpp:13 msg=4001 sev=4 module=qarz.dll i1=\"auditLog\" i2=\"17\" "
        "text=\"Unknown keyword auditLog on line 17 of the server properties file; the line is "
        "ignored.\"",
        " MSG VORNPROP_DisplayConfigProp:14 msg=2271"};
    for (size_t i = 0; i < 4; ++i)
        EXPECT_NE(lines[i].find(tails[i]), std::string::npos) << lines[i];
    EXPECT_EQ(records[0].pairs[1], std::string(reinterpret_cast<char*>(&number), 4));
    EXPECT_EQ(records[1].code2, 9);
    EXPECT_EQ(records[2].inserts, (std::vector<std::string>{"auditLog", "17"}));
    EXPECT_EQ(records[3].text, "Server setting maxThreads is 20");
}

TEST_F(Records, HostileArgumentsAreRenderedSafelyAndCapped) {
    Capture capture;
    std::vector<char> big(4096, 'q');
    const char notUtf8[] = "ab\xff\xfe";
    const char overlong[] = "\xc0\xaf";
    const char surrogate[] = "\xed\xa0\x80";
    std::string accented = "a";
    for (int i = 0; i < 200; ++i) accented += "\xc3\xa9";  // the cut falls inside a character
    std::string hugeInsert(1 << 20, 'i');

    HESKTRACE(nullptr, 1, HESK_TRACE_DATA, 3, 3, nullptr, 5u, "", 0u, big.data(), 3000000000u);
    HeskTraceV("negative", 3, HESK_TRACE_DATA, 3, -7, nullptr);
    HESKLOGERROR("bad\xff name", 0, 0, 4, 3, 4, notUtf8, 4u, overlong, 2u, surrogate, 3u,
                 accented.data(), static_cast<unsigned>(accented.size()));
    HESKISSUEERROR(nullptr, 5, 4001, nullptr, 4, 2, nullptr, hugeInsert.c_str());
    HESKISSUEERROR("f", 6, 99999, "qarz.dll", 4, 0);
    std::vector<HeskPair> many(1000, qarq::ras::pair("m"));
    HeskTraceV("many", 7, HESK_TRACE_LOOP, 3, 1000, many.data());

    auto records = capture.all();
    ASSERT_EQ(records.size(), 6u);
    for (const auto& r : records) {
        EXPECT_LE(r.logLine.size(), 4095u);
        EXPECT_TRUE(validUtf8(r.logLine)) << r.logLine;
    }
    EXPECT_EQ(records[0].function, "");
    EXPECT_NE(records[0].logLine.find(" p1=(null) p2=\"\" p3=\"" + std::string(256, 'q') +
                                      "\"...(3000000000 bytes)"),
              std::string::npos);
    EXPECT_EQ(records[1].pairs.size(), 0u);
    const std::string& mixed = records[2].logLine;
    EXPECT_NE(mixed.find("bad\\xff name:4"), std::string::npos) << mixed;
    EXPECT_NE(mixed.find(" p1=0x6162fffe p2=0xc0af p3=0xeda080 p4=\"a\xc3\xa9"),
              std::string::npos)
        << mixed;
    EXPECT_NE(mixed.find("...(401 bytes)"), std::string::npos);
    EXPECT_LE(records[3].text.size(), 2048u) << "an insert is cut before it fills the text";
    EXPECT_NE(records[4].text.find("99999"), std::string::npos);
    EXPECT_EQ(records[5].pairs.size(), 64u);
}

TEST_F(Records, UnopenableLogFallsBackToStderrNotedOnce) {
    // Standard error goes to a file for the duration, to see what lands there.
    std::string errPath = dir_ / "stderr";
    int saved = ::dup(STDERR_FILENO);
    int errFd = ::open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    ASSERT_GE(errFd, 0);
    ::dup2(errFd, STDERR_FILENO);
    ::close(errFd);
    std::vector<rastest::Captured> notes;
    {
        Capture capture;
        {
            auto failing = +[](const char*, int, mode_t) -> int {
                errno = EACCES;
                return -1;
            };
            qarq::os::ScopedOsCall refuse(&qarq::os::Calls::open, failing);
            HeskLogReopen();
            HESKLOGERROR("first", 1, 0, 1, 3, 0);
            HESKLOGERROR("second", 2, 0, 2, 3, 0);
        }
        {
            ScopedEnv missing("QARZ_LOG_FILE", (dir_ / "no/such/dir.log").c_str());
            HESKLOGERROR("third", 3, 0, 3, 3, 0);
        }
        notes = capture.ofKind(HESK_RECORD_NOTE);
    }
    ::dup2(saved, STDERR_FILENO);
    ::close(saved);

    ASSERT_EQ(notes.size(), 2u) << "one note per fallback, not one per record";
    EXPECT_NE(notes[0].text.find("cannot open log " + log_), std::string::npos) << notes[0].text;
    EXPECT_NE(notes[0].text.find("Permission denied"), std::string::npos);
    EXPECT_NE(notes[1].text.find("No such file or directory"), std::string::npos);
    std::string err = rastest::readFile(errPath);
    for (const char* expected : {"first:1", "second:2", "third:3", "cannot open log"})
        EXPECT_NE(err.find(expected), std::string::npos) << expected;
    EXPECT_EQ(rastest::readFile(log_), "") << "nothing reached the log it could not open";
}

TEST_F(Records, TraceSettingsComeFromTheEnvironment) {
    Capture capture;
    TraceControl* control = nullptr;
    {
        ScopedEnv mask("QARZ_TRACE_MASK_RASBAD", "zz9");
        HESKINITTRACE("RASBAD", "", &control);
        EXPECT_EQ(control, nullptr);
    }
    auto notes = capture.ofKind(HESK_RECORD_NOTE);
    ASSERT_EQ(notes.size(), 1u);
    EXPECT_NE(notes[0].text.find("malformed trace mask \"zz9\""), std::string::npos);
    {
        ScopedEnv mask("QARZ_TRACE_MASK", "0x4600");
        ScopedEnv level("QARZ_TRACE_LEVEL_RASGOOD", "5");
        HESKINITTRACE("RASGOOD", "", &control);
        ASSERT_NE(control, nullptr);
        EXPECT_EQ(control->mask, 0x4600u);
        EXPECT_EQ(control->level, 5u);
    }
}

TEST_F(Records, FlushMakesTheLogDurableAndRecordsStillWorkAtDetach) {
    static int syncs;
    syncs = 0;
    HESKTRACE("before", 1, HESK_TRACE_DATA, 3, 0);
    {
        qarq::os::ScopedOsCall count(&qarq::os::Calls::fsync, +[](int) {
            ++syncs;
            return 0;
        });
        HESKFLUSHTRACE();
    }
    EXPECT_EQ(syncs, 1);
    HESKTRACE("after", 2, HESK_TRACE_DATA, 3, 0);
    EXPECT_EQ(rastest::readLines(log_).size(), 2u);

    Child child({"record-at-exit"});
    EXPECT_EQ(child.wait(), 0);
    auto lines = rastest::readLines(log_);
    ASSERT_EQ(lines.size(), 3u);
    EXPECT_NE(lines[2].find("TRACE child::detach:9 kind=2 level=3 p1=\"late\""),
              std::string::npos);
}

// 4 processes x 2 threads write long records at once: every line is whole and
// none is lost.
TEST_F(Records, ConcurrentProcessesAndThreadsNeverInterleave) {
    constexpr int kProcesses = 4, kPerThread = 1000;
    {
        int go[2];
        ASSERT_EQ(::pipe(go), 0);
        std::vector<std::unique_ptr<Child>> children;
        for (int p = 0; p < kProcesses; ++p)
            children.push_back(std::make_unique<Child>(
                std::vector<std::string>{"records", "proc" + std::to_string(p),
                                         std::to_string(kPerThread), std::to_string(go[0]),
                                         std::to_string(go[1])},
                true));
        for (auto& child : children) EXPECT_TRUE(child->waitReady(60000));
        ::close(go[1]);  // all start now
        ::close(go[0]);
        for (auto& child : children) EXPECT_EQ(child->wait(120000), 0);
    }
    auto lines = rastest::readLines(log_);
    EXPECT_EQ(lines.size(), size_t{kProcesses * 2 * kPerThread});
    std::set<std::string> seen;
    std::set<long> pids;
    size_t torn = 0;
    std::string firstTorn;
    for (const auto& line : lines) {
        long pid = 0;
        char kind[16] = {};
        size_t proc = line.find(" p1=\"proc");
        size_t id = line.find(" p2=\"t=");
        bool whole = line.size() > 25 &&
                     std::sscanf(line.c_str() + 25, "%ld %*d %15s", &pid, kind) == 2 &&
                     std::strcmp(kind, "ERROR") == 0 && proc != std::string::npos &&
                     id != std::string::npos && line.size() > id + 8;
        if (whole) {
            std::string filler(250, static_cast<char>('a' + (line[id + 7] - '0')));
            std::string tail = " p3=\"" + filler + "\" p4=\"" + filler + "\" p5=\"" + filler + "\"";
            whole = line.size() >= tail.size() &&
                    line.compare(line.size() - tail.size(), tail.size(), tail) == 0;
        }
        if (!whole) {
            if (torn++ == 0) firstTorn = line.substr(0, 300);
            continue;
        }
        pids.insert(pid);
        std::string key = line.substr(proc + 5, 6) + line.substr(id, line.find('"', id + 5) - id);
        EXPECT_TRUE(seen.insert(key).second) << "twice: " << key;
    }
    EXPECT_EQ(torn, 0u) << "first torn line: " << firstTorn;
    EXPECT_EQ(pids.size(), size_t{kProcesses});
    EXPECT_EQ(seen.size(), lines.size());
}

}  // namespace
