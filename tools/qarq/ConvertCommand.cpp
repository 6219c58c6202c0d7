#include "ConvertCommand.hpp"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "Cli.hpp"
#include "CodesetDir.hpp"
#include "CodesetsCommand.hpp"
#include "StreamConverter.hpp"
#include "qarq/vorn/vornnls1.hpp"
#include "qarq/vorn/vornnls2.hpp"
#include "qarq/vorn/vornnls6.hpp"

namespace qarqtool {

namespace {

const char* const kName = "convert";

const char* const kHelp =
    "usage: qarq convert -f FROM -t TO [-o OUT] [--codeset-dir DIR] [FILE...]\n"
    "       qarq convert --list\n"
    "\n"
    "Converts text from code page FROM to code page TO through UTF-8. A code\n"
    "page is a number (37, 1252, 930), UTF8, or a name of the aliases file\n"
    "(CP037, LATIN1, SJIS, ...). Reads the FILEs in turn, or standard input,\n"
    "in constant memory, and writes standard output unless -o is given.\n"
    "Characters without a mapping become the target's question mark.\n"
    "\n"
    "  -f, --from FROM      source code page\n"
    "  -t, --to TO          target code page\n"
    "  -o, --output OUT     write to OUT\n"
    "  --codeset-dir DIR    tables in DIR\n"
    "  --buffer-size BYTES  input chunk size (default 262144)\n"
    "  --list               same as 'qarq codesets'\n"
    "  -h, --help           print this text\n";

// One code set, opened by the name given on the command line.
class OpenedCodeset {
  public:
    ~OpenedCodeset() {
        if (cs_ != nullptr)
            vornnls6_tis_cs_free(cs_, 0);
    }
    bool open(const CodesetDir& dir, const char* option, const std::string& given,
              std::string& error) {
        // A name with nothing the library keeps would only give a log record.
        bool usable = false;
        for (char c : given)
            usable = usable || std::isalnum(static_cast<unsigned char>(c));
        if (!usable || given.size() > 127) {
            error = std::string(option) + " " + given + ": not a code page name";
            return false;
        }
        char name[128] = {};
        vornnls1_get_table_name(given.c_str(), name, sizeof name);
        std::string table = name;
        if (table != "UTF8" && dir.fileOf(table).empty()) {
            error = std::string(option) + " " + given + ": unknown code page (no table '" + table +
                    "' in " + dir.path() + ")";
            return false;
        }
        cs_ = vornnls2_cs_new(table.c_str());
        if (cs_ == nullptr) {
            error = std::string(option) + " " + given + ": " + dir.path() + table +
                    " is not a valid code-set table";
            return false;
        }
        return true;
    }
    const VornNlsCodeSet* get() const { return cs_; }

  private:
    VornNlsCodeSet* cs_ = nullptr;
};

}  // namespace

int runConvert(int argc, char** argv, int first) {
    ArgScanner args(argc, argv, first);
    std::string option, value, from, to, output, dirOption;
    size_t chunk = StreamConverter::kDefaultChunk;
    std::vector<std::string> files;
    while (args.next(option, value)) {
        if (option.empty()) {
            files.push_back(value);
        } else if (option == "-h" || option == "--help") {
            return printHelp(kHelp);
        } else if (option == "--list") {
            // The rest of the line belongs to the listing (--codeset-dir).
            std::vector<char*> rest = {argv[0], const_cast<char*>("codesets")};
            for (int i = first; i < argc; ++i) {
                if (std::string(argv[i]) != "--list")
                    rest.push_back(argv[i]);
            }
            rest.push_back(nullptr);
            return runCodesets(int(rest.size() - 1), rest.data(), 2);
        } else if (option == "-f" || option == "--from" || option == "-t" || option == "--to" ||
                   option == "-o" || option == "--output" || option == "--codeset-dir" ||
                   option == "--buffer-size") {
            if (!args.takeValue(value))
                return usageError(kName, option + " needs a value");
            if (option == "-f" || option == "--from")
                from = value;
            if (option == "-t" || option == "--to")
                to = value;
            if (option == "-o" || option == "--output")
                output = value;
            if (option == "--codeset-dir")
                dirOption = value;
            if (option == "--buffer-size") {
                char* end = nullptr;
                unsigned long long n = std::strtoull(value.c_str(), &end, 10);
                if (value.empty() || *end != '\0' || n < StreamConverter::kMinChunk ||
                    n > StreamConverter::kMaxChunk) {
                    return usageError(kName, "--buffer-size " + value + ": not a number from " +
                                                 std::to_string(StreamConverter::kMinChunk) +
                                                 " to " +
                                                 std::to_string(StreamConverter::kMaxChunk));
                }
                chunk = size_t(n);
            }
        } else {
            return usageError(kName, "unknown option '" + option + "'");
        }
    }
    if (from.empty())
        return usageError(kName, "missing -f FROM");
    if (to.empty())
        return usageError(kName, "missing -t TO");
    if (files.empty())
        files.push_back("-");

    CodesetDir dir;
    std::string error;
    if (!dir.open(dirOption, error))
        return failure(kName, error);
    if (!dir.pointLibrary(error))
        return failure(kName, error);
    OpenedCodeset source, target;
    if (!source.open(dir, "-f", from, error) || !target.open(dir, "-t", to, error)) {
        return failure(kName, error);
    }
    dir.dropView();
    FILE* out = openOutput(output, error);
    if (out == nullptr)
        return failure(kName, error);
    StreamConverter converter(source.get(), target.get(), chunk);
    int status = kExitOk;
    bool writeFailed = false;
    for (const std::string& file : files) {
        bool isStdin = file == "-";
        FILE* in = isStdin ? stdin : std::fopen(file.c_str(), "rb");
        if (in == nullptr) {
            status = failure(kName, file + ": " + lastError());
            continue;
        }
        bool ok = converter.run(in, inputName(file), out, error);
        if (!isStdin)
            std::fclose(in);
        if (!ok) {
            status = failure(kName, error);
            writeFailed = error.compare(0, 6, "write:") == 0;
            if (writeFailed)
                break;
        }
    }
    // A failed write leaves the stream's error flag set: it is told once.
    if (!closeOutput(out, output, error) && !writeFailed)
        status = failure(kName, error);
    return status;
}

}  // namespace qarqtool
