#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <string>

#include "qarq/vorn/VornDbcsCompare.hpp"

namespace {

const unsigned char kHighBytes[] = {0x81, 0x9F, 0, 0};

int match(const char* pattern, const char* text, const unsigned char* ranges = nullptr) {
    return VornStringCompare(pattern, text, ranges);
}

// The comparison rule written as plain recursion, one branch per position a
// `*` may stand for. Exponential, so only for short strings.
class Reference {
  public:
    explicit Reference(const unsigned char* ranges) : ranges_(ranges) {}

    int operator()(const unsigned char* p, const unsigned char* t) const {
        for (;;) {
            if (p[0] == 0 && t[0] == 0) {
                return 1;
            }
            const size_t s = lead(t[0]) && t[1] != 0 ? 2 : 1;
            if (p[0] == '*' && !lead(p[0])) {
                if (p[1] == 0) {
                    return 1;
                }
                int result = 0;
                for (const unsigned char* k = t;; ++k) {
                    result = (*this)(p + 1, k);
                    if (result != 0 || *k == 0) {
                        return result;
                    }
                }
            }
            if (p[0] == '?' && !lead(p[0])) {
                if (p[1] == 0) {
                    return 1;
                }
                return (*this)(p + 1, t[0] != 0 ? t + s : t);
            }
            if (p[0] != t[0] || (lead(p[0]) && p[1] != t[1])) {
                return 0;
            }
            if (p[s] != 0 && t[s] != 0) {
                p += s;
                t += s;
            } else if (p[s] != '*' && p[s] != '?') {
                return p[s] == 0 && t[s] == 0 ? 1 : 0;
            } else {
                p += s;
            }
        }
    }

  private:
    bool lead(unsigned char b) const {
        for (const unsigned char* r = ranges_; r != nullptr && r[0] != 0 && r[1] != 0; r += 2) {
            if (b >= r[0] && b <= r[1]) {
                return true;
            }
        }
        return false;
    }
    const unsigned char* ranges_;
};

// Examples of the rule; the recursive rule below holds the comparison to it
// on every short pattern and text of these bytes.
TEST(DbcsStringCompare, Wildcards) {
    const struct {
        const char* pattern;
        const char* text;
        const unsigned char* ranges;
        int expected;
    } cases[] = {
        {"a*c", "abbc", nullptr, 1}, {"a*c", "abbd", nullptr, 0}, {"a?c", "ac", nullptr, 0},
        {"a?", "abcd", nullptr, 1},  {"ab", "abc", nullptr, 0},   {"abc", "ab", nullptr, 0},
        // The text stays on its last character when a wildcard follows its end.
        {"ab*b", "ab", nullptr, 1},  {"ab*c", "ab", nullptr, 0},  {"*a", "", nullptr, 0},
        {"*", "", nullptr, 1},       {"", "a", nullptr, 0},       {nullptr, "a", nullptr, 0},
        {"a", nullptr, nullptr, 0},
        // '?' takes a double-byte character whole, and only with the ranges;
        // both of its bytes must agree; a lead byte at the end is one byte.
        {"a?b", "a\x81\x40" "b", kHighBytes, 1}, {"a??b", "a\x81\x40" "b", kHighBytes, 0},
        {"a?b", "a\x81\x40" "b", nullptr, 0},    {"\x81\x41", "\x81\x40", kHighBytes, 0},
        {"a?", "a\x81", kHighBytes, 1},
    };
    for (const auto& c : cases)
        EXPECT_EQ(match(c.pattern, c.text, c.ranges), c.expected)
            << (c.pattern ? c.pattern : "null") << " / " << (c.text ? c.text : "null");
}

TEST(DbcsStringCompare, ManyStarsTakePolynomialTime) {
    std::string pattern;
    for (int i = 0; i < 30; ++i) {
        pattern += "a*";
    }
    pattern += "b";
    const std::string text(10000, 'a');
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(match(pattern.c_str(), text.c_str()), 0);
    EXPECT_EQ(match(std::string(30, '*').append("b").c_str(), text.c_str()), 0);
    EXPECT_EQ(match(pattern.c_str(), (text + "b").c_str()), 1);
    const auto elapsed = std::chrono::steady_clock::now() - start;
    EXPECT_LT(elapsed, std::chrono::seconds(2));
}

TEST(DbcsStringCompare, AgreesWithTheRecursiveRule) {
    std::mt19937 random(20261123);
    const char patternBytes[] = {'a', 'b', '*', '?', '\x81', '\x40'};
    const char textBytes[] = {'a', 'b', '\x81', '\x40', '*', '?'};
    for (int round = 0; round < 20000; ++round) {
        const unsigned char* ranges = round % 2 == 0 ? kHighBytes : nullptr;
        std::string pattern;
        std::string text;
        const int patternLength = static_cast<int>(random() % 8);
        const int textLength = static_cast<int>(random() % 9);
        for (int i = 0; i < patternLength; ++i) {
            pattern += patternBytes[random() % sizeof patternBytes];
        }
        for (int i = 0; i < textLength; ++i) {
            text += textBytes[random() % sizeof textBytes];
        }
        const Reference reference(ranges);
        const int expected = reference(reinterpret_cast<const unsigned char*>(pattern.c_str()),
                                       reinterpret_cast<const unsigned char*>(text.c_str()));
        ASSERT_EQ(VornStringCompare(pattern.c_str(), text.c_str(), ranges), expected)
            << "pattern '" << pattern << "' text '" << text << "' ranges " << (ranges != nullptr);
    }
}

}  // namespace
