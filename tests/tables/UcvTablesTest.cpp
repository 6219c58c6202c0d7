// The compiled code-set tables, read with a reader of their own and checked
// entry by entry against the C library's converters, so that a table is known
// to be right before any engine reads it. Also the aliases and pointer files
// beside them.

#include <gtest/gtest.h>
#include <iconv.h>

#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/CodesetTree.hpp"

namespace {

using qarq::test::CodesetTree;
using Bytes = std::vector<uint8_t>;
constexpr uint16_t kNone = 0xFFFF;

struct Expect {
    const char* name;
    const char* charset;
    unsigned kind;
    bool ebcdic;
};

const Expect kTables[] = {
    {"37", "CP037", 1, true},     {"273", "CP273", 1, true},    {"277", "EBCDIC-CP-DK", 1, true},
    {"278", "CP278", 1, true},    {"280", "CP280", 1, true},    {"284", "CP284", 1, true},
    {"285", "CP285", 1, true},    {"297", "CP297", 1, true},    {"500", "CP500", 1, true},
    {"871", "CP871", 1, true},    {"1047", "CP1047", 1, true},  {"1140", "CP1140", 1, true},
    {"1141", "CP1141", 1, true},  {"1142", "CP1142", 1, true},  {"1143", "CP1143", 1, true},
    {"1144", "CP1144", 1, true},  {"1145", "CP1145", 1, true},  {"1146", "CP1146", 1, true},
    {"1147", "CP1147", 1, true},  {"1148", "CP1148", 1, true},  {"1149", "CP1149", 1, true},
    {"437", "CP437", 1, false},   {"850", "CP850", 1, false},   {"852", "CP852", 1, false},
    {"855", "CP855", 1, false},   {"857", "CP857", 1, false},   {"858", "CP858", 1, false},
    {"866", "CP866", 1, false},   {"874", "CP874", 1, false},   {"1250", "CP1250", 1, false},
    {"1251", "CP1251", 1, false}, {"1252", "CP1252", 1, false}, {"1253", "CP1253", 1, false},
    {"1254", "CP1254", 1, false}, {"1255", "CP1255", 1, false}, {"1256", "CP1256", 1, false},
    {"1257", "CP1257", 1, false}, {"1258", "CP1258", 1, false}, {"819", "ISO-8859-1", 1, false},
    {"930", "CP930", 4, true},    {"933", "CP933", 4, true},    {"935", "CP935", 4, true},
    {"937", "CP937", 4, true},    {"939", "CP939", 4, true},    {"932", "CP932", 2, false},
    {"936", "CP936", 2, false},   {"949", "CP949", 2, false},   {"950", "CP950", 2, false},
    {"954", "EUC-JP", 3, false},
};

void PrintTo(const Expect& e, std::ostream* os) {
    *os << e.name << " (" << e.charset << ")";
}

// ---- the converter's answer, under the tables' rule --------------------

class Iconv {
  public:
    Iconv(const char* to, const char* from) : cd_(iconv_open(to, from)) {}
    ~Iconv() {
        if (ok())
            iconv_close(cd_);
    }
    bool ok() const { return cd_ != reinterpret_cast<iconv_t>(-1); }

    // Converts `in` from the initial state and flushes; false when refused.
    bool run(const Bytes& in, Bytes& out) {
        iconv(cd_, nullptr, nullptr, nullptr, nullptr);
        char buf[64];
        char* ip = const_cast<char*>(reinterpret_cast<const char*>(in.data()));
        size_t il = in.size(), ol = sizeof buf;
        char* op = buf;
        if (iconv(cd_, &ip, &il, &op, &ol) == size_t(-1))
            return false;
        if (iconv(cd_, nullptr, nullptr, &op, &ol) == size_t(-1))
            return false;
        out.assign(buf, op);
        return true;
    }

  private:
    iconv_t cd_;
};

// One UCS-2 character other than 0xFFFF, or none.
uint16_t expectValue(Iconv& dec, const Bytes& code) {
    Bytes out;
    if (!dec.run(code, out) || out.size() != 4)
        return kNone;
    uint32_t u = out[0] | out[1] << 8 | out[2] << 16 | uint32_t(out[3]) << 24;
    return u >= 0xFFFF ? kNone : uint16_t(u);
}

// The bytes for u alone (shifts stripped on kind 4) when the table's kind
// can hold them and they are not the converter's substitute (bytes that read
// back as U+001A for another value), or empty.
Bytes expectBytes(Iconv& enc, Iconv& dec, unsigned kind, uint32_t u) {
    Bytes out;
    Bytes in{uint8_t(u), uint8_t(u >> 8), 0, 0};
    if (!enc.run(in, out))
        return {};
    Bytes code = out;
    if (kind == 4) {
        if (out.size() == 4 && out[0] == 0x0E && out[3] == 0x0F)
            out = {out[1], out[2]};
        else if (out.size() != 1 || out[0] == 0x0E || out[0] == 0x0F)
            return {};
    }
    size_t max = kind == 1 ? 1 : kind == 3 ? 16 : 2;
    if (out.size() > max || (out.size() >= 2 && out[out.size() - 2] == 0))
        return {};
    if (u != 0x1A && expectValue(dec, code) == 0x1A)
        return {};
    return out;
}

// ---- a reader of the table format, with every bound checked -------------

class Table {
  public:
    explicit Table(const std::string& bytes) : img_(bytes.begin(), bytes.end()) {}

    size_t size() const { return img_.size(); }
    uint16_t w16(size_t off) const {
        if (off + 2 > img_.size())
            throw std::out_of_range("word outside the image");
        return uint16_t(img_[off] | img_[off + 1] << 8);
    }
    uint32_t w32(size_t off) const { return w16(off) | uint32_t(w16(off + 2)) << 16; }
    uint8_t b8(size_t off) const { return img_.at(off); }
    std::string tag() const { return std::string(img_.begin() + 8, img_.begin() + 11); }

    unsigned kind() const { return w16(48); }
    unsigned scheme() const { return w16(50); }
    uint16_t subUnicode() const { return w16(58); }
    uint8_t subByte() const { return b8(60); }
    uint16_t toFirst(int b) const { return w16(736 + 2 * b); }
    uint8_t byteClass(int b) const { return b8(1248 + b); }

    // A block of `bytes` at data position p, checked to lie in the image.
    size_t block(uint16_t p, size_t bytes) const {
        size_t off = size_t(w32(0)) + 4 * size_t(p);
        if (off + bytes > img_.size())
            throw std::out_of_range("block outside the image");
        return off;
    }
    uint16_t row(uint16_t p, int i) const { return w16(block(p, 512) + 2 * i); }
    size_t page(int hi, size_t entry) const { return block(w16(224 + 2 * hi), 256 * entry); }

    // Kind 3: the value of a sequence by walking the nodes.
    uint16_t walk(const Bytes& code) const {
        uint16_t p = toFirst(code[0]);
        for (size_t i = 1; i < code.size(); ++i) {
            if (p == kNone)
                return kNone;
            size_t n = block(p, 4);
            uint16_t count = w16(n), first = w16(n + 2);
            block(p, 4 + 2 * size_t(count));
            if (code[i] < first || code[i] - first >= count)
                return kNone;
            p = w16(n + 4 + 2 * (code[i] - first));
        }
        return p;
    }

    // The bytes the from-Unicode page gives for u; empty for none.
    Bytes bytesFor(uint16_t u) const {
        switch (kind()) {
            case 1:
                return {b8(page(u >> 8, 1) + (u & 0xFF))};
            case 2:
            case 4: {
                uint16_t w = w16(page(u >> 8, 2) + 2 * (u & 0xFF));
                if (w == kNone)
                    return {};
                if (w < 0x100)
                    return {uint8_t(w)};
                return {uint8_t(w >> 8), uint8_t(w)};
            }
            case 3: {
                size_t e = page(u >> 8, 4) + 4 * (u & 0xFF);
                uint16_t prefix = w16(e), value = w16(e + 2);
                if (value < 0x100)
                    return {uint8_t(value)};
                if (prefix == kNone)
                    return {};
                size_t at = size_t(w32(0)) + 16 * size_t(prefix);
                uint16_t len = w16(at + 14);
                if (len > 14)
                    throw std::out_of_range("prefix longer than its entry");
                Bytes out(img_.begin() + long(at), img_.begin() + long(at + len));
                out.push_back(uint8_t(value >> 8));
                out.push_back(uint8_t(value));
                return out;
            }
        }
        return {};
    }

  private:
    Bytes img_;
};

std::string hex(const Bytes& b) {
    std::ostringstream s;
    s << std::hex;
    for (uint8_t x : b)
        s << (x < 16 ? "0" : "") << unsigned(x);
    return b.empty() ? "none" : s.str();
}

class TableTest : public testing::TestWithParam<Expect> {};

TEST_P(TableTest, HeaderAndLayoutFitTheImage) {
    const Expect& e = GetParam();
    Table t(CodesetTree::readShared(e.name));
    ASSERT_GE(t.size(), 1760u);
    EXPECT_EQ("ucv", t.tag());
    EXPECT_EQ(unsigned(std::atoi(e.name)), t.w16(12));
    EXPECT_EQ(e.kind, t.kind());
    EXPECT_EQ(e.kind == 1 && e.ebcdic, t.scheme() == 0x1100);
    EXPECT_EQ(0u, t.w32(0) % 4);
    EXPECT_LE(t.w32(0), t.size());
    // Every page, row, node and prefix the lookups can reach lies inside the
    // image: the same bounds the loader enforces before any engine runs.
    for (int hi = 0; hi < 256; ++hi)
        t.page(hi, e.kind == 1 ? 1 : e.kind == 3 ? 4 : 2);
    for (int b = 0; b < 256; ++b) {
        if (e.kind == 2 || e.kind == 4)
            t.row(t.toFirst(b), 0);
        if (e.kind == 3 && b >= 0x80) {
            EXPECT_NE(0, t.byteClass(b)) << b;
        }
    }
}

TEST_P(TableTest, BytesToUnicodeAgreeWithTheConverter) {
    const Expect& e = GetParam();
    Table t(CodesetTree::readShared(e.name));
    Iconv dec("UTF-32LE", e.charset);
    ASSERT_TRUE(dec.ok());
    unsigned bad = 0;
    auto check = [&](const Bytes& code, uint16_t got) {
        uint16_t want = expectValue(dec, code);
        if (got != want && ++bad <= 10)
            ADD_FAILURE() << e.name << " " << hex(code) << ": table " << got << ", converter "
                          << want;
    };
    for (int b = 0; b < 256; ++b) {
        if ((e.kind == 2 || e.kind == 3) && b >= 0x80) {
            // A byte the converter calls incomplete is a lead byte, whether
            // or not anything of it is mapped; any other byte stands alone.
            Bytes out;
            bool incomplete = !dec.run({uint8_t(b)}, out) && errno == EINVAL;
            EXPECT_EQ(incomplete, t.byteClass(b) >= 2) << e.name << " byte " << b;
        }
        switch (e.kind) {
            case 1:
                check({uint8_t(b)}, t.toFirst(b));
                break;
            case 2:
                if (t.byteClass(b) == 2) {
                    for (int s = 0; s < 256; ++s)
                        check({uint8_t(b), uint8_t(s)}, t.row(t.toFirst(b), s));
                } else {
                    check({uint8_t(b)}, t.row(t.toFirst(0), b));
                    // No double-byte character hides behind a single byte.
                    for (int s = 0; s < 256 && b >= 0x80; ++s)
                        check({uint8_t(b), uint8_t(s)}, kNone);
                }
                break;
            case 4:
                if (b != 0x0E && b != 0x0F)
                    check({uint8_t(b)}, t.row(t.toFirst(0), b));
                for (int s = 0; s < 256 && b >= 0x40 && b <= 0xFE; ++s)
                    check({0x0E, uint8_t(b), uint8_t(s), 0x0F}, t.row(t.toFirst(b), s));
                break;
            case 3: {
                unsigned n = t.byteClass(b);
                if (n == 1) {
                    check({uint8_t(b)}, t.toFirst(b));
                    for (int s = 0; s < 256 && b >= 0x80; ++s)
                        check({uint8_t(b), uint8_t(s)}, kNone);
                } else if (n == 2) {
                    for (int s = 0; s < 256; ++s)
                        check({uint8_t(b), uint8_t(s)}, t.walk({uint8_t(b), uint8_t(s)}));
                } else {
                    ASSERT_EQ(3u, n) << "sequence length of " << b;
                    for (int s = 0; s < 256; ++s)
                        for (int u = 0; u < 256; ++u) {
                            Bytes code{uint8_t(b), uint8_t(s), uint8_t(u)};
                            check(code, t.walk(code));
                        }
                }
                break;
            }
        }
    }
    EXPECT_EQ(0u, bad);
}

TEST_P(TableTest, UnicodeToBytesAgreeWithTheConverter) {
    const Expect& e = GetParam();
    Table t(CodesetTree::readShared(e.name));
    Iconv enc(e.charset, "UTF-32LE");
    Iconv dec("UTF-32LE", e.charset);
    ASSERT_TRUE(enc.ok() && dec.ok());
    unsigned bad = 0;
    for (uint32_t u = 0; u <= 0xFFFF; ++u) {
        Bytes want = expectBytes(enc, dec, e.kind, u);
        Bytes got = t.bytesFor(uint16_t(u));
        if (e.kind == 1) {
            // Unmapped entries hold subByte. Only subUnicode may really map
            // there, or the question-mark rule would hide a mapping.
            if (want.empty()) {
                want = {t.subByte()};
            } else if (want[0] == t.subByte()) {
                EXPECT_EQ(t.subUnicode(), u) << e.name << " U+" << std::hex << u;
            }
        }
        if (got != want && ++bad <= 10)
            ADD_FAILURE() << e.name << " U+" << std::hex << u << ": table " << hex(got)
                          << ", converter " << hex(want);
    }
    EXPECT_EQ(0u, bad);
    if (e.kind == 1) {
        // The one value that maps to subByte maps back from it.
        EXPECT_EQ(t.subUnicode(), t.toFirst(t.subByte()));
        EXPECT_EQ(Bytes{t.subByte()}, t.bytesFor(t.subUnicode()));
    }
}

std::string tableName(const testing::TestParamInfo<Expect>& i) {
    return std::string("cp") + i.param.name;
}

INSTANTIATE_TEST_SUITE_P(Compiled, TableTest, testing::ValuesIn(kTables), tableName);

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

TEST(CodesetFiles, PointerFilesNameATable) {
    for (const char* name : {"DEFAULT", "037"}) {
        std::string text = CodesetTree::readShared(name);
        EXPECT_LT(text.size(), 1760u) << name;
        std::string target;
        for (char c : text)
            if (!std::isspace(static_cast<unsigned char>(c)))
                target += c;
        EXPECT_EQ("ucv", CodesetTree::readShared(target).substr(8, 3)) << name << " -> " << target;
    }
}

}  // namespace
