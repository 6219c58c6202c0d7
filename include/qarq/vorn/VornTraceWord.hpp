// The library's trace-control word, as the inline fast paths of the stream
// classes read it: one load and a test, with no call, while tracing is off.
#pragma once

#include "qarq/export.hpp"
#include "qarq/ras/HeskTrace.hpp"

namespace qarq::vorn {

/// The pointer behind traceControl(): null while tracing is off. Set when
/// the library loads; only tests assign it afterwards.
QARQ_API extern TraceControl* traceControlWord;

/// True when no entry or exit trace point of the library would fire.
inline bool traceQuiet() {
    const TraceControl* control = traceControlWord;
    return !::qarq::ras::traceOn(control, HESK_TRACE_ENTRY) &&
           !::qarq::ras::traceOn(control, HESK_TRACE_EXIT);
}

}  // namespace qarq::vorn
