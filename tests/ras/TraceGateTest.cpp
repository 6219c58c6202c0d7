#include <gtest/gtest.h>

#include "qarq/ras/qarzras.hpp"

namespace {

int gEvaluated = 0;
HeskPair counted() {
    ++gEvaluated;
    return qarq::ras::pair("x");
}

TEST(TraceGate, ArgumentsAreEvaluatedOnlyBehindTheGate) {
    TraceControl* none = nullptr;
    TraceControl maskOff = {0, 3};
    TraceControl lowLevel = {HESK_MASK_ENTRY, 2};
    TraceControl on = {HESK_MASK_ENTRY, 3};
    gEvaluated = 0;
    QARQ_TRACE_POINT(none, HESK_TRACE_ENTRY, "T::f", counted());
    QARQ_TRACE_POINT(&maskOff, HESK_TRACE_ENTRY, "T::f", counted());
    QARQ_TRACE_POINT(&lowLevel, HESK_TRACE_ENTRY, "T::f", counted());
    QARQ_TRACE_POINT(&on, HESK_TRACE_EXIT, "T::f", counted());
    EXPECT_EQ(gEvaluated, 0);
    QARQ_TRACE_POINT(&on, HESK_TRACE_ENTRY, "T::f", counted());
    EXPECT_EQ(gEvaluated, 1);
}

}  // namespace
