#include "CodesetsCommand.hpp"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Cli.hpp"
#include "CodesetDir.hpp"
#include "qarq/base/Os.hpp"
#include "qarq/vorn/vornnls2.hpp"

namespace qarqtool {

namespace {

const char* const kName = "codesets";

const char* const kHelp =
    "usage: qarq codesets [--codeset-dir DIR]\n"
    "\n"
    "Lists the code-set tables found, one a line: name, code page number,\n"
    "kind, and the table name from its header. Names that point to another\n"
    "table show it after '->'. UTF8 is built in and needs no table.\n"
    "\n"
    "  --codeset-dir DIR  tables in DIR (default: $BINDIR/GRV/server/codeset,\n"
    "                     else share/qarq/codeset beside the tool)\n"
    "  -h, --help         print this text\n";

// Header fields of a table image (all numbers little-endian).
constexpr size_t kOffTag = 8;
constexpr size_t kOffCodepage = 12;
constexpr size_t kOffName = 16;
constexpr size_t kNameLength = 32;
constexpr size_t kOffKind = 48;
constexpr size_t kOffScheme = 50;
constexpr size_t kHeaderSize = 64;

unsigned rd16(const unsigned char* p) {
    return unsigned(p[0] | p[1] << 8);
}

std::string kindWords(unsigned kind, unsigned scheme) {
    switch (kind) {
        case 1:
            return scheme == 0x1100 ? "single-byte EBCDIC" : "single-byte";
        case 2:
            return "double-byte";
        case 3:
            return "multi-byte EUC";
        case 4:
            return "EBCDIC mixed with shifts";
        default:
            return "kind " + std::to_string(kind);
    }
}

// Tables start with their tag; pointer files are one short line naming
// another file. Anything else is not offered to the loader, which would log.
bool looksLikeTable(const std::string& file, std::string& pointsTo) {
    FILE* in = std::fopen(file.c_str(), "rb");
    if (in == nullptr)
        return false;
    unsigned char head[256];
    size_t n = std::fread(head, 1, sizeof head, in);
    std::fclose(in);
    if (n >= kHeaderSize && std::memcmp(head + kOffTag, "ucv", 3) == 0)
        return true;
    if (n == 0 || n == sizeof head)
        return false;
    pointsTo.clear();
    for (size_t i = 0; i < n; ++i) {
        unsigned char c = head[i];
        if (c == '\n' || c == '\r' || c == ' ' || c == '\t')
            continue;
        if (c < 0x21 || c > 0x7E)
            return false;
        pointsTo += char(c);
    }
    return !pointsTo.empty();
}

}  // namespace

int runCodesets(int argc, char** argv, int first) {
    ArgScanner args(argc, argv, first);
    std::string option, value, dirOption;
    while (args.next(option, value)) {
        if (option == "-h" || option == "--help") {
            return printHelp(kHelp);
        } else if (option == "--codeset-dir") {
            if (!args.takeValue(dirOption))
                return usageError(kName, "--codeset-dir needs a value");
        } else if (!option.empty()) {
            return usageError(kName, "unknown option '" + option + "'");
        } else {
            return usageError(kName, "unexpected argument '" + value + "'");
        }
    }
    CodesetDir dir;
    std::string error;
    if (!dir.open(dirOption, error))
        return failure(kName, error);
    std::printf("%-8s %5s  %-26s %s\n", "UTF8", "65001", "UTF-8", "(built in)");
    for (const std::string& name : dir.entries()) {
        std::string pointsTo;
        if (name == "aliases" || !looksLikeTable(dir.fileOf(name), pointsTo))
            continue;
        unsigned size = 0;
        unsigned char* image = vornnls2_load_table(dir.path().c_str(), name.c_str(), &size);
        if (image == nullptr)
            continue;
        char tableName[kNameLength + 1] = {};
        std::memcpy(tableName, image + kOffName, kNameLength);
        std::string shown = tableName;
        if (!pointsTo.empty())
            shown += "  -> " + pointsTo;
        std::printf("%-8s %5u  %-26s %s\n", name.c_str(), rd16(image + kOffCodepage),
                    kindWords(rd16(image + kOffKind), rd16(image + kOffScheme)).c_str(),
                    shown.c_str());
        qarq::os::calls().free(image);
    }
    std::fflush(stdout);
    return std::ferror(stdout) ? failure(kName, "standard output: " + lastError()) : kExitOk;
}

}  // namespace qarqtool
