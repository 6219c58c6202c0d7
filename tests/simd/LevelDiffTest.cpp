// Every engine at every instruction-set level this processor has, against
// the plain reference engines: every installed table and random tables, on
// random bytes, native text with shift runs, valid and broken UTF-8, cut at
// random source lengths and converted into random target lengths; then the
// same at the edge of an unmapped page, for source and target. Levels the
// processor lacks are skipped with a message.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "nls/NlsSupport.hpp"
#include "nls/ReferenceEngines.hpp"
#include "nls/TestTables.hpp"
#include "qarq/vorn/VornNlsSimd.hpp"
#include "qarq/vorn/vornnls3.hpp"
#include "support/CodesetTree.hpp"
#include "support/Utf8.hpp"
#include "vorn/VornNlsSimd.hpp"

namespace {

namespace nls = qarq::vorn::nls;
using nls::SimdLevel;
using qarq::test::Record;

struct Table {
    std::string name;
    Record record;
};

// The tables the build installs, and random tables of each kind.
const std::vector<Table>& tables() {
    static const std::vector<Table>* all = [] {
        auto* t = new std::vector<Table>;
        {
            qarq::test::CodesetTree tree;
            for (const auto& e :
                 std::filesystem::directory_iterator(std::string(QARQ_SHARE_DIR) + "/codeset")) {
                std::string name = e.path().filename().string();
                if (name == "aliases" || name == "DEFAULT")
                    continue;
                Record cs(vornnls2_cs_new(name.c_str()));
                if (cs != nullptr && cs->table != nullptr)
                    t->push_back({name, std::move(cs)});
            }
        }
        std::mt19937 rng(11);
        const struct {
            uint16_t kind;
            bool ebcdic;
        } kinds[] = {{1, false}, {1, true}, {2, false}, {3, false}, {4, false}};
        for (auto k : kinds)
            t->push_back({"random kind " + std::to_string(k.kind) + (k.ebcdic ? " EBCDIC" : ""),
                          qarq::test::load(qarq::test::randomTable(k.kind, k.ebcdic, rng))});
        return t;
    }();
    return *all;
}

// The byte with the longest UTF-8 form in the table (the euro sign of the
// euro host pages, say): a run of it asks the most room of the engine.
char widestByte(const VornNlsCodeSet* cs) {
    unsigned best = 0, widest = 0;
    for (unsigned b = 0; b < 256; ++b) {
        const char in = char(b);
        char out[8];
        unsigned n = qarq::test::ref::convert(cs, &in, 1, out, sizeof out, true);
        if (n > widest) widest = n, best = b;
    }
    return char(best);
}

// Text in the table's own code set: ASCII or EBCDIC letters with runs of
// other bytes and of the widest byte, and for kind 4 shift-outs, pairs and
// shift-ins.
std::string nativeText(const VornNlsCodeSet* cs, std::mt19937& rng, size_t n) {
    const bool host = cs->kind == 4 || qarq::test::ref::rd16(cs->table + 50) == 0x1100;
    std::string s;
    while (s.size() < n) {
        unsigned r = rng() % 8;
        size_t run = rng() % (r < 2 ? 150 : 12);
        if (r < 4) {  // letters and spaces, the common case
            for (size_t i = 0; i < run; ++i)
                s += host ? char(0x81 + rng() % 9 + (rng() % 3) * 0x10 + (rng() % 2) * 0x40)
                          : char(0x20 + rng() % 0x5F);
        } else if (r < 6 && cs->kind == 4) {
            s += '\x0E';
            for (size_t i = 0; i < run; ++i)
                s += char(0x41 + rng() % 0xBE), s += char(rng());
            if (rng() % 4 != 0)
                s += '\x0F';
        } else if (r == 7) {
            s.append(40 + rng() % 60, widestByte(cs));
        } else {
            for (size_t i = 0; i < run; ++i)
                s += char(rng());
        }
    }
    return s;
}

// UTF-8 with ASCII runs, two- and three-byte forms, and broken pieces:
// stray continuation bytes, four-byte sequences, leads without their tail.
std::string utf8Text(std::mt19937& rng, size_t n) {
    std::string s;
    while (s.size() < n) {
        unsigned r = rng() % 10;
        size_t run = rng() % (r < 3 ? 150 : 8);
        for (size_t i = 0; i < run; ++i) {
            if (r < 3)
                s += char(0x20 + rng() % 0x5F);
            else if (r < 5)
                qarq::support::appendUtf8(s, 0x80 + rng() % 0x780);
            else if (r < 7)
                qarq::support::appendUtf8(s, 0x800 + rng() % 0xF800);
            else if (r < 8)
                s += char(0x80 + rng() % 0x40);
            else if (r < 9)
                s += char(0xF0 + rng() % 8), s += "\x90\x80\x80";
            else
                s += char(0xC0 + rng() % 0x40);
        }
    }
    return s;
}

std::string hex(const std::string& s) {
    static const char digits[] = "0123456789ABCDEF";
    std::string h;
    for (unsigned char c : s)
        h += digits[c >> 4], h += digits[c & 15], h += ' ';
    return h;
}

// Runs the engine and the reference into targets of `room` bytes followed by
// guard bytes; the counts and all bytes, guard included, must agree.
::testing::AssertionResult same(const VornNlsCodeSet* cs, const std::string& in, bool toUtf8,
                                unsigned room) {
    std::vector<char> got(room + 8, '\xAA'), want(room + 8, '\xAA');
    unsigned n = toUtf8 ? vornnls3_tis_to_utf8(cs, in.data(), int(in.size()), got.data(), room)
                        : vornnls3_tis_from_utf8(cs, in.data(), int(in.size()), got.data(), room);
    unsigned m = qarq::test::ref::convert(cs, in.data(), int(in.size()), want.data(), room, toUtf8);
    if (n == m && got == want)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << (toUtf8 ? "to" : "from") << " UTF-8, room " << room << ": count " << n << " against "
           << m << "\n input " << hex(in) << "\n got  " << hex(std::string(got.begin(), got.end()))
           << "\n want " << hex(std::string(want.begin(), want.end()));
}

// Uses one level for the life of the object, then the level of before.
class ScopedLevel {
  public:
    explicit ScopedLevel(SimdLevel level) : before_(VornNlsSimdLevel()) {
        used_ = nls::selectSimdLevel(level);
    }
    ~ScopedLevel() {
        for (int l = 0; l <= int(SimdLevel::avx512); ++l)
            if (before_ == nls::simdLevelName(SimdLevel(l)))
                nls::selectSimdLevel(SimdLevel(l));
    }
    SimdLevel used() const { return used_; }

  private:
    std::string before_;
    SimdLevel used_;
};

class Levels : public ::testing::TestWithParam<SimdLevel> {
  protected:
    void SetUp() override {
        if (int(nls::cpuLevel()) < int(GetParam()))
            GTEST_SKIP() << "this processor lacks " << nls::simdLevelName(GetParam())
                         << "; its kernels are not tested here";
        level_ = std::make_unique<ScopedLevel>(GetParam());
        ASSERT_EQ(level_->used(), GetParam());
        ASSERT_STREQ(VornNlsSimdLevel(), nls::simdLevelName(GetParam()));
    }
    void TearDown() override { level_.reset(); }
    std::unique_ptr<ScopedLevel> level_;
};

TEST_P(Levels, EveryEngineMatchesTheReferenceOnRandomInput) {
    std::mt19937 rng(1234 + unsigned(GetParam()));
    for (const Table& t : tables()) {
        SCOPED_TRACE(t.name);
        for (int i = 0; i < 120; ++i) {
            const bool toUtf8 = i % 2 == 0;
            size_t n = i % 3 == 0 ? rng() % 40 : rng() % 600;
            std::string in = i % 5 == 4   ? nativeText(t.record.get(), rng, n)
                             : i % 5 == 3 ? utf8Text(rng, n)
                             : toUtf8     ? nativeText(t.record.get(), rng, n)
                                          : utf8Text(rng, n);
            if (i % 7 == 0)
                for (auto& c : in)
                    c = char(rng());
            // A random cut: inside a vector step, a character or a pair.
            in.resize(n == 0 ? 0 : rng() % (n + 1));
            unsigned room = rng() % 4 == 0 ? unsigned(3 * in.size() + 1)
                                           : unsigned(rng() % (3 * in.size() + 2));
            ASSERT_TRUE(same(t.record.get(), in, toUtf8, room)) << "iteration " << i;
        }
    }
}

// A block of pages whose last page is unmapped: what ends at end() ends at
// the edge of the mapping.
class GuardedPages {
  public:
    explicit GuardedPages(size_t bytes) {
        page_ = size_t(sysconf(_SC_PAGESIZE));
        size_ = (bytes + page_ - 1) / page_ * page_ + page_;
        void* p = mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        base_ = p == MAP_FAILED ? nullptr : static_cast<char*>(p);
        if (base_ != nullptr && mprotect(base_ + size_ - page_, page_, PROT_NONE) != 0) {
            munmap(base_, size_);
            base_ = nullptr;
        }
    }
    ~GuardedPages() {
        if (base_ != nullptr)
            munmap(base_, size_);
    }
    GuardedPages(const GuardedPages&) = delete;
    GuardedPages& operator=(const GuardedPages&) = delete;
    bool ok() const { return base_ != nullptr; }
    char* end() const { return base_ + size_ - page_; }

  private:
    char* base_;
    size_t page_, size_;
};

// Sources of every length up to a few vector steps end exactly at an
// unmapped page, so every alignment of start and end occurs; the target
// ends there too, sized exactly for the output and to the full rule
// (3n + 1). A read or write beyond either range faults.
TEST_P(Levels, NoKernelReadsPastTheSourceOrWritesPastTheTarget) {
    const size_t kMax = 300;
    GuardedPages source(kMax), target(3 * kMax + 1);
    ASSERT_TRUE(source.ok() && target.ok());
    std::mt19937 rng(99);
    for (const Table& t : tables()) {
        SCOPED_TRACE(t.name);
        const VornNlsCodeSet* cs = t.record.get();
        for (bool toUtf8 : {true, false}) {
            std::string text = toUtf8 ? nativeText(cs, rng, kMax) : utf8Text(rng, kMax);
            for (size_t n = 0; n <= kMax; n += (t.name.rfind("random", 0) == 0 ? 1 : 3)) {
                char* in = source.end() - n;
                std::memcpy(in, text.data(), n);
                std::vector<char> want(3 * n + 1);
                unsigned m = qarq::test::ref::convert(cs, in, int(n), want.data(),
                                                      unsigned(want.size()), toUtf8);
                for (unsigned room : {m, unsigned(3 * n + 1)}) {
                    char* out = target.end() - room;
                    unsigned got = toUtf8 ? vornnls3_tis_to_utf8(cs, in, int(n), out, room)
                                          : vornnls3_tis_from_utf8(cs, in, int(n), out, room);
                    ASSERT_EQ(got, m) << (toUtf8 ? "to" : "from") << " UTF-8, length " << n;
                    ASSERT_EQ(std::string(out, got), std::string(want.data(), m));
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Simd, Levels,
                         ::testing::Values(SimdLevel::scalar, SimdLevel::sse42, SimdLevel::avx2,
                                           SimdLevel::avx512),
                         [](const ::testing::TestParamInfo<SimdLevel>& info) {
                             return std::string(nls::simdLevelName(info.param));
                         });

TEST(SimdLevel, QarqSimdCapsTheLevelAndNoLevelBeyondTheProcessorIsChosen) {
    {
        qarq::support::ScopedEnv env("QARQ_SIMD", "scalar");
        EXPECT_EQ(nls::simdCapFromEnvironment(), SimdLevel::scalar);
    }
    {
        qarq::support::ScopedEnv env("QARQ_SIMD", "avx2");
        EXPECT_EQ(nls::simdCapFromEnvironment(), SimdLevel::avx2);
    }
    for (const char* none : {"", "AVX2", "neon"}) {
        qarq::support::ScopedEnv env("QARQ_SIMD", none);
        EXPECT_EQ(nls::simdCapFromEnvironment(), SimdLevel::avx512) << none;
    }
    {
        qarq::support::ScopedEnv env("QARQ_SIMD", nullptr);
        EXPECT_EQ(nls::simdCapFromEnvironment(), SimdLevel::avx512);
    }
    ScopedLevel top(SimdLevel::avx512);
    EXPECT_EQ(top.used(), nls::cpuLevel());
    EXPECT_STREQ(VornNlsSimdLevel(), nls::simdLevelName(nls::cpuLevel()));
}

}  // namespace
