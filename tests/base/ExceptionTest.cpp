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
    EXPECT_STREQ(e.wideText(1), L"second");

    for (int i = 1; i <= 6; ++i)
        e.addLocation(place(i));
    // The first four and the newest survive.
    ASSERT_EQ(e.locationCount(), 5u);
    EXPECT_STREQ(e.locationAtIndex(0)->functionName(), "fn1");
    EXPECT_STREQ(e.locationAtIndex(3)->functionName(), "fn4");
    EXPECT_STREQ(e.locationAtIndex(4)->functionName(), "fn6");
    EXPECT_EQ(e.locationAtIndex(4)->lineNumber(), 6u);
    EXPECT_EQ(e.locationAtIndex(5), nullptr);

    // A copy is deep and keeps the order; changing it leaves the original.
    IInvalidParameter copy(e);
    copy.setText("fourth");
    EXPECT_EQ(e.textCount(), 3u);
    EXPECT_STREQ(copy.text(1), "third");
    EXPECT_STREQ(copy.text(3), "first more");
    EXPECT_STREQ(copy.locationAtIndex(4)->fileName(), "file6");
    EXPECT_TRUE(copy.isRecoverable());
    EXPECT_EQ(copy.errorId(), 7u);
    EXPECT_STREQ(copy.name(), "IInvalidParameter");
    EXPECT_STREQ(copy.wideName(), L"IInvalidParameter");

    IException empty(static_cast<const char*>(nullptr));
    EXPECT_EQ(empty.textCount(), 0u);
    empty.appendText("joined");
    EXPECT_STREQ(empty.text(), "joined");
    EXPECT_FALSE(empty.isRecoverable());
    EXPECT_STREQ(empty.errorCodeGroup(), "ZTH Foundation Library");
    EXPECT_STREQ(IException("").text(), "");
}

TEST(Exception, WithoutMemoryAnExceptionStillBehaves) {
    qarq::os::ScopedOsCall fail(&qarq::os::Calls::malloc, noMemory);
    IInvalidRequest e("lost", 5, IException::recoverable);
    e.setText("x").setErrorId(9).addLocation(place(1));
    EXPECT_FALSE(e.isRecoverable());
    EXPECT_EQ(e.errorId(), 0u);
    EXPECT_EQ(e.textCount(), 0u);
    EXPECT_EQ(e.locationCount(), 0u);
    EXPECT_STREQ(e.errorCodeGroup(), "ZTH Foundation Library");
    IExceptionLocation unknown("f", "g", 3);
    EXPECT_STREQ(unknown.functionName(), "Unknown");
    EXPECT_EQ(unknown.fileName(), nullptr);
    EXPECT_EQ(unknown.lineNumber(), 0u);
    IInvalidRequest copy(e);
    EXPECT_EQ(copy.textCount(), 0u);
}

TEST(Exception, ReportGoesThroughTheCurrentTraceFunction) {
    CapturingTraceFn capture;
    IException::TraceFn* previous = IException::setTraceFunction(&capture);
    EXPECT_EQ(IException::traceFunction(), &capture);

    IAccessError e("oldest", 12, IException::recoverable);
    e.setText("newest");
    e.setErrorCodeGroup(IException::operatingSystem);
    e.addLocation(place(1));
    e.addLocation(IExceptionLocation("a.cpp", "A::b", 42));
    e.logExceptionData();
    std::vector<std::string> expected = {
        "IAccessError exception thrown.\n  function: A::b\n  file: a.cpp\n  line: 42",
        "   Error Id is 12",
        "   Error Code group is Operating System",
        "   Exception text is:",
        "      oldest",
        "      newest"};
    EXPECT_EQ(capture.lines, expected);
    EXPECT_EQ(capture.logged, 1);

    capture.lines.clear();
    IException bare(static_cast<const char*>(nullptr));
    bare.setErrorCodeGroup(nullptr);
    bare.logExceptionDataWide();
    expected = {"\nIException exception thrown.\n   Location information is unavailable.",
                "   Error Id is unavailable.", "   Error Code group is unavailable.",
                "   Exception text is unavailable."};
    EXPECT_EQ(capture.lines, expected);

    // Without room for the lines the report goes straight to the stream.
    capture.lines.clear();
    testing::internal::CaptureStderr();
    {
        qarq::os::ScopedOsCall fail(&qarq::os::Calls::malloc, noMemory);
        e.logExceptionData();
    }
    std::string direct = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(capture.lines.empty());
    EXPECT_EQ(capture.logged, 2);
    EXPECT_EQ(direct,
              "IAccessError exception thrown.\n   function: A::b\n   file: a.cpp\n   line: 42.\n"
              "   Error ID is 12\n   Error Code group is Operating System\n"
              "   Exception text is:\n      oldest\n      newest\n");

    // Going back to the default: the default writes a line to standard error.
    EXPECT_EQ(IException::setTraceFunction(nullptr), &capture);
    EXPECT_NE(dynamic_cast<IExceptTraceFn*>(IException::traceFunction()), nullptr);
    testing::internal::CaptureStderr();
    IException::traceFunction()->writeWide(L"wide \x263A");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "wide \x1A\n");
    IException::setTraceFunction(previous);
}

TEST(SimpleText, FormsConvertInPlace) {
    ISimpleText none;
    EXPECT_TRUE(none.isNull());
    EXPECT_EQ(none.codeSet(), -1);
    EXPECT_EQ(none.length(), 0);

    ISimpleText text("h\xE9llo");
    EXPECT_EQ(text.form(), ISimpleText::narrow);
    EXPECT_EQ(text.codeSet(), 0);
    EXPECT_EQ(text.length(), 5);
    const wchar_t* wide = text.wideText();
    EXPECT_EQ(text.form(), ISimpleText::wide);
    EXPECT_EQ(wide[1], L'\xE9');
    EXPECT_EQ(text.length(), static_cast<long>(5 * sizeof(wchar_t)));
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
    copy.setText("new");
    EXPECT_STREQ(copy.text(), "new");
    EXPECT_EQ(copy.charCount(), 3);
}

}  // namespace
