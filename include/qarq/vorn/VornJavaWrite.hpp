// The writing face of the Java stream: typed values, big-endian, each after
// its 16-bit tag, appended to a growing block (see VornBuffer for who owns
// the block). Made with no block, the writer takes one on its first put.
// While tracing is off and the block has room, a typed write stores its bytes
// inline; otherwise it goes through the exported member that traces and grows
// the block byte by byte.
// Failures: std::bad_alloc when the block can't grow. Threads: one owner.
#pragma once

#include <cstdint>
#include <cstring>

#include "qarq/export.hpp"
#include "qarq/vorn/VornBuffer.hpp"
#include "qarq/vorn/VornJavaTypes.hpp"
#include "qarq/vorn/VornTraceWord.hpp"

// ---- values with a length (src/vorn/VornJavaValues.cpp) ----
#include <cstddef>
class VornJavaByteArray;
class VornJavaString;
struct ENC_ENC_KEY_DEF;
// ---- end ----

class QARQ_API VornJavaWrite : public VornBuffer {
  public:
    explicit VornJavaWrite(char* buffer = nullptr, unsigned length = 0);
    VornJavaWrite(const VornJavaWrite& other);
    VornJavaWrite& operator=(const VornJavaWrite& other);
    ~VornJavaWrite() override;

    VornJavaWrite& writeByte(char value) {
        return quickByte(VORNJAVA_BYTE, value) ? *this : writeByteTraced(value);
    }
    /// One byte after the char-or-short tag.
    VornJavaWrite& writeChar(char value) {
        return quickByte(VORNJAVA_CHAR_OR_SHORT, value) ? *this : writeCharTraced(value);
    }
    VornJavaWrite& writeShort(short value) {
        if (!quickRoom(4))
            return writeShortTraced(value);
        char* to = getNext();
        to[0] = 0;
        to[1] = static_cast<char>(VORNJAVA_CHAR_OR_SHORT);
        to[2] = static_cast<char>((value >> 8) & 0xFF);
        to[3] = static_cast<char>(value & 0xFF);
        advance(4);
        return *this;
    }
    VornJavaWrite& writeInt(int value) {
        if (!quickRoom(6))
            return writeIntTraced(value);
        char* to = getNext();
        to[0] = 0;
        to[1] = static_cast<char>(VORNJAVA_INT);
        uint32_t bits = __builtin_bswap32(static_cast<uint32_t>(value));
        std::memcpy(to + 2, &bits, sizeof bits);
        advance(6);
        return *this;
    }
    VornJavaWrite& writeLong(int64_t value) {
        if (!quickRoom(10))
            return writeLongTraced(value);
        char* to = getNext();
        to[0] = 0;
        to[1] = static_cast<char>(VORNJAVA_LONG);
        uint64_t bits = __builtin_bswap64(static_cast<uint64_t>(value));
        std::memcpy(to + 2, &bits, sizeof bits);
        advance(10);
        return *this;
    }
    /// 1 for any non-zero value.
    VornJavaWrite& writeBoolean(int value) {
        return quickByte(VORNJAVA_BOOLEAN, value != 0 ? 1 : 0) ? *this : writeBooleanTraced(value);
    }
    /// Bare fields, no tag.
    void writeType(unsigned short type);
    void writeLength(int length);
    void writeShortLength(short length);

    IString asString() const override;
    IString asDebugInfo() const override;

    // ---- values with a length (src/vorn/VornJavaValues.cpp) ----
    // Text goes in the default code set and leaves as UTF-8, up to its first
    // NUL byte; the pointer must not be null. Text whose UTF-8 form is longer
    // than 32767 bytes, which no reader could take, raises
    // VornJavaExcStringLength before any of it is written.
    VornJavaWrite& writeString(const char* text);
    VornJavaWrite& writeString(const IString& text);
    VornJavaWrite& writeString(const VornJavaString& text);
    /// Prints a warning on standard output and writes as writeString(text);
    /// the key is ignored (only writers outside the library use keys).
    virtual VornJavaWrite& writeString(const VornJavaString& text, ENC_ENC_KEY_DEF* key);
    /// The empty name stands for the null object.
    VornJavaWrite& writeClass(const VornJavaString& name);
    VornJavaWrite& writeByteArray(const VornJavaByteArray& bytes);
    // ---- end ----

  private:
    // ---- values with a length ----
    void writeStringBytes(unsigned short type, const char* text);
    [[noreturn]] void refuseString(size_t utf8Length);
    // ---- end ----
    void write16Bits(short value);
    void write32Bits(int value);

    bool quickRoom(unsigned count) const {
        return qarq::vorn::traceQuiet() && remaining() >= count;
    }
    bool quickByte(uint16_t tag, char value) {
        if (!quickRoom(3))
            return false;
        char* to = getNext();
        to[0] = static_cast<char>(tag >> 8);
        to[1] = static_cast<char>(tag & 0xFF);
        to[2] = value;
        advance(3);
        return true;
    }
    // The traced, growing forms.
    VornJavaWrite& writeByteTraced(char value);
    VornJavaWrite& writeCharTraced(char value);
    VornJavaWrite& writeShortTraced(short value);
    VornJavaWrite& writeIntTraced(int value);
    VornJavaWrite& writeLongTraced(int64_t value);
    VornJavaWrite& writeBooleanTraced(int value);
};
