// The trace gate of the stream classes: QARQ_TRACE_POINT on the library's
// control word, read directly (one load and a test while tracing is off).
#pragma once

#include "qarq/ras/HeskTrace.hpp"
#include "qarq/vorn/VornTraceWord.hpp"
#include "vorn/VornTrace.hpp"

#define VORN_TRACE(kind, function, ...) \
    QARQ_TRACE_POINT(::qarq::vorn::traceControlWord, kind, function, __VA_ARGS__)
