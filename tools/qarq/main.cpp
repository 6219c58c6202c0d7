// qarq: the command-line tool of the qarq library.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "qarq/qarq.hpp"

namespace {

const char* envOr(const char* name, const char* fallback) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0' ? value : fallback;
}

void printDiagnostics() {
    TraceControl* control = nullptr;
    HESKINITTRACE("QARQ", "", &control);
    std::printf("diagnostics:\n");
    if (control == nullptr) {
        std::printf("  trace        off (QARZ_TRACE_MASK not set)\n");
    } else {
        std::printf("  trace        mask 0x%x, level %u\n", control->mask, control->level);
    }
    const char* logFile = envOr("QARZ_LOG_FILE", nullptr);
    const char* bindir = envOr("BINDIR", nullptr);
    if (logFile != nullptr) {
        std::printf("  log          %s (QARZ_LOG_FILE)\n", logFile);
    } else if (bindir != nullptr) {
        std::printf("  log          %s/GRV/server/log/qarzras.log (BINDIR)\n", bindir);
    } else {
        std::printf("  log          standard error (neither QARZ_LOG_FILE nor BINDIR set)\n");
    }
    std::printf("  log archives %s kept (QARZ_LOG_KEEP)\n", envOr("QARZ_LOG_KEEP", "10"));
    std::printf("  BINDIR       %s\n", bindir != nullptr ? bindir : "(not set)");
}

void usage(FILE* out) {
    std::fprintf(out,
                 "usage: qarq [--help] [--version]\n"
                 "\n"
                 "  --version   print the version and the diagnostics configuration\n"
                 "  --help      print this text\n");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || std::strcmp(argv[1], "--version") == 0) {
        std::printf("qarq %s (library %s)\n", QARQ_VERSION_STRING, qarqVersion());
        printDiagnostics();
        return 0;
    }
    if (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
        usage(stdout);
        return 0;
    }
    std::fprintf(stderr, "qarq: unknown argument '%s'\n", argv[1]);
    usage(stderr);
    return 2;
}
