#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "dbcs/DbcsFixture.hpp"
#include "vorn/VornDbcsDice.hpp"

namespace {

using qarq::test::DoubleByte;

struct MsgCase {
    const char* text;
    int width;
    unsigned capacity;
    const char* newlines;
    int result;
    const char* diced;
};

struct StrCase {
    const char* text;
    unsigned short width;
    unsigned short capacity;
    int result;
    const char* diced;
    unsigned short count;
};

void check(const MsgCase& c) {
    char buffer[128] = {};
    std::strcpy(buffer, c.text);
    EXPECT_EQ(VornDbcs_dice_msg_text(buffer, c.width, c.capacity, " ", c.newlines), c.result)
        << c.text << " / " << c.width;
    EXPECT_EQ(std::string(buffer), c.diced) << c.text << " / " << c.width;
}

void check(const StrCase& c) {
    char buffer[128] = {};
    std::strcpy(buffer, c.text);
    unsigned short count = 99;
    EXPECT_EQ(VornDbcs_dice_str_text(buffer, c.width, c.capacity, " ", &count), c.result)
        << c.text << " / " << c.width;
    EXPECT_EQ(std::string(buffer), c.diced) << c.text << " / " << c.width;
    if (c.result == 1 || c.width != 0) {
        EXPECT_EQ(count, c.count) << c.text << " / " << c.width;
    }
}

TEST(DbcsDice, SingleByte) {
    const MsgCase msg[] = {
        {"hello world foo", 8, 128, "\n", 1, "hello\r world\r foo"},
        {"abcdefghij", 4, 128, "\n", 1, "abcd\refgh\rij"},
        // The delimiter left at the head of a line is no break point: the
        // long word is cut where the line is full, and the work goes on.
        {"aaaa bbbbbbbbbb", 4, 128, "\n", 1, "aaaa\r bbb\rbbbb\rbbb"},
        // Newlines restart the column; without the newline set the same text
        // breaks earlier.
        {"ab\ncdefg", 4, 128, "\n", 1, "ab\ncdef\rg"},
        {"ab\ncdefg", 4, 128, "", 1, "ab\nc\rdefg"},
        // strlen + 1 reaching the capacity at the top of a round: done.
        {"abcdefghij", 4, 11, "\n", 1, "abcdefghij"},
        {"abcdefghij", 4, 12, "\n", 1, "abcd\refghij"},
        {"abc", 0, 128, "\n", 0, "abc"},
    };
    for (const MsgCase& c : msg) check(c);
    const StrCase str[] = {
        {"ab cd ef gh", 5, 128, 1, "ab\r cd\r ef\r gh", 3},
        {"abcdefghij", 4, 128, 1, "abcd\refgh\rij", 2},
        {"abcdefghij", 4, 11, 0, "abcdefghij", 0},
        {"abc", 0, 128, 0, "abc", 0},
    };
    for (const StrCase& c : str) check(c);
}

TEST_F(DoubleByte, DiceCountsCharactersAndNeverSplitsOne) {
    const MsgCase msg[] = {
        {"\x81\x40\x81\x40\x81\x40", 2, 128, "\n", 1, "\x81\x40\x81\x40\r\x81\x40"},
        {"ab\x81", 10, 128, "\n", 0, "ab\x81"},
    };
    for (const MsgCase& c : msg) check(c);
    const StrCase str[] = {
        {"abc\x81\x40" "de", 4, 128, 1, "abc\r\x81\x40" "de", 1},
        // A width of one byte cannot hold the character at all.
        {"\x81\x40\x81\x40", 1, 128, 0, "\x81\x40\x81\x40", 0},
    };
    for (const StrCase& c : str) check(c);
}

}  // namespace
