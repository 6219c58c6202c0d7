// The audit lock word and named locks of the diagnostics library.
//
// Both are process-shared robust mutexes in POSIX shared memory, so any
// thread of any process may take them, and a holder that dies (even by
// SIGKILL) never blocks the others: the next taker finds the lock abandoned,
// makes it consistent and holds it.
//
// Threads and processes: all functions are safe from any thread of any
// process. The locks are not recursive: a thread that takes one twice waits
// for ever.
#pragma once

#include <cstdint>

#include "qarq/export.hpp"

extern "C" {

/// Takes the machine-wide lock that `lockWord` stands for (the library keeps
/// one such word for the audit log). Returns non-zero when the caller now holds
/// it, zero when the lock could not be set up; the caller then falls back to
/// the named lock.
QARQ_API int HESKMUTEXGETRAM(volatile int32_t* lockWord);

/// Frees what HESKMUTEXGETRAM took on the same word.
QARQ_API void HESKMUTEXFREERAM(volatile int32_t* lockWord);

/// Takes the named lock `name` ("Audit"), waiting until it is held, and stores
/// a handle for HESKMUTEXNAMEDFREEOS in *handle. Returns 0 when held, else an
/// errno value with *handle null.
QARQ_API int HeskMutexNamedGet(const char* name, void** handle);

/// Frees the named lock behind *handle and clears the handle.
QARQ_API void HESKMUTEXNAMEDFREEOS(void** handle);

}  // extern "C"
