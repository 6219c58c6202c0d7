// Pieces of the text forms shared by the wire classes.
#pragma once

#include <cstdint>

#include "qarq/base/IString.hpp"

namespace qarq::vorn {

/// An address as the debug texts show it: upper-case hex, two digits a byte.
inline IString hexText(const void* address) {
    return IString(static_cast<unsigned long>(reinterpret_cast<uintptr_t>(address)))
        .decimalToHexText();
}

}  // namespace qarq::vorn
