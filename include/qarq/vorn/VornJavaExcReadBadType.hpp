// Raised by VornJavaRead::assertTypeRead for a tag that is not the expected
// one. Constructing it is the throw: what is thrown is a VornExcBase with
// error id the tag read and the texts "Invalid Java serialization
// TYPE...Read: <read>, Expected: <expected1> or <expected2>", the buffer's
// asString and its asDebugInfo.
#pragma once

#include "qarq/vorn/VornExcBase.hpp"
#include "qarq/export.hpp"

class VornBuffer;

class QARQ_API VornJavaExcReadBadType : public VornExcBase {
public:
    VornJavaExcReadBadType(unsigned short read, unsigned short expected1,
                                        unsigned short expected2, const VornBuffer& buffer,
                                        const IExceptionLocation& location);
    const char* name() const override;
};
