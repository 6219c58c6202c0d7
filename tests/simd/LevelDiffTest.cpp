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
        if (n > widest)
            widest = n, best = b;
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

unsigned engine(const VornNlsCodeSet* cs, const char* in, size_t n, char* out, unsigned room,
                bool toUtf8) {
    return toUtf8 ? vornnls3_tis_to_utf8(cs, in, int(n), out, room)
                  : vornnls3_tis_from_utf8(cs, in, int(n), out, room);
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
            // Targets of `room` bytes and guard bytes behind: counts and all
            // bytes, guard included, must agree.
            std::string got(room + 8, '\xAA'), want = got;
            unsigned count = engine(t.record.get(), in.data(), in.size(), &got[0], room, toUtf8);
            unsigned m = qarq::test::ref::convert(t.record.get(), in.data(), int(in.size()),
                                                  &want[0], room, toUtf8);
            ASSERT_EQ(count, m) << (toUtf8 ? "to" : "from") << " UTF-8, room " << room
                                << ", iteration " << i << ", input "
                                << ::testing::PrintToString(in);
            ASSERT_EQ(got, want) << "iteration " << i;
        }
    }
}

// A block of pages whose last page is made inaccessible by guard(): what
// ends at end() ends at the edge of the mapping.
struct GuardedPages {
    explicit GuardedPages(size_t bytes)
        : size((bytes + page - 1) / page * page + page),
          base(static_cast<char*>(
              mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {}
    ~GuardedPages() {
        if (base != MAP_FAILED)
            munmap(base, size);
    }
    bool guard() const { return base != MAP_FAILED && mprotect(end(), page, PROT_NONE) == 0; }
    char* end() const { return base + size - page; }

    const size_t page = size_t(sysconf(_SC_PAGESIZE));
    const size_t size;
    char* const base;
};

// Sources of every length up to a few vector steps end exactly at an
// unmapped page, so every alignment of start and end occurs; the target
// ends there too, sized exactly for the output and to the full rule
// (3n + 1). A read or write beyond either range faults.
TEST_P(Levels, NoKernelReadsPastTheSourceOrWritesPastTheTarget) {
    const size_t kMax = 300;
    GuardedPages source(kMax), target(3 * kMax + 1);
    ASSERT_TRUE(source.guard() && target.guard());
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
                    unsigned got = engine(cs, in, n, out, room, toUtf8);
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
    const std::pair<const char*, SimdLevel> cases[] = {
        {"scalar", SimdLevel::scalar}, {"avx2", SimdLevel::avx2},   {"", SimdLevel::avx512},
        {"AVX2", SimdLevel::avx512},   {"neon", SimdLevel::avx512}, {nullptr, SimdLevel::avx512}};
    for (const auto& [value, cap] : cases) {
        qarq::support::ScopedEnv env("QARQ_SIMD", value);
        EXPECT_EQ(nls::simdCapFromEnvironment(), cap) << (value ? value : "unset");
    }
    ScopedLevel top(SimdLevel::avx512);
    EXPECT_EQ(top.used(), nls::cpuLevel());
    EXPECT_STREQ(VornNlsSimdLevel(), nls::simdLevelName(nls::cpuLevel()));
}

}  // namespace
