#include "Cli.hpp"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace qarqtool {

int usageError(const char* command, const std::string& message) {
    std::fprintf(stderr, "qarq %s: %s\nTry 'qarq %s --help'.\n", command, message.c_str(), command);
    return kExitUsage;
}

int failure(const char* command, const std::string& message) {
    std::fprintf(stderr, "qarq %s: %s\n", command, message.c_str());
    return kExitFailure;
}

int printHelp(const char* text) {
    std::fputs(text, stdout);
    return kExitOk;
}

std::string lastError() {
    return std::strerror(errno);
}

ArgScanner::ArgScanner(int argc, char** argv, int first) : argc_(argc), argv_(argv), at_(first) {}

bool ArgScanner::next(std::string& option, std::string& value) {
    hasInline_ = false;
    option.clear();
    value.clear();
    if (at_ >= argc_)
        return false;
    std::string arg = argv_[at_++];
    if (!operandsOnly_ && arg == "--") {
        operandsOnly_ = true;
        return next(option, value);
    }
    if (operandsOnly_ || arg.size() < 2 || arg[0] != '-') {
        value = arg;
        return true;
    }
    if (arg[1] == '-') {
        size_t eq = arg.find('=');
        option = arg.substr(0, eq);
        if (eq != std::string::npos) {
            hasInline_ = true;
            inline_ = arg.substr(eq + 1);
        }
    } else {
        option = arg.substr(0, 2);
        if (arg.size() > 2) {
            hasInline_ = true;
            inline_ = arg.substr(2);
        }
    }
    return true;
}

bool ArgScanner::takeValue(std::string& value) {
    if (hasInline_) {
        hasInline_ = false;
        value = inline_;
        return true;
    }
    if (at_ >= argc_)
        return false;
    value = argv_[at_++];
    return true;
}

std::string inputName(const std::string& path) {
    return path.empty() || path == "-" ? std::string("standard input") : path;
}

bool readWhole(const std::string& path, size_t limit, std::string& data, std::string& error) {
    bool isStdin = path.empty() || path == "-";
    FILE* in = isStdin ? stdin : std::fopen(path.c_str(), "rb");
    if (in == nullptr) {
        error = inputName(path) + ": " + lastError();
        return false;
    }
    data.clear();
    char block[65536];
    bool ok = true;
    for (;;) {
        size_t n = std::fread(block, 1, sizeof block, in);
        if (n > 0) {
            if (data.size() + n > limit) {
                error = inputName(path) + ": larger than " + std::to_string(limit) + " bytes";
                ok = false;
                break;
            }
            data.append(block, n);
        }
        if (n < sizeof block) {
            if (std::ferror(in)) {
                error = inputName(path) + ": " + lastError();
                ok = false;
            }
            break;
        }
    }
    if (!isStdin)
        std::fclose(in);
    return ok;
}

FILE* openOutput(const std::string& path, std::string& error) {
    if (path.empty() || path == "-")
        return stdout;
    FILE* out = std::fopen(path.c_str(), "wb");
    if (out == nullptr)
        error = path + ": " + lastError();
    return out;
}

bool closeOutput(FILE* out, const std::string& path, std::string& error) {
    std::string name = path.empty() || path == "-" ? std::string("standard output") : path;
    bool ok = std::fflush(out) == 0 && !std::ferror(out);
    if (!ok)
        error = name + ": " + lastError();
    if (out != stdout && std::fclose(out) != 0 && ok) {
        error = name + ": " + lastError();
        ok = false;
    }
    return ok;
}

bool FileArgs::has(const std::string& flag) const {
    return std::find(flags.begin(), flags.end(), flag) != flags.end();
}

int scanFileArgs(int argc, char** argv, int first, const char* command, const char* help,
                 const std::vector<std::string>& flags, FileArgs& args) {
    ArgScanner scanner(argc, argv, first);
    std::string option, value;
    bool haveFile = false;
    while (scanner.next(option, value)) {
        if (option.empty()) {
            if (haveFile)
                return usageError(command, "one FILE only, got '" + value + "' too");
            args.file = value;
            haveFile = true;
        } else if (option == "-h" || option == "--help") {
            return printHelp(help);
        } else if (option == "-o" || option == "--output") {
            if (!scanner.takeValue(args.output))
                return usageError(command, option + " needs a value");
        } else if (std::find(flags.begin(), flags.end(), option) != flags.end()) {
            args.flags.push_back(option);
        } else {
            return usageError(command, "unknown option '" + option + "'");
        }
    }
    return -1;
}

}  // namespace qarqtool
