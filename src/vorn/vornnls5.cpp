#include "vorn/vornnls5.hpp"

#include <algorithm>
#include <cstring>

#include "vorn/VornNlsCodec.hpp"

namespace nls = qarq::vorn::nls;
using nls::put;

namespace {

constexpr unsigned char kShiftOut = 0x0E;  // into double-byte mode
constexpr unsigned char kShiftIn = 0x0F;   // back to single bytes
// Wider single-byte forms converted one by one before the blocks resume.
constexpr size_t kShortRun = 16;
// What the fast stores may leave behind the output (an eight-byte store of
// single bytes that ends at a shift-out); the plain loop covers it with as
// many characters, for which kPlainBehind bytes that are no shift suffice
// (each character takes at most two, the last may lack its second) and
// kSpare bytes of room (three per character).
constexpr size_t kLeftOver = 8;
constexpr unsigned kPlainBehind = 2 * kLeftOver + 2;
constexpr size_t kSpare = 3 * kLeftOver;
// Pair codes (lead byte first) less kPairBase index the pair forms; the
// lead bytes 0x40-0xFE give the indexes below kPairCodes.
constexpr uint32_t kPairBase = nls::kPairLeadFirst4 << 8;
constexpr uint32_t kPairCodes = nls::kPairLeads4 << 8;
// The word loads of the engine read bytes in little-endian order.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "little-endian word loads");

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
    const uint8_t* single = d->single;
    const unsigned char* s = source;
    char* out = target;
    bool shifted = false;
    // Host text changes state every few characters, so each state has a
    // tight loop of its own. Shifted, each pair's form goes out by one
    // four-byte store and the cursor moves by the form's length, with no
    // test of that length. Unshifted, eight bytes at a time: the place of
    // the first shift-out, and the one-byte forms of the bytes before it in
    // one eight-byte store, with no branch per byte.
    //
    // Up to kLeftOver bytes behind the output are left over by these
    // stores; the plain loop at the end writes at least that many bytes
    // over them before the conversion can end: fast steps start only before
    // `fastEnd` (behind it lie kPlainBehind bytes that are neither shift,
    // so at least kLeftOver whole characters follow any step) and leave
    // kSpare bytes of room for those characters. Text that ends in a long
    // run of shifts has no fast steps.
    const unsigned char* fastEnd = sourceEnd;
    unsigned plain = 0;
    while (plain < kPlainBehind && fastEnd > source && sourceEnd - fastEnd < 64)
        plain += unsigned(*--fastEnd) - kShiftOut > 1u;
    if (plain < kPlainBehind) fastEnd = source;
    // Each step starts before `stop` and writes at most three bytes, so a
    // chunk of m source bytes fits in 3m bytes of room.
    for (;;) {
        const size_t room = size_t(targetEnd - out);
        size_t m =
            s < fastEnd && room > kSpare ? std::min(size_t(fastEnd - s), (room - kSpare) / 3) : 0;
        if (m == 0) break;
        const unsigned char* stop = s + m;
        while (s < stop) {
            if (!shifted) {
                bool shiftOut = false;
                unsigned full = 0;
                while (size_t(stop - s) > 8) {
                    uint64_t w;
                    std::memcpy(&w, s, 8);
                    uint64_t x = w ^ 0x0E0E0E0E0E0E0E0Eull;
                    // The high bit of the first shift-out byte (bits above
                    // it may be wrong, no bit below it is set).
                    uint64_t z = (x - 0x0101010101010101ull) & ~x & nls::kHighBits;
                    uint64_t before = ((z & (0 - z)) >> 7) - 1;  // bytes before it
                    uint64_t f = uint64_t(single[s[0]]) | uint64_t(single[s[1]]) << 8 |
                                 uint64_t(single[s[2]]) << 16 | uint64_t(single[s[3]]) << 24 |
                                 uint64_t(single[s[4]]) << 32 | uint64_t(single[s[5]]) << 40 |
                                 uint64_t(single[s[6]]) << 48 | uint64_t(single[s[7]]) << 56;
                    if ((f & before & nls::kHighBits) != 0) break;  // a wider form
                    nls::store8(out, f);
                    const size_t k = z != 0 ? size_t(__builtin_ctzll(z)) >> 3 : 8;
                    // A shift-out right behind the block ends the run as well
                    // (words of eight bytes are common).
                    const bool next = s[8] == kShiftOut;
                    s += k;
                    out += k;
                    if (k < 8 || next) {
                        shiftOut = true;
                        break;
                    }
                    // A long run goes on through the kernel.
                    if (++full == 2) {
                        size_t run = nls::kernels().mapRun(single, s, size_t(stop - s), out);
                        s += run;
                        out += run;
                        full = 0;
                    }
                }
                if (!shiftOut) {
                    // Wider forms, and the last bytes before `stop`, one by one.
                    const unsigned char* shortStop =
                        size_t(stop - s) > kShortRun ? s + kShortRun : stop;
                    while (s < shortStop && *s != kShiftOut) {
                        out = nls::put4(out, t[*s]);
                        ++s;
                    }
                    if (s == shortStop) continue;
                }
                shifted = true;
                ++s;
            }
            // Shifted: pairs from 0x40 to 0xFE; any other byte ends the run.
            // Two pairs at a time: both codes from one four-byte load, and
            // the run's last odd pair taken with no branch (its store is
            // left over when there is none).
            while (stop - s > 2) {
                uint32_t w;
                std::memcpy(&w, s, 4);
                w = __builtin_bswap32(w);
                const uint32_t first = (w >> 16) - kPairBase, second = (w & 0xFFFF) - kPairBase;
                const bool lead = first < kPairCodes;
                if (lead && second < kPairCodes) {
                    out = nls::put4(out, pairs[first]);
                    out = nls::put4(out, pairs[second]);
                    s += 4;
                    continue;
                }
                const uint32_t e = pairs[lead ? first : 0];
                std::memcpy(out, &e, 4);
                out += lead ? e >> 24 : 0;
                s += lead ? 2 : 0;
                break;
            }
            while (s < stop && unsigned(s[0]) - nls::kPairLeadFirst4 < nls::kPairLeads4) {
                out = nls::put4(out, pairs[(s[0] - nls::kPairLeadFirst4) * 256 + s[1]]);
                s += 2;
            }
            if (s < stop) {
                // A shift-in, or a single byte in the shifted state.
                if (*s == kShiftIn)
                    shifted = false;
                else
                    out = nls::put4(out, t[*s]);
                ++s;
            }
        }
    }
    // The last characters, each only when all of it fits.
    while (s < sourceEnd && out < targetEnd) {
        unsigned b = *s;
        if (!shifted) {
            if (b == kShiftOut) {
                shifted = true;
            } else if (!put(out, targetEnd, t[b])) {
                break;
            }
            ++s;
        } else if (b - nls::kPairLeadFirst4 < nls::kPairLeads4) {
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
