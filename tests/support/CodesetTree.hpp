#pragma once
// A run-time code-set tree for tests: <tmp>/.../GRV/server/codeset/ filled
// with the tables the build compiled (QARQ_SHARE_DIR/codeset), with BINDIR
// pointing at it for the object's life.
//
// Contract: the constructor copies the tables (all, or the names given) and
// sets BINDIR; the destructor restores BINDIR as it was (or unsets it) and
// removes the tree. Files can be added, replaced or removed in between, to
// make pointer files, private `aliases` or damaged tables. Not thread-safe:
// it changes the process environment; use it from the test's main thread
// while no conversion runs. Failures to build the tree throw
// std::runtime_error, which fails the test that made it.

#include <stdlib.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/TestSupport.hpp"

namespace qarq::test {

class CodesetTree {
    using ScopedEnv = qarq::support::ScopedEnv;

  public:
    // `only`: table and file names to copy; empty copies everything.
    // `bindirLength`: when larger than the temporary directory's own length,
    // BINDIR is padded with nested directories to exactly this many
    // characters (for tests of long BINDIR values).
    explicit CodesetTree(std::vector<std::string> only = {}, std::size_t bindirLength = 0) {
        namespace fs = std::filesystem;
        const char* tmp = std::getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/qarq-codeset-XXXXXX";
        std::vector<char> buf(pattern.begin(), pattern.end());
        buf.push_back('\0');
        if (!mkdtemp(buf.data()))
            throw std::runtime_error("mkdtemp failed for " + pattern);
        root_ = buf.data();
        bindir_ = root_;
        while (bindir_.size() < bindirLength) {
            std::size_t room = bindirLength - bindir_.size() - 1;  // one for '/'
            if (room == 0) {
                bindir_ += "b";  // cannot add a component of length 0
                break;
            }
            bindir_ += "/" + std::string(room > 200 ? 200 : room, 'b');
        }
        fs::create_directories(codesetDir());
        if (only.empty()) {
            for (const auto& e : fs::directory_iterator(shareDir()))
                fs::copy_file(e.path(), codesetDir() + "/" + e.path().filename().string());
        } else {
            for (const auto& name : only)
                fs::copy_file(shareDir() + "/" + name, path(name));
        }
        bindirEnv_.emplace("BINDIR", bindir_.c_str());
    }

    ~CodesetTree() {
        bindirEnv_.reset();
        std::error_code ec;
        std::filesystem::remove_all(root_, ec);
    }

    CodesetTree(const CodesetTree&) = delete;
    CodesetTree& operator=(const CodesetTree&) = delete;

    // Where the build put the compiled tables.
    static std::string shareDir() { return std::string(QARQ_SHARE_DIR) + "/codeset"; }

    // The bytes of a compiled table (or any file of the share directory).
    static std::string readShared(const std::string& name) {
        return readFile(shareDir() + "/" + name);
    }

    const std::string& bindir() const { return bindir_; }
    std::string codesetDir() const { return bindir_ + "/GRV/server/codeset"; }
    std::string path(const std::string& name) const { return codesetDir() + "/" + name; }

    void write(const std::string& name, const std::string& bytes) const {
        std::ofstream f(path(name), std::ios::binary | std::ios::trunc);
        f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (!f.flush())
            throw std::runtime_error("cannot write " + path(name));
    }
    std::string read(const std::string& name) const { return readFile(path(name)); }
    void remove(const std::string& name) const { std::filesystem::remove(path(name)); }

  private:
    static std::string readFile(const std::string& p) {
        std::ifstream f(p, std::ios::binary);
        if (!f)
            throw std::runtime_error("cannot read " + p);
        return std::string(std::istreambuf_iterator<char>(f), std::istreambuf_iterator<char>());
    }

    std::string root_;
    std::string bindir_;
    std::optional<ScopedEnv> bindirEnv_;
};

}  // namespace qarq::test
