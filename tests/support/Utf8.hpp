// UTF-8 forms of UCS-2 values, for building test and benchmark text.
#pragma once

#include <cstdint>
#include <string>

namespace qarq::support {

/// Appends the one- to three-byte form of `v` (below U+10000) to `s`.
inline void appendUtf8(std::string& s, uint32_t v) {
    if (v < 0x80) {
        s += char(v);
    } else if (v < 0x800) {
        s += char(0xC0 | v >> 6), s += char(0x80 | (v & 0x3F));
    } else {
        s += char(0xE0 | v >> 12), s += char(0x80 | ((v >> 6) & 0x3F)),
            s += char(0x80 | (v & 0x3F));
    }
}

inline std::string utf8(uint32_t v) {
    std::string s;
    appendUtf8(s, v);
    return s;
}

}  // namespace qarq::support
