#include "vorn/VornDll.hpp"

#include "qarq/ras/HeskLog.hpp"
#include "qarq/ras/HeskTrace.hpp"
#include "vorn/VornTrace.hpp"

using qarq::ras::pair;

VornMutexHandle libraryMutex = nullptr;

namespace {

constexpr uint32_t kProcessDetach = 0;
constexpr uint32_t kProcessAttach = 1;

// Before every other static initialiser of the library, so that the trace
// control is in place when they run. A loader can't be refused from here: a
// failed attach is in the log, and libraryMutex stays null, which its users
// see as EINVAL from VornMutexRequest.
__attribute__((constructor(101))) void attachLibrary() {
    VornDllMain(nullptr, kProcessAttach, nullptr);
}

__attribute__((destructor(101))) void detachLibrary() {
    VornDllMain(nullptr, kProcessDetach, nullptr);
}

}  // namespace

int VornDllMain(void*, uint32_t reason, void*) {
    switch (reason) {
        case kProcessDetach:
            HESKFLUSHTRACE();
            return 1;
        case kProcessAttach:
            return VornDllI_commonInitalizer();
        default:
            return 1;
    }
}

int VornDllI_commonInitalizer(void) {
    static const char kNoReserved[1] = {0};
    // No control record is no failure: every trace point tests the pointer.
    HESKINITTRACE("QARQ", kNoReserved, &qarq::vorn::traceControl());
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornDllI_commonInitalizer");
    const uint32_t rc = VornMutexCreate(nullptr, &libraryMutex, 0, 0);
    if (rc != 0) {
        qarq::ras::logError("VornDllI_commonInitalizer", __LINE__, 0, 0, {pair(rc)});
        return 0;
    }
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornDllI_commonInitalizer");
    return 1;
}
