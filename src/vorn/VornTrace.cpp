#include "vorn/VornTrace.hpp"

namespace qarq::vorn {

TraceControl*& traceControl() {
    static TraceControl* control = [] {
        TraceControl* p = nullptr;
        HESKINITTRACE("QARQ", "", &p);
        return p;
    }();
    return control;
}

}  // namespace qarq::vorn
