// Raised by the writer for a text whose UTF-8 form is longer than the 16-bit
// length field of the wire lets a reader take (32767 bytes). Nothing of the
// string is on the stream when it is raised.
//
// As every exception of the family, constructing it is the throw; the object
// thrown is a VornExcBase. Error id: the UTF-8 length. Texts: the message,
// the writer's asString and asDebugInfo.
#pragma once

#include "qarq/base/IExceptionLocation.hpp"
#include "qarq/export.hpp"
#include "qarq/vorn/VornExcBase.hpp"

class VornBuffer;

class QARQ_API VornJavaExcStringLength : public VornExcBase {
public:
    /// The most UTF-8 bytes a string may have on the wire.
    static const unsigned maxLength;

    [[noreturn]] VornJavaExcStringLength(unsigned length, const VornBuffer& buffer,
                                         const IExceptionLocation& location);
    /// "VornJavaExcStringLength".
    const char* name() const override;
    const wchar_t* wideName() const override;
};
