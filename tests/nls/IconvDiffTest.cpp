// Every compiled table through our engines against glibc iconv: every single
// byte, every double-byte pair and every multi-byte sequence to UTF-8, and
// every UCS-2 value from UTF-8. The engines may differ from iconv only where
// one of their rules says so, and each such difference is asserted as that
// rule: a code or value with no mapping gives the question mark, and so do
// values whose iconv bytes the table model cannot hold ("unfit") or that
// iconv writes as its substitution character (see docs/codesets.md).
#include <gtest/gtest.h>
#include <iconv.h>

#include <string>

#include "qarq/vorn/vornnls3.hpp"
#include "support/CodesetTree.hpp"
#include "support/Utf8.hpp"
#include "NlsSupport.hpp"
#include "vorn/VornNlsTable.hpp"

namespace {

using qarq::test::CodesetTree;
using qarq::test::Record;
using qarq::support::utf8;

class Iconv {
public:
    Iconv(const char* to, const char* from) : cd_(iconv_open(to, from)) {}
    ~Iconv() {
        if (ok()) iconv_close(cd_);
    }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;
    bool ok() const { return cd_ != reinterpret_cast<iconv_t>(-1); }
    // `in` converted from the initial state and flushed; false when refused
    // or incomplete.
    bool run(const std::string& in, std::string& out) {
        iconv(cd_, nullptr, nullptr, nullptr, nullptr);
        char buffer[64];
        char* ip = const_cast<char*>(in.data());
        size_t il = in.size(), ol = sizeof buffer;
        char* op = buffer;
        if (iconv(cd_, &ip, &il, &op, &ol) == size_t(-1)) return false;
        if (iconv(cd_, nullptr, nullptr, &op, &ol) == size_t(-1)) return false;
        out.assign(buffer, op);
        return true;
    }

private:
    iconv_t cd_;
};

// True when `s` is exactly one UTF-8 character of the UCS-2 range, not U+FFFF.
bool oneUcs2Character(const std::string& s) {
    if (s.empty()) return false;
    auto b = uint8_t(s[0]);
    size_t n = b < 0x80 ? 1 : (b & 0xE0) == 0xC0 ? 2 : (b & 0xF0) == 0xE0 ? 3 : 0;
    return n != 0 && n == s.size() && s != "\xEF\xBF\xBF";
}

const char* const kTables[] = {
    "37",   "273",  "277",  "278",  "280",  "284",  "285",  "297",  "500",  "871",
    "1047", "1140", "1141", "1142", "1143", "1144", "1145", "1146", "1147", "1148",
    "1149", "437",  "850",  "852",  "855",  "857",  "858",  "866",  "874",  "1250",
    "1251", "1252", "1253", "1254", "1255", "1256", "1257", "1258", "819",  "930",
    "933",  "935",  "937",  "939",  "932",  "936",  "949",  "950",  "954"};

class AgainstIconv : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        CodesetTree tree({GetParam()});
        cs.reset(vornnls2_cs_new(GetParam()));
        ASSERT_NE(cs, nullptr) << "the loader refused table " << GetParam();
        charset = reinterpret_cast<const char*>(cs->table + qarq::vorn::nls::kOffName);
        ebcdic = cs->kind == 4 ||
                 qarq::vorn::nls::rd16(cs->table + qarq::vorn::nls::kOffScheme) == 0x1100;
        question = ebcdic ? "\x6F" : "?";
    }
    std::string ours(const std::string& in, bool toUtf8) {
        return qarq::test::convert(cs.get(), in, toUtf8);
    }
    // Whether the table model can hold iconv's bytes for one value.
    bool fits(const std::string& b) const {
        switch (cs->kind) {
        case 1: return b.size() == 1;
        case 2: return b.size() == 1 || (b.size() == 2 && b[0] != 0);
        case 3: return !b.empty() && b.size() <= 16;
        default:
            return (b.size() == 1 && b != "\x0E" && b != "\x0F") ||
                   (b.size() == 4 && b[0] == 0x0E && b[1] != 0 && b[3] == 0x0F);
        }
    }

    Record cs;
    std::string charset, question;
    bool ebcdic = false;
};

TEST_P(AgainstIconv, EveryCodeToUtf8) {
    Iconv decode("UTF-8", charset.c_str());
    ASSERT_TRUE(decode.ok()) << charset;
    const unsigned char* byteClass = cs->table + qarq::vorn::nls::kOffByteClass;
    // A code with no mapping gives the question mark, whatever iconv made of it.
    auto check = [&](const std::string& code) {
        std::string theirs;
        bool mapped = decode.run(code, theirs) && oneUcs2Character(theirs);
        ASSERT_EQ(ours(code, true), mapped ? theirs : "?")
            << charset << " code " << ::testing::PrintToString(code);
    };
    for (unsigned b = 0; b < 256; ++b) {
        std::string one(1, char(b));
        switch (cs->kind) {
        case 1: check(one); break;
        case 2:
            if (b < 0x80 || byteClass[b] != 2) check(one);
            for (unsigned c = 0; b >= 0x80 && byteClass[b] == 2 && c < 256; ++c)
                check(one + char(c));
            break;
        case 3: {
            unsigned n = b < 0x80 ? 1 : byteClass[b];
            if (n == 1) check(one);
            for (unsigned c = 0; n == 2 && c < 256; ++c) check(one + char(c));
            for (unsigned c = 0; n == 3 && c < 65536; ++c)
                check(one + char(c >> 8) + char(c));
            break;
        }
        case 4:
            if (b == 0x0E) {
                // A shift-out is no character: nothing is written for it.
                ASSERT_EQ(ours(one, true), "");
            } else {
                check(one);
            }
            for (unsigned c = 0; b >= 0x40 && b <= 0xFE && c < 256; ++c)
                check("\x0E" + one + char(c) + "\x0F");
            break;
        }
    }
}

TEST_P(AgainstIconv, EveryUcs2ValueFromUtf8) {
    Iconv encode(charset.c_str(), "UTF-8");
    Iconv decode("UTF-8", charset.c_str());
    ASSERT_TRUE(encode.ok() && decode.ok()) << charset;
    for (uint32_t v = 0; v < 0x10000; ++v) {
        std::string theirs, back;
        const char* rule = !encode.run(utf8(v), theirs) ? "unmapped"
                           : !fits(theirs)              ? "unfit"
                           : v != 0x1A && decode.run(theirs, back) && back == "\x1A"
                               ? "substitution"
                               : nullptr;
        ASSERT_EQ(ours(utf8(v), false), rule != nullptr ? question : theirs)
            << charset << " U+" << std::hex << v << " " << (rule != nullptr ? rule : "same");
    }
}

INSTANTIATE_TEST_SUITE_P(Tables, AgainstIconv, ::testing::ValuesIn(kTables),
                         [](const auto& info) { return std::string("cp") + info.param; });

}  // namespace
