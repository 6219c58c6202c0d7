// Inline pieces shared by the conversion engines: reading one UTF-8
// character by the engines' lenient rule, writing one packed UTF-8 form, and
// eight-byte blocks for the fast paths.
#pragma once

#include <cstdint>
#include <cstring>

#include "vorn/VornNlsTable.hpp"

namespace qarq::vorn::nls {

constexpr uint64_t kHighBits = 0x8080808080808080ull;
// Set in a packed form of two or three bytes.
constexpr uint32_t kMultiByte = 0x02000000u;

inline uint64_t load8(const unsigned char* p) {
    uint64_t w;
    std::memcpy(&w, p, 8);
    return w;
}
inline void store8(char* p, uint64_t w) { std::memcpy(p, &w, 8); }

/// Writes packed form `e` when all of it fits before `end` (out < end is
/// known); false, with nothing written, when it does not.
inline bool put(char*& out, const char* end, uint32_t e) {
    size_t length = e >> 24;
    if (size_t(end - out) < length) return false;
    out[0] = char(e);
    if (length > 1) {
        out[1] = char(e >> 8);
        if (length > 2) out[2] = char(e >> 16);
    }
    out += length;
    return true;
}

/// Reads one character at `s` (s < se): the bytes used, or 0 when the
/// sequence runs past the source. Continuation bytes are not checked; a stray
/// continuation byte reads as '?', a lead byte from 0xF0 up as a 3-byte lead.
inline unsigned readUtf8(const unsigned char* s, const unsigned char* se, uint32_t& v) {
    unsigned b = s[0];
    if (b < 0x80) {
        v = b;
        return 1;
    }
    if ((b & 0xE0) == 0xC0) {
        if (se - s < 2) return 0;
        v = (b & 0x1F) << 6 | (s[1] & 0x3F);
        return 2;
    }
    if (b < 0xC0) {
        v = 0x3F;
        return 1;
    }
    if (se - s < 3) return 0;
    v = (b & 0x0F) << 12 | (s[1] & 0x3F) << 6 | (s[2] & 0x3F);
    return 3;
}

/// The data area of a record's table, and a position in it.
inline const unsigned char* dataArea(const VornNlsCodeSet* cs) {
    return cs->table + rd32(cs->table + kOffDataOffset);
}
inline uint16_t toFirst(const VornNlsCodeSet* cs, unsigned b) {
    return rd16(cs->table + kOffToFirst + 2 * b);
}

}  // namespace qarq::vorn::nls

namespace qarq::vorn::nls {

/// Writes packed form `e` with one four-byte store and returns the next
/// output position. The store may put up to three bytes of garbage behind
/// the character; the callers only use it where at least three more source
/// bytes follow, each of which writes a whole character of at least one
/// byte over that garbage before the conversion can end (see sbcsToUtf8).
inline char* put4(char* out, uint32_t e) {
    std::memcpy(out, &e, 4);
    return out + (e >> 24);
}

/// Single bytes through the packed table `t`. With kAsciiRuns, runs of bytes
/// below 0x80 are copied eight at a time (their forms are the bytes
/// themselves); otherwise eight table forms of one byte each are combined
/// into one store. Every source byte writes a character, so the four-byte
/// stores of put4 are safe while three more source bytes follow and the
/// target has room for them (9 bytes) beyond the stores of this step.
template <bool kAsciiRuns>
inline char* sbcsToUtf8(const uint32_t* t, const unsigned char* s, const unsigned char* se,
                        char* out, char* end) {
    while (se - s >= 8 + 3 && end - out >= 8 * 3 + 1 + 9) {
        if (kAsciiRuns) {
            uint64_t w = load8(s);
            if ((w & kHighBits) == 0) {
                store8(out, w);
                s += 8;
                out += 8;
                continue;
            }
        } else {
            uint32_t e0 = t[s[0]], e1 = t[s[1]], e2 = t[s[2]], e3 = t[s[3]];
            uint32_t e4 = t[s[4]], e5 = t[s[5]], e6 = t[s[6]], e7 = t[s[7]];
            if (((e0 | e1 | e2 | e3 | e4 | e5 | e6 | e7) & kMultiByte) == 0) {
                uint64_t w = uint64_t(e0 & 0xFF) | uint64_t(e1 & 0xFF) << 8 |
                             uint64_t(e2 & 0xFF) << 16 | uint64_t(e3 & 0xFF) << 24 |
                             uint64_t(e4 & 0xFF) << 32 | uint64_t(e5 & 0xFF) << 40 |
                             uint64_t(e6 & 0xFF) << 48 | uint64_t(e7 & 0xFF) << 56;
                store8(out, w);
                s += 8;
                out += 8;
                continue;
            }
        }
        for (int i = 0; i < 8; ++i) out = put4(out, t[*s++]);
    }
    while (se - s >= 1 + 3 && end - out >= 4 + 9) out = put4(out, t[*s++]);
    while (s < se && out < end) {
        if (!put(out, end, t[*s])) return out;
        ++s;
    }
    return out;
}

}  // namespace qarq::vorn::nls
