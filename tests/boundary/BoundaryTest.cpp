// VornNlsBoundary against the engines themselves: for every kind of table the
// build installs, random text cut at each position gives a prefix that the
// engine converts whole, so that converting the prefix, then the rest (opened
// with a shift-out when the cut falls in a shifted run), gives what one call
// over the whole text gives.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "nls/NlsSupport.hpp"
#include "qarq/vorn/VornNlsBoundary.hpp"
#include "qarq/vorn/vornnls3.hpp"
#include "qarq/vorn/vornnls6.hpp"
#include "support/CodesetTree.hpp"
#include "vorn/VornNlsTable.hpp"

namespace {

namespace nls = qarq::vorn::nls;

using qarq::test::fromUtf8;
using qarq::test::Record;
using qarq::test::toUtf8;

// One table of each kind (kind 1 once per byte family) from the build's tables.
class Boundary : public ::testing::Test {
  protected:
    static void SetUpTestSuite() {
        tree_ = new qarq::test::CodesetTree();
        for (const auto& e : std::filesystem::directory_iterator(tree_->codesetDir())) {
            if (e.path().filename() == "aliases")
                continue;  // the name list, not a table
            Record cs(vornnls2_cs_new(e.path().filename().c_str()));
            const nls::Derived* d = cs ? nls::derivedOf(cs.get()) : nullptr;
            if (d == nullptr)
                continue;
            int key = cs->kind * 2 + (cs->kind == 1 && d->scheme == nls::kSchemeEbcdic ? 1 : 0);
            if (tables_.count(key) == 0)
                tables_.emplace(key, std::move(cs));
        }
        // No installed table drops bytes (byte class 255): a copy of the
        // kind-3 one that does, under key 7.
        for (const auto& [key, record] : tables_) {
            if (record->kind != 3)
                continue;
            std::string image(reinterpret_cast<const char*>(record->table), record->tableSize);
            for (unsigned b : {0x80u, 0xA1u, 0xFEu})
                image[nls::kOffByteClass + b] = char(255);
            tree_->write("DROPS", image);
            Record drops(vornnls2_cs_new("DROPS"));
            if (drops != nullptr)
                tables_.emplace(7, std::move(drops));
            break;
        }
    }
    static void TearDownTestSuite() {
        tables_.clear();
        delete tree_;
        tree_ = nullptr;
    }

    // Text rich in what the walkers decide on: bytes of every class, the
    // edges of the lead ranges, the shifts, and runs of eight ASCII bytes
    // (the fast path).
    static std::string randomText(std::mt19937& rng, size_t n) {
        std::string s;
        while (s.size() < n) {
            unsigned r = rng() % 16;
            if (r == 0)
                s += "ABCDEFGHIJ";
            else if (r == 1)
                s += char(VORNNLS_SHIFT_OUT);
            else if (r == 2)
                s += char(VORNNLS_SHIFT_IN);
            else if (r < 6)  // the edges of the lead-byte ranges
                s += "\x3F\x40\x7F\x80\xFE\xFF"[rng() % 6];
            else
                s += char(rng() & 0xFF);
        }
        return s;
    }

    static qarq::test::CodesetTree* tree_;
    static std::map<int, Record> tables_;
};
qarq::test::CodesetTree* Boundary::tree_ = nullptr;
std::map<int, Record> Boundary::tables_;

TEST_F(Boundary, EveryKindIsInstalled) {
    std::vector<int> kinds;
    for (const auto& t : tables_)
        kinds.push_back(t.first);
    // kind 1 in both byte families, 2, 3 (and its copy that drops bytes), 4.
    EXPECT_EQ(kinds, (std::vector<int>{2, 3, 4, 6, 7, 8}));
}

TEST_F(Boundary, APrefixCutAnywhereConvertsWithoutAPartialCharacter) {
    std::mt19937 rng(20261123);
    for (const auto& [key, record] : tables_) {
        const VornNlsCodeSet* cs = record.get();
        SCOPED_TRACE(std::string("kind ") + std::to_string(cs->kind));
        for (int round = 0; round < 16; ++round) {
            std::string text = randomText(rng, 400);
            std::string whole = toUtf8(cs, text);
            for (size_t p = 0; p <= text.size(); ++p) {
                int shifted = 0;
                size_t cut = VornNlsBoundary(cs, text.data(), p, &shifted);
                ASSERT_LE(cut, p);
                // Never more held back than one character.
                ASSERT_LT(p - cut, 8u) << p;
                std::string rest = text.substr(cut);
                if (shifted)
                    rest.insert(rest.begin(), char(VORNNLS_SHIFT_OUT));
                ASSERT_EQ(toUtf8(cs, text.substr(0, cut)) + toUtf8(cs, rest), whole)
                    << "cut " << cut << " of " << p;
                // The state carried in gives the same cut as the walk from the start.
                if (cut < p) {
                    int carried = shifted;
                    EXPECT_EQ(VornNlsBoundary(cs, text.data() + cut, p - cut, &carried), 0u);
                }
            }
        }
    }
}

TEST_F(Boundary, Utf8IsCutOnTheSequencesTheEnginesRead) {
    std::mt19937 rng(7);
    Record utf8(vornnls2_cs_new("UTF8"));
    ASSERT_NE(utf8, nullptr);
    for (const auto& [key, record] : tables_) {
        const VornNlsCodeSet* target = record.get();
        if (target->kind == 4)
            continue;  // each call closes a shifted run, by design
        SCOPED_TRACE(std::string("kind ") + std::to_string(target->kind));
        // Whole, truncated and stray sequences, leads from 0xF0 up included.
        std::string text;
        const char* pieces[] = {"a",    "\xC3\xA9", "\xE6\x97\xA5", "\xF0\x9F\x98\x80",
                                "\x80", "\xE3\x81", "\xC3",         "ABCDEFGHIJ"};
        while (text.size() < 400)
            text += pieces[rng() % 8];
        std::string whole = fromUtf8(target, text);
        for (size_t p = 0; p <= text.size(); ++p) {
            int shifted = 1;  // ignored for UTF-8, and reported as 0
            size_t cut = VornNlsBoundary(utf8.get(), text.data(), p, &shifted);
            ASSERT_LE(cut, p);
            ASSERT_LT(p - cut, 3u);
            EXPECT_EQ(shifted, 0);
            ASSERT_EQ(fromUtf8(target, text.substr(0, cut)) + fromUtf8(target, text.substr(cut)),
                      whole)
                << "cut " << cut << " of " << p;
        }
    }
}

TEST_F(Boundary, EdgesOfTheArguments) {
    const VornNlsCodeSet* shifts = tables_.count(8) ? tables_.at(8).get() : nullptr;
    ASSERT_NE(shifts, nullptr);
    // No state pointer: the walk starts unshifted.
    EXPECT_EQ(VornNlsBoundary(shifts, "\x0E\x42\x41\x42", 4, nullptr), 3u);
    int shifted = 1;
    EXPECT_EQ(VornNlsBoundary(shifts, "\x42\x41\x0F\x42", 4, &shifted), 4u);
    EXPECT_EQ(shifted, 0);
    // The default code set has no table until one is attached: UTF-8.
    if (def_cs->table == nullptr) {
        EXPECT_EQ(VornNlsBoundary(nullptr, "a\xE3\x81", 3, nullptr), 1u);
    }
}

}  // namespace
