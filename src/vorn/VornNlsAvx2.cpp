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

}  // namespace

// Table lookups at this width (16 shuffles a step for 256 entries) were
// slower than the scalar eight-byte steps on host text, where a wider form
// every 50 bytes or so ends a step early; the scalar kernels serve instead.
const Kernels kAvx2Kernels = {SimdLevel::avx2, "avx2", asciiRun, scalarMapRun, scalarMapAsciiRun};

}  // namespace qarq::vorn::nls

#endif
