// The reading face of the Java stream: each typed read takes the tag,
// refuses any other than its own with VornJavaExcReadBadType (after an error
// record; the position is then past the tag), and takes the big-endian
// payload. The reader is given the received bytes; it never grows or
// replaces them.
// Failures: VornJavaExcReadBadType for a wrong tag, VornBufferExcOverrun for
// a value that passes the end of the block; both are caught as VornExcBase.
// Threads: one owner.
#pragma once

#include <cstdint>

#include "qarq/vorn/VornBuffer.hpp"
#include "qarq/vorn/VornJavaTypes.hpp"
#include "qarq/export.hpp"

class QARQ_API VornJavaRead : public VornBuffer {
public:
    explicit VornJavaRead(char* buffer = nullptr, unsigned length = 0);
    VornJavaRead(const VornJavaRead& other);
    VornJavaRead& operator=(const VornJavaRead& other);
    ~VornJavaRead() override;

    char readByte();
    char readChar();
    short readShort();
    int readInt();
    int64_t readLong();
    /// The byte as a signed integer: 0xFF reads as -1 (still true).
    int readBoolean();
    /// Bare fields, no tag.
    unsigned short readType();
    int readLength();
    short readShortLength();

    /// Returns when `read` is `expected1`, or a non-zero `expected2`; a read
    /// tag of 0 never passes. Otherwise logs and raises VornJavaExcReadBadType.
    void assertTypeRead(unsigned short read, unsigned short expected1,
                        unsigned short expected2);

    IString asString() const override;
    IString asDebugInfo() const override;

private:
    short read16Bits();
    int read32Bits();
    // The tag and `count` payload bytes when they lie in the block and the
    // tag is `tag`; null otherwise (the checked path then reports).
    const unsigned char* fastValue(uint16_t tag, unsigned count);
};
