// The reading face of the Java stream: each typed read takes the tag,
// refuses any other than its own with VornJavaExcReadBadType (after an error
// record; the position is then past the tag), and takes the big-endian
// payload. The reader is given the received bytes; it never grows or
// replaces them. While tracing is off, a value whose tag is right and whose
// bytes lie in the block is taken inline; anything else goes through the
// exported member that traces and reports.
// Failures: VornJavaExcReadBadType for a wrong tag, VornBufferExcOverrun for
// a value that passes the end of the block; both are caught as VornExcBase.
// Threads: one owner.
#pragma once

#include <cstdint>
#include <cstring>

#include "qarq/export.hpp"
#include "qarq/vorn/VornBuffer.hpp"
#include "qarq/vorn/VornJavaTypes.hpp"
#include "qarq/vorn/VornTraceWord.hpp"

// ---- values with a length (src/vorn/VornJavaValues.cpp) ----
class VornJavaByteArray;
class VornJavaString;
struct ENC_ENC_KEY_DEF;
// ---- end ----

class QARQ_API VornJavaRead : public VornBuffer {
  public:
    explicit VornJavaRead(char* buffer = nullptr, unsigned length = 0);
    VornJavaRead(const VornJavaRead& other);
    VornJavaRead& operator=(const VornJavaRead& other);
    ~VornJavaRead() override;

    char readByte() {
        const unsigned char* from = quickValue(VORNJAVA_BYTE, 1);
        return from != nullptr ? static_cast<char>(from[0]) : readByteTraced();
    }
    char readChar() {
        const unsigned char* from = quickValue(VORNJAVA_CHAR_OR_SHORT, 1);
        return from != nullptr ? static_cast<char>(from[0]) : readCharTraced();
    }
    short readShort() {
        const unsigned char* from = quickValue(VORNJAVA_CHAR_OR_SHORT, 2);
        return from != nullptr ? static_cast<short>((from[0] << 8) | from[1]) : readShortTraced();
    }
    int readInt() {
        const unsigned char* from = quickValue(VORNJAVA_INT, 4);
        if (from == nullptr)
            return readIntTraced();
        uint32_t bits;
        std::memcpy(&bits, from, sizeof bits);
        return static_cast<int>(__builtin_bswap32(bits));
    }
    int64_t readLong() {
        const unsigned char* from = quickValue(VORNJAVA_LONG, 8);
        if (from == nullptr)
            return readLongTraced();
        uint64_t bits;
        std::memcpy(&bits, from, sizeof bits);
        return static_cast<int64_t>(__builtin_bswap64(bits));
    }
    /// The byte as a signed integer: 0xFF reads as -1 (still true).
    int readBoolean() {
        const unsigned char* from = quickValue(VORNJAVA_BOOLEAN, 1);
        return from != nullptr ? static_cast<signed char>(from[0]) : readBooleanTraced();
    }
    /// Bare fields, no tag.
    unsigned short readType();
    int readLength();
    short readShortLength();

    /// Returns when `read` is `expected1`, or a non-zero `expected2`; a read
    /// tag of 0 never passes. Otherwise logs and raises VornJavaExcReadBadType.
    void assertTypeRead(unsigned short read, unsigned short expected1, unsigned short expected2);

    IString asString() const override;
    IString asDebugInfo() const override;

    // ---- values with a length (src/vorn/VornJavaValues.cpp) ----
    // Text arrives as UTF-8 and is given in the default code set. Strings
    // count by the 16-bit length; a first length of 0 or less, or a short
    // length of 0 or less, reads as the empty string. A wrong tag leaves the
    // target as it was.
    VornJavaRead& readString(VornJavaString& target);
    VornJavaRead& readString(IString& target);
    /// Prints a warning on standard output and reads as readString(target);
    /// the key is ignored (only readers outside the library use keys).
    virtual VornJavaRead& readString(VornJavaString& target, ENC_ENC_KEY_DEF* key);
    /// A class name (counted by the 32-bit length), or a class handle as the
    /// decimal text of its number. A name longer than the data left raises
    /// VornBufferExcOverrun before anything is allocated.
    VornJavaString readClass();
    /// The array gets the announced length and bytes. A length beyond the data
    /// left (or negative) raises VornBufferExcOverrun and allocates nothing; an
    /// array whose block can't be allocated stays empty and the bytes are skipped.
    VornJavaRead& readByteArray(VornJavaByteArray& array);
    // ---- end ----

  private:
    // ---- values with a length ----
    // A class name's bytes in the default code set, from the OS seam's malloc
    // (free them there), or null for the empty name or a failed allocation.
    char* readStringBytes();
    // ---- end ----
    short read16Bits();
    int read32Bits();
    // Steps over the tag and `count` payload bytes when they lie in the block
    // and the tag is `tag`, and gives the payload; null otherwise (the
    // checked path then reports).
    const unsigned char* fastValue(uint16_t tag, unsigned count) {
        if (remaining() < count + 2)
            return nullptr;
        const auto* from = reinterpret_cast<const unsigned char*>(getNext());
        if (from[0] != (tag >> 8) || from[1] != (tag & 0xFF))
            return nullptr;
        advance(count + 2);
        return from + 2;
    }
    const unsigned char* quickValue(uint16_t tag, unsigned count) {
        return qarq::vorn::traceQuiet() ? fastValue(tag, count) : nullptr;
    }
    char readByteTraced();
    char readCharTraced();
    short readShortTraced();
    int readIntTraced();
    int64_t readLongTraced();
    int readBooleanTraced();
};
