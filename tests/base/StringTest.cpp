#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "base/IBufferLocale.hpp"
#include "qarq/base/IExceptionClasses.hpp"
#include "qarq/base/IString.hpp"
#include "qarq/base/IStringTest.hpp"
#include "qarq/base/Os.hpp"

namespace {

unsigned refs(const IString& s) {
    return IBuffer::fromContents(s.data())->useCount();
}
IBuffer* bufferOf(const IString& s) {
    return IBuffer::fromContents(s.data());
}
std::string bytes(const IString& s) {
    return std::string(s.data(), s.length());
}

// Keeps the reports of the exceptions a test provokes off the console.
class QuietTraceFn : public IException::TraceFn {
  public:
    void write(const char*) override {}
};

class StringTest : public ::testing::Test {
  protected:
    void SetUp() override { previous_ = IException::setTraceFunction(&quiet_); }
    void TearDown() override { IException::setTraceFunction(previous_); }

    QuietTraceFn quiet_;
    IException::TraceFn* previous_ = nullptr;
};

TEST_F(StringTest, EmptyStringsShareOneBufferAndConstructionFills) {
    IString a;
    unsigned before = refs(a);
    IString b;
    EXPECT_EQ(a.data(), b.data());
    EXPECT_EQ(refs(a), before + 1);
    EXPECT_STREQ(a.data(), "");
    // An empty result shares the same buffer instead of making one.
    EXPECT_EQ((IString() + "").data(), a.data());

    EXPECT_EQ(bytes(IString("ab", 2, nullptr, 2, "c", 1, '-')), "ab--c");
}

TEST_F(StringTest, CopiesShareUntilIndexedForWriting) {
    IString s1("abc");
    IString s2 = s1;
    EXPECT_EQ(s1.data(), s2.data());
    EXPECT_EQ(refs(s1), 2u);

    // data() is the shared memory itself: a write reaches every sharer.
    s2.data()[0] = 'z';
    EXPECT_EQ(s1, "zbc");

    // The non-const index makes the buffer private first.
    s2[1] = 'x';
    EXPECT_EQ(s1, "zbc");
    EXPECT_EQ(s2, "xbc");
    EXPECT_EQ(refs(s1), 1u);

    // Sole owner: written in place.
    char* before = s2.data();
    s2[3] = 'q';
    EXPECT_EQ(s2.data(), before);
    EXPECT_EQ(s2, "xbq");
}

TEST_F(StringTest, IndexRules) {
    IString s("abc");
    const IString& c = s;
    EXPECT_EQ(c[3u], 'c');
    try {
        (void)c[4];
        FAIL() << "const index past the end must throw";
    } catch (const IInvalidRequest& e) {
        EXPECT_EQ(e.errorId(), 52u);
    }
    EXPECT_THROW(s[-1] = 'x', IInvalidRequest);

    // Writing past the end pads with blanks.
    s[5] = 'e';
    EXPECT_EQ(bytes(s), "abc e");
}

TEST_F(StringTest, AppendInPlaceOnlyWithinCapacityAndUnshared) {
    IString s30(nullptr, 30, 'a');
    char* at30 = s30.data();
    s30 += "b";  // 30 -> 31 fits beside the terminator
    EXPECT_EQ(s30.data(), at30);
    s30 += "c";  // 31 -> 32 needs a new block
    EXPECT_NE(s30.data(), at30);
    EXPECT_EQ(bytes(s30), std::string(30, 'a') + "bc");

    // A sharer sees none of an append.
    IString shared("abc");
    IString other = shared;
    shared += "d";
    EXPECT_EQ(other, "abc");

    // The shared empty buffer is never written.
    IString empty;
    empty += "x";
    EXPECT_EQ(IString().length(), 0u);
}

TEST_F(StringTest, ComparisonCountsEmbeddedNulsAndBytesAreUnsigned) {
    const char raw[] = {'a', '\0', 'b'};
    IString s(raw, 3);
    EXPECT_EQ(bytes(s + s), std::string(raw, 3) + std::string(raw, 3));
    EXPECT_FALSE(s == IString("a"));  // the NUL and "b" still count
    EXPECT_TRUE(IString("\xff") > IString("a"));
    IString ab("ab"), empty;
    EXPECT_EQ(bufferOf(ab)->compare("abc", 3), 2);
    EXPECT_EQ(bufferOf(empty)->compare(nullptr, 0), 1);
}

TEST_F(StringTest, LocaleModeComparesSegmentsWithCollation) {
    using qarq::base::parseLocaleMode;
    EXPECT_EQ(parseLocaleMode("oN"), 1);
    EXPECT_EQ(parseLocaleMode("ON "), 0);

    // The mode is read once from the environment through the OS seam.
    static const char* value = "on";
    qarq::base::setLocaleMode(-1);
    {
        qarq::os::ScopedOsCall env(
            &qarq::os::Calls::getenv, +[](const char* name) -> char* {
                return std::strcmp(name, "NORBU_I18N") == 0 ? const_cast<char*>(value) : nullptr;
            });
        EXPECT_EQ(IBuffer::localeMode(), 1);
    }
    EXPECT_EQ(IBuffer::localeMode(), 1);

    const char a[] = {'a', 'b', '\0', 'c'};
    const char b[] = {'a', 'b', '\0', 'd'};
    const char c[] = {'a', 'b', '\0', '\0'};
    EXPECT_TRUE(IString(a, 4) < IString(b, 4));
    // The longer run of NULs is the lesser.
    EXPECT_TRUE(IString(c, 4) < IString(a, 4));
    qarq::base::setLocaleMode(0);
}

TEST_F(StringTest, SubStringRemoveStripChange) {
    IString abc("abc");
    EXPECT_EQ(bytes(abc.subString(2, 5, '.')), "bc...");
    EXPECT_EQ(bytes(abc.subString(9, 2, '.')), "..");
    EXPECT_EQ(IString::remove(abc, 1, 1), "bc");
    EXPECT_EQ(abc, "abc");

    IString blanks("   ");
    blanks.strip();
    EXPECT_EQ(blanks.data(), IString().data());
    EXPECT_EQ(IString("12ab3").strip(IStringTest(isdigit)), "ab");

    EXPECT_EQ(IString("aaa").change("aa", "a"), "aa");
    EXPECT_EQ(IString("bbb").change("b", "c", 1, 2), "ccb");
    // Equal lengths: a sharer keeps the old text.
    IString original("abab");
    IString sharer = original;
    original.change("a", "x");
    EXPECT_EQ(original, "xbxb");
    EXPECT_EQ(sharer, "abab");
    EXPECT_EQ(IString::change(sharer, "b", "yy"), "ayyayy");
}

TEST_F(StringTest, HexAndDecimalTexts) {
    EXPECT_EQ(IString("\x01\xAB").asHexText(), "01AB");
    EXPECT_EQ(IString("12a").decimalToBytes().length(), 0u);
    EXPECT_EQ(IString("000255").decimalToHexText(), "FF");
    EXPECT_EQ(IString("340282366920938463463374607431768211456").decimalToHexText(),
              "0100000000000000000000000000000000");
}

TEST_F(StringTest, OverflowIsRefusedWithId51) {
    try {
        IBuffer::checkedAdd(0xFFFFFFF0u, 0x10u);
        FAIL();
    } catch (const IInvalidRequest& e) {
        EXPECT_EQ(e.errorId(), 51u);
    }
    // The refusal comes before any allocation.
    EXPECT_THROW(IString(nullptr, 0x80000000u, nullptr, 0x80000000u), IInvalidRequest);
    IString small("abc");
    EXPECT_THROW(small[0x100000000l] = 'x', IInvalidRequest);
    EXPECT_EQ(small, "abc");
}

TEST_F(StringTest, ExhaustedHeapThrowsOutOfMemoryAndKeepsTheString) {
    IString s("abc");
    qarq::os::ScopedOsCall noMemory(
        &qarq::os::Calls::malloc, +[](size_t) -> void* { return nullptr; });
    EXPECT_THROW(s + "def", IOutOfMemory);
    // Past the room of the block.
    EXPECT_THROW(s += "defghijklmnopqrstuvwxyz0123456789", IOutOfMemory);
    EXPECT_EQ(s, "abc");
    IString shared = s;
    EXPECT_THROW(s[1] = 'x', IOutOfMemory);
    EXPECT_EQ(shared, "abc");
    EXPECT_EQ(refs(s), 2u);
}

TEST_F(StringTest, FirstStringsOnManyThreadsShareOneDefaultBuffer) {
    // The death-test child starts afresh, so its threads make the process's
    // very first strings.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            std::atomic<bool> go{false};
            std::vector<std::thread> threads;
            std::vector<const char*> seen(8);
            for (int i = 0; i < 8; ++i)
                threads.emplace_back([&, i] {
                    while (!go.load()) {
                    }
                    IString s;
                    seen[i] = s.data();
                });
            go = true;
            for (auto& t : threads)
                t.join();
            IString last;
            for (const char* p : seen)
                if (p != last.data())
                    std::exit(1);
            std::exit(refs(last) == 2 ? 0 : 2);  // the process's own and last's
        },
        ::testing::ExitedWithCode(0), "");
}

TEST_F(StringTest, CopiesLiveOnManyThreads) {
    IString shared("shared text");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([shared] {
            for (int k = 0; k < 10000; ++k) {
                IString copy = shared;
                IString again(copy);
                again += "x";  // shared: always a new buffer
                if (again.length() != 12)
                    std::abort();
            }
        });
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(refs(shared), 1u);
}

}  // namespace
