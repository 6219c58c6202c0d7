#include <gtest/gtest.h>

#include <string>

#include "qarq/vorn/VornNlsPEng.hpp"
#include "support/StreamBytes.hpp"

namespace {

std::string translated(void (*translate)(unsigned char*, unsigned), std::string text) {
    translate(reinterpret_cast<unsigned char*>(text.data()), static_cast<unsigned>(text.size()));
    return text;
}

// The two tables undo each other on the 131 bytes they map (ASCII and three
// more), every other byte is 0xFF, and the host's letters, digits and
// punctuation land where the host documentation puts them.
TEST(NlsPEng, TranslatesEveryByteByTheTablesAndNoMore) {
    std::string every;
    for (int i = 0; i < 256; ++i)
        every += static_cast<char>(i);
    const std::string host = translated(VornNlsPEngA2E, every);
    int mapped = 0;
    for (int i = 0; i < 256; ++i) {
        if (host[i] == '\xFF')
            continue;
        ++mapped;
        EXPECT_EQ(translated(VornNlsPEngE2A, host.substr(i, 1)), every.substr(i, 1)) << i;
    }
    EXPECT_EQ(mapped, 131);
    EXPECT_EQ(qarq::support::hex(translated(VornNlsPEngA2E, "\n Az09!^[]{}|~\xAC")),
              "25 40 C1 A9 F0 F9 5A B0 BA BB C0 D0 4F A1 5F");

    std::string two = "\x80\x41";
    VornNlsPEngA2E(reinterpret_cast<unsigned char*>(two.data()), 1);
    EXPECT_EQ(two, "\xFF\x41");  // behind the length: untouched
    VornNlsPEngA2E(nullptr, 5);
    VornNlsPEngE2A(nullptr, 5);
}

}  // namespace
