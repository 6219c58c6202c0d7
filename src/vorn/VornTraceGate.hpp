// The trace gate of the stream classes: one guarded load of the library's
// control pointer, inlined into each member, so a member with tracing off
// costs a load and a test per trace point.
#pragma once

#include "qarq/ras/HeskTrace.hpp"
#include "vorn/VornTrace.hpp"

namespace qarq::vorn {

inline TraceControl* traceGate() {
    static TraceControl*& control = traceControl();
    return control;
}

}  // namespace qarq::vorn

#define VORN_TRACE(kind, function, ...) \
    QARQ_TRACE_POINT(::qarq::vorn::traceGate(), kind, function, __VA_ARGS__)
