// Library attach and detach, and the library's own mutex.
//
// The shared library's constructor calls VornDllMain with reason 1 (process
// attach) before any other entry of the library can run, and its destructor
// calls it with reason 0 (process detach) at unload or exit. The entry point
// stays callable for tests.
//
// Threads: attach and detach run under the loader's lock; nothing here takes
// a lock of its own. libraryMutex is written at attach and only read after.
#pragma once

#include <cstdint>

#include "qarq/export.hpp"
#include "qarq/vorn/VornMutex.hpp"

extern "C" {

/// The mutex made at attach; serialises the reading of the time of day.
QARQ_API extern VornMutexHandle libraryMutex;

/// Reason 1 (attach): VornDllI_commonInitalizer's result. Reason 0 (detach):
/// flushes the trace, 1. Any other reason: 1.
QARQ_API int VornDllMain(void* instance, uint32_t reason, void* reserved);

/// Sets the library's trace control and makes libraryMutex. Returns 1, or 0
/// (after a log) when the mutex could not be made.
QARQ_API int VornDllI_commonInitalizer(void);

}  // extern "C"
