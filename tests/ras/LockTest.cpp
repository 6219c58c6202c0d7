#include <gtest/gtest.h>
#include <sys/mman.h>

#include <cerrno>
#include <thread>

#include "RasTestSupport.hpp"
#include "base/posix/SharedMemory.hpp"
#include "qarq/base/Os.hpp"
#include "qarq/base/RobustMutex.hpp"

namespace {

using qarq::os::RobustMutex;
using rastest::Child;
using rastest::ShmNamespace;
using rastest::TempDir;

int failShmOpen(const char*, int, mode_t) {
    errno = EMFILE;
    return -1;
}

TEST(RobustMutexLocal, ReportsWin32CodesAndRefusesMisuse) {
    RobustMutex mutex;
    EXPECT_FALSE(mutex.isNamed());
    EXPECT_EQ(mutex.lock(qarq::os::kWaitForever), qarq::os::kWaitSignalled);
    errno = 0;
    EXPECT_EQ(mutex.lock(0), qarq::os::kWaitFailed);
    EXPECT_EQ(errno, EDEADLK) << "the holder locking again is an error, not a hang";
    int other = -2, otherUnlock = -2;
    std::thread([&] {
        other = mutex.lock(30);
        otherUnlock = mutex.unlock();
    }).join();
    EXPECT_EQ(other, qarq::os::kWaitTimeout);
    EXPECT_EQ(otherUnlock, EPERM);
    EXPECT_EQ(mutex.unlock(), 0);
    EXPECT_EQ(mutex.lock(-5), qarq::os::kWaitFailed);
    EXPECT_EQ(errno, EINVAL) << "only -1 waits for ever";
}

TEST(RobustMutexNamed, NamesAreEscapedAndPrivatePrefixesApply) {
    std::string name;
    {
        rastest::ScopedEnv plain("QARZ_SHM_PREFIX", nullptr);
        ASSERT_EQ(qarq::os::sharedObjectName("a/b c%\xff", ".ctr", &name), 0);
        EXPECT_EQ(name, "/qarq.a%2Fb%20c%25%FF.ctr");
    }
    ShmNamespace ns;
    ASSERT_EQ(qarq::os::sharedObjectName("x", nullptr, &name), 0);
    EXPECT_EQ(name, "/" + ns.prefix() + "x");
    EXPECT_EQ(qarq::os::sharedObjectName("", nullptr, &name), EINVAL);
    EXPECT_EQ(qarq::os::sharedObjectName(std::string(120, '/').c_str(), nullptr, &name),
              ENAMETOOLONG)
        << "escaping triples the length";
    EXPECT_EQ(qarq::os::sharedObjectName("x", "/../y", &name), EINVAL);
}

TEST(RobustMutexNamed, CreateOpenExistsAndPermissions) {
    ShmNamespace ns;
    int status = -1;
    EXPECT_FALSE(RobustMutex::exists("m"));
    EXPECT_EQ(RobustMutex::openNamed("m", nullptr, &status), nullptr);
    EXPECT_EQ(status, ENOENT);

    mode_t oldMask = ::umask(077);
    auto first = RobustMutex::createNamed("m", nullptr, &status);
    ::umask(oldMask);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(first->isNamed());
    EXPECT_TRUE(RobustMutex::exists("m"));
    struct stat st;
    ASSERT_EQ(::stat(("/dev/shm" + first->objectName()).c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0660u) << "the umask must not narrow a shared lock";

    auto second = RobustMutex::createNamed("m", nullptr, &status);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(status, qarq::os::kAlreadyExists);

    // Two mappings, one mutex.
    EXPECT_EQ(first->lock(0), qarq::os::kWaitSignalled);
    int seen = -2;
    std::thread([&] { seen = second->lock(20); }).join();
    EXPECT_EQ(seen, qarq::os::kWaitTimeout);
    EXPECT_EQ(first->unlock(), 0);

    EXPECT_EQ(RobustMutex::removeNamed("m"), 0);
    EXPECT_FALSE(RobustMutex::exists("m"));
}

// Creation must survive a creator that died half-way: before sizing the
// object, or while initialising it (the header names a process that is gone).
TEST(RobustMutexNamed, CreatorDyingHalfWayDoesNotPoisonTheName) {
    ShmNamespace ns;
    Child gone({"no-such-mode"});
    const int32_t deadPid = gone.pid();
    ASSERT_EQ(gone.wait(), 100);
    for (const char* left : {"unsized", "stuck"}) {
        std::string name;
        ASSERT_EQ(qarq::os::sharedObjectName(left, nullptr, &name), 0);
        int fd = ::shm_open(name.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
        ASSERT_GE(fd, 0);
        if (left[0] == 's') {
            const int32_t initialising[2] = {1, deadPid};
            ASSERT_EQ(::ftruncate(fd, 4096), 0);
            ASSERT_EQ(::pwrite(fd, initialising, 8, 0), 8);
        }
        ::close(fd);
        int status = -1;
        auto mutex = RobustMutex::createNamed(left, nullptr, &status);
        ASSERT_NE(mutex, nullptr) << left << " " << status;
        EXPECT_EQ(mutex->lock(0), qarq::os::kWaitSignalled);
        EXPECT_EQ(mutex->unlock(), 0);
    }
    // Garbage under the name is refused, not used as a mutex.
    std::string name;
    ASSERT_EQ(qarq::os::sharedObjectName("stuck", nullptr, &name), 0);
    int fd = ::shm_open(name.c_str(), O_RDWR, 0600);
    const uint32_t garbage = 7;
    ASSERT_EQ(::pwrite(fd, &garbage, 4, 0), 4);
    ::close(fd);
    int status = -1;
    EXPECT_EQ(RobustMutex::createNamed("stuck", nullptr, &status), nullptr);
    EXPECT_EQ(status, EEXIST);
}

TEST(RobustMutexNamed, HolderKilledLeavesItAbandonedToTheNextProcess) {
    ShmNamespace ns;
    int status = -1;
    auto mutex = RobustMutex::createNamed("Audit", nullptr, &status);
    ASSERT_NE(mutex, nullptr);
    Child holder({"named-hold", "Audit"}, true);
    ASSERT_TRUE(holder.waitReady());
    EXPECT_EQ(mutex->lock(50), qarq::os::kWaitTimeout);
    holder.killHard();
    EXPECT_EQ(mutex->lock(5000), qarq::os::kWaitAbandoned);
    EXPECT_EQ(mutex->unlock(), 0);
}

TEST(RobustMutexNamed, SharedMemoryFailuresAreReported) {
    ShmNamespace ns;
    int status = -1;
    {
        qarq::os::ScopedOsCall fail(&qarq::os::Calls::shm_open, failShmOpen);
        EXPECT_EQ(RobustMutex::createNamed("f", nullptr, &status), nullptr);
        EXPECT_EQ(status, EMFILE);
    }
    {
        qarq::os::ScopedOsCall fail(&qarq::os::Calls::ftruncate, +[](int, off_t) {
            errno = ENOSPC;
            return -1;
        });
        EXPECT_EQ(RobustMutex::createNamed("f", nullptr, &status), nullptr);
        EXPECT_EQ(status, ENOSPC);
    }
    EXPECT_FALSE(RobustMutex::exists("f")) << "a creator that fails removes its object";
}

// ---- the services ----------------------------------------------------------

class Locks : public ::testing::Test {
protected:
    ShmNamespace ns_;
    TempDir dir_;
    std::string counter_ = dir_ / "counter";
    void SetUp() override { rastest::writeFile(counter_, "0\n"); }

    // Four processes add `rounds` each; the total shows any lost update.
    void countInParallel(const std::vector<std::string>& mode, int rounds) {
        std::vector<std::unique_ptr<Child>> children;
        for (int i = 0; i < 4; ++i) {
            std::vector<std::string> args = mode;
            args.push_back(counter_);
            args.push_back(std::to_string(rounds));
            children.push_back(std::make_unique<Child>(args));
        }
        for (auto& child : children) EXPECT_EQ(child->wait(120000), 0);
        EXPECT_EQ(std::atol(rastest::readFile(counter_).c_str()), 4L * rounds);
    }
};

TEST_F(Locks, LockWordLosesNoUpdateAcrossProcesses) { countInParallel({"ram-counter"}, 300); }

TEST_F(Locks, NamedLockLosesNoUpdateAcrossProcesses) {
    countInParallel({"named-counter", "Audit"}, 300);
}

TEST_F(Locks, KilledLockWordHolderDoesNotBlockTheNextProcess) {
    Child holder({"ram-hold"}, true);
    ASSERT_TRUE(holder.waitReady());
    {
        Child blocked({"ram-take"});
        EXPECT_EQ(blocked.wait(300), -1) << "the lock word is held by a live process";
    }
    holder.killHard();
    Child next({"ram-take"});
    EXPECT_EQ(next.wait(10000), 0);
}

TEST_F(Locks, KilledNamedLockHolderDoesNotBlockTheNextProcess) {
    Child holder({"named-hold", "Audit"}, true);
    ASSERT_TRUE(holder.waitReady());
    holder.killHard();
    Child next({"named-take", "Audit"});
    EXPECT_EQ(next.wait(10000), 0);
}

TEST_F(Locks, LockWordInThisProcess) {
    volatile int32_t word = 0;
    ASSERT_NE(HESKMUTEXGETRAM(&word), 0);
    EXPECT_EQ(word, static_cast<int32_t>(::gettid())) << "the word names the holder";
    EXPECT_EQ(HESKMUTEXGETRAM(&word), 0) << "taken again on the same thread: not held, no hang";
    int fromOther = -1;
    std::thread([&] {
        volatile int32_t otherWord = 0;
        HESKMUTEXFREERAM(&otherWord);  // holds nothing: must not free ours
        void* handle = nullptr;
        fromOther = HeskMutexNamedGet("Audit", &handle);
        HESKMUTEXNAMEDFREEOS(&handle);
    }).join();
    EXPECT_EQ(fromOther, 0) << "the named lock is a different lock";
    HESKMUTEXFREERAM(&word);
    EXPECT_EQ(word, 0);
    HESKMUTEXFREERAM(nullptr);
}

TEST_F(Locks, NamedLockArgumentsAndFailures) {
    void* handle = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(HeskMutexNamedGet(nullptr, &handle), EINVAL);
    EXPECT_EQ(handle, nullptr);
    int notAHandle = 0;
    void* bogus = &notAHandle;
    HESKMUTEXNAMEDFREEOS(&bogus);  // never handed out: ignored

    ASSERT_EQ(HeskMutexNamedGet("Audit", &handle), 0);
    void* second = nullptr;
    EXPECT_EQ(HeskMutexNamedGet("Audit", &second), EDEADLK);
    HESKMUTEXNAMEDFREEOS(&handle);

    // Names the process has not mapped yet cannot be set up without shm_open.
    ShmNamespace fresh;
    qarq::os::ScopedOsCall fail(&qarq::os::Calls::shm_open, failShmOpen);
    EXPECT_EQ(HeskMutexNamedGet("Audit", &handle), EMFILE);
    EXPECT_EQ(handle, nullptr);
    volatile int32_t word = 0;
    EXPECT_EQ(HESKMUTEXGETRAM(&word), 0) << "no shared memory: the caller must fall back";
    EXPECT_EQ(word, 0);
}

TEST_F(Locks, NamesBeyondTheCacheAreMappedPerUse) {
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 100; ++i) {
            void* handle = nullptr;
            ASSERT_EQ(HeskMutexNamedGet(("n" + std::to_string(i)).c_str(), &handle), 0) << i;
            HESKMUTEXNAMEDFREEOS(&handle);
        }
    }
}

}  // namespace
