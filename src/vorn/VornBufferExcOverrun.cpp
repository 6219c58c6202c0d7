#include "qarq/vorn/VornBufferExcOverrun.hpp"

#include "qarq/vorn/VornBuffer.hpp"

VornBufferExcOverrun::VornBufferExcOverrun(const VornBuffer& buffer,
                                           const IExceptionLocation& location)
    : VornExcBase(IString(""), buffer.getLength(), defSev) {
    throwExc("Buffer overrun exception...get/put past end of buffer", buffer.asString(),
             buffer.asDebugInfo(), location);
}

const char* VornBufferExcOverrun::name() const { return "VornBufferExcOverrun"; }
