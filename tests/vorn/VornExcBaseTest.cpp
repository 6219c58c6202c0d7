#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

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
            case 3:
                throwExc("t1", "t2", "t3", location);
            default:
                throwExc("t1", "t2", "t3", "t4", location);
        }
    }
    const char* name() const override { return "SampleExc"; }
};

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

// A member's throw raises the family's own class, after one record whose
// texts name the member.
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
        // The first text joins the empty entry of the constructor; the
        // newest text is index 0.
        ASSERT_EQ(e.textCount(), 3u);
        EXPECT_STREQ(e.text(0), "t3");
        EXPECT_STREQ(e.text(2), "t1");
    }
    EXPECT_FALSE(sawSubclass);

    auto errors = records.ofKind(HESK_RECORD_ERROR);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].pairs, (std::vector<std::string>{"Id: 17, Rec?: 1, Exc: SampleExc\n",
                                                         "Text[0] t3\nText[1] t2\nText[2] t1\n",
                                                         "Loc[0] 77:src.cpp:Sample::fail\n"}));
}

TEST(VornExcBase, EveryThrowFormStacksItsTexts) {
    whenThrown(0, [](VornExcBase& e) { EXPECT_STREQ(e.text(0), ""); });
    whenThrown(4, [](VornExcBase& e) {
        ASSERT_EQ(e.textCount(), 4u);
        EXPECT_STREQ(e.text(0), "t4");
    });
}

TEST(VornExcBase, LogOnCatchNamesThePlaceAndTheClass) {
    qarq::support::Records records;
    IInvalidRequest other("not ours", 52, IException::unrecoverable);
    VornExcBase::logOnCatch(other, IExceptionLocation("c.cpp", "Caller::handle", 12));
    auto errors = records.ofKind(HESK_RECORD_ERROR);
    ASSERT_EQ(errors.size(), 1u);
    EXPECT_EQ(errors[0].function, "Caller::handle");
    EXPECT_EQ(errors[0].line, 12);
    EXPECT_EQ(errors[0].pairs[0], "Id: 52, Rec?: 0, Exc: IInvalidRequest\n");
}

}  // namespace
