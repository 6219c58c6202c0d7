#include "vorn/VornNlsSimd.hpp"

#include <cstring>

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#include <immintrin.h>
#define QARQ_NLS_X86 1
#endif

namespace qarq::vorn::nls {

#ifdef QARQ_NLS_X86

bool haveAvx2() {
    static const bool have = __builtin_cpu_supports("avx2");
    return have;
}

__attribute__((target("avx2"))) void asciiSbcsToUtf8Avx2(const Derived* d,
                                                           const unsigned char*& s,
                                                           const unsigned char* se, char*& out,
                                                           const char* end) {
    const unsigned char* p = s;
    char* o = out;
    while (se - p >= 64 && end - o >= 96 + 32 + 96) {
        __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(o), x);
        auto high = unsigned(_mm256_movemask_epi8(x));
        if (high == 0) {
            p += 32;
            o += 32;
            continue;
        }
        // The run up to the first byte from 0x80 is in place; that byte
        // goes through the table, and the next step starts behind it.
        unsigned k = unsigned(__builtin_ctz(high));
        p += k;
        o += k;
        uint32_t e = d->toUtf8[*p++];
        std::memcpy(o, &e, 4);
        o += e >> 24;
    }
    s = p;
    out = o;
}

#else

bool haveAvx2() { return false; }
void asciiSbcsToUtf8Avx2(const Derived*, const unsigned char*&, const unsigned char*, char*&,
                         const char*) {}

#endif

}  // namespace qarq::vorn::nls
