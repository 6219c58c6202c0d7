// Shared conventions of the subcommands: argument scanning, the one-line
// error messages on standard error, the exit statuses, and whole-file input.
//
// Exit statuses: 0 success, 1 failure (input, file or conversion), 2 usage.
// Threads: the tool is single-threaded; nothing here locks.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace qarqtool {

constexpr int kExitOk = 0;
constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

/// Prints "qarq COMMAND: MESSAGE" and a pointer to the help; returns 2.
int usageError(const char* command, const std::string& message);

/// Prints "qarq COMMAND: MESSAGE"; returns 1.
int failure(const char* command, const std::string& message);

/// Prints a subcommand's help text on standard output; returns 0.
int printHelp(const char* text);

/// The text of errno for messages.
std::string lastError();

/// Walks the arguments of one subcommand: options with or without a value
/// ("-o FILE", "-oFILE", "--output FILE", "--output=FILE") and operands, with
/// "--" ending the options and "-" as an operand (standard input).
class ArgScanner {
  public:
    ArgScanner(int argc, char** argv, int first);

    /// False at the end. Otherwise `option` is the option as written before
    /// any "=" ("" for an operand) and `value` the operand or inline value.
    bool next(std::string& option, std::string& value);

    /// The value of an option that takes one: inline, or the next argument.
    bool takeValue(std::string& value);

  private:
    int argc_;
    char** argv_;
    int at_;
    bool operandsOnly_ = false;
    bool hasInline_ = false;
    std::string inline_;
};

/// The arguments of a subcommand that reads one FILE (standard input
/// without one, or with "-") and writes -o OUT (standard output without it).
struct FileArgs {
    std::string file;
    std::string output;
    std::vector<std::string> flags;  ///< the subcommand's own options given

    bool has(const std::string& flag) const;
};

/// Scans the arguments of such a subcommand, whose own options, without a
/// value, are `flags`; -h and --help print `help`. Returns -1 when the
/// subcommand goes on, else the exit status to end with.
int scanFileArgs(int argc, char** argv, int first, const char* command, const char* help,
                 const std::vector<std::string>& flags, FileArgs& args);

/// Reads a whole file ("-" or "" for standard input) into `data`, refusing
/// more than `limit` bytes. On failure `error` holds "NAME: reason".
bool readWhole(const std::string& path, size_t limit, std::string& data, std::string& error);

/// Opens the output ("" for standard output); on failure `error` is set.
FILE* openOutput(const std::string& path, std::string& error);

/// Closes an output opened by openOutput, reporting a failed flush.
bool closeOutput(FILE* out, const std::string& path, std::string& error);

/// The name to show for an input path.
std::string inputName(const std::string& path);

}  // namespace qarqtool
