// AVX-512 kernels (64 bytes a step, BW and VBMI): byte tables of 128 and
// 256 entries are two and four registers, looked up with one or two
// two-register permutes. Compiled by target attributes; chosen only when the
// processor reports AVX-512 F, BW and VBMI.
#include "vorn/VornNlsSimd.hpp"

#ifdef QARQ_NLS_X86

#include <immintrin.h>

#define QARQ_AVX512 __attribute__((target("avx512f,avx512bw,avx512vbmi")))

namespace qarq::vorn::nls {
namespace {

QARQ_AVX512 inline __m512i load(const void* p) {
    return _mm512_loadu_si512(p);
}

// The first j bytes of `v` to `out` (j < 64), by a masked store.
QARQ_AVX512 inline void storePart(char* out, __m512i v, unsigned j) {
    _mm512_mask_storeu_epi8(out, (uint64_t(1) << j) - 1, v);
}

QARQ_AVX512 size_t asciiRun(const unsigned char* s, size_t n, char* out) {
    size_t k = 0;
    for (; n - k >= 64; k += 64) {
        __m512i x = load(s + k);
        uint64_t stop = _mm512_movepi8_mask(x);
        if (stop != 0) {
            unsigned j = unsigned(__builtin_ctzll(stop));
            storePart(out + k, x, j);
            return k + j;
        }
        _mm512_storeu_si512(out + k, x);
    }
    return k + scalarAsciiRun(s + k, n - k, out + k);
}

QARQ_AVX512 size_t mapRun(const uint8_t* t, const unsigned char* s, size_t n, char* out) {
    if (n < 64)
        return scalarMapRun(t, s, n, out);
    const __m512i t0 = load(t), t1 = load(t + 64), t2 = load(t + 128), t3 = load(t + 192);
    const __m512i marker = _mm512_set1_epi8(char(0x80));
    size_t k = 0;
    for (; n - k >= 64; k += 64) {
        __m512i x = load(s + k);
        // The permutes read the low seven bits; the top bit picks the half.
        __m512i low = _mm512_permutex2var_epi8(t0, x, t1);
        __m512i high = _mm512_permutex2var_epi8(t2, x, t3);
        __m512i r = _mm512_mask_blend_epi8(_mm512_movepi8_mask(x), low, high);
        uint64_t stop = _mm512_cmpeq_epi8_mask(r, marker);
        if (stop != 0) {
            unsigned j = unsigned(__builtin_ctzll(stop));
            storePart(out + k, r, j);
            return k + j;
        }
        _mm512_storeu_si512(out + k, r);
    }
    return k + scalarMapRun(t, s + k, n - k, out + k);
}

QARQ_AVX512 size_t mapAsciiRun(const uint8_t* t, const unsigned char* s, size_t n, char* out) {
    if (n < 64)
        return scalarMapAsciiRun(t, s, n, out);
    const __m512i t0 = load(t), t1 = load(t + 64);
    size_t k = 0;
    for (; n - k >= 64; k += 64) {
        __m512i x = load(s + k);
        __m512i r = _mm512_permutex2var_epi8(t0, x, t1);
        uint64_t stop = _mm512_movepi8_mask(x);
        if (stop != 0) {
            unsigned j = unsigned(__builtin_ctzll(stop));
            storePart(out + k, r, j);
            return k + j;
        }
        _mm512_storeu_si512(out + k, r);
    }
    return k + scalarMapAsciiRun(t, s + k, n - k, out + k);
}

}  // namespace

const Kernels kAvx512Kernels = {SimdLevel::avx512, "avx512", asciiRun, mapRun, mapAsciiRun};

}  // namespace qarq::vorn::nls

#endif
