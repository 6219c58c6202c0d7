// Kernels of the engines per instruction-set level, and the level in use.
//
// A kernel converts the longest prefix of [s, s + n) that is a run of
// one-byte-to-one-byte characters and returns its length k: either k == n,
// or s[k] is the first byte that the kernel leaves to the engine. It writes
// exactly out[0, k) and reads only [s, s + n), so the caller passes n no
// larger than both the source and the room left. The engine handles the
// byte at s[k] by its plain rule and calls the kernel again.
//
// The scalar kernels are always there; the vector ones exist on x86-64
// only, each compiled for its level by target attributes, so the library
// runs on any x86-64 and uses a level only when the processor reports it.
#pragma once

#include <cstddef>
#include <cstdint>

#include "qarq/export.hpp"

namespace qarq::vorn::nls {

enum class SimdLevel : int { scalar = 0, sse42 = 1, avx2 = 2, avx512 = 3 };

/// A one-byte page whose bytes are characters below U+0100, all but at most
/// four `others` (the euro sign of the euro host pages, say), which the
/// engine converts by its plain rule.
struct Latin1Table {
    uint8_t chars[256];
    uint8_t others[4];  // unused places repeat others[0]
    uint32_t otherCount;
};

struct Kernels {
    SimdLevel level;
    const char* name;
    /// Copies bytes below 0x80; stops at one from 0x80 up.
    size_t (*asciiRun)(const unsigned char* s, size_t n, char* out);
    /// Writes table[b] for each byte b; stops at a byte whose entry is 0x80.
    size_t (*mapRun)(const uint8_t* table, const unsigned char* s, size_t n, char* out);
    /// Writes table[b] for each byte b below 0x80 (a 128-byte table); stops
    /// at a byte from 0x80 up.
    size_t (*mapAsciiRun)(const uint8_t* table, const unsigned char* s, size_t n, char* out);
    /// Bytes to UTF-8 through `t`, whole blocks at a time; null at levels
    /// without one. Runs while at least kLatin1Source bytes are left of the
    /// n and kLatin1Room bytes of room before `end`, and stops before a block
    /// that holds one of t.others; returns the bytes converted and advances
    /// `out`. May write up to eight bytes past the new `out`: the margins
    /// make sure that the caller's next characters overwrite them.
    size_t (*latin1ToUtf8)(const Latin1Table& t, const unsigned char* s, size_t n, char*& out,
                           const char* end);
};

/// The margins of latin1ToUtf8: a block of 32 bytes and eight more source
/// bytes, room for their 64 bytes and sixteen more.
constexpr size_t kLatin1Source = 32 + 8;
constexpr size_t kLatin1Room = 64 + 16;

/// The kernels in use (settled at the first call).
const Kernels& kernels();

/// The highest level this processor can run.
QARQ_API SimdLevel cpuLevel();

/// For tests and benchmarks: uses the highest level not above `cap` that the
/// processor has, and returns it. Must not overlap conversions.
QARQ_API SimdLevel selectSimdLevel(SimdLevel cap);

/// The cap that QARQ_SIMD sets: the level it names, or avx512 (no cap) when
/// it is unset or names no level.
QARQ_API SimdLevel simdCapFromEnvironment();

/// The name of a level ("scalar", "sse42", "avx2", "avx512").
QARQ_API const char* simdLevelName(SimdLevel level);

// The scalar kernels, also the tails of the vector ones.
size_t scalarAsciiRun(const unsigned char* s, size_t n, char* out);
size_t scalarMapRun(const uint8_t* table, const unsigned char* s, size_t n, char* out);
size_t scalarMapAsciiRun(const uint8_t* table, const unsigned char* s, size_t n, char* out);

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
// The AVX2 one serves the AVX-512 level too.
size_t avx2Latin1ToUtf8(const Latin1Table& t, const unsigned char* s, size_t n, char*& out,
                        const char* end);
#endif

// The kernel sets of each level (defined in their own files on x86-64).
extern const Kernels kScalarKernels;
#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define QARQ_NLS_X86 1
extern const Kernels kSse42Kernels;
extern const Kernels kAvx2Kernels;
extern const Kernels kAvx512Kernels;
#endif

}  // namespace qarq::vorn::nls
