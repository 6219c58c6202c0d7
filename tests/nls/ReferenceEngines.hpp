// The conversion rules written the plain way: one character at a time, the
// image read in place, no derived data. The fast engines must give the same
// count and the same bytes (and write nothing else) for every input.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "qarq/vorn/vornnls2.hpp"

namespace qarq::test::ref {

inline uint16_t rd16(const uint8_t* p) { return uint16_t(p[0] | p[1] << 8); }

struct Table {
    const uint8_t* t;
    uint16_t kind;  // 6 (UTF-8 itself) for a record with no table
    bool ebcdic;
    explicit Table(const VornNlsCodeSet* cs)
        : t(cs->table),
          kind(cs->table ? cs->kind : 6),
          ebcdic(cs->table && rd16(cs->table + 50) == 0x1100) {}
    // Kinds with no table rule copy their bytes unchanged.
    bool copies() const { return kind < 1 || kind > 4; }
    uint32_t data() const { return uint32_t(t[0] | t[1] << 8 | t[2] << 16 | uint32_t(t[3]) << 24); }
    const uint8_t* at(uint32_t p) const { return t + data() + 4 * size_t(p); }
    uint16_t toFirst(unsigned b) const { return rd16(t + 736 + 2 * b); }
    uint16_t fromPage(unsigned hi) const { return rd16(t + 224 + 2 * hi); }
    unsigned byteClass(unsigned b) const { return t[1248 + b]; }
    uint16_t row(uint16_t p, unsigned b) const { return rd16(at(p) + 2 * b); }
};

// Writes v as UTF-8; false when it does not fit.
inline bool writeUtf8(uint32_t v, char*& out, char* end) {
    if (v > 0xFFFE) v = 0x3F;
    if (v < 0x80) {
        *out++ = char(v);
    } else if (v < 0x800) {
        if (!(out + 1 < end)) return false;
        *out++ = char(0xC0 | v >> 6);
        *out++ = char(0x80 | (v & 0x3F));
    } else {
        if (!(out + 2 < end)) return false;
        *out++ = char(0xE0 | v >> 12);
        *out++ = char(0x80 | ((v >> 6) & 0x3F));
        *out++ = char(0x80 | (v & 0x3F));
    }
    return true;
}

// Reads one character; 0 bytes when the sequence runs past the end.
inline unsigned readUtf8(const uint8_t* s, const uint8_t* e, uint32_t& v) {
    unsigned b = *s;
    if (b < 0x80) return v = b, 1;
    if ((b & 0xE0) == 0xC0) {
        if (s + 1 >= e) return 0;
        return v = (b & 0x1F) << 6 | (s[1] & 0x3F), 2;
    }
    if (b <= 0xBF) return v = 0x3F, 1;
    if (s + 2 >= e) return 0;
    return v = (b & 0x0F) << 12 | (s[1] & 0x3F) << 6 | (s[2] & 0x3F), 3;
}

inline char* copyBytes(const uint8_t* s, const uint8_t* e, char* out, char* end) {
    while (s < e && out < end) *out++ = char(*s++);
    return out;
}

// A double-byte code, lead byte first.
inline void writePair(uint16_t w, char*& out) {
    *out++ = char(w >> 8);
    *out++ = char(w);
}

inline char* toUtf8(const VornNlsCodeSet* cs, const uint8_t* s, const uint8_t* e, char* out,
                    char* end) {
    const Table t(cs);
    const uint16_t kind = t.kind;
    const bool ebcdic = t.ebcdic;
    if (t.copies()) return copyBytes(s, e, out, end);
    bool shifted = false;
    while (s < e && out < end) {
        unsigned b = *s;
        uint32_t v;
        unsigned used = 1;
        if (kind == 1) {
            if (b < 0x80 && !ebcdic) {
                v = b;
            } else {
                v = t.toFirst(b);
            }
        } else if (kind == 2) {
            if (b < 0x80) {
                v = b;
            } else if (t.byteClass(b) == 1) {
                v = t.row(t.toFirst(0), b);
            } else if (t.byteClass(b) == 2) {
                if (s + 1 >= e) break;
                v = t.row(t.toFirst(b), s[1]);
                used = 2;
            } else {
                v = 0xFFFF;
            }
        } else if (kind == 3) {
            if (b < 0x80) {
                v = b;
            } else {
                unsigned n = t.byteClass(b);
                if (n == 255) {
                    ++s;
                    continue;
                }
                if (n == 1) {
                    v = t.toFirst(b);
                } else {
                    if (size_t(e - s) < n) break;
                    uint32_t p = t.toFirst(b);
                    v = 0xFFFF;
                    for (unsigned i = 1; i < n; ++i) {
                        const uint8_t* node = t.at(p);
                        unsigned count = rd16(node), first = rd16(node + 2), c = s[i];
                        if (c < first || c - first >= count) {
                            v = 0xFFFF;
                            break;
                        }
                        uint16_t x = rd16(node + 4 + 2 * (c - first));
                        if (i == n - 1)
                            v = x;
                        else if (x == 0xFFFF)
                            break;
                        else
                            p = x;
                    }
                    used = n;
                }
            }
        } else {  // kind 4
            if (!shifted) {
                if (b == 0x0E) {
                    shifted = true;
                    ++s;
                    continue;
                }
                v = t.row(t.toFirst(0), b);
            } else if (b >= 0x40 && b <= 0xFE) {
                if (s + 1 >= e) break;
                v = t.row(t.toFirst(b), s[1]);
                used = 2;
            } else if (b == 0x0F) {
                shifted = false;
                ++s;
                continue;
            } else {
                v = t.row(t.toFirst(0), b);
            }
        }
        if (!writeUtf8(v, out, end)) break;
        s += used;
    }
    return out;
}

inline char* fromUtf8(const VornNlsCodeSet* cs, const uint8_t* s, const uint8_t* e, char* out,
                      char* end) {
    const Table t(cs);
    const uint16_t kind = t.kind;
    const bool ebcdic = t.ebcdic;
    if (t.copies()) return copyBytes(s, e, out, end);
    bool shifted = false;
    while (s < e && out < end) {
        if (*s < 0x80 && kind != 4 && !(kind == 1 && ebcdic)) {
            *out++ = char(*s++);
            continue;
        }
        uint32_t v;
        unsigned used = readUtf8(s, e, v);
        if (used == 0) break;
        const uint8_t* page = t.at(t.fromPage(v >> 8));
        if (kind == 1) {
            uint8_t byte = page[v & 0xFF];
            if (byte == t.t[60] && (v != rd16(t.t + 58) || v == 0xFFFF)) byte = ebcdic ? 0x6F : 0x3F;
            *out++ = char(byte);
        } else if (kind == 2) {
            uint16_t w = rd16(page + 2 * (v & 0xFF));
            if (w == 0xFFFF) w = 0x3F;
            if (w >= 0x100) {
                if (!(out + 1 < end)) break;
                writePair(w, out);
            } else {
                *out++ = char(w);
            }
        } else if (kind == 3) {
            uint16_t prefix = rd16(page + 4 * (v & 0xFF)), value = rd16(page + 4 * (v & 0xFF) + 2);
            if (value < 0x100) {
                *out++ = char(value);
            } else if (prefix == 0xFFFF) {
                *out++ = '?';
            } else {
                const uint8_t* p = t.t + t.data() + 16 * size_t(prefix);
                unsigned n = rd16(p + 14);
                if (out + n + 1 >= end) break;
                for (unsigned i = 0; i < n; ++i) *out++ = char(p[i]);
                writePair(value, out);
            }
        } else {  // kind 4
            uint16_t w = rd16(page + 2 * (v & 0xFF));
            if (w == 0xFFFF) w = 0x6F;
            if (shifted) {
                if (w >= 0x100) {
                    if (!(out + 1 < end)) break;
                    writePair(w, out);
                } else if (out + 1 < end) {
                    *out++ = 0x0F;
                    *out++ = char(w);
                    if (w != 0x0E) shifted = false;
                }
            } else if (w >= 0x100) {
                if (!(out + 2 < end)) break;
                *out++ = 0x0E;
                writePair(w, out);
                shifted = true;
            } else {
                *out++ = char(w);
                if (w == 0x0E) shifted = true;
            }
        }
        s += used;
    }
    if (kind == 4 && shifted && out < end) *out++ = 0x0F;
    return out;
}

/// The entry points' steps around an engine, for a non-null record.
inline unsigned convert(const VornNlsCodeSet* cs, const char* source, int sourceLength,
                        char* target, unsigned targetLength, bool toUtf8Direction) {
    size_t n = sourceLength < 0 ? std::strlen(source) : size_t(sourceLength);
    auto* s = reinterpret_cast<const uint8_t*>(source);
    char* end = target + targetLength;
    char* out = toUtf8Direction ? toUtf8(cs, s, s + n, target, end)
                                : fromUtf8(cs, s, s + n, target, end);
    if (sourceLength < 0) {
        if (out < end)
            *out++ = '\0';
        else if (out > target)
            out[-1] = '\0';
    }
    return unsigned(out - target);
}

}  // namespace qarq::test::ref
