// The trace gate of the stream classes: QARQ_TRACE_POINT on the library's
// control word, read directly (one load and a test while tracing is off).
#pragma once

#include "qarq/ras/HeskTrace.hpp"
#include "qarq/vorn/VornTraceWord.hpp"
#include "vorn/VornTrace.hpp"

#define VORN_TRACE(kind, function, ...) \
    QARQ_TRACE_POINT(::qarq::vorn::traceControlWord, kind, function, __VA_ARGS__)

/// An exit point that carries the object's debug text, built only when the
/// point fires.
#define VORN_TRACE_EXIT_OBJECT(function)                                                          \
    do {                                                                                          \
        if (::qarq::ras::traceOn(::qarq::vorn::traceControlWord, HESK_TRACE_EXIT)) {              \
            IString objectText_ = asDebugInfo();                                                  \
            ::qarq::ras::traceNow((function), __LINE__, HESK_TRACE_EXIT,                          \
                                  {::qarq::ras::pair(objectText_.data(), objectText_.length())}); \
        }                                                                                         \
    } while (0)
