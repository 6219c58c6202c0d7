// The library's named-lock layer: three calls with the result codes the rest
// of the library tests, over the robust mutexes of the platform layer.
//
// A handle is an opaque pointer from VornMutexCreate. Codes: 0 success; 285 a
// mutex of that name existed and was opened (a valid handle all the same);
// 105 the previous holder ended while holding it, and the caller now holds
// it (what it guarded may be half-changed); 640 the time-out passed; any
// other value is the errno of the failure.
//
// Mutexes are not recursive: a second request by the holder fails with
// EDEADLK. Threads: every call may come from any thread; a holder releases
// on its own thread. Nothing throws.
#pragma once

#include <cstdint>

#include "qarq/export.hpp"

extern "C" {

typedef void* VornMutexHandle;

/// A name existed already; the handle is valid and shares that mutex.
#define VORN_MUTEX_EXISTS 285u
/// The holder ended without releasing; the caller now holds the mutex.
#define VORN_MUTEX_ABANDONED 105u
/// The time-out passed; the caller does not hold the mutex.
#define VORN_MUTEX_TIMEOUT 640u
/// A time-out that never passes.
#define VORN_MUTEX_WAIT_FOREVER 0xFFFFFFFFu

/// Makes a mutex not held by anyone: shared between processes under `name`,
/// or private to the process with a null name. Stores the handle in *handle
/// when there is one (untouched otherwise). `flags` and `state` are accepted
/// and ignored. Returns 0, 285, or an errno value.
QARQ_API uint32_t VornMutexCreate(const char* name, VornMutexHandle* handle, uint32_t flags,
                                  uint32_t state);

/// Waits for the mutex at most `timeoutMs` milliseconds (VORN_MUTEX_WAIT_FOREVER
/// for no limit). Returns 0 or 105 when the caller now holds it, 640 on
/// time-out, else an errno value (EINVAL for a null handle).
QARQ_API uint32_t VornMutexRequest(VornMutexHandle handle, uint32_t timeoutMs);

/// Frees the mutex. Returns 0, or an errno value (EPERM when the caller does
/// not hold it, EINVAL for a null handle).
QARQ_API uint32_t VornMutexRelease(VornMutexHandle handle);

/// Disposes of a handle (a named mutex itself stays for other holders). The
/// library keeps its own mutex for the life of the process; this is for
/// callers that make mutexes of their own. Must not be held or waited for.
QARQ_API void VornMutexClose(VornMutexHandle handle);

}  // extern "C"
