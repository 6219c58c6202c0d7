#include "qarq/vorn/VornObjectANotif.hpp"

#include "qarq/vorn/VornJavaRead.hpp"
#include "qarq/vorn/VornJavaWrite.hpp"
#include "vorn/VornExceptionCopy.hpp"
#include "vorn/VornText.hpp"
#include "vorn/VornTrace.hpp"

using qarq::ras::pair;

VornObjectANotif::VornObjectANotif()
    : VornObjectAMessage(3), exception(nullptr), posExtReasonCode(0) {}

VornObjectANotif::VornObjectANotif(const VornObjectANotif& other)
    : VornObjectAMessage(other),
      exception(qarq::vorn::copyException(other.exception)),
      posExtReasonCode(other.posExtReasonCode) {}

VornObjectANotif& VornObjectANotif::operator=(const VornObjectANotif& other) {
    if (this == &other) return *this;
    // Copy first: a failing copy leaves the target as it was.
    VornObjectASerializableException* copy = qarq::vorn::copyException(other.exception);
    VornObjectAMessage::operator=(other);
    posExtReasonCode = other.posExtReasonCode;
    delete exception;
    exception = copy;
    return *this;
}

VornObjectANotif::~VornObjectANotif() { delete exception; }

IString VornObjectANotif::asString() const { return IString("VornObjectANotif"); }

IString VornObjectANotif::asDebugInfo() const {
    return VornObjectANotif::asString() + "[base=" + VornObjectAMessage::asDebugInfo() +
           ",exc=" + qarq::vorn::hexText(exception) + "]";
}

VornObjectANotif& VornObjectANotif::setPosExtReasonCode(int value) {
    posExtReasonCode = value;
    return *this;
}

VornObjectANotif& VornObjectANotif::setException(VornObjectASerializableException& value) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY,
                     "VornObjectANotif::setException", pair(value.asDebugInfo()));
    exception = &value;
    return *this;
}

void VornObjectANotif::read(VornJavaRead& in) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornObjectANotif::read");
    VornObjectAMessage::read(in);
    posExtReasonCode = in.readInt();
    readObject(in, exception);
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornObjectANotif::read",
                     pair(posExtReasonCode));
}

void VornObjectANotif::write(VornJavaWrite& out) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornObjectANotif::write",
                     pair(posExtReasonCode));
    VornObjectAMessage::write(out);
    out.writeInt(posExtReasonCode);
    writeObject(out, exception);
}
