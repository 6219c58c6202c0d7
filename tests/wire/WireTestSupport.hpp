// Helpers of the wire tests: bytes written as hex, readers and writers over
// test bytes, the records the library logs, the environment.
#pragma once

#include <stdlib.h>

#include <cstdint>
#include <cstring>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "qarq/ras/HeskLog.hpp"
#include "qarq/vorn/VornJavaRead.hpp"
#include "qarq/vorn/VornJavaWrite.hpp"

namespace qarq::test {

/// "00 80 0A" -> the three bytes.
inline std::string bytes(const std::string& hex) {
    std::string out;
    for (size_t i = 0; i < hex.size();) {
        if (hex[i] == ' ') {
            ++i;
            continue;
        }
        out.push_back(static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16)));
        i += 2;
    }
    return out;
}

/// The bytes as "00 80 0A".
inline std::string hex(const std::string& data) {
    static const char digits[] = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : data) {
        if (!out.empty()) out.push_back(' ');
        out.push_back(digits[c >> 4]);
        out.push_back(digits[c & 15]);
    }
    return out;
}

/// A writer that owns the block it grows into.
struct Writer {
    VornJavaWrite out;
    ~Writer() { delete[] out.getBuffer(); }
    std::string bytes() const { return std::string(out.getBuffer(), out.calculateUsedLength()); }
    std::string hex() const { return test::hex(bytes()); }
};

/// A reader over a copy of `data` in a block of the array allocator.
struct Reader {
    explicit Reader(const std::string& data)
        : in(copy(data), static_cast<unsigned>(data.size())) {}
    ~Reader() { delete[] in.getBuffer(); }
    unsigned used() const { return in.calculateUsedLength(); }
    VornJavaRead in;

private:
    static char* copy(const std::string& data) {
        char* block = new char[data.size() + 1];
        std::memcpy(block, data.data(), data.size());
        return block;
    }
};

/// One logged record as a test looks at it.
struct Record {
    int kind = 0;
    std::string function;
    std::vector<std::string> pairs;
    std::string text;
    uint32_t pairAsU32(size_t i) const {
        uint32_t v = 0;
        if (i < pairs.size() && pairs[i].size() == sizeof v) std::memcpy(&v, pairs[i].data(), sizeof v);
        return v;
    }
};

/// Collects the records of this process while it lives.
class RecordLog {
public:
    RecordLog() { HeskSinkAdd(&RecordLog::sink, this); }
    ~RecordLog() { HeskSinkRemove(&RecordLog::sink, this); }
    RecordLog(const RecordLog&) = delete;
    RecordLog& operator=(const RecordLog&) = delete;

    std::vector<Record> errors(const std::string& function) const {
        std::lock_guard<std::mutex> lock(mutex_);
        std::vector<Record> out;
        for (const Record& r : records_)
            if (r.kind == HESK_RECORD_ERROR && r.function == function) out.push_back(r);
        return out;
    }
    size_t errorsOf(const std::string& function) const { return errors(function).size(); }
    Record lastError(const std::string& function) const {
        std::vector<Record> all = errors(function);
        return all.empty() ? Record{} : all.back();
    }
    /// Every error record whose pairs mention `text`.
    size_t errorsMentioning(const std::string& text) const {
        std::lock_guard<std::mutex> lock(mutex_);
        size_t n = 0;
        for (const Record& r : records_) {
            if (r.kind != HESK_RECORD_ERROR) continue;
            for (const std::string& p : r.pairs)
                if (p.find(text) != std::string::npos) {
                    ++n;
                    break;
                }
        }
        return n;
    }

private:
    static void sink(const HeskRecord* record, void* context) {
        auto* self = static_cast<RecordLog*>(context);
        Record r;
        r.kind = record->kind;
        r.function = record->function;
        for (int i = 0; i < record->pairCount; ++i) {
            const HeskPair& p = record->pairs[i];
            r.pairs.emplace_back(static_cast<const char*>(p.data), p.length);
        }
        r.text = record->text;
        std::lock_guard<std::mutex> lock(self->mutex_);
        self->records_.push_back(std::move(r));
    }

    mutable std::mutex mutex_;
    std::vector<Record> records_;
};

/// Sets (or with null unsets) an environment variable for the object's life.
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

}  // namespace qarq::test
