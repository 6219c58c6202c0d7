#include "vorn/VornTrace.hpp"

namespace qarq::vorn {

namespace {

// Set at library attach (VornDllI_commonInitalizer) and only read afterwards;
// a plain global, so that a trace point costs one load and one test.
TraceControl* gTraceControl = nullptr;

}  // namespace

TraceControl*& traceControl() { return gTraceControl; }

}  // namespace qarq::vorn
