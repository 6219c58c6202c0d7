// qarq convert and qarq codesets: the tables it finds, chunk boundaries, and
// how failures end. What each table maps to is checked against iconv, through
// the same engines, in tests/nls; where a cut may fall, in tests/boundary.
#include <filesystem>
#include <random>
#include <string>

#include "nls/TableWriter.hpp"
#include "tool/ToolRun.hpp"

namespace qarq::tooltest {
namespace {

class Convert : public ToolTest {};

TEST_F(Convert, NamesOfTheAliasesFileAndTheSamples) {
    Result r = qarq("convert -f cp037 --to utf-8 " QARQ_DATA_DIR "/samples/host-status.cp37");
    EXPECT_EQ(0, r.status) << r.err;
    EXPECT_NE(std::string::npos, r.out.find("Câble réseau défectueux"));
    // Straight from one host page to another: 37 and 273 differ in '{' and 'ü'.
    EXPECT_EQ("\xC1\xC0\xDC", qarq("convert -f 273 -t 37", "\xC1\x43\xD0").out);
}

// Double-byte runs of every length at every offset: a chunk boundary falls
// inside shifted runs, pairs and multi-byte sequences many times over, and
// the result must be what one call over the whole input gives.
TEST_F(Convert, ChunkBoundariesInsideDoubleByteRunsChangeNothing) {
    std::mt19937 random(7);
    const char* const wide[] = {"\xE6\x97\xA5", "\xE6\x9C\xAC", "\xE3\x82\xAB",
                                "\xE4\xBA\xAC", "\xC3\xA9",     "\xEF\xBF\xBD"};
    std::string text;
    while (text.size() < 300000) {
        if (random() % 3 == 0) {
            text.append(random() % 5, "AZ09 .\n"[random() % 7]);
        } else {
            for (unsigned n = random() % 40; n > 0; --n)
                text += wide[random() % 6];
        }
    }
    writeFile(file("text.utf8"), text);
    for (const char* page : {"930", "932", "954"}) {
        SCOPED_TRACE(page);
        std::string target = std::string(" -t ") + page;
        ASSERT_EQ(0, qarq("convert -f UTF8" + target +
                          " --buffer-size 67108864 -o whole.host "
                          "text.utf8")
                         .status);
        const std::string whole = readFile(file("whole.host"));
        ASSERT_GT(whole.size(), 150000u);
        ASSERT_EQ(0, qarq("convert -f " + std::string(page) +
                          " -t UTF8 --buffer-size 67108864 -o whole.utf8 whole.host")
                         .status);
        for (const char* chunk : {"17", "4099"}) {
            SCOPED_TRACE(chunk);
            Result from =
                qarq("convert -f UTF8" + target + " --buffer-size " + chunk + " text.utf8");
            EXPECT_EQ(0, from.status) << from.err;
            EXPECT_TRUE(from.out == whole) << "from UTF-8 differs from the whole-buffer result";
            Result to = qarq("convert -f " + std::string(page) + " -t UTF8 --buffer-size " + chunk +
                             " whole.host");
            EXPECT_EQ(0, to.status) << to.err;
            EXPECT_TRUE(to.out == readFile(file("whole.utf8")))
                << "to UTF-8 differs from the whole-buffer result";
        }
    }
}

TEST_F(Convert, FailuresNameTheArgumentOrFile) {
    Result unknown = qarq("convert -f 4242 -t UTF8", "x");
    EXPECT_EQ(1, unknown.status);
    EXPECT_EQ("qarq convert: -f 4242: unknown code page (no table '4242' in " + tables() + "/)\n",
              unknown.err);
    // A file that fails does not stop the others.
    writeFile(file("ok.txt"), "ok");
    Result some = qarq("convert -f UTF8 -t UTF8 missing.txt ok.txt");
    EXPECT_EQ(1, some.status);
    EXPECT_EQ("ok", some.out);
    EXPECT_EQ("qarq convert: missing.txt: No such file or directory\n", some.err);

    // A failed write is told once and ends the run, whichever chunk it hits.
    writeFile(file("big.txt"), std::string(1 << 20, '\xC1'));
    Result full = qarq("convert -f 37 -t UTF8 -o /dev/full big.txt big.txt");
    EXPECT_EQ(1, full.status);
    EXPECT_EQ("qarq convert: write: No space left on device\n", full.err);

    writeFile(file("BOGUS"), std::string(2000, 'x'));
    Result bad = qarq("convert --codeset-dir . -f bogus -t UTF8", "");
    EXPECT_EQ(1, bad.status);
    EXPECT_NE(std::string::npos, bad.err.find("BOGUS is not a valid code-set table")) << bad.err;
    // Usage errors exit with 2.
    EXPECT_EQ(2, qarq("convert -f 37 -t UTF8 --buffer-size 3").status);
}

// BINDIR comes before the tables beside the tool, --codeset-dir before both.
TEST_F(Convert, CodesetsListsTablesFromEachPlace) {
    std::filesystem::create_directories(file("bin/GRV/server/codeset"));
    std::filesystem::copy_file(tables() + "/850", file("bin/GRV/server/codeset/850"));
    Result bindir = shell("BINDIR=bin " + shellQuoted(tool()) + " codesets");
    EXPECT_EQ(0, bindir.status) << bindir.err;
    EXPECT_EQ(std::string::npos, bindir.out.find("CP037"));
    EXPECT_NE(std::string::npos, bindir.out.find("CP850"));
    // The private BINDIR made for --codeset-dir is gone afterwards.
    Result converted = shell("TMPDIR=. BINDIR=bin " + shellQuoted(tool()) +
                             " convert -f 37 -t 850 --codeset-dir " + shellQuoted(tables()));
    EXPECT_EQ(0, converted.status) << converted.err;
    for (const auto& entry : std::filesystem::directory_iterator(dir_)) {
        EXPECT_EQ(std::string::npos, entry.path().filename().string().find("qarq-bindir"));
    }
}

// The level qarq --version names is the one QARQ_SIMD caps it to.
TEST_F(Convert, VersionNamesTheVectorLevelThatQarqSimdCaps) {
    Result capped = shell("QARQ_SIMD=scalar " + shellQuoted(tool()) + " --version");
    EXPECT_EQ(0, capped.status);
    EXPECT_NE(std::string::npos, capped.out.find("vector level scalar")) << capped.out;
}

TEST_F(Convert, CharactersLongerThanTheChunkStillConvert) {
    // A table may define characters far longer than a small chunk; the
    // stream must neither stall on them nor split them.
    test::MbcsMaps m;
    for (unsigned b = 0; b < 0x80; ++b) {
        m.byteClass[b] = 1;
        m.single[b] = uint16_t(b);
    }
    for (unsigned b = 0x80; b < 0x100; ++b) m.byteClass[b] = 255;
    m.byteClass[0xC0] = 40;
    const std::string longCharacter = "\xC0" + std::string(39, '\xA1');
    m.sequences[longCharacter] = 0x4E00;
    std::filesystem::create_directories(file("tables"));
    const auto image = test::buildMbcs(m).bytes();
    writeFile(file("tables/9954"), std::string(image.begin(), image.end()));
    std::string text, expected;
    for (int i = 0; i < 20; ++i) text += longCharacter + "ab", expected += "\xE4\xB8\x80" "ab";
    writeFile(file("long.host"), text);
    Result r = shell("timeout 20 " + shellQuoted(tool()) +
                     " convert --codeset-dir tables -f 9954 -t UTF8 --buffer-size 16 long.host");
    EXPECT_EQ(0, r.status) << r.err;
    EXPECT_EQ(expected, r.out);
}

}  // namespace
}  // namespace qarq::tooltest
