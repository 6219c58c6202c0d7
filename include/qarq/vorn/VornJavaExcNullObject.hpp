// Raised when the stream brings an object and the reader was given no object
// to read it into (a null pointer to readObject, or a response or
// notification with no exception object set).
//
// As every exception of the family, constructing it is the throw; the object
// thrown is a VornExcBase, and this class's name appears in the log.
// Error id: 0. Texts: the message and the class name read.
#pragma once

#include "qarq/base/IExceptionLocation.hpp"
#include "qarq/export.hpp"
#include "qarq/vorn/VornExcBase.hpp"

class IString;

class QARQ_API VornJavaExcNullObject : public VornExcBase {
public:
    [[noreturn]] VornJavaExcNullObject(const IString& className,
                                       const IExceptionLocation& location);
    /// "VornJavaExcNullObject".
    const char* name() const override;
    const wchar_t* wideName() const override;
};
