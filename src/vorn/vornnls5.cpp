#include "vorn/vornnls5.hpp"

#include "qarq/ras/HeskTrace.hpp"
#include "vorn/VornNlsCodec.hpp"
#include "vorn/VornTrace.hpp"

namespace nls = qarq::vorn::nls;
using nls::load8;
using nls::put;

#define VORNNLS5_ENTRY(fn)                                                               \
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, fn,                   \
                     qarq::ras::pair(source, uint32_t(sourceEnd - source)))

namespace {

constexpr unsigned char kShiftOut = 0x0E;  // into double-byte mode
constexpr unsigned char kShiftIn = 0x0F;   // back to single bytes

// True when none of the eight bytes of `w` is `byte`.
inline bool lacks(uint64_t w, unsigned char byte) {
    uint64_t x = w ^ (0x0101010101010101ull * byte);
    return ((x - 0x0101010101010101ull) & ~x & nls::kHighBits) == 0;
}

}  // namespace

extern "C" {

char* vornnls5_ebcdic_sbcs_to_utf8(const VornNlsCodeSet* cs, const unsigned char* source,
                                   const unsigned char* sourceEnd, char* target,
                                   char* targetEnd) {
    VORNNLS5_ENTRY("vornnls5_ebcdic_sbcs_to_utf8");
    return nls::sbcsToUtf8<false>(nls::derivedOf(cs)->toUtf8, source, sourceEnd, target,
                                  targetEnd);
}

char* vornnls5_ebcdic_dbcs_to_utf8(const VornNlsCodeSet* cs, const unsigned char* source,
                                   const unsigned char* sourceEnd, char* target,
                                   char* targetEnd) {
    VORNNLS5_ENTRY("vornnls5_ebcdic_dbcs_to_utf8");
    const uint32_t* t = nls::derivedOf(cs)->toUtf8;
    const unsigned char* data = nls::dataArea(cs);
    const unsigned char* s = source;
    char* out = target;
    for (;;) {
        // Unshifted: single bytes through row 0, eight at a time while no
        // shift-out comes and every form is one byte.
        while (s < sourceEnd && out < targetEnd) {
            if (sourceEnd - s >= 8 && targetEnd - out >= 8 && lacks(load8(s), kShiftOut)) {
                uint32_t e0 = t[s[0]], e1 = t[s[1]], e2 = t[s[2]], e3 = t[s[3]];
                uint32_t e4 = t[s[4]], e5 = t[s[5]], e6 = t[s[6]], e7 = t[s[7]];
                if (((e0 | e1 | e2 | e3 | e4 | e5 | e6 | e7) & nls::kMultiByte) == 0) {
                    uint64_t w = uint64_t(e0 & 0xFF) | uint64_t(e1 & 0xFF) << 8 |
                                 uint64_t(e2 & 0xFF) << 16 | uint64_t(e3 & 0xFF) << 24 |
                                 uint64_t(e4 & 0xFF) << 32 | uint64_t(e5 & 0xFF) << 40 |
                                 uint64_t(e6 & 0xFF) << 48 | uint64_t(e7 & 0xFF) << 56;
                    nls::store8(out, w);
                    s += 8;
                    out += 8;
                    continue;
                }
            }
            if (*s == kShiftOut) {
                ++s;
                break;
            }
            if (!put(out, targetEnd, t[*s])) return out;
            ++s;
        }
        if (!(s < sourceEnd && out < targetEnd)) return out;
        // Shifted: pairs from 0x40 to 0xFE, shift-in, or single bytes.
        while (s < sourceEnd && out < targetEnd) {
            unsigned b = *s;
            if (b >= 0x40 && b <= 0xFE) {
                if (sourceEnd - s < 2) return out;
                const unsigned char* row = data + 4 * size_t(nls::toFirst(cs, b));
                if (!put(out, targetEnd, nls::packUtf8(nls::rd16(row + 2 * s[1])))) return out;
                s += 2;
            } else if (b == kShiftIn) {
                ++s;
                break;
            } else {
                if (!put(out, targetEnd, t[b])) return out;
                ++s;
            }
        }
        if (!(s < sourceEnd && out < targetEnd)) return out;
    }
}

char* vornnls5_ebcdic_sbcs_from_utf8(const VornNlsCodeSet* cs, const unsigned char* source,
                                     const unsigned char* sourceEnd, char* target,
                                     char* targetEnd) {
    VORNNLS5_ENTRY("vornnls5_ebcdic_sbcs_from_utf8");
    const uint8_t* map = nls::fromByte(nls::derivedOf(cs));
    const unsigned char* s = source;
    char* out = target;
    while (s < sourceEnd && out < targetEnd) {
        if (sourceEnd - s >= 8 && targetEnd - out >= 8 && (load8(s) & nls::kHighBits) == 0) {
            uint64_t w = uint64_t(map[s[0]]) | uint64_t(map[s[1]]) << 8 |
                         uint64_t(map[s[2]]) << 16 | uint64_t(map[s[3]]) << 24 |
                         uint64_t(map[s[4]]) << 32 | uint64_t(map[s[5]]) << 40 |
                         uint64_t(map[s[6]]) << 48 | uint64_t(map[s[7]]) << 56;
            nls::store8(out, w);
            s += 8;
            out += 8;
            continue;
        }
        uint32_t v;
        unsigned used = nls::readUtf8(s, sourceEnd, v);
        if (used == 0) break;
        *out++ = char(map[v]);
        s += used;
    }
    return out;
}

char* vornnls5_ebcdic_dbcs_from_utf8(const VornNlsCodeSet* cs, const unsigned char* source,
                                     const unsigned char* sourceEnd, char* target,
                                     char* targetEnd) {
    VORNNLS5_ENTRY("vornnls5_ebcdic_dbcs_from_utf8");
    const uint16_t* map = nls::fromWord(nls::derivedOf(cs));
    const unsigned char* s = source;
    char* out = target;
    bool shifted = false;
    while (s < sourceEnd && out < targetEnd) {
        if (!shifted && sourceEnd - s >= 8 && targetEnd - out >= 8 &&
            (load8(s) & nls::kHighBits) == 0) {
            uint16_t w0 = map[s[0]], w1 = map[s[1]], w2 = map[s[2]], w3 = map[s[3]];
            uint16_t w4 = map[s[4]], w5 = map[s[5]], w6 = map[s[6]], w7 = map[s[7]];
            uint64_t w = uint64_t(w0) | uint64_t(w1) << 8 | uint64_t(w2) << 16 |
                         uint64_t(w3) << 24 | uint64_t(w4) << 32 | uint64_t(w5) << 40 |
                         uint64_t(w6) << 48 | uint64_t(w7) << 56;
            // Only when every entry is one byte and none shifts out.
            if ((w0 | w1 | w2 | w3 | w4 | w5 | w6 | w7) < 0x100 && lacks(w, kShiftOut)) {
                nls::store8(out, w);
                s += 8;
                out += 8;
                continue;
            }
        }
        uint32_t v;
        unsigned used = nls::readUtf8(s, sourceEnd, v);
        if (used == 0) break;
        uint16_t w = map[v];
        if (shifted) {
            if (w >= 0x100) {
                if (targetEnd - out < 2) break;
                out[0] = char(w >> 8);
                out[1] = char(w);
                out += 2;
            } else if (targetEnd - out >= 2) {
                out[0] = char(kShiftIn);
                out[1] = char(w);
                out += 2;
                if (w != kShiftOut) shifted = false;
            }
            // else: no room for shift-in and byte; this character is skipped.
        } else if (w >= 0x100) {
            if (targetEnd - out < 3) break;
            out[0] = char(kShiftOut);
            out[1] = char(w >> 8);
            out[2] = char(w);
            out += 3;
            shifted = true;
        } else {
            *out++ = char(w);
            if (w == kShiftOut) shifted = true;
        }
        s += used;
    }
    if (shifted && out < targetEnd) *out++ = char(kShiftIn);
    return out;
}

}  // extern "C"
