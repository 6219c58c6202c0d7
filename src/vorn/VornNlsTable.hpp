// Layout of a "ucv" table image, its validation, and the lookup data derived
// from it at load.
//
// A table image is accepted only when everything an engine can reach from
// its header (data offset, from-Unicode pages, rows, node chains, prefix
// entries and their lengths) lies inside the image, and no kind-3 byteClass
// entry from 0x80 up is 0. The loader then appends derived lookup data to
// the same block, behind the image (aligned to 16 bytes), so that freeing the
// image frees everything:
//   all kinds 1-4: 256 packed UTF-8 forms of single bytes, their one-byte
//                  forms, their characters when all are below U+0100, and
//                  the one-byte forms of ASCII from UTF-8 (1.9 KiB)
//   kind 1: a direct UCS-2 -> byte map with the substitution rule applied (64 KiB)
//   kinds 2, 4: a direct UCS-2 -> 16-bit entry map, no mapping already turned
//               into the code set's question mark (128 KiB), and the packed
//               UTF-8 form of every double-byte pair: lead bytes 0x80-0xFF
//               for kind 2 (128 KiB), 0x40-0xFE for kind 4 (191 KiB)
//   kind 3: nothing more (its pages are read in place)
//
// Threads: pure functions over caller-owned memory.
#pragma once

#include <cstddef>
#include <cstdint>

#include "qarq/export.hpp"
#include "qarq/vorn/vornnls2.hpp"
#include "vorn/VornNlsSimd.hpp"

namespace qarq::vorn::nls {

constexpr size_t kMinTableSize = 1760;
// Larger files are refused without reading them: no valid table reaches that far.
constexpr size_t kMaxFileSize = 16u << 20;

constexpr size_t kOffDataOffset = 0;
constexpr size_t kOffTag = 8;
constexpr size_t kOffCodepage = 12;
constexpr size_t kOffName = 16;
constexpr size_t kOffKind = 48;
constexpr size_t kOffScheme = 50;
constexpr size_t kOffWord56 = 56;
constexpr size_t kOffSubUnicode = 58;
constexpr size_t kOffSubByte = 60;
constexpr size_t kOffWord62 = 62;
constexpr size_t kOffBytes64 = 64;
constexpr size_t kOffFromPage = 224;
constexpr size_t kOffToFirst = 736;
constexpr size_t kOffByteClass = 1248;

constexpr uint16_t kSchemeEbcdic = 0x1100;
constexpr uint32_t kDerivedMagic = 0x76636455u;  // "Udcv"

inline uint16_t rd16(const unsigned char* p) { return uint16_t(p[0] | (p[1] << 8)); }
inline uint32_t rd32(const unsigned char* p) {
    return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

/// A UTF-8 form of one UCS-2 value: bytes in bits 0-23, length in bits 24-31.
/// Length 0 marks a byte that is no character by itself (lead byte, dropped byte).
inline uint32_t packUtf8(uint32_t v) {
    if (v > 0xFFFE) return 0x01000000u | '?';
    if (v < 0x80) return 0x01000000u | v;
    if (v < 0x800) return 0x02000000u | (0xC0 | v >> 6) | (0x80 | (v & 0x3F)) << 8;
    return 0x03000000u | (0xE0 | v >> 12) | (0x80 | ((v >> 6) & 0x3F)) << 8 |
           (0x80 | (v & 0x3F)) << 16;
}

struct Derived {
    uint32_t magic;
    uint16_t kind;
    uint16_t scheme;
    uint32_t toUtf8[256];
    // The one-byte form of each byte, or 0x80 (never a one-byte UTF-8 form)
    // where the form is longer or there is none: lets vector code convert
    // runs of one-byte characters with byte shuffles.
    uint8_t single[256];
    // From UTF-8, the one-byte target form of each ASCII value (kind 1).
    uint8_t asciiFrom[128];
    // Kind 4, unshifted: the byte of each ASCII value, with 0x80 marking
    // the values that are not one plain byte (wider, or the shift-out) and
    // all bytes from 0x80 up; usable only when asciiFromOk, that is when no
    // ASCII value truly maps to the byte 0x80.
    uint8_t asciiFromMarked[256];
    uint32_t asciiFromOk;
    // Kind 1 when all bytes but at most four are characters from U+0000 to
    // U+00FF (latin1Ok; the Latin host pages and their euro updates): vector
    // code then looks the bytes up and expands them to UTF-8 in registers,
    // a block at a time, with no branch per wider form.
    uint32_t latin1Ok;
    Latin1Table latin1;
    // kind 1: uint8_t fromByte[65536]; kinds 2, 4: uint16_t fromWord[65536],
    // then uint32_t pairs[leads][256] (packed UTF-8 forms)
};

constexpr unsigned kPairLeadFirst2 = 0x80;  // kind 2: lead bytes 0x80-0xFF
constexpr unsigned kPairLeads2 = 128;
constexpr unsigned kPairLeadFirst4 = 0x40;  // kind 4: lead bytes 0x40-0xFE
constexpr unsigned kPairLeads4 = 191;
/// The most derived data that any kind needs (kind 4).
constexpr size_t kMaxDerivedSize = sizeof(Derived) + 2 * 65536 + 4 * 256 * kPairLeads4;

inline size_t alignedImageSize(size_t size) { return (size + 15) & ~size_t(15); }

/// The derived data of a record's table, or null when there is none (no
/// table, or a table that did not come from the loader).
inline const Derived* derivedOf(const VornNlsCodeSet* cs) {
    if (cs->table == nullptr || cs->tableSize < kMinTableSize) return nullptr;
    const auto* d =
        reinterpret_cast<const Derived*>(cs->table + alignedImageSize(cs->tableSize));
    return d->magic == kDerivedMagic ? d : nullptr;
}
inline const uint8_t* fromByte(const Derived* d) {
    return reinterpret_cast<const uint8_t*>(d + 1);
}
inline const uint16_t* fromWord(const Derived* d) {
    return reinterpret_cast<const uint16_t*>(d + 1);
}
/// Kinds 2 and 4: the packed UTF-8 forms of the pairs of lead byte
/// kPairLeadFirst + i, at [i * 256 + second].
inline const uint32_t* pairForms(const Derived* d) {
    return reinterpret_cast<const uint32_t*>(fromWord(d) + 65536);
}

/// Null when `image` of `size` bytes is a table the engines may read without
/// range checks, else a short reason. Needs size >= kMinTableSize and the tag.
QARQ_API const char* validateImage(const unsigned char* image, size_t size);

/// Bytes of derived data (after the image, aligned) for the table `image`.
QARQ_API size_t derivedSize(const unsigned char* image);

/// Builds the derived data into `out` (derivedSize bytes) for a valid image.
QARQ_API void buildDerived(const unsigned char* image, size_t size, void* out);

}  // namespace qarq::vorn::nls
