// AVX2 kernels (32 bytes a step). Compiled by target attributes, so that the
// rest of the library keeps the base instruction set; chosen only when the
// processor reports AVX2.
#include "vorn/VornNlsSimd.hpp"

#ifdef QARQ_NLS_X86

#include <immintrin.h>

#include <cstring>

#include "vorn/VornNlsSteps.hpp"

#define QARQ_AVX2 __attribute__((target("avx2,popcnt")))

namespace qarq::vorn::nls {
namespace {

// `r` to `out` when `stop` is empty (true); else only the j bytes before
// its first bit, since only those are the kernel's to write (false).
QARQ_AVX2 inline bool storeUpTo(char* out, __m256i r, unsigned stop, size_t& j) {
    if (stop == 0) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), r);
        return true;
    }
    j = unsigned(__builtin_ctz(stop));
    alignas(32) char buffer[32];
    _mm256_store_si256(reinterpret_cast<__m256i*>(buffer), r);
    std::memcpy(out, buffer, j);
    return false;
}

struct AsciiStep {
    static constexpr size_t kWidth = 32;
    QARQ_AVX2 bool copy(const unsigned char* s, char* out, size_t& j) const {
        __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
        return storeUpTo(out, x, unsigned(_mm256_movemask_epi8(x)), j);
    }
    size_t rest(const unsigned char* s, size_t n, char* out) const {
        return scalarAsciiRun(s, n, out);
    }
};

[[gnu::flatten]] QARQ_AVX2 size_t asciiRun(const unsigned char* s, size_t n, char* out) {
    return runBySteps(AsciiStep(), s, n, out);
}

// The shuffles that close up eight characters below U+0100, written as byte
// pairs (first byte, continuation byte), into their UTF-8 forms: for the
// mask of the characters from U+0080 up (bit i for character i), the places
// of the bytes to keep. 4 KiB, built by the compiler.
struct Latin1Pack {
    uint8_t shuffle[256][16];
};

constexpr Latin1Pack makeLatin1Pack() {
    Latin1Pack p{};
    for (unsigned mask = 0; mask < 256; ++mask) {
        unsigned k = 0;
        for (unsigned i = 0; i < 8; ++i) {
            p.shuffle[mask][k++] = uint8_t(2 * i);
            if ((mask >> i) & 1) p.shuffle[mask][k++] = uint8_t(2 * i + 1);
        }
        // Places past the forms take a zero byte (top bit set).
        while (k < 16) p.shuffle[mask][k++] = 0x80;
    }
    return p;
}

constexpr Latin1Pack kLatin1Pack = makeLatin1Pack();

QARQ_AVX2 inline __m128i load16(const void* p) {
    return _mm_loadu_si128(static_cast<const __m128i*>(p));
}

// A byte table of 128 or 256 entries as rows of sixteen, each row in both
// lanes: a byte's low four bits pick the entry in every row at once, and
// its high bits pick the row, one bit a level, with byte blends that read
// the top bit of each byte. The calls on constant rows inline whole into
// the kernel, so nothing goes through memory but the rows.
struct ByteTable {
    QARQ_AVX2 ByteTable(const uint8_t* t, int rows) {
        for (int h = 0; h < rows; ++h) row[h] = _mm256_broadcastsi128_si256(load16(t + 16 * h));
    }
    /// Entries of bytes below 0x80 (the first eight rows).
    QARQ_AVX2 __m256i low128(__m256i x) const {
        return by6(0, _mm256_and_si256(x, _mm256_set1_epi8(0x0F)), bit4(x), bit5(x), bit6(x));
    }
    QARQ_AVX2 __m256i operator()(__m256i x) const {
        const __m256i low = _mm256_and_si256(x, _mm256_set1_epi8(0x0F));
        const __m256i b4 = bit4(x), b5 = bit5(x), b6 = bit6(x);
        return _mm256_blendv_epi8(by6(0, low, b4, b5, b6), by6(8, low, b4, b5, b6), x);
    }
    // Bits 4, 5 and 6 at the top of their byte (16-bit shifts move no bit
    // across a byte's top).
    QARQ_AVX2 static __m256i bit4(__m256i x) { return _mm256_slli_epi16(x, 3); }
    QARQ_AVX2 static __m256i bit5(__m256i x) { return _mm256_slli_epi16(x, 2); }
    QARQ_AVX2 static __m256i bit6(__m256i x) { return _mm256_add_epi8(x, x); }
    QARQ_AVX2 __m256i by4(int h, __m256i low, __m256i bit4) const {
        return _mm256_blendv_epi8(_mm256_shuffle_epi8(row[h], low),
                                  _mm256_shuffle_epi8(row[h + 1], low), bit4);
    }
    QARQ_AVX2 __m256i by5(int h, __m256i low, __m256i bit4, __m256i bit5) const {
        return _mm256_blendv_epi8(by4(h, low, bit4), by4(h + 2, low, bit4), bit5);
    }
    QARQ_AVX2 __m256i by6(int h, __m256i low, __m256i bit4, __m256i bit5, __m256i bit6) const {
        return _mm256_blendv_epi8(by5(h, low, bit4, bit5), by5(h + 4, low, bit4, bit5), bit6);
    }
    __m256i row[16];
};

// Writes the UTF-8 forms of 32 characters below U+0100; returns the new end.
// A block with no character from U+0080 up is stored as it is. Otherwise
// every character becomes a pair (first byte, continuation byte), and each
// eight pairs close up by a shuffle chosen by which of them are wide; a
// store of sixteen bytes leaves up to eight bytes past the forms.
QARQ_AVX2 inline char* expandLatin1(__m256i c, char* out) {
    const auto wide = unsigned(_mm256_movemask_epi8(c));
    if (wide == 0) {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), c);
        return out + 32;
    }
    const __m256i lead = _mm256_or_si256(
        _mm256_and_si256(_mm256_srli_epi16(c, 6), _mm256_set1_epi8(0x03)), _mm256_set1_epi8(char(0xC0)));
    const __m256i trail = _mm256_or_si256(_mm256_and_si256(c, _mm256_set1_epi8(0x3F)),
                                          _mm256_set1_epi8(char(0x80)));
    const __m256i first = _mm256_blendv_epi8(c, lead, c);
    // Unpacking works per lane: characters 0-7 and 16-23, then 8-15 and 24-31.
    const __m256i pairsA = _mm256_unpacklo_epi8(first, trail);
    const __m256i pairsB = _mm256_unpackhi_epi8(first, trail);
    const unsigned m0 = wide & 0xFF, m1 = (wide >> 8) & 0xFF, m2 = (wide >> 16) & 0xFF, m3 = wide >> 24;
    const auto& pack = kLatin1Pack.shuffle;
    const __m256i a = _mm256_shuffle_epi8(
        pairsA, _mm256_inserti128_si256(_mm256_castsi128_si256(load16(pack[m0])), load16(pack[m2]), 1));
    const __m256i b = _mm256_shuffle_epi8(
        pairsB, _mm256_inserti128_si256(_mm256_castsi128_si256(load16(pack[m1])), load16(pack[m3]), 1));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(a));
    out += 8 + __builtin_popcount(m0);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(b));
    out += 8 + __builtin_popcount(m1);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_extracti128_si256(a, 1));
    out += 8 + __builtin_popcount(m2);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_extracti128_si256(b, 1));
    return out + 8 + __builtin_popcount(m3);
}

// From UTF-8 to a one-byte page: ASCII through its 128-entry table.
struct MapAsciiStep {
    static constexpr size_t kWidth = 32;
    QARQ_AVX2 explicit MapAsciiStep(const uint8_t* t) : table(t, 8), t(t) {}
    QARQ_AVX2 bool copy(const unsigned char* s, char* out, size_t& j) const {
        __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
        return storeUpTo(out, table.low128(x), unsigned(_mm256_movemask_epi8(x)), j);
    }
    size_t rest(const unsigned char* s, size_t n, char* out) const {
        return scalarMapAsciiRun(t, s, n, out);
    }
    ByteTable table;
    const uint8_t* t;
};

// Short runs skip the table loads.
[[gnu::flatten]] QARQ_AVX2 size_t mapAsciiRun(const uint8_t* t, const unsigned char* s, size_t n,
                                              char* out) {
    return n < 32 ? scalarMapAsciiRun(t, s, n, out) : runBySteps(MapAsciiStep(t), s, n, out);
}

// The blocks of avx2Latin1ToUtf8; with kOthers, a block that holds one of
// t.others ends the run before it.
template <bool kOthers>
QARQ_AVX2 inline size_t latin1Blocks(const Latin1Table& t, const unsigned char* s, size_t n,
                                     char*& out, const char* end) {
    const ByteTable table(t.chars, 16);
    __m256i other[4];
    for (int i = 0; i < 4; ++i) other[i] = _mm256_set1_epi8(char(t.others[i]));
    char* o = out;
    size_t k = 0;
    for (; n - k >= kLatin1Source && size_t(end - o) >= kLatin1Room; k += 32) {
        const __m256i x = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s + k));
        if (kOthers) {
            const __m256i hit = _mm256_or_si256(
                _mm256_or_si256(_mm256_cmpeq_epi8(x, other[0]), _mm256_cmpeq_epi8(x, other[1])),
                _mm256_or_si256(_mm256_cmpeq_epi8(x, other[2]), _mm256_cmpeq_epi8(x, other[3])));
            if (!_mm256_testz_si256(hit, hit)) break;
        }
        o = expandLatin1(table(x), o);
    }
    out = o;
    return k;
}

}  // namespace

[[gnu::flatten]] QARQ_AVX2 size_t avx2Latin1ToUtf8(const Latin1Table& t, const unsigned char* s,
                                                   size_t n, char*& out, const char* end) {
    if (n < kLatin1Source || size_t(end - out) < kLatin1Room) return 0;
    return t.otherCount == 0 ? latin1Blocks<false>(t, s, n, out, end)
                             : latin1Blocks<true>(t, s, n, out, end);
}

// A run of one-byte forms through a table lookup per step (16 shuffles for
// 256 entries) was slower than the scalar eight-byte steps on host text,
// where a wider form every 50 bytes or so ends a run; for the Latin pages
// and their euro updates, avx2Latin1ToUtf8 does the lookup and expands the
// wider forms in registers instead; the scalar run kernels serve the others.
const Kernels kAvx2Kernels = {SimdLevel::avx2, "avx2", asciiRun, scalarMapRun, mapAsciiRun,
                              avx2Latin1ToUtf8};

}  // namespace qarq::vorn::nls

#endif
