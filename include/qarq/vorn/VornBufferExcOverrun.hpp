// Raised when a get would pass the end of a buffer's block (and for a put
// that no 32-bit block could hold). Constructing it is the throw: what is
// thrown is a VornExcBase with error id the block's length and the texts
// "Buffer overrun exception...get/put past end of buffer", the buffer's
// asString and its asDebugInfo.
#pragma once

#include "qarq/vorn/VornExcBase.hpp"
#include "qarq/export.hpp"

class VornBuffer;

class QARQ_API VornBufferExcOverrun : public VornExcBase {
public:
    VornBufferExcOverrun(const VornBuffer& buffer,
                         const IExceptionLocation& location);
    const char* name() const override;
};
