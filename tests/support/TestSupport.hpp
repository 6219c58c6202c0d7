// Helpers every test program shares: environment variables and temporary
// directories that restore themselves, whole-file reads and writes, and the
// capture of the diagnostics records a test provokes.
//
// Contract: ScopedEnv and TempDir undo themselves in their destructors; they
// change process state, so use them from the test's main thread while no
// other thread reads the environment. Records captures every record of the
// process while it lives, from any thread.
#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "qarq/ras/HeskLog.hpp"

namespace qarq::support {

/// Sets (or, with nullptr, unsets) one variable and restores it afterwards.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const char* value) : name_(name) {
        if (const char* old = ::getenv(name)) saved_ = std::string(old);
        if (value != nullptr)
            ::setenv(name, value, 1);
        else
            ::unsetenv(name);
    }
    ~ScopedEnv() {
        if (saved_)
            ::setenv(name_.c_str(), saved_->c_str(), 1);
        else
            ::unsetenv(name_.c_str());
    }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    std::string name_;
    std::optional<std::string> saved_;
};

/// A temporary directory under TMPDIR, removed with everything in it.
/// path() is empty when it could not be made.
class TempDir {
public:
    explicit TempDir(const char* prefix = "qarq-test") {
        const char* base = ::getenv("TMPDIR");
        std::string pattern = std::string(base != nullptr && *base ? base : "/tmp") + "/" +
                              prefix + "-XXXXXX";
        if (::mkdtemp(pattern.data()) != nullptr) path_ = pattern;
    }
    ~TempDir() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;
    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

inline std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline std::vector<std::string> readLines(const std::string& path) {
    std::vector<std::string> lines;
    std::istringstream in(readFile(path));
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

inline void writeFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

/// `text` in single quotes, safe as one word of a shell command.
inline std::string shellQuoted(const std::string& text) {
    std::string out = "'";
    for (char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

/// A copy of one record as a sink saw it.
struct Record {
    int kind = 0, line = 0, code1 = 0, code2 = 0;
    std::string function, text, logLine;
    std::vector<std::string> pairs;  // raw bytes, the first 256 of each at most
    std::vector<std::string> inserts;

    /// Pair `i` read as the 4-byte value it was given as; 0 when it is not one.
    uint32_t pairAsU32(size_t i) const {
        uint32_t v = 0;
        if (i < pairs.size() && pairs[i].size() == sizeof v)
            std::memcpy(&v, pairs[i].data(), sizeof v);
        return v;
    }
};

/// Collects every record of this process while it lives.
class Records {
public:
    Records() { HeskSinkAdd(&Records::sink, this); }
    ~Records() { HeskSinkRemove(&Records::sink, this); }
    Records(const Records&) = delete;
    Records& operator=(const Records&) = delete;

    std::vector<Record> all() const {
        std::lock_guard<std::mutex> lock(mutex_);
        return records_;
    }
    std::vector<Record> ofKind(int kind) const {
        std::vector<Record> out;
        for (Record& r : all())
            if (r.kind == kind) out.push_back(std::move(r));
        return out;
    }
    /// The error records `function` logged, oldest first.
    std::vector<Record> errors(const std::string& function) const {
        std::vector<Record> out;
        for (Record& r : ofKind(HESK_RECORD_ERROR))
            if (r.function == function) out.push_back(std::move(r));
        return out;
    }
    size_t errorsOf(const std::string& function) const { return errors(function).size(); }
    Record lastError(const std::string& function) const {
        std::vector<Record> found = errors(function);
        return found.empty() ? Record{} : found.back();
    }
    /// How many error records have a pair that contains `text`.
    size_t errorsMentioning(const std::string& text) const {
        std::vector<Record> errors = ofKind(HESK_RECORD_ERROR);
        return static_cast<size_t>(std::count_if(errors.begin(), errors.end(), [&](const Record& r) {
            return std::any_of(r.pairs.begin(), r.pairs.end(), [&](const std::string& p) {
                return p.find(text) != std::string::npos;
            });
        }));
    }

private:
    static void sink(const HeskRecord* r, void* context) {
        Record c;
        c.kind = r->kind;
        c.line = r->line;
        c.code1 = r->code1;
        c.code2 = r->code2;
        c.function = r->function;
        c.text = r->text;
        c.logLine = r->logLine;
        for (int i = 0; i < r->pairCount; ++i) {
            const HeskPair& p = r->pairs[i];
            size_t n = p.data == nullptr ? 0 : std::min<size_t>(p.length, 256);
            c.pairs.emplace_back(static_cast<const char*>(p.data), n);
        }
        for (int i = 0; i < r->insertCount; ++i) c.inserts.emplace_back(r->inserts[i]);
        auto* self = static_cast<Records*>(context);
        std::lock_guard<std::mutex> lock(self->mutex_);
        self->records_.push_back(std::move(c));
    }

    mutable std::mutex mutex_;
    std::vector<Record> records_;
};

}  // namespace qarq::support
