#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "dbcs/DbcsFixture.hpp"
#include "vorn/VornDbcsDice.hpp"

namespace {

using qarq::test::DoubleByte;

struct Diced {
    int result;
    std::string text;
};

Diced diceMsg(const char* text, int width, unsigned capacity = 128, const char* delimiters = " ",
              const char* newlines = "\n") {
    char buffer[128] = {};
    std::strcpy(buffer, text);
    const int result = VornDbcs_dice_msg_text(buffer, width, capacity, delimiters, newlines);
    return {result, buffer};
}

Diced diceStr(const char* text, unsigned short width, unsigned short* count,
              unsigned short capacity = 128, const char* delimiters = " ") {
    char buffer[128] = {};
    std::strcpy(buffer, text);
    const int result = VornDbcs_dice_str_text(buffer, width, capacity, delimiters, count);
    return {result, buffer};
}

TEST(DbcsDiceMsg, BreaksAtDelimitersOrWhereTheLineIsFull) {
    Diced d = diceMsg("hello world foo", 8);
    EXPECT_EQ(d.result, 1);
    EXPECT_EQ(d.text, "hello\r world\r foo");

    d = diceMsg("abcdefghij", 4);
    EXPECT_EQ(d.result, 1);
    EXPECT_EQ(d.text, "abcd\refgh\rij");

    // The delimiter left at the head of a line is no break point: the long
    // word is cut where the line is full, and the work goes on.
    d = diceMsg("aaaa bbbbbbbbbb", 4);
    EXPECT_EQ(d.result, 1);
    EXPECT_EQ(d.text, "aaaa\r bbb\rbbbb\rbbb");
}

TEST(DbcsDiceMsg, NewlinesRestartTheColumn) {
    EXPECT_EQ(diceMsg("ab\ncdefg", 4).text, "ab\ncdef\rg");
    // Without the newline set the same text breaks earlier.
    EXPECT_EQ(diceMsg("ab\ncdefg", 4, 128, " ", "").text, "ab\nc\rdefg");
}

TEST(DbcsDiceMsg, StopsWhenTheBufferIsFull) {
    // strlen + 1 reaches the capacity at the top of a round: done, unchanged.
    Diced d = diceMsg("abcdefghij", 4, 11);
    EXPECT_EQ(d.result, 1);
    EXPECT_EQ(d.text, "abcdefghij");
    d = diceMsg("abcdefghij", 4, 12);
    EXPECT_EQ(d.result, 1);
    EXPECT_EQ(d.text, "abcd\refghij");
    EXPECT_EQ(diceMsg("abc", 0).result, 0);
}

TEST_F(DoubleByte, DiceMsgCountsCharactersNotBytes) {
    Diced d = diceMsg("\x81\x40\x81\x40\x81\x40", 2);
    EXPECT_EQ(d.result, 1);
    EXPECT_EQ(d.text, "\x81\x40\x81\x40\r\x81\x40");
    d = diceMsg("ab\x81", 10);
    EXPECT_EQ(d.result, 0);
    EXPECT_EQ(d.text, "ab\x81");
}

TEST(DbcsDiceStr, BreaksLinesOfWidthBytes) {
    unsigned short count = 99;
    Diced d = diceStr("ab cd ef gh", 5, &count);
    EXPECT_EQ(d.result, 1);
    EXPECT_EQ(d.text, "ab\r cd\r ef\r gh");
    EXPECT_EQ(count, 3);

    d = diceStr("abcdefghij", 4, &count);
    EXPECT_EQ(d.result, 1);
    EXPECT_EQ(d.text, "abcd\refgh\rij");
    EXPECT_EQ(count, 2);

    d = diceStr("abcdefghij", 4, &count, 11);
    EXPECT_EQ(d.result, 0);
    EXPECT_EQ(d.text, "abcdefghij");
    EXPECT_EQ(count, 0);
    EXPECT_EQ(diceStr("abc", 0, &count).result, 0);
}

TEST_F(DoubleByte, DiceStrBreaksInFrontOfACharacterAcrossTheWidth) {
    unsigned short count = 0;
    Diced d = diceStr(
        "abc\x81\x40"
        "de",
        4, &count);
    EXPECT_EQ(d.result, 1);
    EXPECT_EQ(d.text,
              "abc\r\x81\x40"
              "de");
    EXPECT_EQ(count, 1);
    // A width of one byte cannot hold the character at all.
    d = diceStr("\x81\x40\x81\x40", 1, &count);
    EXPECT_EQ(d.result, 0);
    EXPECT_EQ(count, 0);
}

}  // namespace
