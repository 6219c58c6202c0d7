#pragma once
// The trace points of the Vorn classes and C modules that a piece of code
// passes: opens the library's trace gate for entry and exit and collects
// (function, trace kind) of each trace record while the object lives.
//
// Contract: the constructor opens the gate and adds a sink; the destructor
// removes the sink and restores the gate as it was. Not thread-safe: use it
// from the test's main thread while nothing else traces.

#include <string>
#include <utility>
#include <vector>

#include "qarq/ras/HeskTrace.hpp"
#include "vorn/VornTrace.hpp"

namespace qarq::test {

class TracePoints {
  public:
    using Point = std::pair<std::string, int>;

    TracePoints() : saved_(qarq::vorn::traceControl()) {
        qarq::vorn::traceControl() = &open_;
        HeskSinkAdd(&TracePoints::sink, this);
    }
    ~TracePoints() {
        HeskSinkRemove(&TracePoints::sink, this);
        qarq::vorn::traceControl() = saved_;
    }
    TracePoints(const TracePoints&) = delete;
    TracePoints& operator=(const TracePoints&) = delete;

    const std::vector<Point>& points() const { return points_; }

  private:
    static void sink(const HeskRecord* r, void* context) {
        if (r->kind == HESK_RECORD_TRACE)
            static_cast<TracePoints*>(context)->points_.emplace_back(r->function, r->traceKind);
    }

    TraceControl open_ = {HESK_MASK_ENTRY | HESK_MASK_EXIT, 3};
    TraceControl* saved_;
    std::vector<Point> points_;
};

}  // namespace qarq::test
