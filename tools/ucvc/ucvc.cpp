// ucvc: the code-set table compiler.
//
// Asks the C library's converters (iconv) for every byte, every double-byte
// pair, every multi-byte sequence and every UCS-2 value of a code page, and
// writes what it learns as a "ucv" table image that the library's loader
// reads in place. The rule that settles every case where the converter's
// answer does not fit the table model is written down in docs/codesets.md;
// this file implements it and says where.
//
// Usage: ucvc [--report] OUTDIR NAME...
//   Writes OUTDIR/NAME for every table name, plus OUTDIR/aliases and the
//   pointer files. --report prints one line of facts per table.

#include <iconv.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

// ---- the code pages this compiler knows -------------------------------

enum Family { kEbcdicSingle, kAsciiSingle, kAsciiDouble, kEuc, kEbcdicMixed };

struct CodePage {
    const char* name;     // decimal file name
    const char* charset;  // converter name
    Family family;
};

const CodePage kCodePages[] = {
    {"37", "CP037", kEbcdicSingle},
    {"273", "CP273", kEbcdicSingle},
    {"277", "EBCDIC-CP-DK", kEbcdicSingle},
    {"278", "CP278", kEbcdicSingle},
    {"280", "CP280", kEbcdicSingle},
    {"284", "CP284", kEbcdicSingle},
    {"285", "CP285", kEbcdicSingle},
    {"297", "CP297", kEbcdicSingle},
    {"500", "CP500", kEbcdicSingle},
    {"871", "CP871", kEbcdicSingle},
    {"1047", "CP1047", kEbcdicSingle},
    {"1140", "CP1140", kEbcdicSingle},
    {"1141", "CP1141", kEbcdicSingle},
    {"1142", "CP1142", kEbcdicSingle},
    {"1143", "CP1143", kEbcdicSingle},
    {"1144", "CP1144", kEbcdicSingle},
    {"1145", "CP1145", kEbcdicSingle},
    {"1146", "CP1146", kEbcdicSingle},
    {"1147", "CP1147", kEbcdicSingle},
    {"1148", "CP1148", kEbcdicSingle},
    {"1149", "CP1149", kEbcdicSingle},
    {"437", "CP437", kAsciiSingle},
    {"850", "CP850", kAsciiSingle},
    {"852", "CP852", kAsciiSingle},
    {"855", "CP855", kAsciiSingle},
    {"857", "CP857", kAsciiSingle},
    {"858", "CP858", kAsciiSingle},
    {"866", "CP866", kAsciiSingle},
    {"874", "CP874", kAsciiSingle},
    {"1250", "CP1250", kAsciiSingle},
    {"1251", "CP1251", kAsciiSingle},
    {"1252", "CP1252", kAsciiSingle},
    {"1253", "CP1253", kAsciiSingle},
    {"1254", "CP1254", kAsciiSingle},
    {"1255", "CP1255", kAsciiSingle},
    {"1256", "CP1256", kAsciiSingle},
    {"1257", "CP1257", kAsciiSingle},
    {"1258", "CP1258", kAsciiSingle},
    {"819", "ISO-8859-1", kAsciiSingle},
    {"930", "CP930", kEbcdicMixed},
    {"933", "CP933", kEbcdicMixed},
    {"935", "CP935", kEbcdicMixed},
    {"937", "CP937", kEbcdicMixed},
    {"939", "CP939", kEbcdicMixed},
    {"932", "CP932", kAsciiDouble},
    {"936", "CP936", kAsciiDouble},
    {"949", "CP949", kAsciiDouble},
    {"950", "CP950", kAsciiDouble},
    {"954", "EUC-JP", kEuc},
};

// Alternative spellings of the machine's code-page name, in the upper-case,
// filtered form that the name lookup compares with.
const char* const kAliases[][2] = {
    {"65001", "UTF8"},       {"CP65001", "UTF8"},     {"UTF8", "UTF8"},
    {"037", "37"},           {"CP037", "37"},         {"EBCDICUS", "37"},
    {"TIS620", "874"},       {"ISO88591", "819"},     {"LATIN1", "819"},
    {"WINDOWS1250", "1250"}, {"WINDOWS1251", "1251"}, {"WINDOWS1252", "1252"},
    {"WINDOWS1253", "1253"}, {"WINDOWS1254", "1254"}, {"WINDOWS1255", "1255"},
    {"WINDOWS1256", "1256"}, {"WINDOWS1257", "1257"}, {"WINDOWS1258", "1258"},
    {"SJIS", "932"},         {"SHIFTJIS", "932"},     {"WINDOWS31J", "932"},
    {"GBK", "936"},          {"UHC", "949"},          {"BIG5", "950"},
    {"EUCJP", "954"},
};  // and "CPnnn" for every table nnn

// Pointer files: a file whose whole content names another table.
const char* const kPointers[][2] = {
    {"DEFAULT", "1252"},  // fallback when the machine's own page has no table
    {"037", "37"},        // a host page given with its leading zero
};

// ---- image layout ------------------------------------------------------

constexpr uint32_t kHeaderSize = 1760;
constexpr uint32_t kDataOffset = kHeaderSize;  // 16-aligned, so are prefix entries
constexpr uint16_t kNone = 0xFFFF;
constexpr uint8_t kShiftOut = 0x0E;
constexpr uint8_t kShiftIn = 0x0F;
constexpr uint16_t kSubstitute = 0x001A;  // what the substitution byte reads as

uint16_t kindOf(Family f) {
    switch (f) {
        case kEbcdicSingle:
        case kAsciiSingle:
            return 1;
        case kAsciiDouble:
            return 2;
        case kEuc:
            return 3;
        case kEbcdicMixed:
            return 4;
    }
    return 0;
}

uint16_t schemeOf(Family f) {
    switch (f) {
        case kEbcdicSingle:
            return 0x1100;
        case kAsciiSingle:
            return 0x2100;
        case kAsciiDouble:
            return 0x2200;
        case kEuc:
            return 0x4400;
        case kEbcdicMixed:
            return 0x1200;
    }
    return 0;
}

void put16(std::vector<uint8_t>& v, size_t at, uint16_t x) {
    v[at] = uint8_t(x);
    v[at + 1] = uint8_t(x >> 8);
}
void put32(std::vector<uint8_t>& v, size_t at, uint32_t x) {
    for (int i = 0; i < 4; ++i)
        v[at + i] = uint8_t(x >> (8 * i));
}

// The data area: blocks placed at 4-byte positions, identical blocks shared.
class DataArea {
  public:
    uint16_t place(const std::vector<uint8_t>& block) {
        auto it = seen_.find(block);
        if (it != seen_.end())
            return it->second;
        while (bytes_.size() % 4)
            bytes_.push_back(0);
        size_t pos = bytes_.size() / 4;
        if (pos > 0xFFFF)
            throw std::runtime_error("data area beyond 16-bit positions");
        bytes_.insert(bytes_.end(), block.begin(), block.end());
        seen_.emplace(block, uint16_t(pos));
        return uint16_t(pos);
    }
    void raw(const std::vector<uint8_t>& block) {
        bytes_.insert(bytes_.end(), block.begin(), block.end());
    }
    const std::vector<uint8_t>& bytes() const { return bytes_; }

  private:
    std::vector<uint8_t> bytes_;
    std::map<std::vector<uint8_t>, uint16_t> seen_;
};

std::vector<uint8_t> words(const std::vector<uint16_t>& w) {
    std::vector<uint8_t> b(w.size() * 2);
    for (size_t i = 0; i < w.size(); ++i)
        put16(b, 2 * i, w[i]);
    return b;
}

// ---- the converter -----------------------------------------------------

enum Outcome { kOk, kInvalid, kIncomplete };

class Converter {
  public:
    Converter(const char* to, const char* from) : cd_(iconv_open(to, from)) {
        if (cd_ == reinterpret_cast<iconv_t>(-1))
            throw std::runtime_error(std::string("no converter from ") + from + " to " + to);
    }
    ~Converter() { iconv_close(cd_); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // One conversion from the initial state, flushed (a stateful target gets
    // its closing shift, a composing source gives up its held character).
    Outcome run(const uint8_t* in, size_t n, std::vector<uint8_t>& out) {
        iconv(cd_, nullptr, nullptr, nullptr, nullptr);
        char buf[64];
        char* ip = const_cast<char*>(reinterpret_cast<const char*>(in));
        size_t il = n;
        char* op = buf;
        size_t ol = sizeof buf;
        out.clear();
        if (iconv(cd_, &ip, &il, &op, &ol) == size_t(-1))
            return errno == EINVAL ? kIncomplete : kInvalid;
        if (iconv(cd_, nullptr, nullptr, &op, &ol) == size_t(-1))
            return kInvalid;
        out.assign(buf, op);
        return kOk;
    }

  private:
    iconv_t cd_;
};

// ---- the rule ----------------------------------------------------------

struct Facts {
    unsigned mapped = 0;       // byte codes with a value
    unsigned reverse = 0;      // UCS-2 values with bytes
    unsigned multi = 0;        // codes that decode to more than one character
    unsigned astral = 0;       // codes that decode beyond UCS-2
    unsigned oneWay = 0;       // UCS-2 values whose bytes decode to another value
    unsigned unfit = 0;        // UCS-2 values whose bytes the model cannot hold
    unsigned substituted = 0;  // UCS-2 values the converter sends to its substitute
    unsigned asciiDiffer = 0;  // values/bytes below 0x80 not the identity (ASCII family)
};

class Compiler {
  public:
    explicit Compiler(const CodePage& cp)
        : cp_(cp),
          kind_(kindOf(cp.family)),
          dec_("UTF-32LE", cp.charset),
          enc_(cp.charset, "UTF-32LE") {}

    // Decoding rule: a code has a value when the converter turns it, from the
    // initial state, into exactly one character of UCS-2 other than 0xFFFF.
    // Anything else (refused, incomplete, no character, several characters,
    // a character beyond UCS-2) is "no mapping".
    Outcome decode(const std::vector<uint8_t>& code, uint16_t& value) {
        value = kNone;
        Outcome o = dec_.run(code.data(), code.size(), tmp_);
        if (o != kOk)
            return o;
        if (tmp_.size() != 4) {
            if (tmp_.size() > 4)
                ++facts_.multi;
            return kOk;
        }
        uint32_t u = tmp_[0] | tmp_[1] << 8 | tmp_[2] << 16 | uint32_t(tmp_[3]) << 24;
        if (u > 0xFFFF) {
            ++facts_.astral;
            return kOk;
        }
        value = u == 0xFFFF ? kNone : uint16_t(u);
        return kOk;
    }

    // Encoding rule: the bytes the converter gives for u alone, from the
    // initial state (shifts removed for the mixed EBCDIC pages), when the
    // model can hold them and they are not the converter's substitution;
    // otherwise none. Bytes that read back as the substitute character
    // (U+001A) for any other value are how the converter says "unmapped", so
    // the table says so too, and the engines give their question mark.
    bool encode(uint32_t u, std::vector<uint8_t>& bytes) {
        uint8_t in[4] = {uint8_t(u), uint8_t(u >> 8), 0, 0};
        bytes.clear();
        if (enc_.run(in, 4, bytes) != kOk || bytes.empty())
            return false;
        if (kind_ == 4) {
            if (bytes.size() == 4 && bytes[0] == kShiftOut && bytes[3] == kShiftIn)
                bytes = {bytes[1], bytes[2]};
            else if (bytes.size() != 1 || bytes[0] == kShiftOut || bytes[0] == kShiftIn)
                return unfit();
        }
        size_t max = kind_ == 1 ? 1 : kind_ == 3 ? 16 : 2;
        if (bytes.size() > max)
            return unfit();
        // A two-byte form needs a first byte that can't be read as one byte.
        if (bytes.size() >= 2 && bytes[bytes.size() - 2] == 0)
            return unfit();
        uint16_t back = readBack(bytes);
        if (back == kSubstitute && u != kSubstitute) {
            ++facts_.substituted;
            return false;
        }
        ++facts_.reverse;
        if (back != u)
            ++facts_.oneWay;
        if (u < 0x80 && cp_.family != kEbcdicSingle && cp_.family != kEbcdicMixed &&
            !(bytes.size() == 1 && bytes[0] == u))
            ++facts_.asciiDiffer;
        return true;
    }

    std::vector<uint8_t> build();
    const Facts& facts() const { return facts_; }

  private:
    bool unfit() {
        ++facts_.unfit;
        return false;
    }
    void buildSingle(std::vector<uint8_t>& img, DataArea& data);
    void buildDouble(std::vector<uint8_t>& img, DataArea& data);
    void buildMulti(std::vector<uint8_t>& img, DataArea& data);
    uint16_t readBack(const std::vector<uint8_t>& bytes);

    const CodePage& cp_;
    uint16_t kind_;
    Converter dec_, enc_;
    std::vector<uint8_t> tmp_;
    Facts facts_;
};

uint16_t Compiler::readBack(const std::vector<uint8_t>& bytes) {
    std::vector<uint8_t> code = bytes;
    if (kind_ == 4 && bytes.size() == 2)
        code = {kShiftOut, bytes[0], bytes[1], kShiftIn};
    uint16_t back;
    Facts keep = facts_;
    decode(code, back);
    facts_ = keep;
    return back;
}

// Kind 1: values by byte in the header, one 256-byte page per high byte.
// Unmapped page entries hold subByte; the one value that really maps there
// is subUnicode.
void Compiler::buildSingle(std::vector<uint8_t>& img, DataArea& data) {
    const bool ebcdic = cp_.family == kEbcdicSingle;
    const uint8_t sub = ebcdic ? 0x3F : 0x1A;
    uint16_t toFirst[256];
    for (int b = 0; b < 256; ++b) {
        decode({uint8_t(b)}, toFirst[b]);
        if (toFirst[b] != kNone)
            ++facts_.mapped;
        if (!ebcdic && b < 0x80 && toFirst[b] != b)
            ++facts_.asciiDiffer;
        put16(img, 736 + 2 * b, toFirst[b]);
        img[1248 + b] = 1;
    }
    uint16_t subUnicode = toFirst[sub];
    std::vector<uint8_t> bytes;
    for (int hi = 0; hi < 256; ++hi) {
        std::vector<uint8_t> page(256, sub);
        for (int lo = 0; lo < 256; ++lo) {
            uint32_t u = uint32_t(hi << 8 | lo);
            if (!encode(u, bytes))
                continue;
            page[lo] = bytes[0];
        }
        put16(img, 224 + 2 * hi, data.place(page));
    }
    put16(img, 58, subUnicode);
    img[60] = sub;
}

// Kinds 2 and 4: rows of 256 values, row 0 for single bytes; pages of 256
// 16-bit entries, below 0x100 one byte, from 0x100 two bytes, 0xFFFF none.
void Compiler::buildDouble(std::vector<uint8_t>& img, DataArea& data) {
    const bool mixed = kind_ == 4;
    std::vector<uint16_t> single(256, kNone);
    std::vector<std::vector<uint16_t>> rows(256);
    uint8_t cls[256];
    for (int b = 0; b < 256; ++b) {
        cls[b] = 1;
        if (mixed && (b == kShiftOut || b == kShiftIn))
            continue;
        Outcome o = decode({uint8_t(b)}, single[b]);
        if (single[b] != kNone)
            ++facts_.mapped;
        // In the mixed pages only 0x40..0xFE start a pair, and only inside
        // the shift; in the ASCII family a byte the converter calls
        // incomplete is a lead byte, also when none of its pairs is mapped
        // (unassigned and user-defined rows): reading it as one byte would
        // take its second byte for the start of the next character.
        bool lead = mixed ? (b >= 0x40 && b <= 0xFE) : (o == kIncomplete && b >= 0x80);
        if (!lead)
            continue;
        std::vector<uint16_t> row(256, kNone);
        bool any = false;
        for (int s = 0; s < 256; ++s) {
            std::vector<uint8_t> code =
                mixed ? std::vector<uint8_t>{kShiftOut, uint8_t(b), uint8_t(s), kShiftIn}
                      : std::vector<uint8_t>{uint8_t(b), uint8_t(s)};
            decode(code, row[s]);
            if (row[s] != kNone) {
                any = true;
                ++facts_.mapped;
            }
        }
        if (!mixed || any)
            cls[b] = 2;
        if (any)
            rows[b] = row;
    }
    if (!mixed)
        for (int b = 0; b < 0x80; ++b)
            if (single[b] != b)
                ++facts_.asciiDiffer;
    const uint16_t empty = data.place(words(std::vector<uint16_t>(256, kNone)));
    const uint16_t singleRow = data.place(words(single));
    for (int b = 0; b < 256; ++b) {
        uint16_t pos = b == 0 ? singleRow : rows[b].empty() ? empty : data.place(words(rows[b]));
        put16(img, 736 + 2 * b, pos);
        img[1248 + b] = cls[b];
    }
    std::vector<uint8_t> bytes;
    for (int hi = 0; hi < 256; ++hi) {
        std::vector<uint16_t> page(256, kNone);
        for (int lo = 0; lo < 256; ++lo) {
            uint32_t u = uint32_t(hi << 8 | lo);
            if (!encode(u, bytes))
                continue;
            page[lo] = bytes.size() == 1 ? bytes[0] : uint16_t(bytes[0] << 8 | bytes[1]);
        }
        put16(img, 224 + 2 * hi, data.place(words(page)));
    }
    put16(img, 58, kNone);
}

// Kind 3: byteClass holds the sequence length; nodes (count, first, entries)
// lead from the first byte through the further bytes to the value; pages of
// (prefix, value) pairs with the prefixes at the start of the data area.
void Compiler::buildMulti(std::vector<uint8_t>& img, DataArea& data) {
    // The reverse direction first: it decides the prefix table, which must
    // sit at 16-byte entries from the start of the data area.
    std::vector<std::vector<uint8_t>> prefixes{{}};
    std::vector<std::vector<uint16_t>> pages(256, std::vector<uint16_t>(512, kNone));
    std::vector<uint8_t> bytes;
    for (uint32_t u = 0; u <= 0xFFFF; ++u) {
        if (!encode(u, bytes))
            continue;
        uint16_t* e = &pages[u >> 8][2 * (u & 0xFF)];
        if (bytes.size() == 1) {
            e[0] = 0;
            e[1] = bytes[0];
            continue;
        }
        std::vector<uint8_t> pre(bytes.begin(), bytes.end() - 2);
        size_t p = 0;
        while (p < prefixes.size() && prefixes[p] != pre)
            ++p;
        if (p == prefixes.size())
            prefixes.push_back(pre);
        e[0] = uint16_t(p);
        e[1] = uint16_t(bytes[bytes.size() - 2] << 8 | bytes.back());
    }
    for (const auto& pre : prefixes) {
        std::vector<uint8_t> entry(16, 0);
        std::copy(pre.begin(), pre.end(), entry.begin());
        put16(entry, 14, uint16_t(pre.size()));
        data.raw(entry);
    }
    for (int hi = 0; hi < 256; ++hi)
        put16(img, 224 + 2 * hi, data.place(words(pages[hi])));

    // Nodes for the further bytes after `code`, `left` of them to go.
    // Returns the node's position, or none when no sequence goes on.
    std::vector<uint8_t> code;
    auto node = [&](auto&& self, int left) -> uint16_t {
        std::vector<uint16_t> entries(256, kNone);
        for (int c = 0; c < 256; ++c) {
            code.push_back(uint8_t(c));
            if (left == 1) {
                decode(code, entries[c]);
                if (entries[c] != kNone)
                    ++facts_.mapped;
            } else {
                entries[c] = self(self, left - 1);
            }
            code.pop_back();
        }
        int first = 0, last = 255;
        while (first < 256 && entries[first] == kNone)
            ++first;
        if (first == 256)
            return kNone;
        while (entries[last] == kNone)
            --last;
        std::vector<uint16_t> n{uint16_t(last - first + 1), uint16_t(first)};
        n.insert(n.end(), entries.begin() + first, entries.begin() + last + 1);
        return data.place(words(n));
    };

    for (int b = 0; b < 256; ++b) {
        uint16_t value;
        Outcome o = decode({uint8_t(b)}, value);
        uint8_t cls = 1;
        uint16_t first = value;
        if (o == kIncomplete) {
            // The length of the sequences a lead byte starts: one more byte
            // for as long as the converter still calls them incomplete.
            int len = 2;
            for (;; ++len) {
                bool longer = false;
                std::vector<uint8_t> probe(size_t(len - 1), 0);
                probe[0] = uint8_t(b);
                // A lead byte is followed by bytes from the same range in all
                // the multi-byte pages we compile; probe with each of them.
                for (int c = 0x80; c < 0x100 && !longer; ++c) {
                    for (size_t i = 1; i < probe.size(); ++i)
                        probe[i] = uint8_t(c);
                    probe.push_back(uint8_t(c));
                    uint16_t v;
                    longer = decode(probe, v) == kIncomplete;
                    probe.pop_back();
                }
                if (!longer || len == 4)
                    break;
            }
            code = {uint8_t(b)};
            // A lead byte keeps its length even when nothing of it is
            // mapped, so that the bytes of an unassigned character are
            // consumed together; its node then has no entries.
            uint16_t pos = node(node, len - 1);
            cls = uint8_t(len);
            first = pos != kNone ? pos : data.place(words({0, 0}));
        } else if (value != kNone) {
            ++facts_.mapped;
        }
        // A byte that the converter refuses outright reads as one unmapped
        // byte: class 1 with no value.
        if (cls == 1 && b < 0x80 && value != b)
            ++facts_.asciiDiffer;
        put16(img, 736 + 2 * b, cls == 1 ? value : first);
        img[1248 + b] = cls;
    }
    put16(img, 58, kNone);
}

std::vector<uint8_t> Compiler::build() {
    std::vector<uint8_t> img(kHeaderSize, 0);
    DataArea data;
    switch (kind_) {
        case 1:
            buildSingle(img, data);
            break;
        case 2:
        case 4:
            buildDouble(img, data);
            break;
        case 3:
            buildMulti(img, data);
            break;
    }
    put32(img, 0, kDataOffset);
    std::memcpy(&img[8], "ucv", 3);
    img[11] = 1;  // revision of this compiler's output, not read by the library
    put16(img, 12, uint16_t(std::stoul(cp_.name)));
    std::snprintf(reinterpret_cast<char*>(&img[16]), 32, "%s", cp_.charset);
    put16(img, 48, kind_);
    put16(img, 50, schemeOf(cp_.family));
    img.insert(img.end(), data.bytes().begin(), data.bytes().end());
    while (img.size() % 4)
        img.push_back(0);
    put32(img, 4, uint32_t(img.size()));
    return img;
}

void writeFile(const std::string& path, const void* p, size_t n) {
    std::ofstream f(path, std::ios::binary | std::ios::trunc);
    f.write(static_cast<const char*>(p), std::streamsize(n));
    if (!f.flush())
        throw std::runtime_error("cannot write " + path);
}

}  // namespace

int main(int argc, char** argv) {
    int a = 1;
    bool report = false;
    if (a < argc && std::strcmp(argv[a], "--report") == 0) {
        report = true;
        ++a;
    }
    if (argc - a < 1) {
        std::fprintf(stderr, "usage: ucvc [--report] OUTDIR NAME...\n");
        return 2;
    }
    std::string out = argv[a++];
    try {
        for (; a < argc; ++a) {
            const CodePage* cp = nullptr;
            for (const auto& c : kCodePages)
                if (std::strcmp(c.name, argv[a]) == 0)
                    cp = &c;
            if (!cp)
                throw std::runtime_error(std::string("unknown code page ") + argv[a]);
            Compiler c(*cp);
            std::vector<uint8_t> img = c.build();
            writeFile(out + "/" + cp->name, img.data(), img.size());
            if (report) {
                const Facts& f = c.facts();
                std::printf(
                    "%-5s %-10s kind %u size %7zu codes %5u reverse %5u one-way %4u "
                    "unfit %4u substituted %4u multi %u astral %u ascii %u\n",
                    cp->name, cp->charset, kindOf(cp->family), img.size(), f.mapped, f.reverse,
                    f.oneWay, f.unfit, f.substituted, f.multi, f.astral, f.asciiDiffer);
            }
        }
        std::string aliases =
            "# Machine code-page names and the table files they stand for.\n"
            "# Left: the name as the library filters it (upper case, letters and\n"
            "# digits only). Right: the file name, used as it stands.\n";
        for (const auto& al : kAliases)
            aliases += std::string(al[0]) + " " + al[1] + "\n";
        for (const auto& cp : kCodePages)
            aliases += std::string("CP") + cp.name + " " + cp.name + "\n";
        writeFile(out + "/aliases", aliases.data(), aliases.size());
        for (const auto& p : kPointers) {
            std::string text = std::string(p[1]) + "\n";
            writeFile(out + "/" + p[0], text.data(), text.size());
        }
    } catch (const std::exception& e) {
        std::fprintf(stderr, "ucvc: %s\n", e.what());
        return 1;
    }
    return 0;
}
