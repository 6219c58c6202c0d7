#include "qarq/vorn/VornJavaExcReadBadType.hpp"

#include "qarq/vorn/VornBuffer.hpp"

VornJavaExcReadBadType::VornJavaExcReadBadType(unsigned short read, unsigned short expected1,
                                               unsigned short expected2,
                                               const VornBuffer& buffer,
                                               const IExceptionLocation& location)
    : VornExcBase(IString(""), read, defSev) {
    IString message = IString("Invalid Java serialization TYPE...Read: ") + IString(read) +
                      ", Expected: " + IString(expected1) + " or " + IString(expected2);
    throwExc(message, buffer.asString(), buffer.asDebugInfo(), location);
}

const char* VornJavaExcReadBadType::name() const { return "VornJavaExcReadBadType"; }
