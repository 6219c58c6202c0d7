#include "qarq/vorn/VornCloneableObject.hpp"

#include "vorn/VornText.hpp"

VornCloneableObject::VornCloneableObject() = default;
VornCloneableObject::VornCloneableObject(const VornCloneableObject& other) = default;
VornCloneableObject& VornCloneableObject::operator=(const VornCloneableObject&) { return *this; }
VornCloneableObject::~VornCloneableObject() = default;

IString VornCloneableObject::asString() const { return IString("VornCloneableObject"); }

IString VornCloneableObject::asDebugInfo() const {
    return VornCloneableObject::asString() + "[this=0x" + qarq::vorn::hexText(this) + "]";
}

void VornCloneableObject::read(VornJavaRead& in) { VornObject::read(in); }
void VornCloneableObject::write(VornJavaWrite& out) { VornObject::write(out); }
