#include "qarq/vorn/VornJavaExcStringLength.hpp"

#include "qarq/base/IString.hpp"
#include "qarq/vorn/VornBuffer.hpp"

const unsigned VornJavaExcStringLength::maxLength = 32767;

VornJavaExcStringLength::VornJavaExcStringLength(unsigned length, const VornBuffer& buffer,
                                                 const IExceptionLocation& location)
    : VornExcBase(IString(""), length, VornExcBase::defSev) {
    throwExc(IString("String too long exception...UTF-8 length: ") + IString(length) +
                 ", at most: " + IString(maxLength),
             buffer.asString(), buffer.asDebugInfo(), location);
}

const char* VornJavaExcStringLength::name() const { return "VornJavaExcStringLength"; }

const wchar_t* VornJavaExcStringLength::wideName() const { return L"VornJavaExcStringLength"; }
