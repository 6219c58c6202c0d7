#include "qarq/vorn/VornObject.hpp"

#include "qarq/ras/HeskLog.hpp"
#include "qarq/vorn/VornJavaExcNullObject.hpp"
#include "qarq/vorn/VornJavaRead.hpp"
#include "qarq/vorn/VornJavaString.hpp"
#include "qarq/vorn/VornJavaWrite.hpp"
#include "vorn/VornText.hpp"
#include "vorn/VornTrace.hpp"

using qarq::ras::pair;

VornObject::VornObject() = default;
VornObject::VornObject(const VornObject& other) = default;
VornObject& VornObject::operator=(const VornObject&) { return *this; }
VornObject::~VornObject() = default;

IString VornObject::asString() const { return IString("VornObject"); }

IString VornObject::asDebugInfo() const {
    return VornObject::asString() + "[this=0x" + qarq::vorn::hexText(this) + "]";
}

void VornObject::process() {}
void VornObject::read(VornJavaRead&) {}
void VornObject::write(VornJavaWrite&) {}

void VornObject::writeObject(VornJavaWrite& out, VornObject& object) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornObject::writeObject",
                     pair(object.asString()));
    out.writeClass(VornJavaString(object.eucClassName()));
    object.write(out);
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornObject::writeObject");
}

void VornObject::writeObject(VornJavaWrite& out, VornObject* object) {
    if (object == nullptr) {
        QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornObject::writeObject",
                         pair("null"));
        out.writeClass(VornJavaString());
        return;
    }
    writeObject(out, *object);
}

void VornObject::readObject(VornJavaRead& in, VornObject& object) { readObject(in, &object); }

void VornObject::readObject(VornJavaRead& in, VornObject* object) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornObject::readObject",
                     pair(object != nullptr ? static_cast<const char*>(object->asString()) : "null"));
    const VornJavaString name = in.readClass();
    if (name.length() == 0) return;
    if (object == nullptr) {
        qarq::ras::logError("VornObject::readObject", __LINE__, 0, 0,
                            {pair(name.data(), name.length())});
        VornJavaExcNullObject(name,
                              IExceptionLocation("vorn\\VORNOBJ", "VornObject::readObject", __LINE__));
    }
    object->read(in);
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornObject::readObject",
                     pair(name.data(), name.length()));
}
