// The library's trace control pointer.
//
// Every trace point of the library's own classes and C modules gates on this
// pointer (QARQ_TRACE_POINT(qarq::vorn::traceControl(), ...)). It is set once,
// at library attach, from the environment, by HESKINITTRACE("QARQ", ...); null
// means tracing is off.
#pragma once

#include "qarq/export.hpp"
#include "qarq/ras/HeskTrace.hpp"

namespace qarq::vorn {

/// The process-wide trace control pointer of component "QARQ".
QARQ_API TraceControl*& traceControl();

}  // namespace qarq::vorn
