#include "vorn/vornnls5.hpp"

#include "vorn/VornNlsCodec.hpp"

namespace nls = qarq::vorn::nls;
using nls::put;

namespace {

constexpr unsigned char kShiftOut = 0x0E;  // into double-byte mode
constexpr unsigned char kShiftIn = 0x0F;   // back to single bytes

}  // namespace

extern "C" {

char* vornnls5_ebcdic_sbcs_to_utf8(const VornNlsCodeSet* cs, const unsigned char* source,
                                   const unsigned char* sourceEnd, char* target,
                                   char* targetEnd) {
    VORNNLS_ENGINE_ENTRY("vornnls5_ebcdic_sbcs_to_utf8");
    return nls::sbcsToUtf8<false>(nls::derivedOf(cs), source, sourceEnd, target,
                                  targetEnd);
}

char* vornnls5_ebcdic_dbcs_to_utf8(const VornNlsCodeSet* cs, const unsigned char* source,
                                   const unsigned char* sourceEnd, char* target,
                                   char* targetEnd) {
    VORNNLS_ENGINE_ENTRY("vornnls5_ebcdic_dbcs_to_utf8");
    const nls::Derived* d = nls::derivedOf(cs);
    const uint32_t* t = d->toUtf8;
    const uint32_t* pairs = nls::pairForms(d);
    const nls::Kernels& k = nls::kernels();
    const unsigned char* s = source;
    char* out = target;
    bool shifted = false;
    while (s < sourceEnd && out < targetEnd) {
        if (!shifted) {
            // Runs of one-byte forms through the kernel; its table marks
            // the shift-out and the wider forms, which end a run.
            size_t run = k.mapRun(d->single, s, nls::span(s, sourceEnd, out, targetEnd), out);
            s += run;
            out += run;
            if (!(s < sourceEnd && out < targetEnd)) break;
            if (*s == kShiftOut) {
                shifted = true;
            } else if (!put(out, targetEnd, t[*s])) {
                break;
            }
            ++s;
            continue;
        }
        // Shifted: pairs from 0x40 to 0xFE, shift-in, or single bytes.
        // Runs of pairs with three-byte forms go first.
        nls::threeBytePairsToUtf8<nls::kPairLeadFirst4>(
            pairs, [](unsigned char b) { return b - 0x40u <= 0xFE - 0x40u; }, s, sourceEnd, out,
            targetEnd);
        if (!(s < sourceEnd && out < targetEnd)) break;
        unsigned b = *s;
        if (b >= 0x40 && b <= 0xFE) {
            if (sourceEnd - s < 2) break;
            if (!put(out, targetEnd, pairs[(b - nls::kPairLeadFirst4) * 256 + s[1]])) break;
            s += 2;
        } else if (b == kShiftIn) {
            shifted = false;
            ++s;
        } else {
            if (!put(out, targetEnd, t[b])) break;
            ++s;
        }
    }
    return out;
}

char* vornnls5_ebcdic_sbcs_from_utf8(const VornNlsCodeSet* cs, const unsigned char* source,
                                     const unsigned char* sourceEnd, char* target,
                                     char* targetEnd) {
    VORNNLS_ENGINE_ENTRY("vornnls5_ebcdic_sbcs_from_utf8");
    const nls::Derived* d = nls::derivedOf(cs);
    const uint8_t* map = nls::fromByte(d);
    const nls::Kernels& k = nls::kernels();
    const unsigned char* s = source;
    char* out = target;
    while (s < sourceEnd && out < targetEnd) {
        if (*s < 0x80) {
            size_t run =
                k.mapAsciiRun(d->asciiFrom, s, nls::span(s, sourceEnd, out, targetEnd), out);
            s += run;
            out += run;
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
    VORNNLS_ENGINE_ENTRY("vornnls5_ebcdic_dbcs_from_utf8");
    const nls::Derived* d = nls::derivedOf(cs);
    const uint16_t* map = nls::fromWord(d);
    const nls::Kernels& k = nls::kernels();
    const unsigned char* s = source;
    char* out = target;
    bool shifted = false;
    while (s < sourceEnd && out < targetEnd) {
        // Unshifted, runs of ASCII values that have one plain byte go
        // through the kernel.
        if (!shifted && d->asciiFromOk && d->asciiFromMarked[*s] != 0x80) {
            size_t run =
                k.mapRun(d->asciiFromMarked, s, nls::span(s, sourceEnd, out, targetEnd), out);
            s += run;
            out += run;
            continue;
        }
        // Shifted, runs of three-byte sequences whose entries are pairs
        // (the common case of host double-byte text) go first.
        if (shifted) {
            nls::threeBytesToPairs(map, s, sourceEnd, out, targetEnd);
            if (!(s < sourceEnd && out < targetEnd)) break;
        }
        uint32_t v;
        unsigned used = nls::readUtf8(s, sourceEnd, v);
        if (used == 0) break;
        uint16_t w = map[v];
        if (shifted) {
            if (w >= 0x100) {
                if (targetEnd - out < 2) break;
                nls::putPair(out, w);
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
