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

}  // namespace

// Table lookups at this width (16 shuffles a step for 256 entries) were
// slower than the scalar eight-byte steps on host text, where a wider form
// every 50 bytes or so ends a step early; the scalar kernels serve instead.
const Kernels kSse42Kernels = {SimdLevel::sse42, "sse42", asciiRun, scalarMapRun,
                               scalarMapAsciiRun};

}  // namespace qarq::vorn::nls

#endif
