#include "qarq/ras/HeskTrace.hpp"

#include <pthread.h>

#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <string>

#include "RecordWriter.hpp"
#include "qarq/base/Os.hpp"

namespace {

constexpr int kMaxComponents = 32;
using qarq::ras::detail::kMaxPairs;

struct Component {
    char name[32];
    TraceControl control;
};

// No destructor: trace setup may run from code that runs at process exit.
pthread_mutex_t gComponentMutex = PTHREAD_MUTEX_INITIALIZER;
Component gComponents[kMaxComponents];
int gComponentCount = 0;

// Reads `base` + "_" + component, else `base`.
const char* setting(const char* base, const char* component) {
    std::string specific = std::string(base) + "_" + component;
    const char* value = qarq::os::calls().getenv(specific.c_str());
    if (value == nullptr) value = qarq::os::calls().getenv(base);
    return value;
}

bool parseNumber(const char* text, int base, unsigned long max, uint32_t* out) {
    if (text == nullptr) return false;
    while (*text == ' ' || *text == '\t') ++text;
    if (*text == '\0' || *text == '-' || *text == '+') return false;
    errno = 0;
    char* end = nullptr;
    unsigned long value = std::strtoul(text, &end, base);
    while (end != nullptr && (*end == ' ' || *end == '\t')) ++end;
    if (errno != 0 || end == text || *end != '\0' || value > max) return false;
    *out = static_cast<uint32_t>(value);
    return true;
}

}  // namespace

extern "C" {

int HESKINITTRACE(const char* component, const char* /*reserved*/, TraceControl** control) {
    if (control == nullptr) return 0;
    if (component == nullptr) component = "";
    std::string name(component, strnlen(component, sizeof(Component::name) - 1));

    const char* maskText = setting("QARZ_TRACE_MASK", name.c_str());
    if (maskText == nullptr || *maskText == '\0') return 0;
    uint32_t mask = 0;
    if (!parseNumber(maskText, 16, 0xffffffffUL, &mask)) {
        std::string text = "malformed trace mask \"" + std::string(maskText).substr(0, 64) +
                           "\" for component " + name + "; tracing stays off";
        qarq::ras::detail::note("HESKINITTRACE", text.c_str());
        return 0;
    }
    // A mask on its own switches tracing on at the level every point uses.
    uint32_t level = HESK_TRACE_LEVEL;
    const char* levelText = setting("QARZ_TRACE_LEVEL", name.c_str());
    if (levelText != nullptr && *levelText != '\0' &&
        !parseNumber(levelText, 10, 0xffffffffUL, &level)) {
        std::string text = "malformed trace level \"" + std::string(levelText).substr(0, 64) +
                           "\" for component " + name + "; level 3 is used";
        qarq::ras::detail::note("HESKINITTRACE", text.c_str());
        level = HESK_TRACE_LEVEL;
    }
    if (mask == 0) return 0;

    pthread_mutex_lock(&gComponentMutex);
    Component* slot = nullptr;
    for (int i = 0; i < gComponentCount; ++i)
        if (name == gComponents[i].name) slot = &gComponents[i];
    if (slot == nullptr && gComponentCount < kMaxComponents) {
        slot = &gComponents[gComponentCount++];
        std::snprintf(slot->name, sizeof slot->name, "%s", name.c_str());
        slot->control.mask = mask;
        slot->control.level = level;
    }
    if (slot != nullptr) *control = &slot->control;
    pthread_mutex_unlock(&gComponentMutex);
    return 0;
}

void HESKFLUSHTRACE(void) { qarq::ras::detail::flush(); }

void HeskTraceV(const char* function, int line, int kind, int level, int pairCount,
                const HeskPair* pairs) {
    HeskRecord record = {};
    record.kind = HESK_RECORD_TRACE;
    record.function = function;
    record.line = line;
    record.traceKind = kind;
    record.level = level;
    record.pairCount = pairCount > kMaxPairs ? kMaxPairs : pairCount;
    record.pairs = pairs;
    qarq::ras::detail::emit(record);
}

void HESKTRACE(const char* function, int line, int kind, int level, int pairCount, ...) {
    HeskPair pairs[kMaxPairs];
    va_list args;
    va_start(args, pairCount);
    pairCount = qarq::ras::detail::takePairs(args, pairCount, pairs);
    va_end(args);
    HeskTraceV(function, line, kind, level, pairCount, pairs);
}

}  // extern "C"
