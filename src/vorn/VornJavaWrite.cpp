#include "qarq/vorn/VornJavaWrite.hpp"

#include <cstring>

#include "vorn/VornTraceGate.hpp"

using qarq::ras::pair;

namespace {

void storeBigEndian(char* to, uint16_t value, unsigned) {
    to[0] = static_cast<char>(value >> 8);
    to[1] = static_cast<char>(value & 0xFF);
}

void storeBigEndian(char* to, uint32_t value, unsigned) {
    value = __builtin_bswap32(value);
    std::memcpy(to, &value, sizeof value);
}

void storeBigEndian(char* to, uint64_t value, unsigned) {
    value = __builtin_bswap64(value);
    std::memcpy(to, &value, sizeof value);
}

}  // namespace

VornJavaWrite::VornJavaWrite(char* buffer, unsigned length) : VornBuffer(buffer, length) {}
VornJavaWrite::VornJavaWrite(const VornJavaWrite& other) = default;
VornJavaWrite& VornJavaWrite::operator=(const VornJavaWrite& other) = default;
VornJavaWrite::~VornJavaWrite() = default;

// The traced forms of the typed writes. With room in the block the bytes are
// stored at once; otherwise they go one at a time through putByte, which
// grows the block exactly at the byte that does not fit, so the block sizes
// are the same on every path.

void VornJavaWrite::write16Bits(short value) {
    putByte(static_cast<char>((value >> 8) & 0xFF));
    putByte(static_cast<char>(value & 0xFF));
}

void VornJavaWrite::write32Bits(int value) {
    putByte(static_cast<char>((value >> 24) & 0xFF));
    putByte(static_cast<char>((value >> 16) & 0xFF));
    putByte(static_cast<char>((value >> 8) & 0xFF));
    putByte(static_cast<char>(value & 0xFF));
}

void VornJavaWrite::writeType(unsigned short type) {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaWrite::writeType", pair(&type, sizeof type));
    write16Bits(static_cast<short>(type));
}

void VornJavaWrite::writeLength(int length) {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaWrite::writeLength", pair(length));
    write32Bits(length);
}

void VornJavaWrite::writeShortLength(short length) {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaWrite::writeShortLength", pair(length));
    write16Bits(length);
}

VornJavaWrite& VornJavaWrite::writeByteTraced(char value) {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaWrite::writeByte", pair(&value, 1));
    if (remaining() >= 3) {
        char* to = getNext();
        storeBigEndian(to, VORNJAVA_BYTE, 2);
        to[2] = value;
        advance(3);
    } else {
        writeType(VORNJAVA_BYTE);
        putByte(value);
    }
    return *this;
}

VornJavaWrite& VornJavaWrite::writeCharTraced(char value) {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaWrite::writeChar", pair(&value, 1));
    if (remaining() >= 3) {
        char* to = getNext();
        storeBigEndian(to, VORNJAVA_CHAR_OR_SHORT, 2);
        to[2] = value;
        advance(3);
    } else {
        writeType(VORNJAVA_CHAR_OR_SHORT);
        putByte(value);
    }
    return *this;
}

VornJavaWrite& VornJavaWrite::writeShortTraced(short value) {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaWrite::writeShort", pair(value));
    if (remaining() >= 4) {
        char* to = getNext();
        storeBigEndian(to, VORNJAVA_CHAR_OR_SHORT, 2);
        storeBigEndian(to + 2, static_cast<uint16_t>(value), 2);
        advance(4);
    } else {
        writeType(VORNJAVA_CHAR_OR_SHORT);
        write16Bits(value);
    }
    return *this;
}

VornJavaWrite& VornJavaWrite::writeIntTraced(int value) {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaWrite::writeInt", pair(value));
    if (remaining() >= 6) {
        char* to = getNext();
        storeBigEndian(to, VORNJAVA_INT, 2);
        storeBigEndian(to + 2, static_cast<uint32_t>(value), 4);
        advance(6);
    } else {
        writeType(VORNJAVA_INT);
        write32Bits(value);
    }
    return *this;
}

VornJavaWrite& VornJavaWrite::writeLongTraced(int64_t value) {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaWrite::writeLong", pair(value));
    if (remaining() >= 10) {
        char* to = getNext();
        storeBigEndian(to, VORNJAVA_LONG, 2);
        storeBigEndian(to + 2, static_cast<uint64_t>(value), 8);
        advance(10);
    } else {
        writeType(VORNJAVA_LONG);
        for (int shift = 56; shift >= 0; shift -= 8)
            putByte(static_cast<char>((static_cast<uint64_t>(value) >> shift) & 0xFF));
    }
    return *this;
}

VornJavaWrite& VornJavaWrite::writeBooleanTraced(int value) {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaWrite::writeBoolean", pair(value));
    char byte = value != 0 ? 1 : 0;
    if (remaining() >= 3) {
        char* to = getNext();
        storeBigEndian(to, VORNJAVA_BOOLEAN, 2);
        to[2] = byte;
        advance(3);
    } else {
        writeType(VORNJAVA_BOOLEAN);
        putByte(byte);
    }
    return *this;
}

IString VornJavaWrite::asString() const { return IString("VornJavaWrite"); }

IString VornJavaWrite::asDebugInfo() const {
    return VornJavaWrite::asString() + "[" + bufferDebugInfo() + "]";
}
