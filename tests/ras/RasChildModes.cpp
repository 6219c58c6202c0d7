// Helper-process modes of the diagnostics tests.
//
// The test program runs itself as "--qarz-child MODE ARGS... READYFD"; a
// constructor catches that before the test framework starts, runs the mode
// and leaves with _exit, so the child never touches the tests' state. READYFD
// is a pipe (or -1) on which the child writes one byte once it is ready.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "qarq/ras/qarzras.hpp"

namespace {

int gReadyFd = -1;

void ready() {
    if (gReadyFd >= 0) {
        char byte = 1;
        (void)!::write(gReadyFd, &byte, 1);
        ::close(gReadyFd);
        gReadyFd = -1;
    }
}

[[noreturn]] void holdForever() {
    for (;;) ::pause();
}

// Increments the decimal counter in `path` `rounds` times, each under `take`.
// The read, a pause and the write are far apart, so without the lock updates
// get lost.
template <typename Take, typename Free>
int countUnder(const char* path, int rounds, Take take, Free release) {
    for (int i = 0; i < rounds; ++i) {
        if (!take()) return 2;
        int fd = ::open(path, O_RDWR);
        if (fd < 0) return 3;
        char buffer[32] = {};
        ssize_t n = ::pread(fd, buffer, sizeof buffer - 1, 0);
        long value = n > 0 ? std::strtol(buffer, nullptr, 10) : 0;
        ::sched_yield();
        int length = std::snprintf(buffer, sizeof buffer, "%ld\n", value + 1);
        bool ok = ::pwrite(fd, buffer, static_cast<size_t>(length), 0) == length;
        ::close(fd);
        release();
        if (!ok) return 4;
        if (i == 0) ready();
    }
    return 0;
}

volatile int32_t gWord = 0;
bool gLateRecord = false;

__attribute__((destructor)) void lateRecord() {
    if (!gLateRecord) return;
    HESKTRACE("child::detach", 9, HESK_TRACE_EXIT, 3, 1, "late", 4u);
    HESKFLUSHTRACE();
}

int runMode(const std::vector<std::string>& a) {
    const std::string& mode = a[0];
    if (mode == "records" && a.size() >= 5) {
        // records TAG COUNT GO-READ GO-WRITE: two threads write COUNT long error
        // records each, all processes starting together when the go pipe
        // closes (every process must drop its copy of the write end).
        int count = std::atoi(a[2].c_str());
        ::close(std::atoi(a[4].c_str()));
        ready();
        char byte;
        while (::read(std::atoi(a[3].c_str()), &byte, 1) > 0) {
        }
        auto writer = [&](int thread) {
            std::string filler(250, static_cast<char>('a' + thread));
            for (int i = 0; i < count; ++i) {
                std::string id = "t=" + std::to_string(thread) + " s=" + std::to_string(i);
                HESKLOGERROR("child::write", 5, 6, 77, 3, 5, a[1].c_str(),
                             static_cast<unsigned>(a[1].size()), id.c_str(),
                             static_cast<unsigned>(id.size()), filler.c_str(), 250u,
                             filler.c_str(), 250u, filler.c_str(), 250u);
            }
        };
        std::thread second(writer, 1);
        writer(0);
        second.join();
        return 0;
    }
    if (mode == "ram-counter" && a.size() >= 3) {
        return countUnder(
            a[1].c_str(), std::atoi(a[2].c_str()), [] { return HESKMUTEXGETRAM(&gWord) != 0; },
            [] { HESKMUTEXFREERAM(&gWord); });
    }
    if (mode == "named-counter" && a.size() >= 4) {
        void* handle = nullptr;
        const char* name = a[1].c_str();
        return countUnder(
            a[2].c_str(), std::atoi(a[3].c_str()),
            [&] { return HeskMutexNamedGet(name, &handle) == 0 && handle != nullptr; },
            [&] { HESKMUTEXNAMEDFREEOS(&handle); });
    }
    if (mode == "ram-hold") {
        if (HESKMUTEXGETRAM(&gWord) == 0) return 2;
        ready();
        holdForever();
    }
    if (mode == "named-hold" && a.size() >= 2) {
        void* handle = nullptr;
        if (HeskMutexNamedGet(a[1].c_str(), &handle) != 0) return 2;
        ready();
        holdForever();
    }
    if (mode == "ram-take") {
        // Exits 0 only when the lock word was taken (and freed again).
        if (HESKMUTEXGETRAM(&gWord) == 0) return 2;
        HESKMUTEXFREERAM(&gWord);
        return gWord == 0 ? 0 : 3;
    }
    if (mode == "named-take" && a.size() >= 2) {
        void* handle = nullptr;
        if (HeskMutexNamedGet(a[1].c_str(), &handle) != 0 || handle == nullptr) return 2;
        HESKMUTEXNAMEDFREEOS(&handle);
        return handle == nullptr ? 0 : 3;
    }
    if (mode == "record-at-exit") {
        // lateRecord() writes after every static object is gone, as the
        // library's detach does.
        gLateRecord = true;
        std::exit(0);
    }
    return 100;
}

__attribute__((constructor)) void qarzChildMain() {
    FILE* f = std::fopen("/proc/self/cmdline", "rb");
    if (f == nullptr) return;
    std::vector<std::string> args;
    std::string current;
    for (int c; (c = std::fgetc(f)) != EOF;) {
        if (c == '\0') {
            args.push_back(current);
            current.clear();
        } else {
            current.push_back(static_cast<char>(c));
        }
    }
    std::fclose(f);
    if (args.size() < 4 || args[1] != "--qarz-child") return;
    gReadyFd = std::atoi(args.back().c_str());
    std::vector<std::string> modeArgs(args.begin() + 2, args.end() - 1);
    int rc = runMode(modeArgs);
    ::_exit(rc);
}

}  // namespace
