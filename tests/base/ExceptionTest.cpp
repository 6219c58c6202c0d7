#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "qarq/base/IExceptTraceFn.hpp"
#include "qarq/base/IExceptionClasses.hpp"
#include "qarq/base/ISimpleText.hpp"
#include "qarq/base/Os.hpp"

namespace {

class CapturingTraceFn : public IException::TraceFn {
  public:
    void write(const char* text) override { lines.emplace_back(text); }
    void exceptionLogged() override { ++logged; }
    std::vector<std::string> lines;
    int logged = 0;
};

void* noMemory(size_t) {
    return nullptr;
}

IExceptionLocation place(int i) {
    std::string file = "file" + std::to_string(i);
    std::string function = "fn" + std::to_string(i);
    return IExceptionLocation(file.c_str(), function.c_str(), static_cast<uint32_t>(i));
}

TEST(Exception, TextStackAndLocationList) {
    IInvalidParameter e("first", 7, IException::recoverable);
    e.appendText(" more");
    e.setText("second");
    e.setText(L"third");
    e.setText(static_cast<const char*>(nullptr));
    ASSERT_EQ(e.textCount(), 3u);
    EXPECT_STREQ(e.text(0), "third");
    EXPECT_STREQ(e.text(1), "second");
    EXPECT_STREQ(e.text(2), "first more");
    EXPECT_EQ(e.text(3), nullptr);

    for (int i = 1; i <= 6; ++i)
        e.addLocation(place(i));
    // The first four and the newest survive.
    ASSERT_EQ(e.locationCount(), 5u);
    EXPECT_STREQ(e.locationAtIndex(0)->functionName(), "fn1");
    EXPECT_STREQ(e.locationAtIndex(3)->functionName(), "fn4");
    EXPECT_STREQ(e.locationAtIndex(4)->functionName(), "fn6");

    // A copy is deep and keeps the order; changing it leaves the original.
    IInvalidParameter copy(e);
    copy.setText("fourth");
    EXPECT_EQ(e.textCount(), 3u);
    EXPECT_STREQ(copy.text(3), "first more");
    EXPECT_STREQ(copy.locationAtIndex(4)->fileName(), "file6");
}

TEST(Exception, WithoutMemoryAnExceptionStillBehaves) {
    qarq::os::ScopedOsCall fail(&qarq::os::Calls::malloc, noMemory);
    IInvalidRequest e("lost", 5, IException::recoverable);
    e.setText("x").setErrorId(9).addLocation(place(1));
    EXPECT_FALSE(e.isRecoverable());
    EXPECT_EQ(e.errorId(), 0u);
    EXPECT_EQ(e.textCount(), 0u);
    EXPECT_EQ(e.locationCount(), 0u);
    IInvalidRequest copy(e);
    EXPECT_EQ(copy.textCount(), 0u);
}

// The report's wording is not checked: where it goes is.
TEST(Exception, ReportGoesThroughTheCurrentTraceFunction) {
    CapturingTraceFn capture;
    IException::TraceFn* previous = IException::setTraceFunction(&capture);
    IAccessError e("oldest", 12, IException::recoverable);
    e.setText("newest");
    e.addLocation(IExceptionLocation("a.cpp", "A::b", 42));
    e.logExceptionData();
    ASSERT_EQ(capture.lines.size(), 6u);
    EXPECT_EQ(capture.lines.back(), "      newest");
    EXPECT_EQ(capture.logged, 1);

    // Without room for the lines the report goes straight to the stream.
    capture.lines.clear();
    testing::internal::CaptureStderr();
    {
        qarq::os::ScopedOsCall fail(&qarq::os::Calls::malloc, noMemory);
        e.logExceptionData();
    }
    std::string direct = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(capture.lines.empty());
    EXPECT_EQ(capture.logged, 1);
    EXPECT_NE(direct.find("      newest\n"), std::string::npos) << direct;

    // The default writes a line to standard error.
    EXPECT_EQ(IException::setTraceFunction(nullptr), &capture);
    EXPECT_NE(dynamic_cast<IExceptTraceFn*>(IException::traceFunction()), nullptr);
    testing::internal::CaptureStderr();
    IException::traceFunction()->writeWide(L"wide \x263A");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "wide \x1A\n");
    IException::setTraceFunction(previous);
}

TEST(SimpleText, FormsConvertInPlace) {
    ISimpleText text("h\xE9llo");
    const wchar_t* wide = text.wideText();
    EXPECT_EQ(text.form(), ISimpleText::wide);
    EXPECT_EQ(wide[1], L'\xE9');
    EXPECT_EQ(text.charCount(), 5);

    ISimpleText units(
        L"a\x100"
        L"b");
    ISimpleText copy(units);
    EXPECT_STREQ(copy.text(),
                 "a\x1A"
                 "b");
    EXPECT_STREQ(units.wideText(),
                 L"a\x100"
                 L"b");  // the original kept its form
    copy = units;
    EXPECT_EQ(copy.form(), ISimpleText::wide);
    copy.append("c");
    EXPECT_STREQ(copy.wideText(),
                 L"a\x100"
                 L"bc");
}

}  // namespace
