// The aliases file the build installs beside the code-set tables. The tables
// themselves are checked against the C library's converters through the
// engines, code by code (tests/nls).

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <sstream>
#include <string>

#include "support/CodesetTree.hpp"

namespace {

using qarq::test::CodesetTree;

// ---- the files beside the tables ----------------------------------------

TEST(CodesetFiles, AliasesMapFilteredNamesToExistingTables) {
    std::string text = CodesetTree::readShared("aliases");
    ASSERT_FALSE(text.empty());
    EXPECT_EQ('\n', text.back()) << "the last line needs its newline to count";
    std::istringstream in(text);
    std::string line;
    std::set<std::string> left;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream cols(line);
        std::string from, to;
        cols >> from >> to;
        EXPECT_EQ(std::string::npos, from.find_first_not_of("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"))
            << from << " can never equal a filtered name";
        EXPECT_TRUE(left.insert(from).second) << from << " twice: only the first line counts";
        if (to != "UTF8") {
            EXPECT_TRUE(std::filesystem::exists(CodesetTree::shareDir() + "/" + to)) << to;
        }
    }
    EXPECT_TRUE(left.count("65001"));
    EXPECT_NE(std::string::npos, text.find("\n65001 UTF8\n"));
}

}  // namespace
