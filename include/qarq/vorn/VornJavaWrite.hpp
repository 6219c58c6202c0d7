// The writing face of the Java stream: typed values, big-endian, each after
// its 16-bit tag, appended to a growing block (see VornBuffer for who owns
// the block). Made with no block, the writer takes one on its first put.
// Failures: std::bad_alloc when the block can't grow. Threads: one owner.
#pragma once

#include <cstdint>

#include "qarq/vorn/VornBuffer.hpp"
#include "qarq/vorn/VornJavaTypes.hpp"
#include "qarq/export.hpp"

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

private:
    void write16Bits(short value);
    void write32Bits(int value);
};
