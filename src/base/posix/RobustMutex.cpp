#include "qarq/base/RobustMutex.hpp"

#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "base/posix/SharedMemory.hpp"
#include "qarq/base/Os.hpp"

// ThreadSanitizer follows a mutex through lock and trylock, but it does not
// see that pthread_mutex_timedlock returning EOWNERDEAD leaves the caller
// holding the mutex, and would report the later unlock as wrong. Under it,
// timed waits poll with trylock instead.
#if defined(__SANITIZE_THREAD__)
#define QARQ_POLL_TIMED_LOCK 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define QARQ_POLL_TIMED_LOCK 1
#endif
#endif

namespace qarq::os {
namespace {

// Type tag of a named mutex in its shared header ("QMTX").
constexpr uint32_t kMutexType = 0x514d5458u;

int initMutex(pthread_mutex_t* mutex, bool shared) {
    pthread_mutexattr_t attr;
    int rc = pthread_mutexattr_init(&attr);
    if (rc != 0) return rc;
    rc = pthread_mutexattr_setrobust(&attr, PTHREAD_MUTEX_ROBUST);
    // Error-checking: a second lock by the holder reports EDEADLK instead of
    // hanging, and an unlock by a non-holder reports EPERM.
    if (rc == 0) rc = pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_ERRORCHECK);
    if (rc == 0 && shared) rc = pthread_mutexattr_setpshared(&attr, PTHREAD_PROCESS_SHARED);
    if (rc == 0) rc = pthread_mutex_init(mutex, &attr);
    pthread_mutexattr_destroy(&attr);
    return rc;
}

int initShared(void* body, void*) {
    return initMutex(static_cast<pthread_mutex_t*>(body), true);
}

}  // namespace

RobustMutex::RobustMutex() : mutex_(&local_) { initError_ = initMutex(&local_, false); }

RobustMutex::RobustMutex(pthread_mutex_t* shared, void* mapping, size_t length,
                         std::string objectName)
    : local_(), mutex_(shared), mapping_(mapping), mappingLength_(length),
      objectName_(std::move(objectName)) {}

RobustMutex::~RobustMutex() {
    if (mapping_ != nullptr) {
        SharedMapping mapping;
        mapping.base = mapping_;
        mapping.length = mappingLength_;
        detachShared(&mapping);
    } else if (initError_ == 0) {
        pthread_mutex_destroy(&local_);
    }
}

std::unique_ptr<RobustMutex> RobustMutex::attach(const char* name, const char* suffix,
                                                 bool create, int* status) {
    int ignored = 0;
    if (status == nullptr) status = &ignored;
    std::string objectName;
    int rc = sharedObjectName(name, suffix, &objectName);
    if (rc != 0) {
        *status = rc;
        return nullptr;
    }
    SharedMapping mapping;
    rc = attachShared(objectName, kMutexType, sizeof(pthread_mutex_t),
                      create ? SharedOpen::CreateOrOpen : SharedOpen::OpenExisting, initShared,
                      nullptr, &mapping);
    if (rc != 0 && rc != kAlreadyExists) {
        *status = rc;
        return nullptr;
    }
    *status = rc;
    return std::unique_ptr<RobustMutex>(new RobustMutex(
        static_cast<pthread_mutex_t*>(mapping.body()), mapping.base, mapping.length,
        std::move(objectName)));
}

std::unique_ptr<RobustMutex> RobustMutex::createNamed(const char* name, const char* suffix,
                                                      int* status) {
    return attach(name, suffix, true, status);
}

std::unique_ptr<RobustMutex> RobustMutex::openNamed(const char* name, const char* suffix,
                                                    int* status) {
    return attach(name, suffix, false, status);
}

bool RobustMutex::exists(const char* name, const char* suffix) {
    std::string objectName;
    return sharedObjectName(name, suffix, &objectName) == 0 && sharedExists(objectName);
}

int RobustMutex::removeNamed(const char* name, const char* suffix) {
    std::string objectName;
    int rc = sharedObjectName(name, suffix, &objectName);
    return rc != 0 ? rc : removeShared(objectName);
}

int RobustMutex::lock(int32_t timeoutMs) {
    if (initError_ != 0) {
        errno = initError_;
        return kWaitFailed;
    }
    int rc;
    if (timeoutMs == kWaitForever) {
        rc = pthread_mutex_lock(mutex_);
    } else if (timeoutMs == 0) {
        rc = pthread_mutex_trylock(mutex_);
        if (rc == EBUSY) rc = ETIMEDOUT;
    } else if (timeoutMs < 0) {
        rc = EINVAL;
    } else {
#ifdef QARQ_POLL_TIMED_LOCK
        rc = pthread_mutex_trylock(mutex_);
        for (int32_t waited = 0; rc == EBUSY && waited < timeoutMs; ++waited) {
            struct timespec step = {0, 1000000};
            ::nanosleep(&step, nullptr);
            rc = pthread_mutex_trylock(mutex_);
        }
        if (rc == EBUSY) rc = ETIMEDOUT;
#else
        // timedlock takes an absolute CLOCK_REALTIME deadline.
        struct timespec deadline = {};
        if (calls().clock_gettime(CLOCK_REALTIME, &deadline) != 0) {
            rc = errno;
        } else {
            deadline.tv_sec += timeoutMs / 1000;
            deadline.tv_nsec += static_cast<long>(timeoutMs % 1000) * 1000000L;
            if (deadline.tv_nsec >= 1000000000L) {
                deadline.tv_sec += 1;
                deadline.tv_nsec -= 1000000000L;
            }
            rc = pthread_mutex_timedlock(mutex_, &deadline);
        }
#endif
    }
    switch (rc) {
        case 0:
            owner_.store(::gettid(), std::memory_order_relaxed);
            return kWaitSignalled;
        case EOWNERDEAD:
            // The holder died inside its critical section. Mark the mutex usable
            // again; without this the next unlock would retire it for good.
            rc = pthread_mutex_consistent(mutex_);
            if (rc == 0) {
                owner_.store(::gettid(), std::memory_order_relaxed);
                return kWaitAbandoned;
            }
            pthread_mutex_unlock(mutex_);
            errno = rc;
            return kWaitFailed;
        case ETIMEDOUT:
            return kWaitTimeout;
        default:
            errno = rc;
            return kWaitFailed;
    }
}

int RobustMutex::unlock() {
    if (initError_ != 0) return initError_;
    // Checked here rather than left to the error-checking mutex, so a wrong
    // unlock never reaches the OS at all.
    if (owner_.load(std::memory_order_relaxed) != ::gettid()) return EPERM;
    owner_.store(0, std::memory_order_relaxed);
    return pthread_mutex_unlock(mutex_);
}

}  // namespace qarq::os
