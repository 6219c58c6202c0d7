#include "EncodeCommand.hpp"

#include <cstdio>
#include <string>

#include "Cli.hpp"
#include "WireEncoder.hpp"

namespace qarqtool {

namespace {

const char* const kName = "encode";

// Longer lines are no listing of ours (a byte array of 32 MiB in hex at most).
constexpr size_t kMaxLine = 64u << 20;

const char* const kHelp =
    "usage: qarq encode [-o OUT] [FILE]\n"
    "\n"
    "Reads the listing that 'qarq decode' prints and writes the stream bytes,\n"
    "so that 'qarq decode x.bin | qarq encode' gives x.bin back. One value a\n"
    "line; a leading offset, indentation, blank lines and lines starting\n"
    "with '#' are ignored:\n"
    "  byte N  char 'c'|N  short N  int N  long N  boolean true|false|N\n"
    "  string \"TEXT\" [length=N]  class \"NAME\" [length=N] [short=N]\n"
    "  classhandle N  bytes COUNT HEX  strings COUNT  vector COUNT\n"
    "A line that does not read names its line number (exit status 1).\n"
    "\n"
    "  -o, --output OUT  write the bytes to OUT\n"
    "  -h, --help        print this text\n";

}  // namespace

int runEncode(int argc, char** argv, int first) {
    FileArgs args;
    int status = scanFileArgs(argc, argv, first, kName, kHelp, {}, args);
    if (status >= 0)
        return status;
    const std::string& file = args.file;
    const std::string& output = args.output;
    bool isStdin = file.empty() || file == "-";
    FILE* in = isStdin ? stdin : std::fopen(file.c_str(), "rb");
    if (in == nullptr)
        return failure(kName, inputName(file) + ": " + lastError());
    std::string error;
    FILE* out = openOutput(output, error);
    if (out == nullptr) {
        if (!isStdin)
            std::fclose(in);
        return failure(kName, error);
    }
    WireEncoder encoder;
    status = kExitOk;
    std::string line;
    size_t lineNo = 0;
    for (bool more = true; more && status == kExitOk;) {
        line.clear();
        int c;
        while ((c = getc(in)) != EOF && c != '\n') {
            if (line.size() >= kMaxLine)
                break;
            line += char(c);
        }
        more = c != EOF;
        if (c == EOF && line.empty())
            break;
        ++lineNo;
        std::string where = inputName(file) + ":" + std::to_string(lineNo) + ": ";
        if (line.size() >= kMaxLine) {
            status = failure(kName, where + "line longer than " + std::to_string(kMaxLine));
        } else if (!encoder.encodeLine(line)) {
            status = failure(kName, where + encoder.error());
        } else if (!encoder.flush(out)) {
            status = failure(kName, "write: " + lastError());
        }
    }
    if (std::ferror(in) && status == kExitOk) {
        status = failure(kName, inputName(file) + ": " + lastError());
    }
    if (!isStdin)
        std::fclose(in);
    if (!closeOutput(out, output, error) && status == kExitOk)
        status = failure(kName, error);
    return status;
}

}  // namespace qarqtool
