// SSE4.2 kernels (16 bytes a step). Compiled by target attributes, so that the
// rest of the library keeps the base instruction set; chosen only when the
// processor reports SSE4.2.
#include "vorn/VornNlsSimd.hpp"

#ifdef QARQ_NLS_X86

#include <immintrin.h>

#include <cstring>

#define QARQ_SSE42 __attribute__((target("sse4.2")))

namespace qarq::vorn::nls {
namespace {

QARQ_SSE42 inline __m128i load(const unsigned char* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

// The first j bytes of `v` to `out` (j < 16): the rest of the step's bytes
// are not the kernel's to write.
QARQ_SSE42 inline void storePart(char* out, __m128i v, unsigned j) {
    alignas(16) char buffer[16];
    _mm_store_si128(reinterpret_cast<__m128i*>(buffer), v);
    std::memcpy(out, buffer, j);
}

// A 16-entry slice of a byte table.
QARQ_SSE42 inline __m128i slice(const uint8_t* t) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(t));
}

// table[x] for the bytes of x whose high nibble is below `slices`: per
// nibble h, the bytes of that nibble get indices 0x70-0x7F and all others
// 0x80 or more, which the shuffle turns into 0, so the slices can be or-ed.
template <unsigned kSlices>
QARQ_SSE42 inline __m128i lookup(const __m128i (&slices)[16], __m128i x) {
    const __m128i bias = _mm_set1_epi8(0x70);
    __m128i r = _mm_setzero_si128();
    for (unsigned h = 0; h < kSlices; ++h) {
        __m128i idx = _mm_adds_epu8(_mm_xor_si128(x, _mm_set1_epi8(char(h << 4))), bias);
        r = _mm_or_si128(r, _mm_shuffle_epi8(slices[h], idx));
    }
    return r;
}

QARQ_SSE42 size_t asciiRun(const unsigned char* s, size_t n, char* out) {
    size_t k = 0;
    for (; n - k >= 16; k += 16) {
        __m128i x = load(s + k);
        auto stop = unsigned(_mm_movemask_epi8(x));
        if (stop != 0) {
            unsigned j = unsigned(__builtin_ctz(stop));
            storePart(out + k, x, j);
            return k + j;
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + k), x);
    }
    return k + scalarAsciiRun(s + k, n - k, out + k);
}

QARQ_SSE42 size_t mapRun(const uint8_t* t, const unsigned char* s, size_t n, char* out) {
    if (n < 16) return scalarMapRun(t, s, n, out);
    __m128i slices[16];
    for (unsigned h = 0; h < 16; ++h) slices[h] = slice(t + 16 * h);
    const __m128i marker = _mm_set1_epi8(char(0x80));
    size_t k = 0;
    for (; n - k >= 16; k += 16) {
        __m128i r = lookup<16>(slices, load(s + k));
        auto stop = unsigned(_mm_movemask_epi8(_mm_cmpeq_epi8(r, marker)));
        if (stop != 0) {
            unsigned j = unsigned(__builtin_ctz(stop));
            storePart(out + k, r, j);
            return k + j;
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + k), r);
    }
    return k + scalarMapRun(t, s + k, n - k, out + k);
}

QARQ_SSE42 size_t mapAsciiRun(const uint8_t* t, const unsigned char* s, size_t n, char* out) {
    if (n < 16) return scalarMapAsciiRun(t, s, n, out);
    __m128i slices[16];
    for (unsigned h = 0; h < 8; ++h) slices[h] = slice(t + 16 * h);
    size_t k = 0;
    for (; n - k >= 16; k += 16) {
        __m128i x = load(s + k);
        __m128i r = lookup<8>(slices, x);
        auto stop = unsigned(_mm_movemask_epi8(x));
        if (stop != 0) {
            unsigned j = unsigned(__builtin_ctz(stop));
            storePart(out + k, r, j);
            return k + j;
        }
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + k), r);
    }
    return k + scalarMapAsciiRun(t, s + k, n - k, out + k);
}

}  // namespace

const Kernels kSse42Kernels = {SimdLevel::sse42, "sse42", asciiRun, mapRun, mapAsciiRun};

}  // namespace qarq::vorn::nls

#endif
