#include "qarq/vorn/VornObjectAMessage.hpp"

#include "qarq/vorn/VornJavaRead.hpp"
#include "qarq/vorn/VornJavaWrite.hpp"
#include "vorn/VornTrace.hpp"

using qarq::ras::pair;

VornObjectAMessage::VornObjectAMessage(int kind) : type(kind), client(0) {}

VornObjectAMessage::VornObjectAMessage(const VornObjectAMessage& other) = default;

VornObjectAMessage& VornObjectAMessage::operator=(const VornObjectAMessage& other) {
    VornObject::operator=(other);
    sHost = other.sHost;
    tHost = other.tHost;
    type = other.type;
    client = other.client;
    return *this;
}

VornObjectAMessage::~VornObjectAMessage() = default;

IString VornObjectAMessage::asString() const { return IString("VornObjectAMessage"); }

IString VornObjectAMessage::asDebugInfo() const {
    return VornObjectAMessage::asString() + "[base=" + VornObject::asDebugInfo() +
           ",sHost=" + sHost + ",tHost=" + tHost + ",type=" + IString(type) +
           ",client=" + IString(client) + "]";
}

void VornObjectAMessage::read(VornJavaRead& in) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornObjectAMessage::read");
    VornObject::read(in);
    in.readString(sHost);
    in.readString(tHost);
    type = in.readInt();
    client = in.readInt();
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornObjectAMessage::read",
                     pair(type), pair(client));
}

void VornObjectAMessage::write(VornJavaWrite& out) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornObjectAMessage::write",
                     pair(type), pair(client));
    VornObject::write(out);
    out.writeString(sHost);
    out.writeString(tHost);
    out.writeInt(type);
    out.writeInt(client);
}
