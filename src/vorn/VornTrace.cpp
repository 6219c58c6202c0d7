#include "vorn/VornTrace.hpp"

#include "qarq/vorn/VornTraceWord.hpp"

namespace qarq::vorn {

// Set at library attach (VornDllI_commonInitalizer, which runs before the
// library's static initialisers) and only read afterwards: a plain global, so
// that a trace point costs one load and one test.
TraceControl* traceControlWord = nullptr;

TraceControl*& traceControl() { return traceControlWord; }

}  // namespace qarq::vorn
