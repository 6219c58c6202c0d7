// Helpers of the diagnostics tests: environment and temporary directories
// that restore themselves, private shared-memory names, record capture, and
// helper processes.
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
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "qarq/ras/qarzras.hpp"

namespace rastest {

/// Sets (or, with nullptr, unsets) one variable and restores it afterwards.
/// The log is reopened on both ends, since the log path comes from the
/// environment.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const char* value) : name_(name) {
        if (const char* old = std::getenv(name)) saved_ = old;
        if (value != nullptr)
            ::setenv(name, value, 1);
        else
            ::unsetenv(name);
        HeskLogReopen();
    }
    ~ScopedEnv() {
        if (saved_)
            ::setenv(name_.c_str(), saved_->c_str(), 1);
        else
            ::unsetenv(name_.c_str());
        HeskLogReopen();
    }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    std::string name_;
    std::optional<std::string> saved_;
};

/// A temporary directory, removed with everything in it.
class TempDir {
public:
    TempDir() {
        const char* base = std::getenv("TMPDIR");
        std::string pattern = std::string(base != nullptr && *base ? base : "/tmp") +
                              "/qarq-ras-XXXXXX";
        std::vector<char> buffer(pattern.begin(), pattern.end());
        buffer.push_back('\0');
        if (::mkdtemp(buffer.data()) != nullptr) path_ = buffer.data();
    }
    ~TempDir() {
        std::error_code ignored;
        if (!path_.empty()) std::filesystem::remove_all(path_, ignored);
    }
    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
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

/// A copy of one record as a sink saw it.
struct Captured {
    int kind, line, traceKind, level, code1, code2, messageNumber;
    std::string function, module, text, logLine;
    std::vector<std::string> pairs;  // raw bytes, the first 256 at most
    std::vector<std::string> inserts;
};

/// Collects every record of this process while it lives.
class Capture {
public:
    Capture() { HeskSinkAdd(&Capture::sink, this); }
    ~Capture() { HeskSinkRemove(&Capture::sink, this); }
    std::vector<Captured> records() {
        std::lock_guard<std::mutex> lock(mutex_);
        return records_;
    }
    std::vector<Captured> ofKind(int kind) {
        std::vector<Captured> out;
        for (auto& r : records())
            if (r.kind == kind) out.push_back(r);
        return out;
    }

private:
    static void sink(const HeskRecord* r, void* context) {
        Captured c{r->kind, r->line, r->traceKind, r->level, r->code1, r->code2,
                   r->messageNumber, r->function, r->module, r->text, r->logLine, {}, {}};
        for (int i = 0; i < r->pairCount; ++i) {
            const HeskPair& p = r->pairs[i];
            size_t n = p.data == nullptr ? 0 : std::min<size_t>(p.length, 256);
            c.pairs.emplace_back(static_cast<const char*>(p.data), n);
        }
        for (int i = 0; i < r->insertCount; ++i) c.inserts.emplace_back(r->inserts[i]);
        auto* self = static_cast<Capture*>(context);
        std::lock_guard<std::mutex> lock(self->mutex_);
        self->records_.push_back(std::move(c));
    }
    std::mutex mutex_;
    std::vector<Captured> records_;
};

inline std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::stringstream out;
    out << in.rdbuf();
    return out.str();
}

inline std::vector<std::string> readLines(const std::string& path) {
    std::vector<std::string> lines;
    std::istringstream in(readFile(path));
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

inline void writeFile(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

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
