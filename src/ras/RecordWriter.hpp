// Shared record path of the diagnostics library: renders one record as one
// log line, hands it to the registered sinks and writes it with one write(2).
#pragma once

#include <cstdarg>

#include "qarq/ras/HeskLog.hpp"

namespace qarq::ras::detail {

/// Fills in the time stamp, pid, thread id and line of `record` and delivers
/// it. `record.logLine` is set by this call.
void emit(HeskRecord& record);

/// Writes a note of the library itself (kind HESK_RECORD_NOTE).
void note(const char* function, const char* text);

/// Makes what was written durable (fsync of a log file).
void flush();

/// Drops the open log so that the next record opens it afresh.
void reopen();

/// Most pairs a trace or error record carries; callers' extra pairs are dropped.
constexpr int kMaxPairs = 64;

/// Takes `count` (data, length) pairs of a variadic call from `args` into
/// `pairs` (room for kMaxPairs), the count first clamped to 0..kMaxPairs.
/// Returns the clamped count.
int takePairs(va_list args, int count, HeskPair* pairs);

/// Sink table behind HeskSinkAdd / HeskSinkRemove.
int addSink(HeskSinkFn fn, void* context);
int removeSink(HeskSinkFn fn, void* context);

/// The built-in catalogue "qarz.dll" (text of data/messages/qarz.msg, compiled in).
extern const char kQarzCatalogue[];
extern const unsigned long kQarzCatalogueSize;

}  // namespace qarq::ras::detail
