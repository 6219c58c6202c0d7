#include "Cli.hpp"

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

}  // namespace qarqtool
