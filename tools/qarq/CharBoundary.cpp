#include "CharBoundary.hpp"

#include <cstdint>
#include <cstring>

namespace qarqtool {

namespace {

// Eight bytes below 0x80 are eight characters in every kind but 4.
inline bool allAscii(const unsigned char* p) {
    uint64_t w;
    std::memcpy(&w, p, 8);
    return (w & 0x8080808080808080ull) == 0;
}

}  // namespace

CharBoundary::CharBoundary(const VornNlsCodeSet* cs)
    : kind_(cs != nullptr && cs->table != nullptr ? cs->kind : 6),
      byteClass_(cs != nullptr && cs->table != nullptr ? cs->table + kByteClassOffset : nullptr) {}

size_t CharBoundary::cut(const unsigned char* data, size_t n, bool& shifted) const {
    size_t i = 0;
    switch (kind_) {
        case 2:
            while (i < n) {
                if (n - i >= 8 && allAscii(data + i)) {
                    i += 8;
                    continue;
                }
                size_t len = byteClass_[data[i]] == 2 ? 2 : 1;
                if (n - i < len)
                    break;
                i += len;
            }
            return i;
        case 3:
            while (i < n) {
                if (n - i >= 8 && allAscii(data + i)) {
                    i += 8;
                    continue;
                }
                unsigned char b = data[i];
                size_t len = 1;
                if (b >= 0x80 && byteClass_[b] > 1 && byteClass_[b] != 255)
                    len = byteClass_[b];
                if (n - i < len)
                    break;
                i += len;
            }
            return i;
        case 4:
            while (i < n) {
                unsigned char b = data[i];
                if (!shifted) {
                    if (b == kShiftOut)
                        shifted = true;
                    ++i;
                } else if (b >= 0x40 && b <= 0xFE) {
                    if (n - i < 2)
                        break;
                    i += 2;
                } else {
                    if (b == kShiftIn)
                        shifted = false;
                    ++i;
                }
            }
            return i;
        case 6:
            while (i < n) {
                if (n - i >= 8 && allAscii(data + i)) {
                    i += 8;
                    continue;
                }
                unsigned char b = data[i];
                size_t len = b >= 0xE0 ? 3 : (b >= 0xC0 ? 2 : 1);
                if (n - i < len)
                    break;
                i += len;
            }
            return i;
        default:  // single bytes
            return n;
    }
}

}  // namespace qarqtool
