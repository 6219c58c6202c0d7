// The members of VornJavaRead and VornJavaWrite that carry values with a
// length: strings, class names and byte arrays. Text is in the default code
// set inside the library and UTF-8 on the wire; it crosses here, and only here,
// through the conversion engines with a null code set.
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "qarq/base/IExceptionLocation.hpp"
#include "qarq/base/Os.hpp"
#include "qarq/ras/HeskLog.hpp"
#include "qarq/vorn/VornBuffer.hpp"
#include "qarq/vorn/VornBufferExcOverrun.hpp"
#include "qarq/vorn/VornJavaByteArray.hpp"
#include "qarq/vorn/VornJavaExcStringLength.hpp"
#include "qarq/vorn/VornJavaRead.hpp"
#include "qarq/vorn/VornJavaString.hpp"
#include "qarq/vorn/VornJavaWrite.hpp"
#include "qarq/vorn/vornnls3.hpp"
#include "vorn/VornTrace.hpp"

using qarq::ras::pair;

namespace {

// Work blocks come from the OS seam so that a test can refuse them.
struct FreeBlock {
    void operator()(char* block) const { qarq::os::calls().free(block); }
};
using Block = std::unique_ptr<char, FreeBlock>;

// A zeroed block of `size` bytes, or null.
Block zeroedBlock(size_t size) {
    Block block(static_cast<char*>(qarq::os::calls().malloc(size)));
    if (block) std::memset(block.get(), 0, size);
    return block;
}

// The room for a conversion's output: three bytes for each input byte (the
// most that one byte can become) and the terminator.
size_t capacityFor(size_t length) { return length * 3 + 1; }

const char kSource[] = "vorn\\VORNJAVA";

}  // namespace

// ---- VornJavaWrite --------------------------------------------------------

VornJavaWrite& VornJavaWrite::writeString(const char* text) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornJavaWrite::writeString",
                     pair(text));
    writeStringBytes(VORNJAVA_STRING, text);
    return *this;
}

VornJavaWrite& VornJavaWrite::writeString(const IString& text) {
    return writeString(static_cast<const char*>(text.data()));
}

VornJavaWrite& VornJavaWrite::writeString(const VornJavaString& text) {
    return writeString(static_cast<const char*>(text.data()));
}

VornJavaWrite& VornJavaWrite::writeString(const VornJavaString& text, ENC_ENC_KEY_DEF*) {
    std::printf("You should not be here:  VornJavaWrite :: writeString\n");
    return writeString(text);
}

VornJavaWrite& VornJavaWrite::writeClass(const VornJavaString& name) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornJavaWrite::writeClass",
                     pair(name.data(), name.length()));
    writeStringBytes(VORNJAVA_CLASS, name.data());
    return *this;
}

VornJavaWrite& VornJavaWrite::writeByteArray(const VornJavaByteArray& bytes) {
    const unsigned length = bytes.getLength();
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY,
                     "VornJavaWrite::writeByteArray", pair(length));
    writeType(VORNJAVA_BYTE_ARRAY);
    writeLength(static_cast<int>(length));
    if (length != 0) putBytes(bytes.getBytes(), length);
    return *this;
}

// The tag goes down only once the text is converted and known to fit, so a
// refused string leaves nothing of itself on the stream.
void VornJavaWrite::writeStringBytes(unsigned short type, const char* text) {
    const size_t length = std::strlen(text);
    if (length > static_cast<size_t>(INT_MAX / 3)) refuseString(length);
    const uint32_t capacity = static_cast<uint32_t>(capacityFor(length));
    Block work = zeroedBlock(capacity);
    const char* output = text;
    if (work) {
        vornnls3_tis_to_utf8(nullptr, text, static_cast<int>(length), work.get(), capacity - 1);
        output = work.get();
    } else {
        qarq::ras::logError("VornJavaWrite::writeStringBytes", __LINE__, 0, 0,
                            {pair(capacity), pair(text, static_cast<uint32_t>(length))});
    }
    const size_t utf8Length = std::strlen(output);
    if (utf8Length > VornJavaExcStringLength::maxLength) {
        work.reset();
        refuseString(utf8Length);
    }
    writeType(type);
    writeLength(static_cast<int>(utf8Length));
    if (utf8Length != 0) {
        writeShortLength(static_cast<short>(utf8Length & 0xFFFF));
        putBytes(output, static_cast<unsigned>(utf8Length));
    }
}

void VornJavaWrite::refuseString(size_t utf8Length) {
    const uint32_t length = utf8Length > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(utf8Length);
    qarq::ras::logError("VornJavaWrite::writeStringBytes", __LINE__, 0, 0, {pair(length)});
    VornJavaExcStringLength(length, *this,
                            IExceptionLocation(kSource, "VornJavaWrite::writeStringBytes", __LINE__));
    __builtin_unreachable();  // constructing it threw
}

// ---- VornJavaRead ---------------------------------------------------------

VornJavaRead& VornJavaRead::readString(VornJavaString& target) {
    return readString(static_cast<IString&>(target));
}

VornJavaRead& VornJavaRead::readString(VornJavaString& target, ENC_ENC_KEY_DEF*) {
    std::printf("You really should not be here:  VornJavaRead :: readString\n");
    return readString(target);
}

VornJavaRead& VornJavaRead::readString(IString& target) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornJavaRead::readString");
    assertTypeRead(readType(), VORNJAVA_STRING, 0);
    target = IString();
    // The first length only says whether text follows; the short length
    // counts it. A peer's negative or zero count reads as the empty string.
    if (readLength() <= 0) return *this;
    const short count = readShortLength();
    if (count <= 0) return *this;
    const unsigned n = static_cast<unsigned>(count);
    // At most 32767 bytes: the short length can't announce more.
    char raw[32767];
    getBytes(raw, n);
    const uint32_t capacity = static_cast<uint32_t>(capacityFor(n));
    Block work = zeroedBlock(capacity);
    if (work) {
        vornnls3_tis_from_utf8(nullptr, raw, static_cast<int>(n), work.get(), capacity - 1);
        target = IString(work.get());
    } else {
        qarq::ras::logError("VornJavaRead::readString", __LINE__, 0, 0,
                            {pair(capacity), pair(raw, n)});
        target = IString(raw, n);
    }
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornJavaRead::readString",
                     pair(target.data(), target.length()));
    return *this;
}

VornJavaString VornJavaRead::readClass() {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornJavaRead::readClass");
    const unsigned short type = readType();
    assertTypeRead(type, VORNJAVA_CLASS, VORNJAVA_CLASS_HANDLE);
    VornJavaString name;
    if (type == VORNJAVA_CLASS_HANDLE) {
        // A class number: its decimal text is all the caller gets.
        name = VornJavaString(IString(static_cast<int>(readShortLength())));
    } else {
        Block bytes(readStringBytes());
        if (bytes) name = VornJavaString(bytes.get());
    }
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornJavaRead::readClass",
                     pair(name.data(), name.length()));
    return name;
}

VornJavaRead& VornJavaRead::readByteArray(VornJavaByteArray& array) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornJavaRead::readByteArray");
    assertTypeRead(readType(), VORNJAVA_BYTE_ARRAY, 0);
    const int length = readLength();
    const unsigned count = static_cast<unsigned>(length);
    // Checked before anything is allocated: a hostile length must not size a block.
    if (length < 0 || count > remaining()) {
        qarq::ras::logError("VornJavaRead::readByteArray", __LINE__, 0, 0, {pair(length)});
        VornBufferExcOverrun(*this,
                             IExceptionLocation(kSource, "VornJavaRead::readByteArray", __LINE__));
    }
    array.setLength(count);
    if (count > 0) {
        if (array.getBytes() != nullptr) {
            getBytes(array.getBytes(), count);
        } else {
            // The array could not take the bytes; skip them so the stream stays in step.
            advance(count);
        }
    }
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornJavaRead::readByteArray",
                     pair(count));
    return *this;
}

// Counts by the 32-bit length; the short length is read and dropped. The
// result comes from the OS seam's malloc; the caller frees it there.
char* VornJavaRead::readStringBytes() {
    const int length = readLength();
    if (length <= 0) return nullptr;
    readShortLength();
    const unsigned count = static_cast<unsigned>(length);
    if (count > remaining()) {
        qarq::ras::logError("VornJavaRead::readStringBytes", __LINE__, 0, 0, {pair(length)});
        VornBufferExcOverrun(*this,
                             IExceptionLocation(kSource, "VornJavaRead::readStringBytes", __LINE__));
    }
    Block raw(static_cast<char*>(qarq::os::calls().malloc(size_t{count} + 1)));
    if (!raw) {
        qarq::ras::logError("VornJavaRead::readStringBytes", __LINE__, 0, 0, {pair(length)});
        advance(count);
        return nullptr;
    }
    getBytes(raw.get(), count);
    raw.get()[count] = '\0';
    const uint32_t capacity = static_cast<uint32_t>(capacityFor(count));
    Block work = zeroedBlock(capacity);
    if (!work) {
        qarq::ras::logError("VornJavaRead::readStringBytes", __LINE__, 0, 0,
                            {pair(capacity), pair(raw.get(), count)});
        return raw.release();
    }
    vornnls3_tis_from_utf8(nullptr, raw.get(), length, work.get(), capacity - 1);
    const uint32_t resultLength = static_cast<uint32_t>(std::strlen(work.get()));
    char* result = static_cast<char*>(qarq::os::calls().malloc(size_t{resultLength} + 1));
    if (result == nullptr) {
        qarq::ras::logError("VornJavaRead::readStringBytes", __LINE__, 0, 0,
                            {pair(resultLength), pair(work.get(), resultLength)});
        return nullptr;
    }
    std::memcpy(result, work.get(), size_t{resultLength} + 1);
    return result;
}
