#include "vorn/VornNlsSimd.hpp"

#include <atomic>
#include <cstring>

#include "qarq/base/Os.hpp"
#include "qarq/ras/HeskTrace.hpp"
#include "qarq/vorn/VornNlsSimd.hpp"
#include "vorn/VornTrace.hpp"

namespace qarq::vorn::nls {
namespace {

constexpr uint64_t kHigh = 0x8080808080808080ull;

inline uint64_t load8(const unsigned char* p) {
    uint64_t w;
    std::memcpy(&w, p, 8);
    return w;
}

}  // namespace

// Eight bytes at a time with plain integer code; the first marked byte of a
// word ends the run after the bytes before it are written.
size_t scalarAsciiRun(const unsigned char* s, size_t n, char* out) {
    size_t k = 0;
    for (; n - k >= 8; k += 8) {
        uint64_t w = load8(s + k);
        if ((w & kHigh) != 0)
            break;
        std::memcpy(out + k, &w, 8);
    }
    for (; k < n && s[k] < 0x80; ++k)
        out[k] = char(s[k]);
    return k;
}

size_t scalarMapRun(const uint8_t* t, const unsigned char* s, size_t n, char* out) {
    size_t k = 0;
    for (; n - k >= 8; k += 8) {
        const unsigned char* p = s + k;
        uint64_t w = uint64_t(t[p[0]]) | uint64_t(t[p[1]]) << 8 | uint64_t(t[p[2]]) << 16 |
                     uint64_t(t[p[3]]) << 24 | uint64_t(t[p[4]]) << 32 | uint64_t(t[p[5]]) << 40 |
                     uint64_t(t[p[6]]) << 48 | uint64_t(t[p[7]]) << 56;
        // The marker 0x80 is the only entry with the top bit.
        if ((w & kHigh) != 0)
            break;
        std::memcpy(out + k, &w, 8);
    }
    for (; k < n && t[s[k]] != 0x80; ++k)
        out[k] = char(t[s[k]]);
    return k;
}

size_t scalarMapAsciiRun(const uint8_t* t, const unsigned char* s, size_t n, char* out) {
    size_t k = 0;
    for (; n - k >= 8; k += 8) {
        const unsigned char* p = s + k;
        if ((load8(p) & kHigh) != 0)
            break;
        uint64_t w = uint64_t(t[p[0]]) | uint64_t(t[p[1]]) << 8 | uint64_t(t[p[2]]) << 16 |
                     uint64_t(t[p[3]]) << 24 | uint64_t(t[p[4]]) << 32 | uint64_t(t[p[5]]) << 40 |
                     uint64_t(t[p[6]]) << 48 | uint64_t(t[p[7]]) << 56;
        std::memcpy(out + k, &w, 8);
    }
    for (; k < n && s[k] < 0x80; ++k)
        out[k] = char(t[s[k]]);
    return k;
}

namespace {

std::atomic<const Kernels*> active{nullptr};

const Kernels& kernelsOf(SimdLevel level) {
    switch (level) {
#ifdef QARQ_NLS_X86
        case SimdLevel::avx512:
            return kAvx512Kernels;
        case SimdLevel::avx2:
            return kAvx2Kernels;
        case SimdLevel::sse42:
            return kSse42Kernels;
#endif
        default:
            return kScalarKernels;
    }
}

}  // namespace

const Kernels kScalarKernels = {SimdLevel::scalar, "scalar", scalarAsciiRun, scalarMapRun,
                                scalarMapAsciiRun, nullptr};

SimdLevel simdCapFromEnvironment() {
    const char* value = os::calls().getenv("QARQ_SIMD");
    if (value == nullptr)
        return SimdLevel::avx512;
    for (int l = 0; l <= int(SimdLevel::avx512); ++l)
        if (std::strcmp(value, simdLevelName(SimdLevel(l))) == 0)
            return SimdLevel(l);
    return SimdLevel::avx512;
}

const char* simdLevelName(SimdLevel level) {
    switch (level) {
        case SimdLevel::sse42:
            return "sse42";
        case SimdLevel::avx2:
            return "avx2";
        case SimdLevel::avx512:
            return "avx512";
        default:
            return "scalar";
    }
}

SimdLevel cpuLevel() {
#ifdef QARQ_NLS_X86
    static const SimdLevel level = [] {
        __builtin_cpu_init();
        if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
            __builtin_cpu_supports("avx512vbmi"))
            return SimdLevel::avx512;
        if (__builtin_cpu_supports("avx2"))
            return SimdLevel::avx2;
        if (__builtin_cpu_supports("sse4.2"))
            return SimdLevel::sse42;
        return SimdLevel::scalar;
    }();
    return level;
#else
    return SimdLevel::scalar;
#endif
}

SimdLevel selectSimdLevel(SimdLevel cap) {
    SimdLevel level = int(cap) < int(cpuLevel()) ? cap : cpuLevel();
    active.store(&kernelsOf(level), std::memory_order_release);
    return level;
}

const Kernels& kernels() {
    const Kernels* k = active.load(std::memory_order_acquire);
    if (k == nullptr) {
        // Two first calls may race here; both settle the same level.
        selectSimdLevel(simdCapFromEnvironment());
        k = active.load(std::memory_order_acquire);
    }
    return *k;
}

}  // namespace qarq::vorn::nls

extern "C" const char* VornNlsSimdLevel(void) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornNlsSimdLevel");
    const char* name = qarq::vorn::nls::kernels().name;
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornNlsSimdLevel",
                     qarq::ras::pair(name));
    return name;
}
