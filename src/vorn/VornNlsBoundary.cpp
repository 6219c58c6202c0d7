#include "qarq/vorn/VornNlsBoundary.hpp"

#include <cstdint>
#include <cstring>

#include "qarq/ras/HeskTrace.hpp"
#include "qarq/vorn/vornnls1.hpp"
#include "qarq/vorn/vornnls6.hpp"
#include "vorn/VornNlsCodec.hpp"
#include "vorn/VornNlsState.hpp"
#include "vorn/VornTrace.hpp"

using qarq::ras::pair;
namespace nls = qarq::vorn::nls;

namespace {

// Eight bytes below 0x80 are eight characters for every walker but kind 4's.
inline bool eightAscii(const unsigned char* p) {
    uint64_t w;
    std::memcpy(&w, p, 8);
    return (w & nls::kHighBits) == 0;
}

// Kinds 2 and 3: a byte below 0x80, or one with a form of its own in the
// derived table, is one character; kind 2 reads any other byte as the lead
// of a pair, kind 3 as the first of byteClass bytes (255: a dropped byte).
template <unsigned kKind>
size_t walkAscii(const VornNlsCodeSet* cs, const nls::Derived* d, const unsigned char* s,
                 size_t n) {
    const unsigned char* byteClass = cs->table + nls::kOffByteClass;
    size_t i = 0;
    while (i < n) {
        if (n - i >= 8 && eightAscii(s + i)) {
            i += 8;
            continue;
        }
        unsigned b = s[i];
        size_t used = 1;
        if (b >= 0x80 && d->toUtf8[b] == 0) {
            if (kKind == 2)
                used = 2;
            else if (byteClass[b] != 255)
                used = byteClass[b];
        }
        if (n - i < used)
            break;
        i += used;
    }
    return i;
}

// Kind 4: unshifted, every byte is one character and the shift-out enters a
// run; shifted, 0x40-0xFE lead a pair, the shift-in leaves the run and any
// other byte is one character.
size_t walkShifted(const unsigned char* s, size_t n, bool& shifted) {
    size_t i = 0;
    while (i < n) {
        unsigned b = s[i];
        if (!shifted) {
            if (b == VORNNLS_SHIFT_OUT)
                shifted = true;
            ++i;
        } else if (b >= nls::kPairLeadFirst4 && b <= 0xFE) {
            if (n - i < 2)
                break;
            i += 2;
        } else {
            if (b == VORNNLS_SHIFT_IN)
                shifted = false;
            ++i;
        }
    }
    return i;
}

// UTF-8 by the engines' reader: a sequence that readUtf8 would find running
// past the end is left for the next piece.
size_t walkUtf8(const unsigned char* s, size_t n) {
    size_t i = 0;
    while (i < n) {
        if (n - i >= 8 && eightAscii(s + i)) {
            i += 8;
            continue;
        }
        uint32_t v;
        unsigned used = nls::readUtf8(s + i, s + n, v);
        if (used == 0)
            break;
        i += used;
    }
    return i;
}

size_t walk(const VornNlsCodeSet* cs, const unsigned char* s, size_t n, bool& shifted) {
    if (cs->table == nullptr)
        return walkUtf8(s, n);
    // The same choice as the conversion's: a table the loader did not build,
    // or a kind no engine knows, passes bytes through one by one.
    const nls::Derived* d = nls::derivedOf(cs);
    if (d == nullptr || d->kind != cs->kind)
        return n;
    switch (cs->kind) {
        case 2:
            return walkAscii<2>(cs, d, s, n);
        case 3:
            return walkAscii<3>(cs, d, s, n);
        case 4:
            return walkShifted(s, n, shifted);
        default:
            return n;
    }
}

}  // namespace

extern "C" {

size_t VornNlsBoundary(const VornNlsCodeSet* cs, const char* source, size_t length, int* shifted) {
    uint32_t length32 = length > UINT32_MAX ? UINT32_MAX : uint32_t(length);
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornNlsBoundary",
                     pair(&cs, uint32_t(sizeof cs)), pair(length32));
    if (cs == nullptr) {
        if (!nls::tisInitialised())
            vornnls1_tis_init();
        cs = def_cs;
    }
    bool state = shifted != nullptr && *shifted != 0;
    size_t cut = source == nullptr
                     ? 0
                     : walk(cs, reinterpret_cast<const unsigned char*>(source), length, state);
    if (cs->table == nullptr || cs->kind != 4)
        state = false;
    if (shifted != nullptr)
        *shifted = state ? 1 : 0;
    uint32_t cut32 = cut > UINT32_MAX ? UINT32_MAX : uint32_t(cut);
    int32_t state32 = state ? 1 : 0;
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornNlsBoundary", pair(cut32),
                     pair(state32));
    return cut;
}

}  // extern "C"
