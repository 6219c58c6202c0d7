// Conversion speed of the code-set engines against ICU and glibc iconv, on
// realistic text, measured in the same run: MB of input per second.
//
// Text: mixed-case prose with digits, punctuation and about 2% accented
// letters (37, 1252); Japanese with kanji, kana and ASCII words (930).
// ICU runs ucnv_convertEx with a reused pivot buffer and ucnv_toAlgorithmic /
// ucnv_fromAlgorithmic; docs/performance.md compares with the faster one.
// The engines run at each instruction-set level the processor has (the
// level is set at the start of each benchmark), and pure ASCII through 1252
// is compared with memcpy of the same text.
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "qarq/vorn/vornnls2.hpp"
#include "qarq/vorn/vornnls3.hpp"
#include "support/Utf8.hpp"
#include "vorn/VornNlsSimd.hpp"
#include "vorn/VornNlsTable.hpp"

#ifdef QARQ_HAVE_ICU
#include <unicode/ucnv.h>
#endif

namespace {

using qarq::support::utf8;

// About 256 KB of prose; one letter in fifty accented.
std::string prose() {
    static const char* const words[] = {
        "the",     "server",   "reports", "topology", "of",      "network", "and",
        "Console", "request",  "host",    "answers",  "with",    "status",  "Node",
        "link",    "is",       "down",    "since",    "morning", "Paris",   "operator",
        "checked", "resource", "a",       "an",       "to",      "in",      "for"};
    static const uint32_t accents[] = {0xE9, 0xE8, 0xE0, 0xFC, 0xF6, 0xE4, 0xE7, 0xF1, 0xC9, 0xDF};
    std::mt19937 rng(7);
    std::string text;
    while (text.size() < (256u << 10)) {
        std::string word = words[rng() % (sizeof words / sizeof *words)];
        std::string accented;
        for (char c : word) accented += rng() % 50 == 0 ? utf8(accents[rng() % 10]) : std::string(1, c);
        word = accented;
        if (rng() % 8 == 0) word[0] = char(std::toupper(static_cast<unsigned char>(word[0])));
        text += word;
        unsigned r = rng() % 20;
        text += r == 0 ? ", " : r == 1 ? ". " : r == 2 ? " " + std::to_string(rng() % 10000) + " "
                                                       : " ";
    }
    return text;
}

// About 256 KB of Japanese: kanji, hiragana, katakana, ASCII words and digits.
std::string japanese() {
    static const char* const kanji =
        "日本語漢字東京大阪会社員情報処理通信電話番号年月日時分秒名前住所国際経済政治文化教育"
        "研究開発技術管理部長課係業務報告書類確認連絡事項資料作成接続障害発生復旧状態監視";
    std::vector<std::string> han;
    for (const char* p = kanji; *p != '\0'; p += 3) han.emplace_back(p, 3);
    std::mt19937 rng(9);
    std::string text;
    while (text.size() < (256u << 10)) {
        unsigned r = rng() % 10;
        if (r < 4) {
            for (unsigned i = 0, n = 1 + rng() % 3; i < n; ++i) text += han[rng() % han.size()];
        } else if (r < 7) {
            for (unsigned i = 0, n = 2 + rng() % 4; i < n; ++i) text += utf8(0x3041 + rng() % 0x52);
        } else if (r < 8) {
            for (unsigned i = 0, n = 2 + rng() % 4; i < n; ++i) text += utf8(0x30A1 + rng() % 0x55);
        } else if (r < 9) {
            text += rng() % 2 ? " SERVER " : " node ";
        } else {
            text += " " + std::to_string(rng() % 1000) + " ";
        }
    }
    return text;
}

std::string viaIconv(const std::string& in, const char* to, const char* from) {
    iconv_t cd = iconv_open(to, from);
    std::string out(in.size() * 4 + 16, '\0');
    char* ip = const_cast<char*>(in.data());
    char* op = out.data();
    size_t il = in.size(), ol = out.size();
    iconv(cd, &ip, &il, &op, &ol);
    iconv(cd, nullptr, nullptr, &op, &ol);
    iconv_close(cd);
    out.resize(size_t(op - out.data()));
    return out;
}

struct Table {
    VornNlsCodeSet cs{};
    explicit Table(const char* name) {
        unsigned size = 0;
        cs.table = vornnls2_load_table(QARQ_SHARE_DIR "/codeset/", name, &size);
        if (cs.table != nullptr) {
            cs.kind = qarq::vorn::nls::rd16(cs.table + qarq::vorn::nls::kOffKind);
            cs.tableSize = size;
            cs.state = 1;
        }
    }
};

struct Case {
    const char* name;
    const char* table;
    const char* iconvName;
    const char* icuName;
    bool japanese;
    std::string utf8Text, codeText;
};

Case& find(const char* table) {
    static std::vector<Case> cases = [] {
        std::vector<Case> c = {{"37", "37", "CP037", "cp037", false, {}, {}},
                               {"1252", "1252", "CP1252", "windows-1252", false, {}, {}},
                               {"ascii", "1252", "CP1252", "windows-1252", false, {}, {}},
                               {"930", "930", "CP930", "cp930", true, {}, {}}};
        for (Case& k : c) {
            k.utf8Text = k.japanese ? japanese() : prose();
            if (std::strcmp(k.name, "ascii") == 0) {
                std::string plain;
                for (char ch : k.utf8Text)
                    if ((ch & 0x80) == 0) plain += ch;
                k.utf8Text = plain;
            }
            k.codeText = viaIconv(k.utf8Text, k.iconvName, "UTF-8");
        }
        return c;
    }();
    for (Case& k : cases)
        if (std::strcmp(k.name, table) == 0) return k;
    return cases[0];
}

void qarqConvert(benchmark::State& state, const char* table, bool toUtf8,
                 qarq::vorn::nls::SimdLevel level) {
    namespace nls = qarq::vorn::nls;
    if (int(nls::cpuLevel()) < int(level)) {
        state.SkipWithError("the processor lacks this level");
        return;
    }
    nls::selectSimdLevel(level);
    static Table t37("37"), t1252("1252"), t930("930");
    Table& t = std::strcmp(table, "37") == 0 ? t37 : std::strcmp(table, "930") == 0 ? t930 : t1252;
    if (t.cs.table == nullptr) {
        state.SkipWithError("table not built");
        return;
    }
    Case& c = find(table);
    const std::string& in = toUtf8 ? c.codeText : c.utf8Text;
    std::string out(in.size() * 3 + 1, '\0');
    for (auto _ : state) {
        unsigned n = toUtf8 ? vornnls3_tis_to_utf8(&t.cs, in.data(), int(in.size()), out.data(),
                                                   unsigned(out.size()))
                            : vornnls3_tis_from_utf8(&t.cs, in.data(), int(in.size()),
                                                     out.data(), unsigned(out.size()));
        benchmark::DoNotOptimize(n);
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(in.size()));
}

void iconvConvert(benchmark::State& state, const char* table, bool toUtf8) {
    Case& c = find(table);
    const std::string& in = toUtf8 ? c.codeText : c.utf8Text;
    iconv_t cd = toUtf8 ? iconv_open("UTF-8", c.iconvName) : iconv_open(c.iconvName, "UTF-8");
    std::string out(in.size() * 3 + 16, '\0');
    for (auto _ : state) {
        char* ip = const_cast<char*>(in.data());
        char* op = out.data();
        size_t il = in.size(), ol = out.size();
        iconv(cd, nullptr, nullptr, nullptr, nullptr);
        iconv(cd, &ip, &il, &op, &ol);
        iconv(cd, nullptr, nullptr, &op, &ol);
        benchmark::DoNotOptimize(op);
        benchmark::ClobberMemory();
    }
    iconv_close(cd);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(in.size()));
}

#ifdef QARQ_HAVE_ICU
void icuConvertEx(benchmark::State& state, const char* table, bool toUtf8) {
    Case& c = find(table);
    const std::string& in = toUtf8 ? c.codeText : c.utf8Text;
    UErrorCode err = U_ZERO_ERROR;
    UConverter* code = ucnv_open(c.icuName, &err);
    UConverter* u8 = ucnv_open("UTF-8", &err);
    if (U_FAILURE(err)) {
        state.SkipWithError("ICU converter missing");
        return;
    }
    std::string out(in.size() * 3 + 16, '\0');
    std::vector<UChar> pivot(1024);
    for (auto _ : state) {
        char* target = out.data();
        const char* source = in.data();
        UChar* pivotSource = pivot.data();
        UChar* pivotTarget = pivot.data();
        err = U_ZERO_ERROR;
        ucnv_convertEx(toUtf8 ? u8 : code, toUtf8 ? code : u8, &target, out.data() + out.size(),
                       &source, in.data() + in.size(), pivot.data(), &pivotSource, &pivotTarget,
                       pivot.data() + pivot.size(), true, true, &err);
        benchmark::DoNotOptimize(target);
        benchmark::ClobberMemory();
    }
    ucnv_close(code);
    ucnv_close(u8);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(in.size()));
}

void icuAlgorithmic(benchmark::State& state, const char* table, bool toUtf8) {
    Case& c = find(table);
    const std::string& in = toUtf8 ? c.codeText : c.utf8Text;
    UErrorCode err = U_ZERO_ERROR;
    UConverter* code = ucnv_open(c.icuName, &err);
    if (U_FAILURE(err)) {
        state.SkipWithError("ICU converter missing");
        return;
    }
    std::string out(in.size() * 3 + 16, '\0');
    for (auto _ : state) {
        err = U_ZERO_ERROR;
        int32_t n = toUtf8 ? ucnv_toAlgorithmic(UCNV_UTF8, code, out.data(), int32_t(out.size()),
                                                in.data(), int32_t(in.size()), &err)
                           : ucnv_fromAlgorithmic(code, UCNV_UTF8, out.data(),
                                                  int32_t(out.size()), in.data(),
                                                  int32_t(in.size()), &err);
        benchmark::DoNotOptimize(n);
        benchmark::ClobberMemory();
    }
    ucnv_close(code);
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(in.size()));
}
#endif

void memcpyBaseline(benchmark::State& state, const char* table) {
    const std::string& in = find(table).utf8Text;
    std::string out(in.size(), '\0');
    for (auto _ : state) {
        std::memcpy(out.data(), in.data(), in.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * int64_t(in.size()));
}

#define QARQ_NLS_CASE(name, table, toUtf8)                                                \
    BENCHMARK_CAPTURE(qarqConvert, name##_scalar, table, toUtf8,                          \
                      qarq::vorn::nls::SimdLevel::scalar);                                \
    BENCHMARK_CAPTURE(qarqConvert, name##_sse42, table, toUtf8,                           \
                      qarq::vorn::nls::SimdLevel::sse42);                                 \
    BENCHMARK_CAPTURE(qarqConvert, name##_avx2, table, toUtf8,                            \
                      qarq::vorn::nls::SimdLevel::avx2);                                  \
    BENCHMARK_CAPTURE(qarqConvert, name##_avx512, table, toUtf8,                          \
                      qarq::vorn::nls::SimdLevel::avx512);                                \
    BENCHMARK_CAPTURE(iconvConvert, name, table, toUtf8);                          \
    QARQ_NLS_ICU(name, table, toUtf8)

#ifdef QARQ_HAVE_ICU
#define QARQ_NLS_ICU(name, table, toUtf8)                  \
    BENCHMARK_CAPTURE(icuConvertEx, name, table, toUtf8); \
    BENCHMARK_CAPTURE(icuAlgorithmic, name, table, toUtf8);
#else
#define QARQ_NLS_ICU(name, table, toUtf8)
#endif

QARQ_NLS_CASE(cp37_to_utf8, "37", true)
QARQ_NLS_CASE(utf8_to_cp37, "37", false)
QARQ_NLS_CASE(cp1252_to_utf8, "1252", true)
QARQ_NLS_CASE(utf8_to_cp1252, "1252", false)
QARQ_NLS_CASE(cp930_to_utf8, "930", true)
QARQ_NLS_CASE(utf8_to_cp930, "930", false)
BENCHMARK_CAPTURE(qarqConvert, ascii_to_utf8_scalar, "ascii", true,
                  qarq::vorn::nls::SimdLevel::scalar);
BENCHMARK_CAPTURE(qarqConvert, ascii_to_utf8_avx2, "ascii", true,
                  qarq::vorn::nls::SimdLevel::avx2);
BENCHMARK_CAPTURE(qarqConvert, ascii_to_utf8_avx512, "ascii", true,
                  qarq::vorn::nls::SimdLevel::avx512);
BENCHMARK_CAPTURE(qarqConvert, utf8_to_ascii_scalar, "ascii", false,
                  qarq::vorn::nls::SimdLevel::scalar);
BENCHMARK_CAPTURE(qarqConvert, utf8_to_ascii_avx2, "ascii", false,
                  qarq::vorn::nls::SimdLevel::avx2);
BENCHMARK_CAPTURE(qarqConvert, utf8_to_ascii_avx512, "ascii", false,
                  qarq::vorn::nls::SimdLevel::avx512);
BENCHMARK_CAPTURE(memcpyBaseline, prose, "37");
BENCHMARK_CAPTURE(memcpyBaseline, ascii, "ascii");

}  // namespace

BENCHMARK_MAIN();
