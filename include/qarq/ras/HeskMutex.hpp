// The audit lock word and named locks of the diagnostics library.
//
// Both are process-shared robust mutexes in POSIX shared memory, so any
// thread of any process may take them, and a holder that dies (even by
// SIGKILL) never blocks the others: the next taker finds the lock abandoned,
// makes it consistent and holds it.
//
// Every lock word stands for the same machine-wide mutex (the library keeps
// one word, for the audit log). While held, the word holds the holder's
// thread id, for debugging only. Mappings are made once per process and kept.
//
// Threads and processes: all functions are safe from any thread of any
// process; a lock is freed on the thread that took it. The locks are not
// recursive: taking one again on the thread that holds it fails at once
// (GETRAM returns 0, the named get EDEADLK) rather than waiting for ever.
#pragma once

#include <cstdint>

#include "qarq/export.hpp"

extern "C" {

/// Takes the machine-wide lock that `lockWord` stands for (the library keeps
/// one such word for the audit log). Returns non-zero when the caller now holds
/// it, zero when the lock could not be set up; the caller then falls back to
/// the named lock.
QARQ_API int HESKMUTEXGETRAM(volatile int32_t* lockWord);

/// Frees what HESKMUTEXGETRAM took on the same word; does nothing when the
/// calling thread holds nothing through it.
QARQ_API void HESKMUTEXFREERAM(volatile int32_t* lockWord);

/// Takes the named lock `name` ("Audit"), waiting until it is held, and stores
/// a handle for HESKMUTEXNAMEDFREEOS in *handle. Returns 0 when held, else an
/// errno value with *handle null (EINVAL: null or over-long name or handle;
/// else the shared-memory failure).
QARQ_API int HeskMutexNamedGet(const char* name, void** handle);

/// Frees the named lock behind *handle and clears the handle. A handle that
/// HeskMutexNamedGet did not give out is ignored.
QARQ_API void HESKMUTEXNAMEDFREEOS(void** handle);

}  // extern "C"
