#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "NlsSupport.hpp"
#include "TestTables.hpp"
#include "qarq/base/Os.hpp"
#include "qarq/vorn/vornnls3.hpp"
#include "vorn/VornNlsTable.hpp"

namespace {

using qarq::os::ScopedOsCall;
using qarq::test::BindirTree;
using qarq::test::ErrorLog;
using qarq::test::Record;
using qarq::test::UcvImage;

// The smallest table there is: kind 1, data area from byte 0, every
// from-Unicode page the first 256 bytes of the file.
UcvImage tinyTable() {
    UcvImage t(1);
    t.set32(0, 0);
    for (unsigned b = 0; b < 256; ++b) t.toFirst(b, uint16_t(b));
    return t;
}

bool mentions(const ErrorLog& log, const std::string& function, const std::string& text) {
    for (auto& e : log.errors(function))
        for (auto& p : e.pairs)
            if (p.find(text) != std::string::npos) return true;
    return false;
}

TEST(Loader, TheMinimumSizeIs1760BytesAndAShorterFileIsAPointer) {
    BindirTree tree;
    UcvImage t = tinyTable();
    ASSERT_EQ(t.bytes().size(), 1760u);
    tree.put("T", t.bytes());
    Record cs(vornnls2_cs_new("T"));
    ASSERT_NE(cs, nullptr);
    EXPECT_EQ(cs->tableSize, 1760u);

    t.bytes().resize(1759);
    tree.put("T", t.bytes());
    ErrorLog log;
    EXPECT_EQ(vornnls2_cs_new("T"), nullptr);
    // Its printable bytes named a file that isn't there.
    EXPECT_TRUE(mentions(log, "vornnls2_load_table", tree.codeset() + "ucv"));
    EXPECT_TRUE(mentions(log, "vornnls2_cs_new", "T"));
}

TEST(Loader, PointerFilesChainUpToFourInTheSameDirectory) {
    BindirTree tree;
    tree.put("1252", qarq::test::asciiSbcs().bytes());
    tree.put("P1", "1252\r\n");
    tree.put("P2", " P 1\t");  // white space inside the name is dropped too
    tree.put("P3", "P2");
    tree.put("P4", "P3");
    Record fourPointers(vornnls2_cs_new("P4"));
    EXPECT_NE(fourPointers, nullptr);

    tree.put("P5", "P4");
    ErrorLog log;
    EXPECT_EQ(vornnls2_cs_new("P5"), nullptr);
    EXPECT_TRUE(mentions(log, "vornnls2_load_table", tree.codeset() + "1252"));

    tree.put("LOOPA", "LOOPB");
    tree.put("LOOPB", "LOOPA");
    EXPECT_EQ(vornnls2_cs_new("LOOPA"), nullptr);
}

TEST(Loader, Utf8NeedsNoFile) {
    auto failOpen = [](const char*, int, mode_t) -> int { return -1; };
    ScopedOsCall noOpen(&qarq::os::Calls::open, +failOpen);
    Record cs(vornnls2_cs_new("UTF8"));
    ASSERT_NE(cs, nullptr);
    EXPECT_EQ(cs->kind, 6);
}

TEST(Loader, EachFailingCallIsLoggedWithItsDataAndGivesNull) {
    BindirTree tree;
    tree.put("T", qarq::test::asciiSbcs().bytes());
    const std::string path = tree.codeset() + "T";
    static std::string sTarget;
    sTarget = path;
    {
        static auto open = [](const char* p, int f, mode_t m) -> int {
            return sTarget == p ? -1 : qarq::os::realCalls().open(p, f, m);
        };
        ScopedOsCall s(&qarq::os::Calls::open, +open);
        ErrorLog log;
        EXPECT_EQ(vornnls2_load_table(tree.codeset().c_str(), "T", nullptr), nullptr);
        ASSERT_EQ(log.ofKind(HESK_RECORD_ERROR).size(), 1u);
        EXPECT_EQ(log.ofKind(HESK_RECORD_ERROR)[0].pairs.at(0), path);
    }
    {
        static auto fstat = [](int, struct stat*) -> int { return -1; };
        ScopedOsCall s(&qarq::os::Calls::fstat, +fstat);
        ErrorLog log;
        unsigned size = 99;
        EXPECT_EQ(vornnls2_load_table(tree.codeset().c_str(), "T", &size), nullptr);
        EXPECT_EQ(size, 0u);
        EXPECT_TRUE(mentions(log, "vornnls2_load_table", path));
    }
    {
        // The record is allocated; the image is not.
        static int calls;
        calls = 0;
        static auto malloc = [](size_t n) -> void* {
            return ++calls == 1 ? qarq::os::realCalls().malloc(n) : nullptr;
        };
        ScopedOsCall s(&qarq::os::Calls::malloc, +malloc);
        ErrorLog log;
        EXPECT_EQ(vornnls2_cs_new("T"), nullptr);
        EXPECT_TRUE(mentions(log, "vornnls2_load_table", path));
        EXPECT_TRUE(mentions(log, "vornnls2_cs_new", "T"));
    }
    {
        static auto read = [](int fd, void* b, size_t n) -> ssize_t {
            return qarq::os::realCalls().read(fd, b, n > 100 ? 100 : n) > 0 && n <= 100 ? 0 : 100;
        };
        ScopedOsCall s(&qarq::os::Calls::read, +read);
        ErrorLog log;
        EXPECT_EQ(vornnls2_load_table(tree.codeset().c_str(), "T", nullptr), nullptr);
        EXPECT_TRUE(mentions(log, "vornnls2_load_table", path));
    }
    {
        // A read that comes in pieces is no short read.
        static auto read = [](int fd, void* b, size_t n) -> ssize_t {
            return qarq::os::realCalls().read(fd, b, n > 7 ? 7 : n);
        };
        ScopedOsCall s(&qarq::os::Calls::read, +read);
        Record cs(vornnls2_cs_new("T"));
        EXPECT_NE(cs, nullptr);
    }
    {
        // Shrinking the block to what the kind needs may fail: the larger one stays.
        static auto realloc = [](void*, size_t) -> void* { return nullptr; };
        ScopedOsCall s(&qarq::os::Calls::realloc, +realloc);
        Record cs(vornnls2_cs_new("T"));
        ASSERT_NE(cs, nullptr);
        char out[4];
        EXPECT_EQ(vornnls3_tis_to_utf8(cs.get(), "\x80", 1, out, 4), 3u);
    }
}

TEST(Loader, PathsAndBindirNearTheLimits) {
    ErrorLog log;
    std::string longName(240, 'N');
    EXPECT_EQ(vornnls2_load_table("/tmp/some/dir/", longName.c_str(), nullptr), nullptr);
    // 14 + 240 + 2 is 256: too long. One character less fits (and is not found).
    EXPECT_EQ(vornnls2_load_table("/tmp/some/dir/", longName.c_str() + 1, nullptr), nullptr);
    EXPECT_TRUE(mentions(log, "vornnls2_load_table", "/tmp/some/dir/NNN"));

    // BINDIR is used while its length plus 27 stays below 255.
    qarq::support::TempDir root;
    for (size_t length : {228u, 227u}) {
        std::string bindir = root.path();
        bindir += "/" + std::string(length - bindir.size() - 1, 'b');
        ASSERT_EQ(bindir.size(), length);
        std::filesystem::create_directories(bindir + "/GRV/server/codeset");
        qarq::test::writeFile(bindir + "/GRV/server/codeset/T", qarq::test::asciiSbcs().bytes());
        qarq::support::ScopedEnv env("BINDIR", bindir.c_str());
        qarq::test::ScopedCwd cwd(root.path());
        Record cs(vornnls2_cs_new("T"));
        EXPECT_EQ(cs != nullptr, length == 227u) << length;
    }
}

TEST(Loader, HugeAndOddFilesAreRefusedWithoutReadingThem) {
    BindirTree tree;
    std::string big = tree.codeset() + "BIG";
    int fd = ::open(big.c_str(), O_CREAT | O_WRONLY, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::ftruncate(fd, off_t(qarq::vorn::nls::kMaxFileSize) + 1), 0);
    ::close(fd);
    static bool sAllocatedBig;
    sAllocatedBig = false;
    static auto malloc = [](size_t n) -> void* {
        if (n > (64u << 20)) sAllocatedBig = true;
        return qarq::os::realCalls().malloc(n);
    };
    ScopedOsCall s(&qarq::os::Calls::malloc, +malloc);
    EXPECT_EQ(vornnls2_cs_new("BIG"), nullptr);
    EXPECT_FALSE(sAllocatedBig);
    // A directory by the table's name is no table either.
    std::filesystem::create_directories(tree.codeset() + "DIR");
    EXPECT_EQ(vornnls2_cs_new("DIR"), nullptr);
    // An empty pointer file names the directory itself.
    tree.put("EMPTY", std::string());
    EXPECT_EQ(vornnls2_cs_new("EMPTY"), nullptr);
}

// Every reach of an engine into the image is checked at load; a table that
// points outside is refused like one that could not be read.
TEST(Loader, TablesThatPointOutsideTheImageAreRefused) {
    struct Hostile {
        const char* reason;
        UcvImage image;
    };
    std::vector<Hostile> cases;
    auto add = [&](const char* reason, UcvImage image, auto change) {
        change(image);
        cases.push_back({reason, std::move(image)});
    };
    auto end16 = [](const UcvImage& t) {
        return uint16_t((t.bytes().size() - t.dataOffset()) / 4);
    };
    add("data offset", qarq::test::asciiSbcs(), [](UcvImage& t) { t.set32(0, uint32_t(t.bytes().size()) + 1); });
    add("page", qarq::test::asciiSbcs(),
        [&](UcvImage& t) { t.fromPage(0x41, uint16_t(end16(t) - 63)); });
    add("single-byte row", qarq::test::sampleDbcs(2), [&](UcvImage& t) { t.toFirst(0, 0xFFFF); });
    add("lead-byte row", qarq::test::sampleDbcs(4), [&](UcvImage& t) { t.toFirst(0x40, 0xFFFF); });
    add("byte class 0", qarq::test::sampleMbcs(), [](UcvImage& t) { t.byteClass(0x80, 0); });
    add("page", qarq::test::sampleMbcs(),
        [&](UcvImage& t) { t.fromPage(0x30, uint16_t(end16(t) - 255)); });
    add("node", qarq::test::sampleMbcs(), [&](UcvImage& t) {
        // A node whose count runs past the end of the image.
        t.set16(t.byteOf(t.toFirstOf(0xA4)), 0xFFFF);
    });
    add("node", qarq::test::sampleMbcs(), [&](UcvImage& t) {
        // The second node of a 3-byte sequence lies outside.
        size_t first = t.byteOf(t.toFirstOf(0x8F));
        uint16_t count = t.get16(first);
        for (unsigned i = 0; i < count; ++i)
            if (t.get16(first + 4 + 2 * i) != 0xFFFF) t.set16(first + 4 + 2 * i, end16(t));
    });
    add("prefix", qarq::test::sampleMbcs(), [&](UcvImage& t) {
        size_t entry = t.byteOf(t.get16(224 + 2 * 0x4E)) + 4 * 0x02;  // U+4E02: 3 bytes
        t.set16(entry, uint16_t((t.bytes().size() - t.dataOffset()) / 16));
    });
    for (auto& c : cases) {
        SCOPED_TRACE(c.reason);
        EXPECT_NE(qarq::vorn::nls::validateImage(c.image.bytes().data(), c.image.bytes().size()),
                  nullptr);
        ErrorLog log;
        EXPECT_EQ(qarq::test::load(c.image), nullptr);
        EXPECT_TRUE(mentions(log, "vornnls2_load_table", c.reason));
        EXPECT_TRUE(mentions(log, "vornnls2_cs_new", "T"));
    }
}

}  // namespace
