#include "qarq/ras/HeskMutex.hpp"

#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <map>
#include <set>
#include <string>

#include "RecordWriter.hpp"
#include "base/posix/SharedMemory.hpp"
#include "qarq/base/RobustMutex.hpp"

namespace {

using qarq::os::RobustMutex;

// The lock word's machine-wide mutex. The '%' suffix can never come out of
// escaping a caller's name, so no named lock can collide with it.
constexpr const char* kLockWordName = "HeskLockWord";
constexpr const char* kLockWordSuffix = "%ram";

// Mappings stay cached for the life of the process, keyed by object name: a
// lock is taken for every audit record and mapping it each time would cost a
// shm_open and an mmap. Callers inventing endless names get the ones beyond
// the cache as private mappings, released when freed.
constexpr size_t kMaxCached = 64;

// Plain pthread lock and a never-destroyed map: both stay usable from code
// that runs at process exit, after static destructors.
pthread_mutex_t gCacheLock = PTHREAD_MUTEX_INITIALIZER;
std::map<std::string, RobustMutex*>& cache() {
    static auto* map = new std::map<std::string, RobustMutex*>;
    return *map;
}

// Mappings beyond the cache, owned by their handle until freed.
std::set<RobustMutex*>& privateMutexes() {
    static auto* set = new std::set<RobustMutex*>;
    return *set;
}

struct CacheGuard {
    CacheGuard() { pthread_mutex_lock(&gCacheLock); }
    ~CacheGuard() { pthread_mutex_unlock(&gCacheLock); }
};

// The mutex for `name`, mapped once per process. Null with *error set when it
// cannot be set up.
RobustMutex* namedMutex(const char* name, const char* suffix, int* error) {
    std::string objectName;
    *error = qarq::os::sharedObjectName(name, suffix, &objectName);
    if (*error != 0) return nullptr;
    CacheGuard guard;
    auto found = cache().find(objectName);
    if (found != cache().end()) return found->second;
    int status = 0;
    std::unique_ptr<RobustMutex> mutex = RobustMutex::createNamed(name, suffix, &status);
    if (mutex == nullptr) {
        *error = status;
        return nullptr;
    }
    if (cache().size() < kMaxCached)
        cache().emplace(objectName, mutex.get());
    else
        privateMutexes().insert(mutex.get());
    return mutex.release();
}

enum class Known { No, Cached, Private };

Known known(RobustMutex* mutex) {
    CacheGuard guard;
    if (privateMutexes().count(mutex) != 0) return Known::Private;
    for (const auto& entry : cache())
        if (entry.second == mutex) return Known::Cached;
    return Known::No;
}

// Gives back a mutex that namedMutex() returned and that is not held.
void release(RobustMutex* mutex) {
    {
        CacheGuard guard;
        if (privateMutexes().erase(mutex) == 0) return;
    }
    delete mutex;
}

// Takes `mutex` for good, whatever it takes: a dead holder's lock is ours
// after recovery (and worth a note, since what it guarded may be half-written).
int takeForever(RobustMutex* mutex, const char* who) {
    int rc = mutex->lock(qarq::os::kWaitForever);
    if (rc == qarq::os::kWaitAbandoned) {
        char text[256];
        std::snprintf(text, sizeof text,
                      "lock %.160s was held by a thread that ended without freeing it; "
                      "now held by this thread",
                      mutex->objectName().c_str());
        qarq::ras::detail::note(who, text);
        return 0;
    }
    if (rc == qarq::os::kWaitSignalled) return 0;
    return errno != 0 ? errno : EIO;
}

// The lock-word mutex the calling thread holds through HESKMUTEXGETRAM.
thread_local RobustMutex* tRamHeld = nullptr;

}  // namespace

extern "C" {

int HESKMUTEXGETRAM(volatile int32_t* lockWord) {
    if (lockWord == nullptr) return 0;
    int error = 0;
    RobustMutex* mutex = namedMutex(kLockWordName, kLockWordSuffix, &error);
    if (mutex == nullptr) return 0;
    // Only one lock word can be held per thread at a time; a second GETRAM on
    // the same thread would deadlock, so it reports "not held" instead and the
    // caller falls back to the named lock.
    if (tRamHeld != nullptr || takeForever(mutex, "HESKMUTEXGETRAM") != 0) {
        release(mutex);
        return 0;
    }
    tRamHeld = mutex;
    // The word shows who holds the lock (the thread id), for whoever looks at
    // it in a debugger or a core file; the lock itself is the shared mutex.
    __atomic_store_n(lockWord, static_cast<int32_t>(::gettid()), __ATOMIC_RELEASE);
    return 1;
}

void HESKMUTEXFREERAM(volatile int32_t* lockWord) {
    RobustMutex* mutex = tRamHeld;
    if (mutex == nullptr) return;  // not taken by this thread: nothing to free
    tRamHeld = nullptr;
    if (lockWord != nullptr) __atomic_store_n(lockWord, 0, __ATOMIC_RELEASE);
    mutex->unlock();
    release(mutex);
}

int HeskMutexNamedGet(const char* name, void** handle) {
    if (handle == nullptr) return EINVAL;
    *handle = nullptr;
    int error = 0;
    RobustMutex* mutex = namedMutex(name, nullptr, &error);
    if (mutex == nullptr) return error;
    error = takeForever(mutex, "HeskMutexNamedGet");
    if (error != 0) {
        release(mutex);
        return error;
    }
    *handle = mutex;
    return 0;
}

void HESKMUTEXNAMEDFREEOS(void** handle) {
    if (handle == nullptr || *handle == nullptr) return;
    auto* mutex = static_cast<RobustMutex*>(*handle);
    *handle = nullptr;
    // A handle that no HeskMutexNamedGet gave out is ignored, not dereferenced.
    if (known(mutex) == Known::No) return;
    mutex->unlock();
    release(mutex);
}

}  // extern "C"
