// Runs the built qarq tool in a scratch directory and gives back its exit
// status, standard output and standard error.
#pragma once

#include <stdlib.h>
#include <sys/wait.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "support/TestSupport.hpp"

namespace qarq::tooltest {

using support::readFile;
using support::shellQuoted;
using support::writeFile;

struct Result {
    int status = -1;
    std::string out;
    std::string err;
};

/// A scratch directory per test and a way to run the tool and other commands in it.
class ToolTest : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_FALSE(scratch_.path().empty()); }

    std::string file(const std::string& name) const { return (dir_ / name).string(); }

    static std::string tool() { return QARQ_BUILD_DIR "/bin/qarq"; }
    static std::string tables() { return QARQ_SHARE_DIR "/codeset"; }

    /// Runs `qarq ARGS` (ARGS already quoted for the shell), with `input` on
    /// standard input. BINDIR is cleared so that the tables beside the tool count.
    Result qarq(const std::string& args, const std::string& input = "") const {
        writeFile(dir_ / "stdin", input);
        return shell("env -u BINDIR " + shellQuoted(tool()) + " " + args);
    }

    Result shell(const std::string& command) const {
        std::string line = "cd " + shellQuoted(dir_.string()) + " && " + command + " < " +
                           shellQuoted(file("stdin")) + " > " + shellQuoted(file("stdout")) + " 2> " +
                           shellQuoted(file("stderr"));
        if (!std::filesystem::exists(dir_ / "stdin"))
            writeFile(dir_ / "stdin", "");
        Result r;
        int raw = std::system(line.c_str());
        r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
        r.out = readFile(dir_ / "stdout");
        r.err = readFile(dir_ / "stderr");
        return r;
    }

    support::TempDir scratch_{"qarq-tooltest"};
    std::filesystem::path dir_ = scratch_.path();
};

}  // namespace qarq::tooltest
