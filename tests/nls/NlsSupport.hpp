// Helpers of the code-set tests: a temporary BINDIR tree, a scoped working
// directory, records loaded from UcvImage, and a sink that collects the
// errors the library logs. Environment variables, temporary directories and
// files come from the shared test support.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "TableWriter.hpp"
#include "qarq/ras/HeskLog.hpp"
#include "qarq/vorn/vornnls2.hpp"
#include "qarq/vorn/vornnls6.hpp"
#include "support/TestSupport.hpp"

namespace qarq::test {

/// Table images are byte vectors; the shared helper writes strings.
inline void writeFile(const std::string& path, const std::vector<uint8_t>& bytes) {
    support::writeFile(path, std::string(bytes.begin(), bytes.end()));
}

/// $BINDIR/GRV/server/codeset under a temporary directory, with BINDIR set.
class BindirTree {
public:
    BindirTree() : env_("BINDIR", dir_.path().c_str()) {
        codeset_ = dir_.path() + "/GRV/server/codeset/";
        std::filesystem::create_directories(codeset_);
    }
    const std::string& codeset() const { return codeset_; }
    const std::string& root() const { return dir_.path(); }
    void put(const std::string& name, const std::vector<uint8_t>& bytes) const {
        writeFile(codeset_ + name, bytes);
    }
    void put(const std::string& name, const std::string& bytes) const {
        support::writeFile(codeset_ + name, bytes);
    }

private:
    support::TempDir dir_{"qarq-nls"};
    support::ScopedEnv env_;
    std::string codeset_;
};

/// Runs in another working directory for the life of the object.
class ScopedCwd {
public:
    explicit ScopedCwd(const std::string& dir) {
        char buffer[4096];
        old_ = getcwd(buffer, sizeof buffer) ? buffer : "/";
        EXPECT_EQ(chdir(dir.c_str()), 0);
    }
    ~ScopedCwd() { (void)!chdir(old_.c_str()); }

private:
    std::string old_;
};

struct RecordFree {
    void operator()(VornNlsCodeSet* cs) const { vornnls6_tis_cs_free(cs, 0); }
};
using Record = std::unique_ptr<VornNlsCodeSet, RecordFree>;

/// A record loaded through the library's loader from `image`.
inline Record load(const UcvImage& image, const char* name = "T") {
    BindirTree tree;
    tree.put(name, image.bytes());
    return Record(vornnls2_cs_new(name));
}

/// Collects the error records logged while it lives.
class ErrorLog {
public:
    struct Entry {
        std::string function;
        std::vector<std::string> pairs;
    };
    ErrorLog() { HeskSinkAdd(&ErrorLog::sink, this); }
    ~ErrorLog() { HeskSinkRemove(&ErrorLog::sink, this); }
    ErrorLog(const ErrorLog&) = delete;
    ErrorLog& operator=(const ErrorLog&) = delete;
    const std::vector<Entry>& entries() const { return entries_; }
    bool has(const std::string& function) const {
        for (auto& e : entries_)
            if (e.function == function) return true;
        return false;
    }

private:
    static void sink(const HeskRecord* r, void* context) {
        if (r->kind != HESK_RECORD_ERROR) return;
        Entry e{r->function, {}};
        for (int i = 0; i < r->pairCount; ++i)
            e.pairs.emplace_back(static_cast<const char*>(r->pairs[i].data), r->pairs[i].length);
        static_cast<ErrorLog*>(context)->entries_.push_back(std::move(e));
    }
    std::vector<Entry> entries_;
};

}  // namespace qarq::test
