#include "qarq/vorn/VornJavaString.hpp"


#include "vorn/VornText.hpp"

VornJavaString::VornJavaString() = default;

VornJavaString::VornJavaString(const IString& text) : IString(text) {}

VornJavaString::VornJavaString(const char* text) : IString(text != nullptr ? text : "") {}

VornJavaString::VornJavaString(const VornJavaString& other) = default;

VornJavaString& VornJavaString::operator=(const VornJavaString& other) {
    IString::operator=(other);
    return *this;
}

VornJavaString::~VornJavaString() = default;

IString VornJavaString::asString() const { return IString("VornJavaString"); }

IString VornJavaString::asDebugInfo() const {
    return VornJavaString::asString() + "[this=0x" + qarq::vorn::hexText(this) + ", length=" +
           IString(length()) + "]";
}
