#include "qarq/ras/HeskMutex.hpp"

#include <cerrno>

// Placeholder until the robust shared-memory lock lands: reports "not held"
// so callers take their fallback path.
extern "C" {
int HESKMUTEXGETRAM(volatile int32_t*) { return 0; }
void HESKMUTEXFREERAM(volatile int32_t*) {}
int HeskMutexNamedGet(const char*, void** handle) {
    if (handle != nullptr) *handle = nullptr;
    return ENOSYS;
}
void HESKMUTEXNAMEDFREEOS(void** handle) {
    if (handle != nullptr) *handle = nullptr;
}
}
