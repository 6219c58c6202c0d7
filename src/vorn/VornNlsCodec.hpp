// Inline pieces shared by the conversion engines: their entry trace point,
// reading one UTF-8 character by the engines' lenient rule, writing packed
// UTF-8 forms and double-byte codes, single bytes to UTF-8 through the
// level's kernels, the runs of pairs of kind 2, and the
// loop of the ASCII-family engines.
#pragma once

#include <cstdint>
#include <cstring>

#include "qarq/ras/HeskTrace.hpp"
#include "vorn/VornNlsSimd.hpp"
#include "vorn/VornNlsTable.hpp"
#include "vorn/VornTrace.hpp"

// The entry trace point of an engine, in the engine's own body (its line is
// the engine's).
#define VORNNLS_ENGINE_ENTRY(fn)                                               \
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, fn,         \
                     qarq::ras::pair(source, uint32_t(sourceEnd - source)))

namespace qarq::vorn::nls {

constexpr uint64_t kHighBits = 0x8080808080808080ull;
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

/// The smaller of the source left and the room left: what a kernel may use.
inline size_t span(const unsigned char* s, const unsigned char* se, const char* out,
                   const char* end) {
    size_t a = size_t(se - s), b = size_t(end - out);
    return a < b ? a : b;
}

/// Writes packed form `e` with one four-byte store and returns the next
/// output position; up to three bytes behind the form are left over.
inline char* put4(char* out, uint32_t e) {
    std::memcpy(out, &e, 4);
    return out + (e >> 24);
}

/// Every byte through its packed form with no branch: each four-byte store
/// starts where the last form ended, over what that store left over. Steps
/// run while at least three source bytes and their room (9 bytes) remain
/// behind the step, so the plain loop that follows writes at least three
/// bytes over the last store's leftovers before the conversion can end.
/// Returns the source position reached; advances `out`.
inline const unsigned char* formsToUtf8(const uint32_t* t, const uint8_t* b,
                                        const unsigned char* s, const unsigned char* se,
                                        char*& out, const char* end) {
    char* o = out;
    while (se - s >= 8 + 3 && end - o >= 8 * 3 + 1 + 9) {
        uint64_t w = uint64_t(b[s[0]]) | uint64_t(b[s[1]]) << 8 | uint64_t(b[s[2]]) << 16 |
                     uint64_t(b[s[3]]) << 24 | uint64_t(b[s[4]]) << 32 |
                     uint64_t(b[s[5]]) << 40 | uint64_t(b[s[6]]) << 48 |
                     uint64_t(b[s[7]]) << 56;
        if ((w & kHighBits) == 0) {
            store8(o, w);
            o += 8;
            s += 8;
            continue;
        }
        o = put4(o, t[s[0]]);
        o = put4(o, t[s[1]]);
        o = put4(o, t[s[2]]);
        o = put4(o, t[s[3]]);
        o = put4(o, t[s[4]]);
        o = put4(o, t[s[5]]);
        o = put4(o, t[s[6]]);
        o = put4(o, t[s[7]]);
        s += 8;
    }
    out = o;
    return s;
}

/// Single bytes to UTF-8 through the derived table `d`: runs of one-byte
/// forms go through the level's kernel (for the ASCII family, bytes below
/// 0x80 are their own form), and each byte with a wider form is written by
/// the plain rule.
template <bool kAsciiFamily>
inline char* sbcsToUtf8(const Derived* d, const unsigned char* s, const unsigned char* se,
                        char* out, char* end) {
    const Kernels& k = kernels();
    const uint32_t* t = d->toUtf8;
    if (d->latin1Ok && k.latin1ToUtf8 != nullptr) {
        for (;;) {
            s += k.latin1ToUtf8(d->latin1, s, size_t(se - s), out, end);
            // Stopped before a block with a byte outside the kernel's table,
            // or at its margins. The block goes by the plain rule when its
            // forms (96 bytes at most) and the last store's leftovers fit,
            // with room behind for at least three more characters to cover
            // those leftovers; its characters cover the kernel's leftovers.
            if (size_t(se - s) < kLatin1Source || size_t(end - out) < 32 * 3 + 16) break;
            for (const unsigned char* block = s + 32; s < block; ++s) out = put4(out, t[*s]);
        }
    }
    if (!kAsciiFamily && k.level != SimdLevel::avx512) s = formsToUtf8(t, d->single, s, se, out, end);
    while (s < se && out < end) {
        size_t n = span(s, se, out, end);
        size_t run = kAsciiFamily ? k.asciiRun(s, n, out) : k.mapRun(d->single, s, n, out);
        s += run;
        out += run;
        // What stopped the kernel, and any like it that follow.
        while (s < se && out < end && (kAsciiFamily ? *s >= 0x80 : d->single[*s] == 0x80)) {
            if (!put(out, end, t[*s])) return out;
            ++s;
        }
    }
    return out;
}

/// Writes double-byte code `w`, lead byte first (two bytes of room are known).
inline void putPair(char*& out, uint16_t w) {
    out[0] = char(w >> 8);
    out[1] = char(w);
    out += 2;
}

/// Runs of pairs whose forms have three bytes (the common ones), with no
/// test of the form's length per pair; stops at a byte `isLead` refuses or
/// at the first other form. Pair tables start at lead byte kLeadFirst.
template <unsigned kLeadFirst, typename IsLead>
inline void threeBytePairsToUtf8(const uint32_t* pairs, IsLead isLead, const unsigned char*& s,
                                 const unsigned char* se, char*& out, const char* end) {
    while (se - s >= 2 && end - out >= 3 && isLead(s[0])) {
        uint32_t e = pairs[(s[0] - kLeadFirst) * 256 + s[1]];
        if ((e >> 24) != 3) break;
        out[0] = char(e);
        out[1] = char(e >> 8);
        out[2] = char(e >> 16);
        out += 3;
        s += 2;
    }
}

/// Runs of three-byte sequences whose entries are pairs (the common case of
/// double-byte text), with no other test per character.
inline void threeBytesToPairs(const uint16_t* map, const unsigned char*& s,
                              const unsigned char* se, char*& out, const char* end) {
    while (se - s >= 3 && end - out >= 2 && s[0] >= 0xE0) {
        uint16_t w = map[(s[0] & 0x0Fu) << 12 | (s[1] & 0x3Fu) << 6 | (s[2] & 0x3Fu)];
        if (w < 0x100) break;
        putPair(out, w);
        s += 3;
    }
}

/// The loop of the ASCII-family engines: runs of bytes below 0x80 are
/// copied by the level's kernel, and each other character goes to
/// `step(s, out)`, which moves both cursors and returns false to stop.
template <typename Step>
inline char* asciiFamilyLoop(const unsigned char* s, const unsigned char* se, char* out,
                             char* end, Step step) {
    const Kernels& k = kernels();
    while (s < se && out < end) {
        if (*s < 0x80) {
            size_t run = k.asciiRun(s, span(s, se, out, end), out);
            s += run;
            out += run;
            continue;
        }
        if (!step(s, out)) break;
    }
    return out;
}

}  // namespace qarq::vorn::nls
