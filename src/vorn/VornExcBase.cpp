#include "qarq/vorn/VornExcBase.hpp"

#include "qarq/ras/HeskLog.hpp"

const uint32_t VornExcBase::defId = 0;
const IException::Severity VornExcBase::defSev = IException::recoverable;
const char* const VornExcBase::msgSpacing = "\n";
const char* const VornExcBase::begItem = "[";
const char* const VornExcBase::endItem = "] ";
const char* const VornExcBase::funcTrunc = "..";
const char* const VornExcBase::funcIn = ":";
const char* const VornExcBase::tExc = ", Exc: ";
const char* const VornExcBase::tId = "Id: ";
const char* const VornExcBase::tRec = ", Rec?: ";
const char* const VornExcBase::tText = "Text";
const char* const VornExcBase::tLoc = "Loc";

namespace {

// Longest function name a location line shows; 0 shows every name whole.
const unsigned kFunctionNameLimit = 0;

void logAnExc(const IException& exception, const IExceptionLocation* location) {
    const char* function = location != nullptr ? location->functionName() : "logAnExc";
    int line = location != nullptr ? static_cast<int>(location->lineNumber()) : 629;
    IString head = VornExcBase::formatExc(exception);
    IString texts = VornExcBase::formatText(exception);
    IString places = VornExcBase::formatLocation(exception);
    qarq::ras::logError(function, line, static_cast<int>(exception.errorId()),
                        exception.isRecoverable() ? 1 : 0,
                        {qarq::ras::pair(head.data(), head.length()),
                         qarq::ras::pair(texts.data(), texts.length()),
                         qarq::ras::pair(places.data(), places.length())});
}

}  // namespace

VornExcBase::VornExcBase(const IString& text, uint32_t id, IException::Severity sev)
    : IException(text.data(), id, sev) {}

VornExcBase::VornExcBase(const VornExcBase& other) = default;

VornExcBase::~VornExcBase() = default;

void VornExcBase::throwExc(const IExceptionLocation& location) {
    addLocation(location);
    log();
    throw VornExcBase(*this);
}

void VornExcBase::throwExc(const IString& t1, const IExceptionLocation& location) {
    appendText(t1.data());
    throwExc(location);
}

void VornExcBase::throwExc(const IString& t1, const IString& t2,
                           const IExceptionLocation& location) {
    appendText(t1.data());
    setText(t2.data());
    throwExc(location);
}

void VornExcBase::throwExc(const IString& t1, const IString& t2, const IString& t3,
                           const IExceptionLocation& location) {
    appendText(t1.data());
    setText(t2.data());
    setText(t3.data());
    throwExc(location);
}

void VornExcBase::throwExc(const IString& t1, const IString& t2, const IString& t3,
                           const IString& t4, const IExceptionLocation& location) {
    appendText(t1.data());
    setText(t2.data());
    setText(t3.data());
    setText(t4.data());
    throwExc(location);
}

VornExcBase& VornExcBase::log() {
    logAnExc(*this, nullptr);
    return *this;
}

void VornExcBase::logOnCatch(const IException& exception, const IExceptionLocation& location) {
    logAnExc(exception, &location);
}

IString VornExcBase::formatExc(const IException& exception) {
    return IString(tId) + IString(static_cast<unsigned>(exception.errorId())) + tRec +
           IString(exception.isRecoverable() ? 1 : 0) + tExc + exception.name() + msgSpacing;
}

IString VornExcBase::formatText(const IException& exception) {
    IString lines;
    for (uint32_t i = 0; i < exception.textCount(); ++i) {
        lines += tText;
        lines += begItem;
        lines += IString(static_cast<unsigned>(i));
        lines += endItem;
        lines += exception.text(i);
        lines += msgSpacing;
    }
    return lines;
}

IString VornExcBase::formatLocation(const IException& exception) {
    IString lines;
    for (uint32_t i = 0; i < exception.locationCount(); ++i) {
        const IExceptionLocation* location = exception.locationAtIndex(i);
        IString function(location->functionName());
        if (kFunctionNameLimit > 0 && function.length() > kFunctionNameLimit)
            function = function.subString(1, kFunctionNameLimit) + funcTrunc;
        lines += tLoc;
        lines += begItem;
        lines += IString(static_cast<unsigned>(i));
        lines += endItem;
        lines += IString(static_cast<unsigned>(location->lineNumber()));
        lines += funcIn;
        lines += location->fileName();
        lines += funcIn;
        lines += function;
        lines += msgSpacing;
    }
    return lines;
}

const char* VornExcBase::name() const { return "VornExcBase"; }
const wchar_t* VornExcBase::wideName() const { return L"VornExcBase"; }
