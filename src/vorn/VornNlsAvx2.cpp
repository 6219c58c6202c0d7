// AVX2 kernels (32 bytes a step). Compiled by target attributes, so that the
// rest of the library keeps the base instruction set; chosen only when the
// processor reports AVX2.
#include "vorn/VornNlsSimd.hpp"

#ifdef QARQ_NLS_X86

#include <immintrin.h>

#include <cstring>

#include "vorn/VornNlsSteps.hpp"

#define QARQ_AVX2 __attribute__((target("avx2")))

namespace qarq::vorn::nls {
namespace {

struct AsciiStep {
    static constexpr size_t kWidth = 32;
    QARQ_AVX2 bool copy(const unsigned char* s, char* out, size_t& j) const {
        __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
        auto stop = unsigned(_mm256_movemask_epi8(x));
        if (stop == 0) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), x);
            return true;
        }
        // Only the bytes before the stop are the kernel's to write.
        j = unsigned(__builtin_ctz(stop));
        alignas(32) char buffer[32];
        _mm256_store_si256(reinterpret_cast<__m256i*>(buffer), x);
        std::memcpy(out, buffer, j);
        return false;
    }
    size_t rest(const unsigned char* s, size_t n, char* out) const {
        return scalarAsciiRun(s, n, out);
    }
};

[[gnu::flatten]] QARQ_AVX2 size_t asciiRun(const unsigned char* s, size_t n, char* out) {
    return runBySteps(AsciiStep(), s, n, out);
}

}  // namespace

// Table lookups at this width (16 shuffles a step for 256 entries) were
// slower than the scalar eight-byte steps on host text, where a wider form
// every 50 bytes or so ends a step early; the scalar kernels serve instead.
const Kernels kAvx2Kernels = {SimdLevel::avx2, "avx2", asciiRun, scalarMapRun, scalarMapAsciiRun};

}  // namespace qarq::vorn::nls

#endif
