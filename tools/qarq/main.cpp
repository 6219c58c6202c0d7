// qarq: the command-line tool of the qarq library.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "Cli.hpp"
#include "CodesetsCommand.hpp"
#include "ConvertCommand.hpp"
#include "DecodeCommand.hpp"
#include "EncodeCommand.hpp"
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
    std::printf("conversion:\n");
    std::printf("  vector level %s (QARQ_SIMD caps it: scalar, sse42, avx2, avx512)\n",
                VornNlsSimdLevel());
}

void usage(FILE* out) {
    std::fprintf(out,
                 "usage: qarq [--help] [--version] SUBCOMMAND [ARGS]\n"
                 "\n"
                 "  convert -f FROM -t TO [-o OUT] [FILE...]  convert text between code pages\n"
                 "  codesets                                  list the code-set tables found\n"
                 "  decode [--hex] [FILE]                     list the values of a stream block\n"
                 "  encode [FILE]                             write a listing back as bytes\n"
                 "\n"
                 "  --version   print the version and the diagnostics configuration\n"
                 "  --help      print this text\n"
                 "\n"
                 "'qarq SUBCOMMAND --help' tells more. Exit status: 0 success, 1 failure,\n"
                 "2 usage error.\n");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        usage(stderr);
        return qarqtool::kExitUsage;
    }
    const std::string command = argv[1];
    if (command == "--version") {
        std::printf("qarq %s (library %s)\n", QARQ_VERSION_STRING, qarqVersion());
        printDiagnostics();
        return qarqtool::kExitOk;
    }
    if (command == "--help" || command == "-h" || command == "help") {
        usage(stdout);
        return qarqtool::kExitOk;
    }
    if (command == "convert")
        return qarqtool::runConvert(argc, argv, 2);
    if (command == "codesets")
        return qarqtool::runCodesets(argc, argv, 2);
    if (command == "decode")
        return qarqtool::runDecode(argc, argv, 2);
    if (command == "encode")
        return qarqtool::runEncode(argc, argv, 2);
    std::fprintf(stderr, "qarq: unknown subcommand '%s'\nTry 'qarq --help'.\n", argv[1]);
    return qarqtool::kExitUsage;
}
