#include "qarq/vorn/VornJavaExcNullObject.hpp"

#include "qarq/base/IString.hpp"

VornJavaExcNullObject::VornJavaExcNullObject(const IString& className,
                                             const IExceptionLocation& location)
    : VornExcBase(IString(""), VornExcBase::defId, VornExcBase::defSev) {
    throwExc(IString("Null object exception...no object to read the stream's object into"),
             IString("Class: ") + className, location);
}

const char* VornJavaExcNullObject::name() const { return "VornJavaExcNullObject"; }

const wchar_t* VornJavaExcNullObject::wideName() const { return L"VornJavaExcNullObject"; }
