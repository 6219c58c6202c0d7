// The one OS mutex under every lock of the libraries.
//
// A RobustMutex is a pthread mutex of the robust, error-checking kind:
// - unnamed: lives inside the object, for the threads of one process;
// - named: process-shared, in a POSIX shared-memory object named "/qarq." +
//   the name with every byte outside [A-Za-z0-9._-] written as %HH, + an
//   optional suffix (".mtx", ...). QARZ_SHM_PREFIX replaces "qarq." (tests
//   give each run its own). The object is created with mode 0660 whatever the
//   umask, initialised exactly once even when processes race to create it,
//   and kept until removeNamed() or reboot.
//
// Results are the Win32 codes the callers test: lock() gives kWaitSignalled,
// kWaitAbandoned (the previous holder died holding it: the mutex is made
// consistent again and the caller now holds it, but the data it guards may be
// half-changed), kWaitTimeout, or kWaitFailed with errno set (EDEADLK: the
// calling thread holds it already; EINVAL: a timeout below -1).
//
// Not recursive: owner counting belongs to the resource classes above.
// Ownership: the object owns its mapping (named) or its mutex (unnamed);
// destroying a named one unmaps it and leaves the shared object in place.
// Destroy an unnamed one only when no thread holds or waits for it.
// Threads: lock/unlock from any thread; a holder unlocks on its own thread and
// through the object it locked with.
#pragma once

#include <pthread.h>

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "qarq/export.hpp"

namespace qarq::os {

constexpr int kWaitSignalled = 0;     ///< WAIT_OBJECT_0: now held
constexpr int kWaitAbandoned = 128;   ///< WAIT_ABANDONED: now held, previous holder died
constexpr int kWaitTimeout = 258;     ///< WAIT_TIMEOUT: not held
constexpr int kWaitFailed = -1;       ///< WAIT_FAILED: not held, errno tells why
constexpr int kAlreadyExists = 183;   ///< ERROR_ALREADY_EXISTS: a create opened an existing one
constexpr int32_t kWaitForever = -1;  ///< timeout that never expires

class QARQ_API RobustMutex {
public:
    /// An unnamed mutex. Should the OS refuse to make it, every lock() fails
    /// with kWaitFailed and the OS error.
    RobustMutex();
    ~RobustMutex();
    RobustMutex(const RobustMutex&) = delete;
    RobustMutex& operator=(const RobustMutex&) = delete;

    /// Creates the named mutex `name` + `suffix` (suffix may be null), or opens
    /// it when it exists. On success *status is 0 (created) or kAlreadyExists;
    /// on failure the result is null and *status an errno value (EINVAL: null,
    /// empty or over-long name; EEXIST: the name holds another kind of object;
    /// else what shm_open, ftruncate or mmap said).
    static std::unique_ptr<RobustMutex> createNamed(const char* name, const char* suffix,
                                                    int* status);

    /// Opens the existing named mutex; null with *status ENOENT when there is none.
    static std::unique_ptr<RobustMutex> openNamed(const char* name, const char* suffix,
                                                  int* status);

    /// True when the named mutex can be opened without creating it.
    static bool exists(const char* name, const char* suffix = nullptr);

    /// Removes the name: present holders keep their mutex, the next create makes
    /// a new one. For tests and administrative clean-up, never while in use.
    /// Returns 0 or an errno value.
    static int removeNamed(const char* name, const char* suffix = nullptr);

    /// Waits at most `timeoutMs` milliseconds (kWaitForever: no limit, 0: just
    /// try). Returns kWaitSignalled, kWaitAbandoned, kWaitTimeout or kWaitFailed.
    int lock(int32_t timeoutMs);

    /// Frees the mutex. Returns 0, or EPERM when the calling thread does not
    /// hold it through this object.
    int unlock();

    bool isNamed() const { return mapping_ != nullptr; }

    /// The shared-memory object name ("" for an unnamed mutex).
    const std::string& objectName() const { return objectName_; }

private:
    RobustMutex(pthread_mutex_t* shared, void* mapping, size_t length, std::string objectName);
    static std::unique_ptr<RobustMutex> attach(const char* name, const char* suffix, bool create,
                                               int* status);

    pthread_mutex_t local_;
    pthread_mutex_t* mutex_;
    void* mapping_ = nullptr;
    size_t mappingLength_ = 0;
    int initError_ = 0;
    std::atomic<pid_t> owner_{0};  // thread id of the holder through this object
    std::string objectName_;
};

}  // namespace qarq::os
