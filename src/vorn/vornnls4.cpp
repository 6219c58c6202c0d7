#include "vorn/vornnls4.hpp"

#include "vorn/VornNlsCodec.hpp"

namespace nls = qarq::vorn::nls;
using nls::put;

extern "C" {

char* vornnls4_ascii_sbcs_to_utf8(const VornNlsCodeSet* cs, const unsigned char* source,
                                  const unsigned char* sourceEnd, char* target,
                                  char* targetEnd) {
    VORNNLS_ENGINE_ENTRY("vornnls4_ascii_sbcs_to_utf8");
    return nls::sbcsToUtf8<true>(nls::derivedOf(cs), source, sourceEnd, target,
                                 targetEnd);
}

char* vornnls4_ascii_dbcs_to_utf8(const VornNlsCodeSet* cs, const unsigned char* source,
                                  const unsigned char* sourceEnd, char* target,
                                  char* targetEnd) {
    VORNNLS_ENGINE_ENTRY("vornnls4_ascii_dbcs_to_utf8");
    const nls::Derived* d = nls::derivedOf(cs);
    const uint32_t* t = d->toUtf8;
    const uint32_t* pairs = nls::pairForms(d);
    return nls::asciiFamilyLoop(
        source, sourceEnd, target, targetEnd, [&](const unsigned char*& s, char*& out) {
            // Single bytes and invalid classes have their form in the table;
            // 0 marks a lead byte.
            uint32_t e = t[*s];
            if (e != 0) {
                if (!put(out, targetEnd, e)) return false;
                ++s;
                return true;
            }
            if (sourceEnd - s < 2) return false;
            if (!put(out, targetEnd, pairs[(s[0] - nls::kPairLeadFirst2) * 256 + s[1]]))
                return false;
            s += 2;
            nls::threeBytePairsToUtf8<nls::kPairLeadFirst2>(
                pairs, [t](unsigned char b) { return t[b] == 0; }, s, sourceEnd, out, targetEnd);
            return true;
        });
}

char* vornnls4_ascii_mbcs_to_utf8(const VornNlsCodeSet* cs, const unsigned char* source,
                                  const unsigned char* sourceEnd, char* target,
                                  char* targetEnd) {
    VORNNLS_ENGINE_ENTRY("vornnls4_ascii_mbcs_to_utf8");
    const uint32_t* t = nls::derivedOf(cs)->toUtf8;
    const unsigned char* data = nls::dataArea(cs);
    const unsigned char* byteClass = cs->table + nls::kOffByteClass;
    return nls::asciiFamilyLoop(
        source, sourceEnd, target, targetEnd, [&](const unsigned char*& s, char*& out) {
            uint32_t e = t[*s];
            if (e != 0) {  // below 0x80, or class 1
                if (!put(out, targetEnd, e)) return false;
                ++s;
                return true;
            }
            unsigned n = byteClass[*s];
            if (n == 255) {  // dropped
                ++s;
                return true;
            }
            if (size_t(sourceEnd - s) < n) return false;
            uint32_t v = 0xFFFF;
            uint32_t p = nls::toFirst(cs, s[0]);
            for (unsigned i = 1; i < n; ++i) {
                const unsigned char* node = data + 4 * size_t(p);
                unsigned count = nls::rd16(node), first = nls::rd16(node + 2);
                unsigned c = s[i];
                if (c < first || c - first >= count) {
                    v = 0xFFFF;
                    break;
                }
                uint16_t entry = nls::rd16(node + 4 + 2 * (c - first));
                if (i == n - 1) {
                    v = entry;
                } else if (entry == 0xFFFF) {
                    v = 0xFFFF;
                    break;
                } else {
                    p = entry;
                }
            }
            if (!put(out, targetEnd, nls::packUtf8(v))) return false;
            s += n;
            return true;
        });
}

char* vornnls4_ascii_sbcs_from_utf8(const VornNlsCodeSet* cs, const unsigned char* source,
                                    const unsigned char* sourceEnd, char* target,
                                    char* targetEnd) {
    VORNNLS_ENGINE_ENTRY("vornnls4_ascii_sbcs_from_utf8");
    const uint8_t* map = nls::fromByte(nls::derivedOf(cs));
    return nls::asciiFamilyLoop(source, sourceEnd, target, targetEnd,
                                [&](const unsigned char*& s, char*& out) {
                                    uint32_t v;
                                    unsigned used = nls::readUtf8(s, sourceEnd, v);
                                    if (used == 0) return false;
                                    *out++ = char(map[v]);
                                    s += used;
                                    return true;
                                });
}

char* vornnls4_ascii_dbcs_from_utf8(const VornNlsCodeSet* cs, const unsigned char* source,
                                    const unsigned char* sourceEnd, char* target,
                                    char* targetEnd) {
    VORNNLS_ENGINE_ENTRY("vornnls4_ascii_dbcs_from_utf8");
    const uint16_t* map = nls::fromWord(nls::derivedOf(cs));
    return nls::asciiFamilyLoop(
        source, sourceEnd, target, targetEnd, [&](const unsigned char*& s, char*& out) {
            nls::threeBytesToPairs(map, s, sourceEnd, out, targetEnd);
            // The loop's own test ends the conversion, or its kernel takes
            // the ASCII that stopped the run.
            if (!(s < sourceEnd && out < targetEnd) || *s < 0x80) return true;
            uint32_t v;
            unsigned used = nls::readUtf8(s, sourceEnd, v);
            if (used == 0) return false;
            uint16_t w = map[v];
            if (w < 0x100) {
                *out++ = char(w);
            } else {
                if (targetEnd - out < 2) return false;
                nls::putPair(out, w);
            }
            s += used;
            return true;
        });
}

char* vornnls4_ascii_mbcs_from_utf8(const VornNlsCodeSet* cs, const unsigned char* source,
                                    const unsigned char* sourceEnd, char* target,
                                    char* targetEnd) {
    VORNNLS_ENGINE_ENTRY("vornnls4_ascii_mbcs_from_utf8");
    const unsigned char* data = nls::dataArea(cs);
    const unsigned char* fromPage = cs->table + nls::kOffFromPage;
    return nls::asciiFamilyLoop(
        source, sourceEnd, target, targetEnd, [&](const unsigned char*& s, char*& out) {
            uint32_t v;
            unsigned used = nls::readUtf8(s, sourceEnd, v);
            if (used == 0) return false;
            const unsigned char* entry =
                data + 4 * size_t(nls::rd16(fromPage + 2 * (v >> 8))) + 4 * (v & 0xFF);
            uint16_t prefix = nls::rd16(entry), value = nls::rd16(entry + 2);
            if (value < 0x100) {
                *out++ = char(value);
            } else if (prefix == 0xFFFF) {
                *out++ = '?';
            } else {
                const unsigned char* bytes = data + 16 * size_t(prefix);
                size_t n = nls::rd16(bytes + 14);
                if (size_t(targetEnd - out) < n + 2) return false;
                std::memcpy(out, bytes, n);
                out[n] = char(value >> 8);
                out[n + 1] = char(value);
                out += n + 2;
            }
            s += used;
            return true;
        });
}

}  // extern "C"
