// Error log, numbered messages and record sinks of the diagnostics library.
//
// Every record (trace, logged error, issued message, logged message) becomes
// one line, written with a single write(2) on an O_APPEND descriptor so that
// records of concurrent threads and processes never interleave. The line goes
// to $QARZ_LOG_FILE, else $BINDIR/GRV/server/log/qarzras.log, else stderr; a
// log that cannot be opened falls back to stderr, noted once.
//
// Sinks let a process see its own records as structured data (tools and tests
// read issued messages through them).
//
// Threads: any function may be called from any thread. None of them throws;
// bad arguments (null names, null pair pointers, huge lengths, bytes that are
// not text) are rendered safely and capped.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "qarq/export.hpp"
#include "qarq/ras/HeskTrace.hpp"

extern "C" {

/// Logs a failure. The variable part is `pairCount` pairs, each passed as
/// (const void* data, unsigned int length).
QARQ_API void HESKLOGERROR(const char* function, int code1, int code2, int line, int level,
                           int pairCount, ...);

/// HESKLOGERROR with the pairs in an array.
QARQ_API void HeskLogErrorV(const char* function, int code1, int code2, int line, int level,
                            int pairCount, const HeskPair* pairs);

/// Issues numbered message `messageNumber` of catalogue `module` ("qarz.dll")
/// with `severity` (4 at every library site). The variable part is
/// `insertCount` inserts, each a const char* (null reads as empty) that fills
/// %1..%9 of the catalogue text.
QARQ_API void HESKISSUEERROR(const char* function, int line, int messageNumber,
                             const char* module, int severity, int insertCount, ...);

/// HESKISSUEERROR with the inserts in an array.
QARQ_API void HeskIssueErrorV(const char* function, int line, int messageNumber,
                              const char* module, int severity, int insertCount,
                              const char* const* inserts);

/// Logs numbered message `messageNumber` with its two inserts.
QARQ_API void HeskLogMsgNumber(const char* function, int line, int messageNumber,
                               const char* module, const char* insert1, const char* insert2);

/// What a record is.
enum HeskRecordKind {
    HESK_RECORD_TRACE = 1,  ///< HESKTRACE
    HESK_RECORD_ERROR = 2,  ///< HESKLOGERROR
    HESK_RECORD_ISSUE = 3,  ///< HESKISSUEERROR
    HESK_RECORD_MSGLOG = 4, ///< HeskLogMsgNumber
    HESK_RECORD_NOTE = 5    ///< the library's own notes (log fallback, bad settings)
};

/// One record as a sink sees it. Every pointer is valid only during the sink
/// call; text fields are never null (empty instead).
struct HeskRecord {
    int kind;                  ///< HeskRecordKind
    const char* function;      ///< function or source-file name
    int line;                  ///< source line
    int traceKind;             ///< HeskTraceKind for a trace record, else 0
    int level;                 ///< level or severity argument
    int code1;                 ///< error codes (HESKLOGERROR), else 0
    int code2;
    int messageNumber;         ///< issued or logged message, else 0
    const char* module;        ///< catalogue name of a message, else ""
    int pairCount;             ///< pairs of a trace or error record
    const HeskPair* pairs;
    int insertCount;           ///< inserts of a message record
    const char* const* inserts;
    const char* text;          ///< message text with inserts filled, else ""
    const char* logLine;       ///< the line as written to the log, without newline
};

typedef void (*HeskSinkFn)(const HeskRecord* record, void* context);

/// Registers a sink that receives every record this process writes, on the
/// writing thread. A sink must not wait for another thread that writes
/// records, nor add or remove sinks; records it writes itself go to the log
/// only. Returns 0, or -1 when the table of 16 sinks is full or `sink` is null.
QARQ_API int HeskSinkAdd(HeskSinkFn sink, void* context);

/// Removes a sink added with the same function and context. When it returns,
/// the sink is not running on any thread and will not be called again.
QARQ_API int HeskSinkRemove(HeskSinkFn sink, void* context);

/// Re-reads QARZ_LOG_FILE / BINDIR and reopens the log on the next record
/// (a log that cannot be opened is noted again). For tools and tests that
/// change the environment after start.
QARQ_API void HeskLogReopen(void);

/// The catalogue text of message `messageNumber` in `module`, with %1..%9
/// unfilled; "" when the module or number is unknown. The text lives for the
/// process.
QARQ_API const char* HeskMessageText(const char* module, int messageNumber);

}  // extern "C"

namespace qarq::ras {

/// One message insert, rendered to text at construction.
class QARQ_API Insert {
public:
    Insert(const char* text);  // NOLINT: implicit on purpose
    Insert(int value);         // NOLINT
    Insert(long value);        // NOLINT
    Insert(long long value);   // NOLINT
    Insert(double value);      // NOLINT
    const char* c_str() const { return text_ != nullptr ? text_ : buffer_; }

private:
    const char* text_ = nullptr;
    char buffer_[40] = {};
};

inline void logError(const char* function, int line, int code1, int code2,
                     std::initializer_list<HeskPair> pairs) {
    HeskLogErrorV(function, code1, code2, line, 3, static_cast<int>(pairs.size()),
                  pairs.begin());
}

/// Issues a catalogue message of "qarz.dll" with severity 4, as every library site does.
QARQ_API void issue(const char* function, int line, int messageNumber,
                    std::initializer_list<Insert> inserts);

}  // namespace qarq::ras
