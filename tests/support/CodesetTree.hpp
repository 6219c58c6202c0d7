#pragma once
// A run-time code-set tree for tests: <tmp>/GRV/server/codeset/ filled with
// the tables the build compiled (QARQ_SHARE_DIR/codeset), with BINDIR
// pointing at it for the object's life.
//
// Contract: the constructor copies the tables (all, the names given, or none)
// and sets BINDIR; the destructor restores BINDIR as it was (or unsets it)
// and removes the tree. Files can be added or replaced in between, to make
// pointer files, private `aliases` or damaged tables. Not thread-safe: it
// changes the process environment; use it from the test's main thread while
// no conversion runs. Failures to build the tree throw, which fails the test
// that made it.

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/TestSupport.hpp"

namespace qarq::test {

class CodesetTree {
  public:
    struct Empty {};

    // `only`: table and file names to copy; empty copies everything.
    explicit CodesetTree(const std::vector<std::string>& only = {}) : CodesetTree(Empty{}) {
        namespace fs = std::filesystem;
        if (only.empty()) {
            for (const auto& e : fs::directory_iterator(shareDir()))
                fs::copy_file(e.path(), path(e.path().filename().string()));
        }
        for (const auto& name : only)
            fs::copy_file(shareDir() + "/" + name, path(name));
    }
    // A tree with no files at all.
    explicit CodesetTree(Empty) {
        if (root_.path().empty())
            throw std::runtime_error("no temporary directory for a code-set tree");
        std::filesystem::create_directories(codesetDir());
    }

    // Where the build put the compiled tables.
    static std::string shareDir() { return std::string(QARQ_SHARE_DIR) + "/codeset"; }

    // The bytes of a compiled table (or any file of the share directory).
    static std::string readShared(const std::string& name) {
        return support::readFile(shareDir() + "/" + name);
    }

    std::string codesetDir() const { return root_.path() + "/GRV/server/codeset"; }
    std::string path(const std::string& name) const { return codesetDir() + "/" + name; }

    void write(const std::string& name, const std::string& bytes) const {
        std::ofstream f(path(name), std::ios::binary | std::ios::trunc);
        f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!f.flush())
            throw std::runtime_error("cannot write " + path(name));
    }

  private:
    support::TempDir root_{"qarq-codeset"};
    support::ScopedEnv bindir_{"BINDIR", root_.path().c_str()};
};

}  // namespace qarq::test
