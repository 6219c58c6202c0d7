// Helpers of the diagnostics tests: an environment that reopens the log,
// private shared-memory names, and helper processes.
//
// Helper processes exec this test program again (/proc/self/exe) with
// "--qarz-child MODE ARGS...": a fresh process with no inherited threads or
// locks, which keeps fork legal under ThreadSanitizer. The modes live in
// RasChildModes.cpp.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "qarq/ras/qarzras.hpp"
#include "support/TestSupport.hpp"

namespace rastest {

using qarq::support::readFile;
using qarq::support::readLines;
using qarq::support::TempDir;
using qarq::support::writeFile;
using Capture = qarq::support::Records;
using Captured = qarq::support::Record;

/// An environment variable set for the object's life, with the log reopened
/// on both ends, since the log path comes from the environment.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const char* value) : env_(std::in_place, name, value) { HeskLogReopen(); }
    ~ScopedEnv() {
        env_.reset();
        HeskLogReopen();
    }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    std::optional<qarq::support::ScopedEnv> env_;
};

/// A private shared-memory namespace for one test: QARZ_SHM_PREFIX is set to
/// a name of its own, and every object made under it is removed at the end.
class ShmNamespace {
public:
    ShmNamespace() {
        static std::atomic<int> counter{0};
        prefix_ = "qarqtest-" + std::to_string(::getpid()) + "-" + std::to_string(++counter) + ".";
        env_.emplace("QARZ_SHM_PREFIX", prefix_.c_str());
    }
    ~ShmNamespace() {
        std::error_code ignored;
        for (const auto& entry : std::filesystem::directory_iterator("/dev/shm", ignored)) {
            std::string name = entry.path().filename().string();
            if (name.compare(0, prefix_.size(), prefix_) == 0) ::shm_unlink(("/" + name).c_str());
        }
    }
    const std::string& prefix() const { return prefix_; }

private:
    std::string prefix_;
    std::optional<ScopedEnv> env_;
};

/// A helper process running this program in child mode `args[0]`.
class Child {
public:
    /// Starts the helper. When `ready` is true it gets a pipe and reports
    /// through it (waitReady) once it has done its first step.
    explicit Child(const std::vector<std::string>& args, bool ready = false) {
        int fds[2] = {-1, -1};
        if (ready && ::pipe(fds) != 0) return;
        std::vector<std::string> argv = {"/proc/self/exe", "--qarz-child"};
        argv.insert(argv.end(), args.begin(), args.end());
        argv.push_back(std::to_string(ready ? fds[1] : -1));
        std::vector<char*> raw;
        for (auto& a : argv) raw.push_back(a.data());
        raw.push_back(nullptr);
        pid_t pid = ::fork();
        if (pid == 0) {
            if (ready) ::close(fds[0]);
            ::execv("/proc/self/exe", raw.data());
            ::_exit(127);
        }
        pid_ = pid;
        if (ready) {
            ::close(fds[1]);
            readyFd_ = fds[0];
        }
    }
    ~Child() {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
        if (readyFd_ >= 0) ::close(readyFd_);
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;

    pid_t pid() const { return pid_; }

    /// True once the helper reported ready, within `timeoutMs`.
    bool waitReady(int timeoutMs = 10000) {
        struct pollfd p = {readyFd_, POLLIN, 0};
        char byte = 0;
        return ::poll(&p, 1, timeoutMs) == 1 && ::read(readyFd_, &byte, 1) == 1;
    }

    /// The exit status (0..255), 1000 + signal when killed by one, or -1 when
    /// it is still running after `timeoutMs` (it is then killed).
    int wait(int timeoutMs = 30000) {
        for (int waited = 0; pid_ > 0; waited += 5) {
            int status = 0;
            pid_t r = ::waitpid(pid_, &status, WNOHANG);
            if (r == pid_) {
                pid_ = -1;
                return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
            }
            if (r < 0 || waited >= timeoutMs) break;
            ::usleep(5000);
        }
        return -1;
    }

    /// Kills the helper with SIGKILL and reaps it.
    void killHard() {
        if (pid_ <= 0) return;
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }

private:
    pid_t pid_ = -1;
    int readyFd_ = -1;
};

}  // namespace rastest
