#include "qarq/ras/HeskLog.hpp"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include "RecordWriter.hpp"
#include "qarq/ras/MessageCatalogue.hpp"

namespace {

// Variadic callers are trusted for the count only up to this many items; a
// larger count is a caller bug and is cut rather than read off the stack.
constexpr int kMaxItems = 64;
constexpr size_t kMaxInsert = 1024;

const qarq::ras::MessageCatalogue& qarzCatalogue() {
    static const qarq::ras::MessageCatalogue* catalogue = [] {
        auto* c = new qarq::ras::MessageCatalogue;
        c->loadText(qarq::ras::detail::kQarzCatalogue, qarq::ras::detail::kQarzCatalogueSize);
        return c;
    }();
    return *catalogue;
}

bool isQarzModule(const char* module) {
    return module == nullptr || std::strcmp(module, "qarz.dll") == 0 ||
           std::strcmp(module, "qarz") == 0;
}

void emitMessage(int kind, const char* function, int line, int number, const char* module,
                 int severity, int count, const char* const* inserts) {
    if (count < 0 || inserts == nullptr) count = 0;
    if (count > kMaxItems) count = kMaxItems;
    // Inserts are cut at kMaxInsert bytes, so neither the text nor the line
    // grows with a hostile insert.
    std::vector<std::string> cut(static_cast<size_t>(count));
    std::vector<const char*> safe(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
        const char* insert = inserts[i] != nullptr ? inserts[i] : "";
        if (strnlen(insert, kMaxInsert + 1) > kMaxInsert) {
            cut[i].assign(insert, kMaxInsert);
            insert = cut[i].c_str();
        }
        safe[i] = insert;
    }
    const char* pattern = HeskMessageText(module, number);
    std::string text;
    if (*pattern != '\0') {
        text = qarq::ras::MessageCatalogue::format(pattern, safe.data(), count);
    } else {
        char unknown[64];
        std::snprintf(unknown, sizeof unknown, "message %d (no text in the catalogue)", number);
        text = unknown;
    }
    HeskRecord record = {};
    record.kind = kind;
    record.function = function;
    record.line = line;
    record.level = severity;
    record.messageNumber = number;
    record.module = module;
    record.insertCount = count;
    record.inserts = safe.data();
    record.text = text.c_str();
    qarq::ras::detail::emit(record);
}

}  // namespace

extern "C" {

void HeskLogErrorV(const char* function, int code1, int code2, int line, int level,
                   int pairCount, const HeskPair* pairs) {
    HeskRecord record = {};
    record.kind = HESK_RECORD_ERROR;
    record.function = function;
    record.line = line;
    record.level = level;
    record.code1 = code1;
    record.code2 = code2;
    record.pairCount = pairCount > kMaxItems ? kMaxItems : pairCount;
    record.pairs = pairs;
    qarq::ras::detail::emit(record);
}

void HESKLOGERROR(const char* function, int code1, int code2, int line, int level,
                  int pairCount, ...) {
    HeskPair pairs[qarq::ras::detail::kMaxPairs];
    va_list args;
    va_start(args, pairCount);
    pairCount = qarq::ras::detail::takePairs(args, pairCount, pairs);
    va_end(args);
    HeskLogErrorV(function, code1, code2, line, level, pairCount, pairs);
}

void HeskIssueErrorV(const char* function, int line, int messageNumber, const char* module,
                     int severity, int insertCount, const char* const* inserts) {
    emitMessage(HESK_RECORD_ISSUE, function, line, messageNumber, module, severity,
                insertCount, inserts);
}

void HESKISSUEERROR(const char* function, int line, int messageNumber, const char* module,
                    int severity, int insertCount, ...) {
    if (insertCount < 0) insertCount = 0;
    if (insertCount > kMaxItems) insertCount = kMaxItems;
    const char* inserts[kMaxItems];
    va_list args;
    va_start(args, insertCount);
    for (int i = 0; i < insertCount; ++i) inserts[i] = va_arg(args, const char*);
    va_end(args);
    HeskIssueErrorV(function, line, messageNumber, module, severity, insertCount, inserts);
}

void HeskLogMsgNumber(const char* function, int line, int messageNumber, const char* module,
                      const char* insert1, const char* insert2) {
    const char* inserts[2] = {insert1, insert2};
    emitMessage(HESK_RECORD_MSGLOG, function, line, messageNumber, module, 0, 2, inserts);
}

int HeskSinkAdd(HeskSinkFn sink, void* context) {
    return qarq::ras::detail::addSink(sink, context);
}

int HeskSinkRemove(HeskSinkFn sink, void* context) {
    return qarq::ras::detail::removeSink(sink, context);
}

void HeskLogReopen(void) { qarq::ras::detail::reopen(); }

const char* HeskMessageText(const char* module, int messageNumber) {
    if (!isQarzModule(module)) return "";
    const char* text = qarzCatalogue().text(messageNumber);
    return text != nullptr ? text : "";
}

}  // extern "C"

namespace qarq::ras {

Insert::Insert(const char* text) : text_(text != nullptr ? text : "") {}
Insert::Insert(int value) { std::snprintf(buffer_, sizeof buffer_, "%d", value); }
Insert::Insert(long value) { std::snprintf(buffer_, sizeof buffer_, "%ld", value); }
Insert::Insert(long long value) { std::snprintf(buffer_, sizeof buffer_, "%lld", value); }
Insert::Insert(double value) { std::snprintf(buffer_, sizeof buffer_, "%g", value); }

void issue(const char* function, int line, int messageNumber,
           std::initializer_list<Insert> inserts) {
    const char* texts[kMaxItems];
    int count = 0;
    for (const Insert& insert : inserts) {
        if (count == kMaxItems) break;
        texts[count++] = insert.c_str();
    }
    HeskIssueErrorV(function, line, messageNumber, "qarz.dll", 4, count, texts);
}

}  // namespace qarq::ras
