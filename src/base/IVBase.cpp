#include "qarq/base/IVBase.hpp"

#include <cstdint>

IVBase::~IVBase() = default;

IString IVBase::asString() const { return IString("IVBase object"); }

IString IVBase::asDebugInfo() const {
    IString address(static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(this)));
    return IString("IVBase(@") + address.decimalToHexText() + ")";
}
