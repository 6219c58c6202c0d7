#include "qarq/vorn/VornObjectARequest.hpp"

#include "qarq/vorn/VornJavaRead.hpp"
#include "qarq/vorn/VornJavaWrite.hpp"
#include "vorn/VornTrace.hpp"

using qarq::ras::pair;

VornObjectARequest::VornObjectARequest(int value) : VornObjectAMessage(1), correlator(value) {}

VornObjectARequest::VornObjectARequest(const VornObjectARequest& other) = default;

VornObjectARequest& VornObjectARequest::operator=(const VornObjectARequest& other) {
    VornObjectAMessage::operator=(other);
    correlator = other.correlator;
    return *this;
}

VornObjectARequest::~VornObjectARequest() = default;

IString VornObjectARequest::asString() const { return IString("VornObjectARequest"); }

IString VornObjectARequest::asDebugInfo() const {
    return VornObjectARequest::asString() + "[base=" + VornObjectAMessage::asDebugInfo() +
           ",corr=" + IString(correlator) + "]";
}

VornObjectARequest& VornObjectARequest::setCorrelator(int value) {
    correlator = value;
    return *this;
}

void VornObjectARequest::read(VornJavaRead& in) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornObjectARequest::read");
    VornObjectAMessage::read(in);
    correlator = in.readInt();
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornObjectARequest::read",
                     pair(correlator));
}

void VornObjectARequest::write(VornJavaWrite& out) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornObjectARequest::write",
                     pair(correlator));
    VornObjectAMessage::write(out);
    out.writeInt(correlator);
}
