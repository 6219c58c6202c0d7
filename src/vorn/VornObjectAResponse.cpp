#include "qarq/vorn/VornObjectAResponse.hpp"

#include "qarq/vorn/VornJavaRead.hpp"
#include "qarq/vorn/VornJavaWrite.hpp"
#include "vorn/VornExceptionCopy.hpp"
#include "vorn/VornText.hpp"
#include "vorn/VornTrace.hpp"

using qarq::ras::pair;

VornObjectAResponse::VornObjectAResponse(int value)
    : VornObjectAMessage(2), correlator(value), posExtReasonCode(0), exception(nullptr) {}

VornObjectAResponse::VornObjectAResponse(const VornObjectAResponse& other)
    : VornObjectAMessage(other),
      correlator(other.correlator),
      posExtReasonCode(other.posExtReasonCode),
      exception(qarq::vorn::copyException(other.exception)) {}

VornObjectAResponse& VornObjectAResponse::operator=(const VornObjectAResponse& other) {
    if (this == &other) return *this;
    // Copy first: a failing copy leaves the target as it was.
    VornObjectASerializableException* copy = qarq::vorn::copyException(other.exception);
    VornObjectAMessage::operator=(other);
    correlator = other.correlator;
    posExtReasonCode = other.posExtReasonCode;
    delete exception;
    exception = copy;
    return *this;
}

VornObjectAResponse::~VornObjectAResponse() { delete exception; }

IString VornObjectAResponse::asString() const { return IString("VornObjectAResponse"); }

IString VornObjectAResponse::asDebugInfo() const {
    return VornObjectAResponse::asString() + "[base=" + VornObjectAMessage::asDebugInfo() +
           ",corr=" + IString(correlator) + ",exc=" + qarq::vorn::hexText(exception) + "]";
}

VornObjectAResponse& VornObjectAResponse::setCorrelator(int value) {
    correlator = value;
    return *this;
}

VornObjectAResponse& VornObjectAResponse::setPosExtReasonCode(int value) {
    posExtReasonCode = value;
    return *this;
}

VornObjectAResponse& VornObjectAResponse::setException(VornObjectASerializableException& value) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY,
                     "VornObjectAResponse::setException", pair(value.asDebugInfo()));
    exception = &value;
    return *this;
}

void VornObjectAResponse::read(VornJavaRead& in) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornObjectAResponse::read");
    VornObjectAMessage::read(in);
    correlator = in.readInt();
    posExtReasonCode = in.readInt();
    readObject(in, exception);
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornObjectAResponse::read",
                     pair(correlator), pair(posExtReasonCode));
}

void VornObjectAResponse::write(VornJavaWrite& out) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornObjectAResponse::write",
                     pair(correlator), pair(posExtReasonCode));
    VornObjectAMessage::write(out);
    out.writeInt(correlator);
    out.writeInt(posExtReasonCode);
    writeObject(out, exception);
}
