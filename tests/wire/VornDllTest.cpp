// Library attach and the named-lock layer.
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "qarq/base/Os.hpp"
#include "qarq/base/RobustMutex.hpp"
#include "qarq/vorn/VornMutex.hpp"
#include "vorn/VornDll.hpp"
#include "vorn/VornTrace.hpp"
#include "support/TestSupport.hpp"

namespace {

// A name no other run shares; removed again at the end of the test.
class ScopedName {
public:
    explicit ScopedName(const char* what)
        : name_(std::string("wire-test-") + what + "-" + std::to_string(::getpid())) {
        qarq::os::RobustMutex::removeNamed(name_.c_str());
    }
    ~ScopedName() { qarq::os::RobustMutex::removeNamed(name_.c_str()); }
    const char* c_str() const { return name_.c_str(); }

private:
    std::string name_;
};

struct Handle {
    VornMutexHandle handle = nullptr;
    ~Handle() { VornMutexClose(handle); }
};

TEST(VornMutex, SameNameTwiceSharesOneMutex) {
    ScopedName name("same");
    Handle first, second;
    EXPECT_EQ(0u, VornMutexCreate(name.c_str(), &first.handle, 0, 0));
    EXPECT_EQ(285u, VornMutexCreate(name.c_str(), &second.handle, 0, 0));
    ASSERT_NE(nullptr, first.handle);
    ASSERT_NE(nullptr, second.handle);

    // One lock behind both handles: held through the first, it times out
    // through the second on another thread.
    ASSERT_EQ(0u, VornMutexRequest(first.handle, VORN_MUTEX_WAIT_FOREVER));
    uint32_t other = 0;
    std::thread([&] { other = VornMutexRequest(second.handle, 0); }).join();
    EXPECT_EQ(640u, other);
    EXPECT_EQ(0u, VornMutexRelease(first.handle));
}

TEST(VornMutex, HolderThatEndsLeavesItAbandonedToTheNextTaker) {
    Handle mutex;
    ASSERT_EQ(0u, VornMutexCreate(nullptr, &mutex.handle, 0, 0));
    uint32_t taken = 1;
    std::thread([&] { taken = VornMutexRequest(mutex.handle, VORN_MUTEX_WAIT_FOREVER); }).join();
    ASSERT_EQ(0u, taken);

    EXPECT_EQ(105u, VornMutexRequest(mutex.handle, 1000));
    // The caller holds it now: another thread can't have it, a release works.
    uint32_t other = 0;
    std::thread([&] { other = VornMutexRequest(mutex.handle, 0); }).join();
    EXPECT_EQ(640u, other);
    EXPECT_EQ(0u, VornMutexRelease(mutex.handle));
}

TEST(VornMutex, FailuresComeBackAsTheSystemsCodes) {
    Handle mutex;
    ASSERT_EQ(0u, VornMutexCreate(nullptr, &mutex.handle, 0, 0));
    ASSERT_EQ(0u, VornMutexRequest(mutex.handle, 0));
    // Not recursive: the holder asking again is refused, not deadlocked.
    EXPECT_EQ(static_cast<uint32_t>(EDEADLK), VornMutexRequest(mutex.handle, 0));
    EXPECT_EQ(0u, VornMutexRelease(mutex.handle));

    EXPECT_EQ(static_cast<uint32_t>(EINVAL), VornMutexRequest(nullptr, 0));
    VornMutexHandle untouched = &mutex;
    EXPECT_EQ(static_cast<uint32_t>(EINVAL), VornMutexCreate("", &untouched, 0, 0));
    EXPECT_EQ(static_cast<void*>(&mutex), untouched);

    // Release by a non-holder is refused.
    ASSERT_EQ(0u, VornMutexRequest(mutex.handle, 0));
    uint32_t released = 0;
    std::thread([&] { released = VornMutexRelease(mutex.handle); }).join();
    EXPECT_EQ(static_cast<uint32_t>(EPERM), released);
    EXPECT_EQ(0u, VornMutexRelease(mutex.handle));
}

// The attach that the loader ran, and the entry point called again by hand.
class VornDllAttach : public ::testing::Test {
protected:
    void SetUp() override {
        savedMutex_ = libraryMutex;
        savedTrace_ = qarq::vorn::traceControl();
    }
    void TearDown() override {
        if (libraryMutex != savedMutex_) VornMutexClose(libraryMutex);
        libraryMutex = savedMutex_;
        qarq::vorn::traceControl() = savedTrace_;
    }

    VornMutexHandle savedMutex_ = nullptr;
    TraceControl* savedTrace_ = nullptr;
};

TEST_F(VornDllAttach, LoadMadeTheLibraryMutexAndTheEntryPointActsByReason) {
    ASSERT_NE(nullptr, libraryMutex);
    EXPECT_EQ(0u, VornMutexRequest(libraryMutex, 0));
    EXPECT_EQ(0u, VornMutexRelease(libraryMutex));

    qarq::support::Records log;
    EXPECT_EQ(1, VornDllMain(nullptr, 1, nullptr));
    EXPECT_NE(savedMutex_, libraryMutex);
    EXPECT_EQ(1, VornDllMain(nullptr, 0, nullptr));
    const VornMutexHandle afterAttach = libraryMutex;
    EXPECT_EQ(1, VornDllMain(nullptr, 2, nullptr));
    EXPECT_EQ(1, VornDllMain(nullptr, 3, nullptr));
    EXPECT_EQ(afterAttach, libraryMutex);
    EXPECT_EQ(0u, log.errorsOf("VornDllI_commonInitalizer"));
}

TEST_F(VornDllAttach, MutexThatCannotBeMadeFailsTheAttachWithALog) {
    qarq::support::Records log;
    VornMutexHandle before = libraryMutex;
    {
        qarq::os::ScopedOsCall noMemory(&qarq::os::Calls::malloc,
                                        +[](size_t) -> void* { return nullptr; });
        EXPECT_EQ(0, VornDllMain(nullptr, 1, nullptr));
    }
    EXPECT_EQ(before, libraryMutex);
    EXPECT_EQ(static_cast<uint32_t>(ENOMEM),
              log.lastError("VornDllI_commonInitalizer").pairAsU32(0));
}

}  // namespace
