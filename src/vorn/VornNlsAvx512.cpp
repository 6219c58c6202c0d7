// AVX-512 kernels (64 bytes a step, BW and VBMI): byte tables of 128 and
// 256 entries are two and four registers, looked up with one or two
// two-register permutes. Compiled by target attributes; chosen only when the
// processor reports AVX-512 F, BW and VBMI.
#include "vorn/VornNlsSimd.hpp"

#ifdef QARQ_NLS_X86

#include <immintrin.h>

#include "vorn/VornNlsSteps.hpp"

#define QARQ_AVX512 __attribute__((target("avx512f,avx512bw,avx512vbmi")))

namespace qarq::vorn::nls {
namespace {

QARQ_AVX512 inline __m512i load(const void* p) {
    return _mm512_loadu_si512(p);
}

// `r` to `out` when `stop` is empty (true); else only the j bytes before
// its first bit, by a masked store (false).
QARQ_AVX512 inline bool storeUpTo(char* out, __m512i r, uint64_t stop, size_t& j) {
    if (stop == 0) {
        _mm512_storeu_si512(out, r);
        return true;
    }
    j = unsigned(__builtin_ctzll(stop));
    _mm512_mask_storeu_epi8(out, (uint64_t(1) << j) - 1, r);
    return false;
}

struct AsciiStep {
    static constexpr size_t kWidth = 64;
    QARQ_AVX512 bool copy(const unsigned char* s, char* out, size_t& j) const {
        __m512i x = load(s);
        return storeUpTo(out, x, _mm512_movepi8_mask(x), j);
    }
    size_t rest(const unsigned char* s, size_t n, char* out) const {
        return scalarAsciiRun(s, n, out);
    }
};

struct MapStep {
    static constexpr size_t kWidth = 64;
    QARQ_AVX512 explicit MapStep(const uint8_t* table)
        : t(table), t0(load(t)), t1(load(t + 64)), t2(load(t + 128)), t3(load(t + 192)),
          marker(_mm512_set1_epi8(char(0x80))) {}
    QARQ_AVX512 bool copy(const unsigned char* s, char* out, size_t& j) const {
        __m512i x = load(s);
        // The permutes read the low seven bits; the top bit picks the half.
        __m512i low = _mm512_permutex2var_epi8(t0, x, t1);
        __m512i high = _mm512_permutex2var_epi8(t2, x, t3);
        __m512i r = _mm512_mask_blend_epi8(_mm512_movepi8_mask(x), low, high);
        return storeUpTo(out, r, _mm512_cmpeq_epi8_mask(r, marker), j);
    }
    size_t rest(const unsigned char* s, size_t n, char* out) const {
        return scalarMapRun(t, s, n, out);
    }
    const uint8_t* t;
    __m512i t0, t1, t2, t3, marker;
};

struct MapAsciiStep {
    static constexpr size_t kWidth = 64;
    QARQ_AVX512 explicit MapAsciiStep(const uint8_t* table)
        : t(table), t0(load(t)), t1(load(t + 64)) {}
    QARQ_AVX512 bool copy(const unsigned char* s, char* out, size_t& j) const {
        __m512i x = load(s);
        return storeUpTo(out, _mm512_permutex2var_epi8(t0, x, t1), _mm512_movepi8_mask(x), j);
    }
    size_t rest(const unsigned char* s, size_t n, char* out) const {
        return scalarMapAsciiRun(t, s, n, out);
    }
    const uint8_t* t;
    __m512i t0, t1;
};

[[gnu::flatten]] QARQ_AVX512 size_t asciiRun(const unsigned char* s, size_t n, char* out) {
    return runBySteps(AsciiStep(), s, n, out);
}

// Short runs skip the table loads.
[[gnu::flatten]] QARQ_AVX512 size_t mapRun(const uint8_t* t, const unsigned char* s, size_t n, char* out) {
    return n < 64 ? scalarMapRun(t, s, n, out) : runBySteps(MapStep(t), s, n, out);
}

[[gnu::flatten]] QARQ_AVX512 size_t mapAsciiRun(const uint8_t* t, const unsigned char* s, size_t n, char* out) {
    return n < 64 ? scalarMapAsciiRun(t, s, n, out) : runBySteps(MapAsciiStep(t), s, n, out);
}

}  // namespace

const Kernels kAvx512Kernels = {SimdLevel::avx512, "avx512", asciiRun, mapRun, mapAsciiRun,
                                avx2Latin1ToUtf8};

}  // namespace qarq::vorn::nls

#endif
