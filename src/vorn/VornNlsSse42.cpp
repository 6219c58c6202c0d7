// SSE4.2 kernels (16 bytes a step). Compiled by target attributes, so that the
// rest of the library keeps the base instruction set; chosen only when the
// processor reports SSE4.2.
#include "vorn/VornNlsSimd.hpp"

#ifdef QARQ_NLS_X86

#include <immintrin.h>

#include <cstring>

#include "vorn/VornNlsSteps.hpp"

#define QARQ_SSE42 __attribute__((target("sse4.2")))

namespace qarq::vorn::nls {
namespace {

struct AsciiStep {
    static constexpr size_t kWidth = 16;
    QARQ_SSE42 bool copy(const unsigned char* s, char* out, size_t& j) const {
        __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
        auto stop = unsigned(_mm_movemask_epi8(x));
        if (stop == 0) {
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out), x);
            return true;
        }
        // Only the bytes before the stop are the kernel's to write.
        j = unsigned(__builtin_ctz(stop));
        alignas(16) char buffer[16];
        _mm_store_si128(reinterpret_cast<__m128i*>(buffer), x);
        std::memcpy(out, buffer, j);
        return false;
    }
    size_t rest(const unsigned char* s, size_t n, char* out) const {
        return scalarAsciiRun(s, n, out);
    }
};

[[gnu::flatten]] QARQ_SSE42 size_t asciiRun(const unsigned char* s, size_t n, char* out) {
    return runBySteps(AsciiStep(), s, n, out);
}

}  // namespace

// Table lookups at this width (16 shuffles and 15 blends a step for 256
// entries) were slower than the scalar eight-byte steps on host text, with
// or without expanding the wider forms in registers (0.99 against 1.13 GB/s
// for code page 37 to UTF-8); the scalar kernels serve instead.
const Kernels kSse42Kernels = {SimdLevel::sse42, "sse42", asciiRun, scalarMapRun,
                               scalarMapAsciiRun, nullptr};

}  // namespace qarq::vorn::nls

#endif
