// Where the code-set tables come from, and how the library is made to load
// them from there.
//
// The directory is, in order: the --codeset-dir option; $BINDIR/GRV/server/
// codeset/ when BINDIR is set; the tables installed beside the tool,
// <directory of the executable>/../share/qarq/codeset (the same relative
// place in the build tree and in an install prefix).
//
// The library loads tables by name from $BINDIR/GRV/server/codeset/ only
// (then from the current directory). For any other directory the tool
// makes a private BINDIR: a fresh temporary directory holding
// GRV/server/codeset as a symbolic link to the chosen one, sets BINDIR to it
// for its own process, and removes it again once the tables are loaded. The log
// of the library keeps the place it would have had: without QARZ_LOG_FILE,
// that is set to the log under the caller's BINDIR, or to standard error
// when the caller had no BINDIR.
//
// Ownership: owns the temporary directory. Threads: one per process, made
// before any conversion. Failures: open() returns false with a message.
#pragma once

#include <string>
#include <vector>

namespace qarqtool {

class CodesetDir {
  public:
    CodesetDir() = default;
    ~CodesetDir();
    CodesetDir(const CodesetDir&) = delete;
    CodesetDir& operator=(const CodesetDir&) = delete;

    /// Chooses the directory (`option` is the --codeset-dir value or "").
    /// False with `error` set when none is usable.
    bool open(const std::string& option, std::string& error);

    /// Makes the library load tables by name from the directory (a private
    /// BINDIR unless it is the caller's). False with `error` on failure.
    bool pointLibrary(std::string& error);

    /// Removes the private BINDIR: once the code sets are loaded the library
    /// needs it no more, and a tool killed while converting leaves nothing.
    void dropView();

    /// The chosen directory, ending in '/'.
    const std::string& path() const { return path_; }

    /// Where the table of `name` would be, or "" when the directory has no
    /// such regular file.
    std::string fileOf(const std::string& name) const;

    /// The names of the regular files in the directory, sorted.
    std::vector<std::string> entries() const;

    /// The tables' directory beside the running executable, "" when unknown.
    static std::string besideExecutable();

  private:
    std::string path_;
    std::string view_;  // the private BINDIR, "" when none was made
    bool viaBindir_ = false;
};

}  // namespace qarqtool
