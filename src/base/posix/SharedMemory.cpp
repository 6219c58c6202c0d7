#include "base/posix/SharedMemory.hpp"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>

#include "qarq/base/Os.hpp"

namespace qarq::os {
namespace {

constexpr uint32_t kFresh = 0;
constexpr uint32_t kInitialising = 1;
constexpr uint32_t kReady = 2;

// Cross-process atomics must not hide a lock inside the process.
static_assert(std::atomic<uint32_t>::is_always_lock_free, "shared header needs lock-free words");
static_assert(std::atomic<int32_t>::is_always_lock_free, "shared header needs lock-free words");

struct Header {
    std::atomic<uint32_t> state;        // kFresh, kInitialising, kReady
    std::atomic<int32_t> initialiser;   // pid that is initialising, 0 while none
    uint32_t type;
    uint32_t bodySize;
};
// The body starts on a cache line of its own.
constexpr size_t kHeaderSize = 64;
static_assert(sizeof(Header) <= kHeaderSize, "header grew");

// How long an opener waits for a live creator to finish: initialising is a
// handful of system calls, so a second means the creator is stuck.
constexpr int kInitWaitSteps = 1000;
constexpr long kInitWaitStepNs = 1000000;

constexpr int kAlreadyExists = 183;

const char* prefix() {
    const char* value = calls().getenv("QARZ_SHM_PREFIX");
    return value != nullptr && *value != '\0' ? value : "qarq.";
}

bool plain(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
           c == '.' || c == '_' || c == '-';
}

void escapeInto(std::string& out, const char* text) {
    static const char kHex[] = "0123456789ABCDEF";
    for (const unsigned char* p = reinterpret_cast<const unsigned char*>(text); *p != 0; ++p) {
        if (plain(*p)) {
            out.push_back(static_cast<char>(*p));
        } else {
            out.push_back('%');
            out.push_back(kHex[*p >> 4]);
            out.push_back(kHex[*p & 15]);
        }
    }
}

bool processGone(int32_t pid) { return pid > 0 && ::kill(pid, 0) != 0 && errno == ESRCH; }

void pause() {
    struct timespec step = {0, kInitWaitStepNs};
    ::nanosleep(&step, nullptr);
}

// Brings the mapped object to kReady, initialising it if nobody has (or if
// the one who started died), and checks that it is the expected kind.
int settle(Header* header, uint32_t type, size_t bodySize, SharedInitialiser init,
           void* context) {
    const int32_t self = static_cast<int32_t>(::getpid());
    for (int step = 0; step <= kInitWaitSteps; ++step) {
        uint32_t state = header->state.load(std::memory_order_acquire);
        bool mine = false;
        if (state == kFresh) {
            mine = header->state.compare_exchange_strong(state, kInitialising,
                                                         std::memory_order_acq_rel);
            if (mine) header->initialiser.store(self, std::memory_order_release);
        } else if (state == kInitialising) {
            int32_t owner = header->initialiser.load(std::memory_order_acquire);
            if (processGone(owner))
                mine = header->initialiser.compare_exchange_strong(owner, self,
                                                                   std::memory_order_acq_rel);
        } else if (state == kReady) {
            return header->type == type && header->bodySize == bodySize ? 0 : EEXIST;
        } else {
            return EEXIST;  // not one of ours
        }
        if (!mine) {
            pause();
            continue;
        }
        void* body = reinterpret_cast<char*>(header) + kHeaderSize;
        std::memset(body, 0, bodySize);
        int rc = init != nullptr ? init(body, context) : 0;
        if (rc != 0) {
            header->initialiser.store(0, std::memory_order_release);
            header->state.store(kFresh, std::memory_order_release);
            return rc;
        }
        header->type = type;
        header->bodySize = static_cast<uint32_t>(bodySize);
        header->initialiser.store(0, std::memory_order_release);
        header->state.store(kReady, std::memory_order_release);
        return 0;
    }
    return ETIMEDOUT;
}

}  // namespace

void* SharedMapping::body() const {
    return base != nullptr ? static_cast<char*>(base) + kHeaderSize : nullptr;
}

int sharedObjectName(const char* name, const char* suffix, std::string* out) {
    if (out == nullptr || name == nullptr || *name == '\0') return EINVAL;
    size_t length = ::strnlen(name, kMaxSharedName + 1);
    if (length > kMaxSharedName) return ENAMETOOLONG;
    std::string result = "/";
    escapeInto(result, prefix());
    escapeInto(result, name);
    if (suffix != nullptr) {
        size_t suffixLength = ::strnlen(suffix, 33);
        if (suffixLength > 32 || std::strchr(suffix, '/') != nullptr) return EINVAL;
        result.append(suffix, suffixLength);
    }
    if (result.size() - 1 > NAME_MAX) return ENAMETOOLONG;
    *out = std::move(result);
    return 0;
}

int attachShared(const std::string& objectName, uint32_t type, size_t bodySize, SharedOpen mode,
                 SharedInitialiser init, void* context, SharedMapping* out) {
    if (out == nullptr || objectName.size() < 2 || bodySize == 0 || bodySize > (1u << 20))
        return EINVAL;
    const Calls& os = calls();
    const size_t length = kHeaderSize + bodySize;
    int fd = -1;
    bool created = false;
    // The object may vanish between a failed exclusive create and the plain
    // open (someone removed it); a few rounds settle that.
    for (int round = 0; fd < 0 && round < 8; ++round) {
        if (mode == SharedOpen::CreateOrOpen) {
            fd = os.shm_open(objectName.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0660);
            if (fd >= 0) {
                created = true;
                break;
            }
            if (errno != EEXIST) return errno;
        }
        fd = os.shm_open(objectName.c_str(), O_RDWR | O_CLOEXEC, 0);
        if (fd < 0 && (errno != ENOENT || mode == SharedOpen::OpenExisting)) return errno;
    }
    if (fd < 0) return ENOENT;

    int rc = 0;
    if (created) {
        // The umask must not narrow the object: the group shares it.
        if (os.fchmod(fd, 0660) != 0 || os.ftruncate(fd, static_cast<off_t>(length)) != 0) {
            rc = errno;
            os.close(fd);
            os.shm_unlink(objectName.c_str());
            return rc;
        }
    } else {
        struct stat st;
        if (os.fstat(fd, &st) != 0) {
            rc = errno;
            os.close(fd);
            return rc;
        }
        // Size 0: the creator has not sized it yet, or died before it could;
        // sizing it again to the same length is harmless either way.
        if (st.st_size == 0 && os.ftruncate(fd, static_cast<off_t>(length)) != 0) {
            rc = errno;
            os.close(fd);
            return rc;
        }
        if (st.st_size != 0 && static_cast<size_t>(st.st_size) < length) {
            os.close(fd);
            return EEXIST;
        }
    }
    void* base = os.mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    rc = base == MAP_FAILED ? errno : 0;
    os.close(fd);
    if (rc != 0) return rc;

    rc = settle(static_cast<Header*>(base), type, bodySize, init, context);
    if (rc != 0) {
        os.munmap(base, length);
        return rc;
    }
    out->base = base;
    out->length = length;
    return created ? 0 : kAlreadyExists;
}

void detachShared(SharedMapping* mapping) {
    if (mapping == nullptr || mapping->base == nullptr) return;
    calls().munmap(mapping->base, mapping->length);
    mapping->base = nullptr;
    mapping->length = 0;
}

bool sharedExists(const std::string& objectName) {
    int fd = calls().shm_open(objectName.c_str(), O_RDWR | O_CLOEXEC, 0);
    if (fd < 0) return false;
    calls().close(fd);
    return true;
}

int removeShared(const std::string& objectName) {
    return calls().shm_unlink(objectName.c_str()) == 0 ? 0 : errno;
}

}  // namespace qarq::os
