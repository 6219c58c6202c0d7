// Trace control and trace points of the diagnostics library.
//
// A component asks once for its control words (HESKINITTRACE) and keeps the
// pointer it gets. Every trace point then tests that pointer, the kind's mask
// bit and the level before it evaluates any argument, so a trace point costs a
// load and a test when tracing is off (the pointer stays null).
//
// Threads: all functions may be called from any thread. The control words are
// written once, inside HESKINITTRACE, and only read afterwards.
#pragma once

#include <cstdint>
#include <cstring>
#include <initializer_list>

#include "qarq/export.hpp"

extern "C" {

/// The two words that gate every trace point of one component.
struct TraceControl {
    uint32_t mask;
    uint32_t level;
};

/// A pointer and a byte length: text as its bytes, an integer as the address
/// of a copy and its size. The bytes are only read during the call.
struct HeskPair {
    const void* data;
    uint32_t length;
};

/// Trace point kinds.
enum HeskTraceKind {
    HESK_TRACE_ENTRY = 1,  ///< entry of a function; pairs are the arguments
    HESK_TRACE_EXIT = 2,   ///< exit; the result or object text
    HESK_TRACE_LOOP = 3,   ///< one step of a loop; index and item
    HESK_TRACE_DATA = 4    ///< a data point inside a function
};

/// Mask bits of the four kinds, and the least level at which a point fires.
#define HESK_MASK_ENTRY 0x200u
#define HESK_MASK_EXIT 0x400u
#define HESK_MASK_LOOP 0x100u
#define HESK_MASK_DATA 0x4000u
#define HESK_TRACE_LEVEL 3u

/// Reads the component's trace settings from the environment
/// (QARZ_TRACE_MASK_<COMPONENT> or QARZ_TRACE_MASK, hex; QARZ_TRACE_LEVEL_<COMPONENT>
/// or QARZ_TRACE_LEVEL, decimal) and stores a pointer to the component's control
/// words in *control. With no mask set, or a malformed one, *control stays null
/// (a malformed value is noted once in the log). `reserved` may be null.
/// The control words live until the process ends. Returns 0.
QARQ_API int HESKINITTRACE(const char* component, const char* reserved, TraceControl** control);

/// Makes every record written so far durable (records are never buffered;
/// this syncs the log file). Called at library detach, after static objects
/// are gone, which the record path allows for; records may follow it.
QARQ_API void HESKFLUSHTRACE(void);

/// Writes one trace record. The variable part is `pairCount` pairs, each passed
/// as (const void* data, unsigned int length). Does not test the gate: callers
/// go through QARQ_TRACE_POINT.
QARQ_API void HESKTRACE(const char* function, int line, int kind, int level, int pairCount, ...);

/// HESKTRACE with the pairs in an array.
QARQ_API void HeskTraceV(const char* function, int line, int kind, int level, int pairCount,
                         const HeskPair* pairs);

}  // extern "C"

namespace qarq::ras {

/// The mask bit that opens trace points of `kind` (0 for an unknown kind).
constexpr uint32_t maskBit(int kind) {
    return kind == HESK_TRACE_ENTRY  ? HESK_MASK_ENTRY
           : kind == HESK_TRACE_EXIT ? HESK_MASK_EXIT
           : kind == HESK_TRACE_LOOP ? HESK_MASK_LOOP
           : kind == HESK_TRACE_DATA ? HESK_MASK_DATA
                                     : 0u;
}

/// True when a trace point of `kind` fires under `control`.
inline bool traceOn(const TraceControl* control, int kind) {
    return control != nullptr && (control->mask & maskBit(kind)) != 0 &&
           control->level >= HESK_TRACE_LEVEL;
}

/// Pairs for the common argument types. The pair points into the argument:
/// it must outlive the trace call (true for every use inside the macros).
inline HeskPair pair(const char* text) {
    return {text, text != nullptr ? static_cast<uint32_t>(std::strlen(text)) : 0u};
}
inline HeskPair pair(const void* data, uint32_t length) { return {data, length}; }
inline HeskPair pair(const int32_t& value) { return {&value, sizeof value}; }
inline HeskPair pair(const int16_t& value) { return {&value, sizeof value}; }
inline HeskPair pair(const uint32_t& value) { return {&value, sizeof value}; }
inline HeskPair pair(const int64_t& value) { return {&value, sizeof value}; }

inline void traceNow(const char* function, int line, int kind,
                     std::initializer_list<HeskPair> pairs) {
    HeskTraceV(function, line, kind, HESK_TRACE_LEVEL, static_cast<int>(pairs.size()),
               pairs.begin());
}

}  // namespace qarq::ras

/// A trace point: fires only when `control` is set, the kind's mask bit is set
/// and the level is at least 3. The pair expressions (`...`, each a HeskPair,
/// e.g. qarq::ras::pair(x)) are evaluated only behind that gate.
#define QARQ_TRACE_POINT(control, kind, function, ...)                                   \
    do {                                                                                  \
        if (::qarq::ras::traceOn((control), (kind)))                                      \
            ::qarq::ras::traceNow((function), __LINE__, (kind), {__VA_ARGS__});           \
    } while (0)
