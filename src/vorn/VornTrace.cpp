#include "vorn/VornTrace.hpp"

#include "qarq/vorn/VornTraceWord.hpp"

namespace qarq::vorn {

TraceControl* traceControlWord = nullptr;

TraceControl*& traceControl() {
    static const bool initialised = [] {
        HESKINITTRACE("QARQ", "", &traceControlWord);
        return true;
    }();
    (void)initialised;
    return traceControlWord;
}

namespace {

// The settings are read when the library loads, so that the inline gates of
// the stream classes, which read the word directly, see them from the start.
const bool gReadAtLoad = (traceControl(), true);

}  // namespace

}  // namespace qarq::vorn
