// The writing face of the Java stream: typed values, big-endian, each after
// its 16-bit tag, appended to a growing block (see VornBuffer for who owns
// the block). Made with no block, the writer takes one on its first put.
// Failures: std::bad_alloc when the block can't grow. Threads: one owner.
#pragma once

#include <cstdint>

#include "qarq/vorn/VornBuffer.hpp"
#include "qarq/vorn/VornJavaTypes.hpp"
#include "qarq/export.hpp"

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

    VornJavaWrite& writeByte(char value);
    /// One byte after the char-or-short tag.
    VornJavaWrite& writeChar(char value);
    VornJavaWrite& writeShort(short value);
    VornJavaWrite& writeInt(int value);
    VornJavaWrite& writeLong(int64_t value);
    /// 1 for any non-zero value.
    VornJavaWrite& writeBoolean(int value);
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
};
