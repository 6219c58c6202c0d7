// Collects the diagnostics records a test provokes.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "qarq/ras/HeskLog.hpp"

struct CapturedRecord {
    int kind;
    std::string function;
    int line;
    int traceKind;
    int code1;
    int code2;
    std::vector<std::string> pairs;
};

class RecordCapture {
public:
    RecordCapture() { HeskSinkAdd(&RecordCapture::sink, this); }
    ~RecordCapture() { HeskSinkRemove(&RecordCapture::sink, this); }
    RecordCapture(const RecordCapture&) = delete;
    RecordCapture& operator=(const RecordCapture&) = delete;

    std::vector<CapturedRecord> ofKind(int kind) {
        std::lock_guard<std::mutex> hold(lock_);
        std::vector<CapturedRecord> found;
        for (const auto& r : records_)
            if (r.kind == kind)
                found.push_back(r);
        return found;
    }

private:
    static void sink(const HeskRecord* record, void* context) {
        auto* self = static_cast<RecordCapture*>(context);
        CapturedRecord r{record->kind, record->function, record->line, record->traceKind,
                         record->code1, record->code2, {}};
        for (int i = 0; i < record->pairCount; ++i)
            r.pairs.emplace_back(static_cast<const char*>(record->pairs[i].data),
                                 record->pairs[i].length);
        std::lock_guard<std::mutex> hold(self->lock_);
        self->records_.push_back(std::move(r));
    }

    std::mutex lock_;
    std::vector<CapturedRecord> records_;
};
