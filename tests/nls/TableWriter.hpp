// A small writer of "ucv" table images for tests, benchmarks and fuzzing:
// builds valid tables of every kind from plain maps, and gives raw access to
// the header and data area so that tests can make hostile ones.
#pragma once

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace qarq::test {

class UcvImage {
public:
    static constexpr size_t kHeader = 1760;

    UcvImage(uint16_t kind, uint16_t scheme = 0, uint16_t codepage = 0, const char* name = "")
        : bytes_(kHeader, 0) {
        set32(0, kHeader);
        std::memcpy(&bytes_[8], "ucv", 3);
        set16(12, codepage);
        std::strncpy(reinterpret_cast<char*>(&bytes_[16]), name, 31);
        set16(48, kind);
        set16(50, scheme);
    }

    void set8(size_t at, uint8_t v) { grow(at + 1), bytes_[at] = v; }
    void set16(size_t at, uint16_t v) {
        grow(at + 2);
        bytes_[at] = uint8_t(v);
        bytes_[at + 1] = uint8_t(v >> 8);
    }
    void set32(size_t at, uint32_t v) {
        set16(at, uint16_t(v));
        set16(at + 2, uint16_t(v >> 16));
    }
    uint16_t get16(size_t at) const { return uint16_t(bytes_[at] | bytes_[at + 1] << 8); }

    uint32_t dataOffset() const {
        return uint32_t(bytes_[0] | bytes_[1] << 8 | bytes_[2] << 16 | uint32_t(bytes_[3]) << 24);
    }
    // Appends `count` bytes (rounded up to 4) of `fill16` words to the data
    // area and returns their position in units of 4 bytes.
    uint16_t alloc(size_t count, uint16_t fill16 = 0) {
        size_t at = bytes_.size();
        size_t rounded = (count + 3) & ~size_t(3);
        bytes_.resize(at + rounded);
        for (size_t i = 0; i + 1 < rounded; i += 2) set16(at + i, fill16);
        return uint16_t((at - dataOffset()) / 4);
    }
    size_t byteOf(uint16_t position) const { return dataOffset() + 4 * size_t(position); }

    void subUnicode(uint16_t v) { set16(58, v); }
    void subByte(uint8_t v) { set8(60, v); }
    void fromPage(unsigned hi, uint16_t position) { set16(224 + 2 * hi, position); }
    void toFirst(unsigned b, uint16_t v) { set16(736 + 2 * b, v); }
    void byteClass(unsigned b, uint8_t v) { set8(1248 + b, v); }
    uint16_t toFirstOf(unsigned b) const { return get16(736 + 2 * b); }

    std::vector<uint8_t>& bytes() { return bytes_; }
    const std::vector<uint8_t>& bytes() const { return bytes_; }

private:
    void grow(size_t size) {
        if (bytes_.size() < size) bytes_.resize(size);
    }
    std::vector<uint8_t> bytes_;
};

/// Kind 1: toUcs[b] per byte (0xFFFF none), fromUcs the reverse map.
struct SbcsSpec {
    bool ebcdic = false;
    uint16_t toUcs[256];
    std::map<uint16_t, uint8_t> fromUcs;
    uint8_t subByte = 0x3F;
    uint16_t subUnicode = 0x3F;
};

inline UcvImage buildSbcs(const SbcsSpec& spec) {
    UcvImage t(1, spec.ebcdic ? 0x1100 : 0);
    t.subByte(spec.subByte);
    t.subUnicode(spec.subUnicode);
    for (unsigned b = 0; b < 256; ++b) t.toFirst(b, spec.toUcs[b]);
    uint16_t empty = t.alloc(256, uint16_t(spec.subByte | spec.subByte << 8));
    std::map<unsigned, uint16_t> pages;
    for (auto [u, b] : spec.fromUcs) {
        unsigned hi = u >> 8;
        if (!pages.count(hi)) pages[hi] = t.alloc(256, uint16_t(spec.subByte | spec.subByte << 8));
        t.set8(t.byteOf(pages[hi]) + (u & 0xFF), b);
    }
    for (unsigned hi = 0; hi < 256; ++hi) t.fromPage(hi, pages.count(hi) ? pages[hi] : empty);
    return t;
}

/// Kinds 2 and 4: byteClass (kind 2), the single-byte row, pairs by
/// (lead << 8 | trail), and the reverse map to 16-bit entries.
struct DbcsSpec {
    uint16_t kind = 2;
    uint8_t byteClass[256] = {};
    uint16_t single[256];
    std::map<uint16_t, uint16_t> pairs;
    std::map<uint16_t, uint16_t> fromUcs;
};

inline UcvImage buildDbcs(const DbcsSpec& spec) {
    UcvImage t(spec.kind);
    for (unsigned b = 0; b < 256; ++b) t.byteClass(b, spec.byteClass[b]);
    uint16_t row0 = t.alloc(512, 0xFFFF);
    for (unsigned b = 0; b < 256; ++b) t.set16(t.byteOf(row0) + 2 * b, spec.single[b]);
    uint16_t emptyRow = t.alloc(512, 0xFFFF);
    for (unsigned b = 1; b < 256; ++b) t.toFirst(b, emptyRow);
    t.toFirst(0, row0);
    std::map<unsigned, uint16_t> rows;
    for (auto [pr, u] : spec.pairs) {
        unsigned lead = pr >> 8;
        if (!rows.count(lead)) {
            rows[lead] = t.alloc(512, 0xFFFF);
            t.toFirst(lead, rows[lead]);
        }
        t.set16(t.byteOf(rows[lead]) + 2 * (pr & 0xFF), u);
    }
    uint16_t empty = t.alloc(512, 0xFFFF);
    std::map<unsigned, uint16_t> pages;
    for (auto [u, w] : spec.fromUcs) {
        unsigned hi = u >> 8;
        if (!pages.count(hi)) pages[hi] = t.alloc(512, 0xFFFF);
        t.set16(t.byteOf(pages[hi]) + 2 * (u & 0xFF), w);
    }
    for (unsigned hi = 0; hi < 256; ++hi) t.fromPage(hi, pages.count(hi) ? pages[hi] : empty);
    return t;
}

/// Kind 3: byteClass (length of a sequence, 255 dropped), class-1 values,
/// multi-byte sequences, and the reverse map to byte strings (1 byte, or a
/// prefix and two final bytes).
struct MbcsSpec {
    uint8_t byteClass[256] = {};
    uint16_t single[256] = {};
    std::map<std::string, uint16_t> sequences;
    std::map<uint16_t, std::string> fromUcs;
};

namespace detail {
// Writes the node that reads byte `depth` of the sequences in `group` (all
// with the same first `depth` bytes) and returns its position.
inline uint16_t writeNode(UcvImage& t, const std::map<std::string, uint16_t>& group,
                          size_t depth) {
    unsigned lo = 255, hi = 0;
    for (auto& [seq, u] : group) {
        unsigned c = uint8_t(seq[depth]);
        lo = c < lo ? c : lo;
        hi = c > hi ? c : hi;
    }
    unsigned count = hi - lo + 1;
    uint16_t node = t.alloc(4 + 2 * count, 0xFFFF);
    t.set16(t.byteOf(node), uint16_t(count));
    t.set16(t.byteOf(node) + 2, uint16_t(lo));
    for (unsigned c = lo; c <= hi; ++c) {
        std::map<std::string, uint16_t> sub;
        for (auto& [seq, u] : group)
            if (uint8_t(seq[depth]) == c) sub[seq] = u;
        if (sub.empty()) continue;
        uint16_t entry;
        if (depth + 1 == sub.begin()->first.size())
            entry = sub.begin()->second;
        else
            entry = writeNode(t, sub, depth + 1);
        t.set16(t.byteOf(node) + 4 + 2 * (c - lo), entry);
    }
    return node;
}
}  // namespace detail

inline UcvImage buildMbcs(const MbcsSpec& spec) {
    UcvImage t(3);
    for (unsigned b = 0; b < 256; ++b) {
        t.byteClass(b, spec.byteClass[b]);
        if (spec.byteClass[b] == 1) t.toFirst(b, spec.single[b]);
    }
    // A lead byte with no sequences still needs a node: an empty one.
    uint16_t emptyNode = t.alloc(4, 0);
    for (unsigned b = 0x80; b < 256; ++b) {
        if (spec.byteClass[b] < 2 || spec.byteClass[b] == 255) continue;
        std::map<std::string, uint16_t> group;
        for (auto& [seq, u] : spec.sequences)
            if (uint8_t(seq[0]) == b && seq.size() == spec.byteClass[b]) group[seq] = u;
        t.toFirst(b, group.empty() ? emptyNode : detail::writeNode(t, group, 1));
    }
    // Prefix entries of 16 bytes at data byte 16 * index.
    while ((t.bytes().size() - t.dataOffset()) % 16 != 0) t.alloc(4);
    std::map<std::string, uint16_t> prefixes;
    for (auto& [u, bytes] : spec.fromUcs) {
        if (bytes.size() < 2) continue;
        std::string prefix = bytes.substr(0, bytes.size() - 2);
        if (prefixes.count(prefix)) continue;
        uint16_t at = t.alloc(16, 0);
        for (size_t i = 0; i < prefix.size(); ++i) t.set8(t.byteOf(at) + i, uint8_t(prefix[i]));
        t.set16(t.byteOf(at) + 14, uint16_t(prefix.size()));
        prefixes[prefix] = uint16_t(at / 4);
    }
    uint16_t empty = t.alloc(1024, 0xFFFF);
    std::map<unsigned, uint16_t> pages;
    for (auto& [u, bytes] : spec.fromUcs) {
        unsigned hi = u >> 8;
        if (!pages.count(hi)) pages[hi] = t.alloc(1024, 0xFFFF);
        size_t entry = t.byteOf(pages[hi]) + 4 * (u & 0xFF);
        if (bytes.size() == 1) {
            t.set16(entry + 2, uint8_t(bytes[0]));
        } else {
            size_t n = bytes.size();
            t.set16(entry, prefixes[bytes.substr(0, n - 2)]);
            t.set16(entry + 2, uint16_t(uint8_t(bytes[n - 2]) << 8 | uint8_t(bytes[n - 1])));
        }
    }
    for (unsigned hi = 0; hi < 256; ++hi) t.fromPage(hi, pages.count(hi) ? pages[hi] : empty);
    return t;
}

}  // namespace qarq::test
