#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "qarq/base/IExceptionClasses.hpp"
#include "qarq/vorn/VornExcBase.hpp"
#include "support/TestSupport.hpp"

namespace {

// A member of the family, declared as the family declares its classes.
class SampleExc : public VornExcBase {
  public:
    SampleExc(int texts, const IExceptionLocation& location)
        : VornExcBase(IString(""), 17, defSev) {
        switch (texts) {
            case 0:
                throwExc(location);
            case 1:
                throwExc("t1", location);
            case 2:
                throwExc("t1", "t2", location);
            case 3:
                throwExc("t1", "t2", "t3", location);
            default:
                throwExc("t1", "t2", "t3", "t4", location);
        }
    }
    const char* name() const override { return "SampleExc"; }
};

// Only to reach the protected constructor for log() without a location.
class Unthrown : public VornExcBase {
  public:
    Unthrown() : VornExcBase() {}
};

std::string str(const IString& s) {
    return std::string(s.data(), s.length());
}

template <typename Check>
void whenThrown(int texts, Check check) {
    try {
        SampleExc(texts, IExceptionLocation("src.cpp", "Sample::fail", 77));
    } catch (VornExcBase& e) {
        check(e);
        return;
    }
    ADD_FAILURE() << "nothing thrown";
}

TEST(VornExcBase, ConstructingAMemberThrowsAVornExcBaseAfterItsRecord) {
    qarq::support::Records records;
    bool sawSubclass = false;
    try {
        try {
            SampleExc(3, IExceptionLocation("src.cpp", "Sample::fail", 77));
        } catch (SampleExc&) {
            sawSubclass = true;
        }
    } catch (VornExcBase& e) {
        EXPECT_STREQ(e.name(), "VornExcBase");
        EXPECT_EQ(e.errorId(), 17u);
        EXPECT_TRUE(e.isRecoverable());
        // The first text joins the empty entry of the constructor; the
        // newest text is index 0.
        ASSERT_EQ(e.textCount(), 3u);
        EXPECT_STREQ(e.text(0), "t3");
        EXPECT_STREQ(e.text(2), "t1");
        EXPECT_EQ(str(VornExcBase::formatText(e)), "Text[0] t3\nText[1] t2\nText[2] t1\n");
        EXPECT_EQ(str(VornExcBase::formatLocation(e)), "Loc[0] 77:src.cpp:Sample::fail\n");
        EXPECT_EQ(str(VornExcBase::formatExc(e)), "Id: 17, Rec?: 1, Exc: VornExcBase\n");
    }
    EXPECT_FALSE(sawSubclass);

    auto errors = records.ofKind(HESK_RECORD_ERROR);
    ASSERT_EQ(errors.size(), 1u);
    const auto& r = errors[0];
    // The record is written inside throwExc, with no location: it shows the
    // subclass's name.
    EXPECT_EQ(r.function, "logAnExc");
    EXPECT_EQ(r.line, 629);
    EXPECT_EQ(r.code1, 17);
    EXPECT_EQ(r.code2, 1);
    ASSERT_EQ(r.pairs.size(), 3u);
    EXPECT_EQ(r.pairs[0], "Id: 17, Rec?: 1, Exc: SampleExc\n");
    EXPECT_EQ(r.pairs[1], "Text[0] t3\nText[1] t2\nText[2] t1\n");
    EXPECT_EQ(r.pairs[2], "Loc[0] 77:src.cpp:Sample::fail\n");
}

TEST(VornExcBase, EveryThrowFormStacksItsTexts) {
    whenThrown(0, [](VornExcBase& e) {
        EXPECT_EQ(e.textCount(), 1u);
        EXPECT_STREQ(e.text(0), "");
    });
    whenThrown(1, [](VornExcBase& e) {
        EXPECT_EQ(e.textCount(), 1u);
        EXPECT_STREQ(e.text(0), "t1");
    });
    whenThrown(2, [](VornExcBase& e) { EXPECT_STREQ(e.text(1), "t1"); });
    whenThrown(4, [](VornExcBase& e) {
        ASSERT_EQ(e.textCount(), 4u);
        EXPECT_STREQ(e.text(0), "t4");
        EXPECT_STREQ(e.text(3), "t1");
    });
}

TEST(VornExcBase, LogWithoutAndOnCatchWithAPlace) {
    qarq::support::Records records;
    Unthrown plain;
    EXPECT_EQ(plain.errorId(), 0u);
    EXPECT_STREQ(plain.name(), "VornExcBase");
    EXPECT_EQ(VornExcBase::formatLocation(plain).length(), 0u);
    plain.log();

    IInvalidRequest other("not ours", 52, IException::unrecoverable);
    VornExcBase::logOnCatch(other, IExceptionLocation("c.cpp", "Caller::handle", 12));

    auto errors = records.ofKind(HESK_RECORD_ERROR);
    ASSERT_EQ(errors.size(), 2u);
    EXPECT_EQ(errors[0].function, "logAnExc");
    EXPECT_EQ(errors[0].line, 629);
    EXPECT_EQ(errors[0].pairs[0], "Id: 0, Rec?: 1, Exc: VornExcBase\n");
    EXPECT_EQ(errors[0].pairs[1], "Text[0] \n");
    EXPECT_EQ(errors[1].function, "Caller::handle");
    EXPECT_EQ(errors[1].line, 12);
    EXPECT_EQ(errors[1].code1, 52);
    EXPECT_EQ(errors[1].code2, 0);
    EXPECT_EQ(errors[1].pairs[0], "Id: 52, Rec?: 0, Exc: IInvalidRequest\n");
    EXPECT_EQ(errors[1].pairs[2], "");
}

}  // namespace
