// Small tables of every kind for the engine tests, the fuzz targets and the
// benchmarks: hand-made ones whose every answer is known, and random ones
// that reach the corners (values of every UTF-8 width, 0xFFFE, unmapped
// entries, dropped bytes, sparse nodes).
#pragma once

#include <random>

#include "TableWriter.hpp"

namespace qarq::test {

/// An ASCII-family SBCS: ASCII identity, 0x80 -> U+20AC, 0xA0-0xFF -> Latin-1,
/// 0x81 unmapped; '?' is the substitution byte and truly maps to U+003F.
inline UcvImage asciiSbcs() {
    SbcsSpec s;
    for (unsigned b = 0; b < 256; ++b) s.toUcs[b] = b < 0x80 || b >= 0xA0 ? b : 0xFFFF;
    s.toUcs[0x80] = 0x20AC;
    for (unsigned b = 0; b < 256; ++b)
        if (s.toUcs[b] != 0xFFFF) s.fromUcs[s.toUcs[b]] = uint8_t(b);
    s.subByte = 0x3F;
    s.subUnicode = 0x3F;
    return buildSbcs(s);
}

/// An EBCDIC SBCS: letters, digits, blank and a few signs at their EBCDIC
/// places; 0x3F is the substitution byte and truly maps to U+001A.
inline UcvImage ebcdicSbcs() {
    SbcsSpec s;
    s.ebcdic = true;
    for (auto& u : s.toUcs) u = 0xFFFF;
    auto map = [&](unsigned b, uint16_t u) {
        s.toUcs[b] = u;
        s.fromUcs[u] = uint8_t(b);
    };
    for (unsigned i = 0; i < 9; ++i) {
        map(0xC1 + i, uint16_t('A' + i));
        map(0x81 + i, uint16_t('a' + i));
    }
    for (unsigned i = 0; i < 9; ++i) {
        map(0xD1 + i, uint16_t('J' + i));
        map(0x91 + i, uint16_t('j' + i));
    }
    for (unsigned i = 0; i < 8; ++i) {
        map(0xE2 + i, uint16_t('S' + i));
        map(0xA2 + i, uint16_t('s' + i));
    }
    for (unsigned i = 0; i < 10; ++i) map(0xF0 + i, uint16_t('0' + i));
    map(0x40, ' ');
    map(0x4B, '.');
    map(0x6F, '?');
    map(0x15, '\n');
    map(0x00, 0);
    map(0x3F, 0x1A);
    map(0x51, 0xE9);    // e acute: two UTF-8 bytes
    map(0x9F, 0x20AC);  // euro sign: three UTF-8 bytes
    s.subByte = 0x3F;
    s.subUnicode = 0x1A;
    return buildSbcs(s);
}

/// A DBCS of kind 2 (lead bytes 0x81-0x9F, 0xE0-0xFC) or kind 4 (EBCDIC,
/// single bytes as ebcdicSbcs plus pairs). Pair (0x42, 0x41) or (0x82, 0xA0)
/// is U+3042; (0x42, 0x42) / (0x82, 0xA1) is U+00E9 with two UTF-8 bytes.
inline UcvImage sampleDbcs(uint16_t kind) {
    DbcsSpec d;
    d.kind = kind;
    for (auto& u : d.single) u = 0xFFFF;
    if (kind == 2) {
        for (unsigned b = 0; b < 0x80; ++b) d.byteClass[b] = 1, d.single[b] = uint16_t(b);
        for (unsigned b = 0x81; b <= 0x9F; ++b) d.byteClass[b] = 2;
        for (unsigned b = 0xE0; b <= 0xFC; ++b) d.byteClass[b] = 2;
        for (unsigned b = 0xA1; b <= 0xDF; ++b) d.byteClass[b] = 1, d.single[b] = uint16_t(0xFF61 + b - 0xA1);
        for (unsigned b = 0; b < 0x80; ++b) d.fromUcs[uint16_t(b)] = uint16_t(b);
        d.pairs[0x82A0] = 0x3042;
        d.pairs[0x82A1] = 0x00E9;
        d.pairs[0x8140] = 0x3000;
        d.fromUcs[0x3042] = 0x82A0;
        d.fromUcs[0x3000] = 0x8140;
        d.fromUcs[0xFF61] = 0xA1;
    } else {
        UcvImage e = ebcdicSbcs();
        for (unsigned b = 0; b < 256; ++b) d.single[b] = e.toFirstOf(b);
        for (unsigned b = 0; b < 256; ++b)
            if (d.single[b] != 0xFFFF && d.single[b] != 0x1A) d.fromUcs[d.single[b]] = uint16_t(b);
        d.pairs[0x4241] = 0x3042;
        d.pairs[0x4242] = 0x00E9;
        d.pairs[0x4040] = 0x3000;
        d.fromUcs[0x3042] = 0x4241;
        d.fromUcs[0x3000] = 0x4040;
    }
    return buildDbcs(d);
}

/// An EUC-JP-like kind 3: 0x8E + 1 byte (2 bytes), 0xA1-0xFE + 1 byte,
/// 0x8F + 2 bytes (3 bytes), 0x80 dropped, 0xA0 a class-1 byte (U+00A0).
inline UcvImage sampleMbcs() {
    MbcsSpec m;
    for (unsigned b = 0x80; b < 256; ++b) m.byteClass[b] = 2;
    m.byteClass[0x80] = 255;
    m.byteClass[0xFF] = 255;
    m.byteClass[0x8F] = 3;
    m.byteClass[0xA0] = 1;
    m.single[0xA0] = 0xA0;
    m.sequences["\xA4\xA2"] = 0x3042;
    m.sequences["\xA1\xA1"] = 0x3000;
    m.sequences["\x8E\xB1"] = 0xFF71;
    m.sequences["\x8F\xB0\xA1"] = 0x4E02;
    m.sequences["\x8F\xA2\xAF"] = 0x02D8;
    for (auto& [seq, u] : m.sequences) m.fromUcs[u] = seq;
    m.fromUcs[0xA0] = "\xA0";
    for (unsigned b = 0; b < 0x80; ++b) m.fromUcs[uint16_t(b)] = std::string(1, char(b));
    return buildMbcs(m);
}

/// A value of any UTF-8 width, now and then none or 0xFFFE.
inline uint16_t randomValue(std::mt19937& rng) {
    switch (rng() % 8) {
    case 0: return uint16_t(rng() % 0x80);
    case 1:
    case 2: return uint16_t(0x80 + rng() % 0x780);
    case 3:
    case 4: return uint16_t(0x800 + rng() % 0xF7FF);
    case 5: return 0xFFFF;
    case 6: return 0xFFFE;
    default: return uint16_t(rng() % 0x100);
    }
}

/// A random table of `kind` (1 ASCII, 1 EBCDIC with `ebcdic`, 2, 3, 4),
/// whose reverse map inverts part of its forward map.
inline UcvImage randomTable(uint16_t kind, bool ebcdic, std::mt19937& rng) {
    if (kind == 1) {
        SbcsSpec s;
        s.ebcdic = ebcdic;
        for (unsigned b = 0; b < 256; ++b) {
            s.toUcs[b] = randomValue(rng);
            if (rng() % 3) s.fromUcs[s.toUcs[b]] = uint8_t(b);
        }
        for (int i = 0; i < 64; ++i) s.fromUcs[randomValue(rng)] = uint8_t(rng());
        s.subByte = uint8_t(rng());
        s.subUnicode = rng() % 2 ? randomValue(rng) : 0xFFFF;
        return buildSbcs(s);
    }
    if (kind == 2 || kind == 4) {
        DbcsSpec d;
        d.kind = kind;
        for (unsigned b = 0; b < 256; ++b) {
            d.single[b] = randomValue(rng);
            d.byteClass[b] = uint8_t(rng() % 4 == 0 ? 2 : rng() % 8 == 0 ? rng() % 5 : 1);
        }
        for (int i = 0; i < 3000; ++i) {
            unsigned lead = kind == 4 ? 0x40 + rng() % 0xBF : 0x80 + rng() % 0x80;
            uint16_t u = randomValue(rng);
            uint16_t pair = uint16_t(lead << 8 | (rng() & 0xFF));
            d.pairs[pair] = u;
            if (rng() % 2) d.fromUcs[u] = pair;
        }
        for (int i = 0; i < 300; ++i) d.fromUcs[randomValue(rng)] = uint16_t(rng() % 0x100);
        // Shift bytes as characters of their own, as host tables have them.
        d.fromUcs[0x0E] = 0x0E;
        d.fromUcs[0x0F] = 0x0F;
        return buildDbcs(d);
    }
    MbcsSpec m;
    for (unsigned b = 0x80; b < 256; ++b) {
        unsigned r = rng() % 10;
        m.byteClass[b] = uint8_t(r < 2 ? 1 : r < 3 ? 255 : r < 8 ? 2 : r < 9 ? 3 : 4);
        m.single[b] = randomValue(rng);
    }
    for (int i = 0; i < 2000; ++i) {
        unsigned lead = 0x80 + rng() % 0x80;
        unsigned n = m.byteClass[lead];
        if (n < 2 || n == 255) continue;
        std::string seq(1, char(lead));
        for (unsigned k = 1; k < n; ++k) seq += char(0x80 + rng() % 0x80);
        m.sequences[seq] = randomValue(rng);
    }
    for (auto& [seq, u] : m.sequences)
        if (rng() % 2) m.fromUcs[u] = seq.size() == 2 || rng() % 2 ? seq : seq.substr(0, 2);
    for (int i = 0; i < 100; ++i) m.fromUcs[randomValue(rng)] = std::string(1, char(rng()));
    return buildMbcs(m);
}

}  // namespace qarq::test
