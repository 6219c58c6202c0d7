#include "DecodeCommand.hpp"

#include <cstdio>
#include <string>

#include "Cli.hpp"
#include "TextEscape.hpp"
#include "WireDecoder.hpp"

namespace qarqtool {

namespace {

const char* const kName = "decode";

// A stream block is one message; anything larger is not one.
constexpr size_t kMaxBlock = 256u << 20;

const char* const kHelp =
    "usage: qarq decode [--hex] [-o OUT] [FILE]\n"
    "\n"
    "Lists the values of one block of the Java stream (raw bytes, or hex\n"
    "text with --hex), one a line: byte offset, type, value. Strings and\n"
    "class names are quoted UTF-8 with escapes; byte arrays are hex; the\n"
    "elements of string arrays and vectors, and the body of an object, are\n"
    "indented. 'qarq encode' turns the listing back into the same bytes.\n"
    "Char and short share a tag: the listing takes the reading under which\n"
    "the whole block parses, short where both do.\n"
    "A bad tag or a truncated value ends the listing with an error naming\n"
    "the offset (exit status 1).\n"
    "\n"
    "  --hex             the input is hex digits, white space ignored\n"
    "  -o, --output OUT  write the listing to OUT\n"
    "  -h, --help        print this text\n";

bool fromHex(const std::string& text, std::string& bytes, std::string& error) {
    bytes.clear();
    size_t lineNo = 1, column = 0;
    int high = -1;
    for (char c : text) {
        ++column;
        if (c == '\n') {
            ++lineNo;
            column = 0;
            continue;
        }
        if (c == ' ' || c == '\t' || c == '\r')
            continue;
        int v = hexDigit(c);
        if (v < 0) {
            error = "line " + std::to_string(lineNo) + ", column " + std::to_string(column) +
                    ": bad hex digit '" + std::string(1, c) + "'";
            return false;
        }
        if (high < 0) {
            high = v;
        } else {
            bytes += char(high << 4 | v);
            high = -1;
        }
    }
    if (high >= 0) {
        error = "odd number of hex digits";
        return false;
    }
    return true;
}

}  // namespace

int runDecode(int argc, char** argv, int first) {
    FileArgs args;
    int status = scanFileArgs(argc, argv, first, kName, kHelp, {"--hex"}, args);
    if (status >= 0)
        return status;
    const std::string& file = args.file;
    const std::string& output = args.output;
    bool hex = args.has("--hex");
    std::string data, error;
    if (!readWhole(file, hex ? 2 * kMaxBlock + 4096 : kMaxBlock, data, error)) {
        return failure(kName, error);
    }
    if (hex) {
        std::string bytes;
        if (!fromHex(data, bytes, error))
            return failure(kName, inputName(file) + ": " + error);
        data.swap(bytes);
    }
    FILE* out = openOutput(output, error);
    if (out == nullptr)
        return failure(kName, error);
    WireDecoder decoder(data);
    bool whole = decoder.decode(out);
    bool written = closeOutput(out, output, error);
    if (!whole)
        return failure(kName, inputName(file) + ": " + decoder.error());
    if (!written)
        return failure(kName, error);
    return kExitOk;
}

}  // namespace qarqtool
