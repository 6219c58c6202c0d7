#include "vorn/VornNlsTable.hpp"

#include <cstring>

#include "qarq/base/Os.hpp"

namespace qarq::vorn::nls {
namespace {

class Checker {
public:
    Checker(const unsigned char* image, size_t size)
        : image_(image), size_(size), data_(rd32(image + kOffDataOffset)) {}
    ~Checker() {
        if (depth_ != nullptr) os::calls().free(depth_);
    }
    Checker(const Checker&) = delete;
    Checker& operator=(const Checker&) = delete;

    bool dataOk() const { return data_ <= size_; }

    // A block of `bytes` at data-area position `p` (units of 4 bytes).
    bool block(uint32_t p, size_t bytes) const {
        uint64_t at = uint64_t(data_) + 4u * uint64_t(p);
        return at + bytes <= size_;
    }
    const unsigned char* at(uint32_t p) const { return image_ + data_ + 4u * size_t(p); }

    uint16_t word(size_t offset) const { return rd16(image_ + offset); }
    uint16_t toFirst(unsigned b) const { return word(kOffToFirst + 2 * b); }
    uint16_t fromPage(unsigned hi) const { return word(kOffFromPage + 2 * hi); }
    unsigned byteClass(unsigned b) const { return image_[kOffByteClass + b]; }

    bool pages(size_t pageBytes) const {
        for (unsigned hi = 0; hi < 256; ++hi)
            if (!block(fromPage(hi), pageBytes)) return false;
        return true;
    }

    // Prefix entries of kind 3: 16 bytes at data byte 16*prefix, the last
    // two bytes the length of the prefix, which must fit in the other 14.
    bool prefixes() const {
        for (unsigned hi = 0; hi < 256; ++hi) {
            const unsigned char* page = at(fromPage(hi));
            for (unsigned lo = 0; lo < 256; ++lo) {
                uint16_t prefix = rd16(page + 4 * lo);
                uint16_t value = rd16(page + 4 * lo + 2);
                if (value < 0x100 || prefix == 0xFFFF) continue;
                uint64_t entry = uint64_t(data_) + 16u * uint64_t(prefix);
                if (entry + 16 > size_) return false;
                if (rd16(image_ + entry + 14) > 14) return false;
            }
        }
        return true;
    }

    // A node that reads `left` more bytes: its header and entries lie in the
    // image and, while bytes remain after this one, every entry that is not
    // 0xFFFF is such a node for one byte less. Validity for n bytes implies
    // validity for fewer, so each node is remembered with the most bytes it
    // was checked for, which bounds the work by the nodes times the depth.
    bool node(uint32_t p, unsigned left) {
        if (depth_[p] >= left) return true;
        if (!block(p, 4)) return false;
        const unsigned char* n = at(p);
        uint16_t count = rd16(n);
        if (!block(p, 4 + 2 * size_t(count))) return false;
        if (left > 1) {
            for (unsigned i = 0; i < count; ++i) {
                uint16_t next = rd16(n + 4 + 2 * i);
                if (next != 0xFFFF && !node(next, left - 1)) return false;
            }
        }
        depth_[p] = uint8_t(left);
        return true;
    }

    // False with *noMemory set when the bookkeeping can't be allocated.
    bool nodes(bool* noMemory) {
        depth_ = static_cast<uint8_t*>(os::calls().malloc(65536));
        if (depth_ == nullptr) {
            *noMemory = true;
            return false;
        }
        std::memset(depth_, 0, 65536);
        for (unsigned b = 0x80; b < 256; ++b) {
            unsigned n = byteClass(b);
            if (n >= 2 && n <= 254 && !node(toFirst(b), n - 1)) return false;
        }
        return true;
    }

private:
    const unsigned char* image_;
    size_t size_;
    uint32_t data_;
    uint8_t* depth_ = nullptr;
};

}  // namespace

const char* validateImage(const unsigned char* image, size_t size) {
    if (image == nullptr || size < kMinTableSize || std::memcmp(image + kOffTag, "ucv", 3) != 0)
        return "not a table";
    Checker c(image, size);
    if (!c.dataOk()) return "data offset outside the image";
    switch (c.word(kOffKind)) {
    case 1:
        if (!c.pages(256)) return "from-Unicode page outside the image";
        return nullptr;
    case 2:
        if (!c.pages(512)) return "from-Unicode page outside the image";
        if (!c.block(c.toFirst(0), 512)) return "single-byte row outside the image";
        for (unsigned b = 0x80; b < 256; ++b)
            if (c.byteClass(b) == 2 && !c.block(c.toFirst(b), 512))
                return "lead-byte row outside the image";
        return nullptr;
    case 3:
        for (unsigned b = 0x80; b < 256; ++b)
            if (c.byteClass(b) == 0) return "byte class 0 from 0x80 up";
        if (!c.pages(1024)) return "from-Unicode page outside the image";
        if (!c.prefixes()) return "prefix entry outside the image";
        {
            bool noMemory = false;
            if (!c.nodes(&noMemory))
                return noMemory ? "no memory to check the nodes" : "node outside the image";
        }
        return nullptr;
    case 4:
        if (!c.pages(512)) return "from-Unicode page outside the image";
        if (!c.block(c.toFirst(0), 512)) return "single-byte row outside the image";
        for (unsigned b = 0x40; b <= 0xFE; ++b)
            if (!c.block(c.toFirst(b), 512)) return "lead-byte row outside the image";
        return nullptr;
    default:
        // Other kinds are passed through as bytes: nothing in the body is read.
        return nullptr;
    }
}

size_t derivedSize(const unsigned char* image) {
    switch (rd16(image + kOffKind)) {
    case 1: return sizeof(Derived) + 65536;
    case 2: return sizeof(Derived) + 2 * 65536 + 4 * 256 * kPairLeads2;
    case 4: return sizeof(Derived) + 2 * 65536 + 4 * 256 * kPairLeads4;
    default: return sizeof(Derived);
    }
}

void buildDerived(const unsigned char* image, size_t size, void* out) {
    (void)size;
    Checker c(image, size);
    auto* d = static_cast<Derived*>(out);
    uint16_t kind = c.word(kOffKind);
    d->magic = kDerivedMagic;
    d->kind = kind;
    d->scheme = c.word(kOffScheme);
    const bool ebcdic = kind == 4 || (kind == 1 && d->scheme == kSchemeEbcdic);
    const unsigned char* row0 = (kind == 2 || kind == 4) ? c.at(c.toFirst(0)) : image;
    for (unsigned b = 0; b < 256; ++b) {
        uint32_t e;
        if (b < 0x80 && !ebcdic) {
            e = packUtf8(b);
        } else if (kind == 1) {
            e = packUtf8(c.toFirst(b));
        } else if (kind == 4) {
            e = packUtf8(rd16(row0 + 2 * b));
        } else if (kind == 2) {
            unsigned cls = c.byteClass(b);
            e = cls == 1 ? packUtf8(rd16(row0 + 2 * b)) : cls == 2 ? 0 : packUtf8(0xFFFF);
        } else if (kind == 3) {
            e = c.byteClass(b) == 1 ? packUtf8(c.toFirst(b)) : 0;
        } else {
            e = packUtf8(b);  // kinds without an engine pass bytes through
        }
        d->toUtf8[b] = e;
        d->single[b] = (e >> 24) == 1 ? uint8_t(e) : 0x80;
    }
    // The shift-out ends a run of single bytes of kind 4 like a wider form.
    if (kind == 4) d->single[0x0E] = 0x80;
    // Only kind 1 reads every byte as one character by itself.
    Latin1Table& latin1 = d->latin1;
    latin1.otherCount = 0;
    d->latin1Ok = kind == 1;
    for (unsigned b = 0; b < 256; ++b) {
        const uint32_t e = d->toUtf8[b];
        const uint32_t length = e >> 24;
        const uint32_t v = length == 1 ? (e & 0x7F) : ((e & 0x1F) << 6 | ((e >> 8) & 0x3F));
        latin1.chars[b] = uint8_t(v);
        if (length == 0 || length > 2 || v > 0xFF) {
            if (latin1.otherCount == sizeof latin1.others)
                d->latin1Ok = 0;
            else
                latin1.others[latin1.otherCount++] = uint8_t(b);
        }
    }
    for (unsigned i = latin1.otherCount; i < sizeof latin1.others; ++i)
        latin1.others[i] = latin1.others[0];
    d->asciiFromOk = 0;
    for (unsigned b = 0; b < 128; ++b) d->asciiFrom[b] = uint8_t(b);
    std::memset(d->asciiFromMarked, 0x80, sizeof d->asciiFromMarked);
    if (kind == 1) {
        auto* map = reinterpret_cast<uint8_t*>(d + 1);
        const uint8_t subByte = image[kOffSubByte];
        const uint16_t subUnicode = c.word(kOffSubUnicode);
        const uint8_t question = ebcdic ? 0x6F : 0x3F;
        for (unsigned v = 0; v < 65536; ++v) {
            uint8_t byte = c.at(c.fromPage(v >> 8))[v & 0xFF];
            if (byte == subByte && (v != subUnicode || v == 0xFFFF)) byte = question;
            map[v] = byte;
        }
        std::memcpy(d->asciiFrom, map, 128);
        d->asciiFromOk = 1;
    } else if (kind == 2 || kind == 4) {
        auto* map = reinterpret_cast<uint16_t*>(d + 1);
        const uint16_t question = kind == 4 ? 0x6F : 0x3F;
        for (unsigned v = 0; v < 65536; ++v) {
            uint16_t w = rd16(c.at(c.fromPage(v >> 8)) + 2 * (v & 0xFF));
            map[v] = w == 0xFFFF ? question : w;
        }
        if (kind == 4) {
            d->asciiFromOk = 1;
            for (unsigned v = 0; v < 128; ++v) {
                const bool plain = map[v] < 0x100 && map[v] != 0x0E;
                d->asciiFromMarked[v] = plain ? uint8_t(map[v]) : 0x80;
                if (map[v] == 0x80) d->asciiFromOk = 0;
            }
        }
        const unsigned first = kind == 2 ? kPairLeadFirst2 : kPairLeadFirst4;
        const unsigned leads = kind == 2 ? kPairLeads2 : kPairLeads4;
        auto* pairs = reinterpret_cast<uint32_t*>(map + 65536);
        for (unsigned i = 0; i < leads; ++i) {
            const unsigned lead = first + i;
            // Kind 2 reads rows only of lead bytes (class 2); the others
            // are never looked up and stay empty.
            const bool row = kind == 4 || c.byteClass(lead) == 2;
            const unsigned char* r = row ? c.at(c.toFirst(lead)) : nullptr;
            for (unsigned second = 0; second < 256; ++second)
                pairs[i * 256 + second] = row ? packUtf8(rd16(r + 2 * second)) : 0;
        }
    }
}

}  // namespace qarq::vorn::nls
