#include "qarq/vorn/VornMutex.hpp"

#include <cerrno>
#include <climits>
#include <memory>
#include <new>

#include "qarq/base/Os.hpp"
#include "qarq/base/RobustMutex.hpp"
#include "qarq/ras/HeskLog.hpp"
#include "vorn/VornTrace.hpp"

using qarq::os::RobustMutex;
using qarq::ras::pair;

namespace {

RobustMutex* mutexOf(VornMutexHandle handle) { return static_cast<RobustMutex*>(handle); }

// Unnamed mutexes take their memory from the OS seam, so that a test can
// make the creation fail as an exhausted heap would.
RobustMutex* newUnnamed() {
    void* memory = qarq::os::calls().malloc(sizeof(RobustMutex));
    if (memory == nullptr) return nullptr;
    return new (memory) RobustMutex();
}

}  // namespace

uint32_t VornMutexCreate(const char* name, VornMutexHandle* handle, uint32_t, uint32_t) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornMutexCreate",
                     pair(name != nullptr ? name : ""));
    uint32_t rc = 0;
    RobustMutex* mutex = nullptr;
    if (name == nullptr) {
        mutex = newUnnamed();
        if (mutex == nullptr) rc = ENOMEM;
    } else {
        int status = 0;
        try {
            mutex = RobustMutex::createNamed(name, nullptr, &status).release();
        } catch (const std::bad_alloc&) {
            status = ENOMEM;
        }
        // "Exists" is success with a shared mutex; callers tell it by its own code.
        rc = status == qarq::os::kAlreadyExists ? VORN_MUTEX_EXISTS : static_cast<uint32_t>(status);
    }
    if (mutex != nullptr && handle != nullptr) {
        *handle = mutex;
    } else if (mutex != nullptr) {
        VornMutexClose(mutex);
    }
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornMutexCreate", pair(rc));
    return rc;
}

uint32_t VornMutexRequest(VornMutexHandle handle, uint32_t timeoutMs) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornMutexRequest",
                     pair(timeoutMs));
    if (handle == nullptr) return EINVAL;
    // All ones waits for ever; any other value beyond the platform's range
    // is the longest wait it can express.
    const int32_t timeout = timeoutMs == VORN_MUTEX_WAIT_FOREVER ? qarq::os::kWaitForever
                            : timeoutMs > INT32_MAX             ? INT32_MAX
                                                                : static_cast<int32_t>(timeoutMs);
    uint32_t rc = 0;
    switch (mutexOf(handle)->lock(timeout)) {
        case qarq::os::kWaitSignalled:
            rc = 0;
            break;
        case qarq::os::kWaitAbandoned:
            rc = VORN_MUTEX_ABANDONED;
            break;
        case qarq::os::kWaitTimeout:
            rc = VORN_MUTEX_TIMEOUT;
            break;
        case qarq::os::kWaitFailed:
            rc = static_cast<uint32_t>(errno);
            break;
        default:
            rc = 0;
            break;
    }
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornMutexRequest", pair(rc));
    return rc;
}

uint32_t VornMutexRelease(VornMutexHandle handle) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornMutexRelease");
    if (handle == nullptr) return EINVAL;
    const uint32_t rc = static_cast<uint32_t>(mutexOf(handle)->unlock());
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornMutexRelease", pair(rc));
    return rc;
}

void VornMutexClose(VornMutexHandle handle) {
    RobustMutex* mutex = mutexOf(handle);
    if (mutex == nullptr) return;
    if (mutex->isNamed()) {
        // Named ones come from createNamed, which allocates them with new.
        delete mutex;
    } else {
        mutex->~RobustMutex();
        qarq::os::calls().free(mutex);
    }
}
