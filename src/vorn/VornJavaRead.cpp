#include "qarq/vorn/VornJavaRead.hpp"

#include <cstring>

#include "qarq/ras/HeskLog.hpp"
#include "qarq/vorn/VornJavaExcReadBadType.hpp"
#include "vorn/VornTraceGate.hpp"

using qarq::ras::pair;

namespace {

const char kFile[] = "vorn\\VORNJAVA";

uint16_t loadBigEndian16(const unsigned char* from) {
    return static_cast<uint16_t>((from[0] << 8) | from[1]);
}

uint32_t loadBigEndian32(const unsigned char* from) {
    uint32_t value;
    std::memcpy(&value, from, sizeof value);
    return __builtin_bswap32(value);
}

uint64_t loadBigEndian64(const unsigned char* from) {
    uint64_t value;
    std::memcpy(&value, from, sizeof value);
    return __builtin_bswap64(value);
}

}  // namespace

VornJavaRead::VornJavaRead(char* buffer, unsigned length) : VornBuffer(buffer, length) {}
VornJavaRead::VornJavaRead(const VornJavaRead& other) = default;
VornJavaRead& VornJavaRead::operator=(const VornJavaRead& other) = default;
VornJavaRead::~VornJavaRead() = default;

// Each typed read has a fast path for when tag and value lie in the block and
// the tag is the expected one; anything else takes the checked path, which
// reports the wrong tag or the overrun. The payload is checked whole before
// any of it is taken, so a cut value leaves the reader just past its tag.

short VornJavaRead::read16Bits() {
    auto high = static_cast<unsigned char>(getByte());
    auto low = static_cast<unsigned char>(getByte());
    return static_cast<short>((high << 8) | low);
}

int VornJavaRead::read32Bits() {
    uint32_t value = 0;
    for (int i = 0; i < 4; ++i)
        value = (value << 8) | static_cast<unsigned char>(getByte());
    return static_cast<int>(value);
}

unsigned short VornJavaRead::readType() {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaRead::readType", pair(this, 0));
    auto type = static_cast<unsigned short>(read16Bits());
    VORN_TRACE(HESK_TRACE_EXIT, "VornJavaRead::readType", pair(&type, sizeof type));
    return type;
}

int VornJavaRead::readLength() {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaRead::readLength", pair(this, 0));
    int32_t length = read32Bits();
    VORN_TRACE(HESK_TRACE_EXIT, "VornJavaRead::readLength", pair(length));
    return length;
}

short VornJavaRead::readShortLength() {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaRead::readShortLength", pair(this, 0));
    int16_t length = read16Bits();
    VORN_TRACE(HESK_TRACE_EXIT, "VornJavaRead::readShortLength", pair(length));
    return length;
}

void VornJavaRead::assertTypeRead(unsigned short read, unsigned short expected1,
                                  unsigned short expected2) {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaRead::assertTypeRead", pair(&read, sizeof read),
               pair(&expected1, sizeof expected1), pair(&expected2, sizeof expected2));
    if (read != 0 && (read == expected1 || (expected2 != 0 && read == expected2)))
        return;
    qarq::ras::logError("VornJavaRead::assertTypeRead", __LINE__, 0, 0,
                        {pair(&read, sizeof read), pair(&expected1, sizeof expected1),
                         pair(&expected2, sizeof expected2)});
    VornJavaExcReadBadType(read, expected1, expected2, *this,
                           IExceptionLocation(kFile, "VornJavaRead::assertTypeRead", __LINE__));
}

char VornJavaRead::readByteTraced() {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaRead::readByte", pair(this, 0));
    char value;
    if (const unsigned char* from = fastValue(VORNJAVA_BYTE, 1)) {
        value = static_cast<char>(from[0]);
    } else {
        assertTypeRead(readType(), VORNJAVA_BYTE, 0);
        checkNextRead(1, "VornJavaRead::readByte");
        value = getByte();
    }
    VORN_TRACE(HESK_TRACE_EXIT, "VornJavaRead::readByte", pair(&value, 1));
    return value;
}

char VornJavaRead::readCharTraced() {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaRead::readChar", pair(this, 0));
    char value;
    if (const unsigned char* from = fastValue(VORNJAVA_CHAR_OR_SHORT, 1)) {
        value = static_cast<char>(from[0]);
    } else {
        assertTypeRead(readType(), VORNJAVA_CHAR_OR_SHORT, 0);
        checkNextRead(1, "VornJavaRead::readChar");
        value = getByte();
    }
    VORN_TRACE(HESK_TRACE_EXIT, "VornJavaRead::readChar", pair(&value, 1));
    return value;
}

short VornJavaRead::readShortTraced() {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaRead::readShort", pair(this, 0));
    int16_t value;
    if (const unsigned char* from = fastValue(VORNJAVA_CHAR_OR_SHORT, 2)) {
        value = static_cast<int16_t>(loadBigEndian16(from));
    } else {
        assertTypeRead(readType(), VORNJAVA_CHAR_OR_SHORT, 0);
        checkNextRead(2, "VornJavaRead::readShort");
        value = read16Bits();
    }
    VORN_TRACE(HESK_TRACE_EXIT, "VornJavaRead::readShort", pair(value));
    return value;
}

int VornJavaRead::readIntTraced() {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaRead::readInt", pair(this, 0));
    int32_t value;
    if (const unsigned char* from = fastValue(VORNJAVA_INT, 4)) {
        value = static_cast<int32_t>(loadBigEndian32(from));
    } else {
        assertTypeRead(readType(), VORNJAVA_INT, 0);
        checkNextRead(4, "VornJavaRead::readInt");
        value = read32Bits();
    }
    VORN_TRACE(HESK_TRACE_EXIT, "VornJavaRead::readInt", pair(value));
    return value;
}

int64_t VornJavaRead::readLongTraced() {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaRead::readLong", pair(this, 0));
    int64_t value;
    if (const unsigned char* from = fastValue(VORNJAVA_LONG, 8)) {
        value = static_cast<int64_t>(loadBigEndian64(from));
    } else {
        assertTypeRead(readType(), VORNJAVA_LONG, 0);
        checkNextRead(8, "VornJavaRead::readLong");
        uint64_t bits = 0;
        for (int i = 0; i < 8; ++i)
            bits = (bits << 8) | static_cast<unsigned char>(getByte());
        value = static_cast<int64_t>(bits);
    }
    VORN_TRACE(HESK_TRACE_EXIT, "VornJavaRead::readLong", pair(value));
    return value;
}

int VornJavaRead::readBooleanTraced() {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornJavaRead::readBoolean", pair(this, 0));
    int32_t value;
    if (const unsigned char* from = fastValue(VORNJAVA_BOOLEAN, 1)) {
        value = static_cast<signed char>(from[0]);
    } else {
        assertTypeRead(readType(), VORNJAVA_BOOLEAN, 0);
        checkNextRead(1, "VornJavaRead::readBoolean");
        value = static_cast<signed char>(getByte());
    }
    VORN_TRACE(HESK_TRACE_EXIT, "VornJavaRead::readBoolean", pair(value));
    return value;
}

IString VornJavaRead::asString() const { return IString("VornJavaRead"); }

IString VornJavaRead::asDebugInfo() const {
    return VornJavaRead::asString() + "[" + bufferDebugInfo() + "]";
}
