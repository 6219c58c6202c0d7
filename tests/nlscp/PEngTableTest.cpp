#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "qarq/vorn/VornNlsPEng.hpp"

namespace {

// The two tables as the host documentation lists them, row by row.
const char* const kE2ARows[16] = {
    "00 01 02 03 FF 09 FF 7F FF FF FF 0B 0C 0D 0E 0F",
    "10 11 12 13 FF FF 08 FF 18 19 FF FF FF 1D FF 1F",
    "FF FF 1C FF FF 0A 17 1B FF FF FF FF FF 05 06 07",
    "FF FF 16 FF FF 1E FF 04 FF FF FF FF 14 15 FF 1A",
    "20 FF FF FF FF FF FF FF FF FF FF 2E 3C 28 2B 7C",
    "26 FF FF FF FF FF FF FF FF FF 21 24 2A 29 3B AC",
    "2D 2F FF FF FF FF FF FF FF FF FF 2C 25 5F 3E 3F",
    "FF FF FF FF FF FF FF FF FF 60 3A 23 40 27 3D 22",
    "FF 61 62 63 64 65 66 67 68 69 FF FF FF FF FF FF",
    "FF 6A 6B 6C 6D 6E 6F 70 71 72 FF FF FF FF FF FF",
    "FF 7E 73 74 75 76 77 78 79 7A FF FF FF DD FF FF",
    "5E FF FF FF FF FF FF FF FF FF 5B 5D FF A8 FF FF",
    "7B 41 42 43 44 45 46 47 48 49 FF FF FF FF FF FF",
    "7D 4A 4B 4C 4D 4E 4F 50 51 52 FF FF FF FF FF FF",
    "5C FF 53 54 55 56 57 58 59 5A FF FF FF FF FF FF",
    "30 31 32 33 34 35 36 37 38 39 FF FF FF FF FF FF",
};

const char* const kA2ERows[16] = {
    "00 01 02 03 37 2D 2E 2F 16 05 25 0B 0C 0D 0E 0F",
    "10 11 12 13 3C 3D 32 26 18 19 3F 27 22 1D 35 1F",
    "40 5A 7F 7B 5B 6C 50 7D 4D 5D 5C 4E 6B 60 4B 61",
    "F0 F1 F2 F3 F4 F5 F6 F7 F8 F9 7A 5E 4C 7E 6E 6F",
    "7C C1 C2 C3 C4 C5 C6 C7 C8 C9 D1 D2 D3 D4 D5 D6",
    "D7 D8 D9 E2 E3 E4 E5 E6 E7 E8 E9 BA E0 BB B0 6D",
    "79 81 82 83 84 85 86 87 88 89 91 92 93 94 95 96",
    "97 98 99 A2 A3 A4 A5 A6 A7 A8 A9 C0 4F D0 A1 07",
    "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF",
    "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF",
    "FF FF FF FF FF FF FF FF BD FF FF FF 5F FF FF FF",
    "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF",
    "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF",
    "FF FF FF FF FF FF FF FF FF FF FF FF FF AD FF FF",
    "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF",
    "FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF FF",
};

std::vector<unsigned char> parse(const char* const (&rows)[16]) {
    std::vector<unsigned char> table;
    for (const char* row : rows) {
        unsigned values[16];
        EXPECT_EQ(std::sscanf(row, "%x %x %x %x %x %x %x %x %x %x %x %x %x %x %x %x", &values[0],
                              &values[1], &values[2], &values[3], &values[4], &values[5],
                              &values[6], &values[7], &values[8], &values[9], &values[10],
                              &values[11], &values[12], &values[13], &values[14], &values[15]),
                  16);
        table.insert(table.end(), values, values + 16);
    }
    return table;
}

std::vector<unsigned char> everyByte() {
    std::vector<unsigned char> bytes(256);
    for (int i = 0; i < 256; ++i) {
        bytes[i] = static_cast<unsigned char>(i);
    }
    return bytes;
}

TEST(NlsPEng, TranslatesEveryByteByTheTables) {
    std::vector<unsigned char> bytes = everyByte();
    VornNlsPEngE2A(bytes.data(), 256);
    EXPECT_EQ(bytes, parse(kE2ARows));
    bytes = everyByte();
    VornNlsPEngA2E(bytes.data(), 256);
    EXPECT_EQ(bytes, parse(kA2ERows));
}

TEST(NlsPEng, TheTablesUndoEachOtherWhereBothHaveACounterpart) {
    std::vector<unsigned char> text = everyByte();
    VornNlsPEngA2E(text.data(), 256);
    VornNlsPEngE2A(text.data(), 256);
    for (int i = 0; i < 256; ++i) {
        if (text[i] != 0xFF) {
            EXPECT_EQ(text[i], i);
        }
    }
    unsigned char word[] = {'H', 'o', 's', 't', ' ', '3', '7', '!'};
    VornNlsPEngA2E(word, sizeof word);
    EXPECT_EQ(word[0], 0xC8);
    VornNlsPEngE2A(word, sizeof word);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(word), sizeof word), "Host 37!");
    unsigned char none[] = {0x80, 0x41};
    VornNlsPEngA2E(none, 1);
    EXPECT_EQ(none[0], 0xFF);
    EXPECT_EQ(none[1], 0x41);  // behind the length: untouched
    VornNlsPEngA2E(nullptr, 5);
}

}  // namespace
