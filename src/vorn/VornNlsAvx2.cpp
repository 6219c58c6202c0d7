// AVX2 kernels (32 bytes a step). Compiled by target attributes, so that the
// rest of the library keeps the base instruction set; chosen only when the
// processor reports AVX2.
#include "vorn/VornNlsSimd.hpp"

#ifdef QARQ_NLS_X86

#include <immintrin.h>

#include <cstring>

#define QARQ_AVX2 __attribute__((target("avx2")))

namespace qarq::vorn::nls {
namespace {

QARQ_AVX2 inline __m256i load(const unsigned char* p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

// The first j bytes of `v` to `out` (j < 32): the rest of the step's bytes
// are not the kernel's to write.
QARQ_AVX2 inline void storePart(char* out, __m256i v, unsigned j) {
    alignas(32) char buffer[32];
    _mm256_store_si256(reinterpret_cast<__m256i*>(buffer), v);
    std::memcpy(out, buffer, j);
}

// A 16-entry slice of a byte table in both lanes.
QARQ_AVX2 inline __m256i slice(const uint8_t* t) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(t)));
}

// table[x] for the bytes of x whose high nibble is below `slices`: per
// nibble h, the bytes of that nibble get indices 0x70-0x7F and all others
// 0x80 or more, which the shuffle turns into 0, so the slices can be or-ed.
template <unsigned kSlices>
QARQ_AVX2 inline __m256i lookup(const __m256i (&slices)[16], __m256i x) {
    const __m256i bias = _mm256_set1_epi8(0x70);
    __m256i r = _mm256_setzero_si256();
    for (unsigned h = 0; h < kSlices; ++h) {
        __m256i idx = _mm256_adds_epu8(_mm256_xor_si256(x, _mm256_set1_epi8(char(h << 4))), bias);
        r = _mm256_or_si256(r, _mm256_shuffle_epi8(slices[h], idx));
    }
    return r;
}

QARQ_AVX2 size_t asciiRun(const unsigned char* s, size_t n, char* out) {
    size_t k = 0;
    for (; n - k >= 32; k += 32) {
        __m256i x = load(s + k);
        auto stop = unsigned(_mm256_movemask_epi8(x));
        if (stop != 0) {
            unsigned j = unsigned(__builtin_ctz(stop));
            storePart(out + k, x, j);
            return k + j;
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + k), x);
    }
    return k + scalarAsciiRun(s + k, n - k, out + k);
}

QARQ_AVX2 size_t mapRun(const uint8_t* t, const unsigned char* s, size_t n, char* out) {
    if (n < 32) return scalarMapRun(t, s, n, out);
    __m256i slices[16];
    for (unsigned h = 0; h < 16; ++h) slices[h] = slice(t + 16 * h);
    const __m256i marker = _mm256_set1_epi8(char(0x80));
    size_t k = 0;
    for (; n - k >= 32; k += 32) {
        __m256i r = lookup<16>(slices, load(s + k));
        auto stop = unsigned(_mm256_movemask_epi8(_mm256_cmpeq_epi8(r, marker)));
        if (stop != 0) {
            unsigned j = unsigned(__builtin_ctz(stop));
            storePart(out + k, r, j);
            return k + j;
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + k), r);
    }
    return k + scalarMapRun(t, s + k, n - k, out + k);
}

QARQ_AVX2 size_t mapAsciiRun(const uint8_t* t, const unsigned char* s, size_t n, char* out) {
    if (n < 32) return scalarMapAsciiRun(t, s, n, out);
    __m256i slices[16];
    for (unsigned h = 0; h < 8; ++h) slices[h] = slice(t + 16 * h);
    size_t k = 0;
    for (; n - k >= 32; k += 32) {
        __m256i x = load(s + k);
        __m256i r = lookup<8>(slices, x);
        auto stop = unsigned(_mm256_movemask_epi8(x));
        if (stop != 0) {
            unsigned j = unsigned(__builtin_ctz(stop));
            storePart(out + k, r, j);
            return k + j;
        }
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + k), r);
    }
    return k + scalarMapAsciiRun(t, s + k, n - k, out + k);
}

}  // namespace

const Kernels kAvx2Kernels = {SimdLevel::avx2, "avx2", asciiRun, mapRun, mapAsciiRun};

}  // namespace qarq::vorn::nls

#endif
