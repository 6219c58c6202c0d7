// Named shared-memory objects: naming and race-free creation.
//
// Every named lock or semaphore of the libraries lives in a POSIX shared
// memory object whose name is "/" + prefix + escaped name + suffix. The prefix
// is "qarq." unless QARZ_SHM_PREFIX gives another one (tests use a private
// prefix so that parallel runs never share objects). The escaped name keeps
// [A-Za-z0-9._-] and writes every other byte as %HH; a suffix (".ctr", ".mtx",
// or a reserved one starting with '%') is appended as it stands, so reserved
// objects can never collide with an escaped caller name.
//
// An object starts with a small header: its state (fresh, being initialised,
// ready), the pid of the process initialising it, and its type and body size.
// Whoever maps a fresh object first initialises it; everyone else waits
// (bounded) until it is ready. A process that dies half-way through
// initialising is detected by its pid and replaced, so a crash at the worst
// moment never leaves a name unusable.
//
// Objects persist until removeShared() or reboot: removing a name that others
// still use would split one lock into two.
//
// Threads: all functions may be called from any thread. Failures are errno
// values; nothing throws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "qarq/export.hpp"

namespace qarq::os {

/// Longest caller name accepted before escaping (escaping may triple it).
constexpr size_t kMaxSharedName = 200;

/// Builds the object name of `name` + `suffix` (null suffix: none) into *out.
/// Returns 0, EINVAL for a null or empty name or a bad suffix, ENAMETOOLONG
/// when the result would not fit a file name.
QARQ_API int sharedObjectName(const char* name, const char* suffix, std::string* out);

/// Called once, by the process that initialises a fresh object, with the zeroed
/// body. Returns 0 or an errno value (the object then stays fresh).
typedef int (*SharedInitialiser)(void* body, void* context);

/// One mapping of a named object.
struct SharedMapping {
    void* base = nullptr;
    size_t length = 0;
    void* body() const;
};

enum class SharedOpen { CreateOrOpen, OpenExisting };

/// Maps the object `objectName` (from sharedObjectName), creating it when asked.
/// `type` tells the kind of object; opening an object of another type or body
/// size fails with EEXIST. Returns 0 when this call created the object, 183
/// when it already existed, else an errno value (ENOENT: OpenExisting found
/// none; ETIMEDOUT: its creator is alive but never finished).
QARQ_API int attachShared(const std::string& objectName, uint32_t type, size_t bodySize,
                          SharedOpen mode, SharedInitialiser init, void* context,
                          SharedMapping* out);

/// Unmaps; the object itself stays.
QARQ_API void detachShared(SharedMapping* mapping);

/// True when the object can be opened without creating it.
QARQ_API bool sharedExists(const std::string& objectName);

/// Removes the name (the memory lives on while mapped). Returns 0 or errno.
QARQ_API int removeShared(const std::string& objectName);

}  // namespace qarq::os
