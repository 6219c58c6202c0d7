#include "qarq/vorn/VornBuffer.hpp"

#include <cstdint>
#include <cstring>

#include "qarq/ras/HeskLog.hpp"
#include "qarq/vorn/VornBufferExcOverrun.hpp"
#include "vorn/VornTraceGate.hpp"

namespace {

const char kFile[] = "vorn\\VORNJAVA";

IString hex(const void* address) {
    return IString(static_cast<unsigned long>(reinterpret_cast<std::uintptr_t>(address)))
        .decimalToHexText();
}

}  // namespace

VornBuffer::VornBuffer(char* buffer, unsigned length)
    : buffer_(buffer), next_(buffer), length_(buffer != nullptr ? length : 0) {}

VornBuffer::VornBuffer(const VornBuffer& other) = default;
VornBuffer& VornBuffer::operator=(const VornBuffer& other) = default;
VornBuffer::~VornBuffer() = default;

VornBuffer& VornBuffer::resetBuffer() {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornBuffer::resetBuffer", qarq::ras::pair(this, 0));
    next_ = buffer_;
    return *this;
}

VornBuffer& VornBuffer::setBuffer(char* buffer, unsigned length) {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornBuffer::setBuffer", qarq::ras::pair(&buffer, sizeof buffer),
               qarq::ras::pair(&length, sizeof length));
    buffer_ = buffer;
    next_ = buffer;
    length_ = buffer != nullptr ? length : 0;
    return *this;
}

void VornBuffer::checkNextAccess(unsigned count) {
    unsigned used = calculateUsedLength();
    if (count <= length_ - used)
        return;
    auto growth = static_cast<unsigned>(getBufferGrowth());
    if (count > 0xFFFFFFFFu - growth - used) {
        // No 32-bit block holds this much: refuse as an overrun rather than
        // let the size wrap around.
        qarq::ras::logError("VornBuffer::checkNextAccess", __LINE__, 0, 0,
                            {qarq::ras::pair(&count, sizeof count),
                             qarq::ras::pair(&used, sizeof used)});
        VornBufferExcOverrun(*this, IExceptionLocation(kFile, "VornBuffer::checkNextAccess",
                                                       __LINE__));
    }
    unsigned size = used + count + growth;
    VORN_TRACE(HESK_TRACE_DATA, "VornBuffer::checkNextAccess", qarq::ras::pair(&used, sizeof used),
               qarq::ras::pair(&size, sizeof size));
    char* block = new char[size];  // a failure leaves the buffer as it was
    if (used != 0)
        std::memcpy(block, buffer_, used);
    delete[] buffer_;
    buffer_ = block;
    length_ = size;
    next_ = block + used;
}

void VornBuffer::checkNextRead(unsigned count, const char* function) {
    unsigned used = calculateUsedLength();
    if (count <= length_ - used)
        return;
    qarq::ras::logError(function, __LINE__, 0, 0,
                        {qarq::ras::pair(&count, sizeof count), qarq::ras::pair(&used, sizeof used),
                         qarq::ras::pair(&length_, sizeof length_)});
    VornBufferExcOverrun(*this, IExceptionLocation(kFile, function, __LINE__));
}

VornBuffer& VornBuffer::putByte(char byte) {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornBuffer::putByte", qarq::ras::pair(&byte, 1));
    checkNextAccess(1);
    *next_++ = byte;
    return *this;
}

VornBuffer& VornBuffer::putBytes(const char* bytes, unsigned count) {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornBuffer::putBytes", qarq::ras::pair(bytes, count),
               qarq::ras::pair(&count, sizeof count));
    checkNextAccess(count);
    if (count != 0)
        std::memcpy(next_, bytes, count);
    next_ += count;
    return *this;
}

char VornBuffer::getByte() {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornBuffer::getByte", qarq::ras::pair(this, 0));
    checkNextRead(1, "VornBuffer::getByte");
    char byte = *next_++;
    VORN_TRACE(HESK_TRACE_EXIT, "VornBuffer::getByte", qarq::ras::pair(&byte, 1));
    return byte;
}

VornBuffer& VornBuffer::getBytes(char* bytes, unsigned count) {
    VORN_TRACE(HESK_TRACE_ENTRY, "VornBuffer::getBytes", qarq::ras::pair(&count, sizeof count));
    checkNextRead(count, "VornBuffer::getBytes");
    if (count != 0)
        std::memcpy(bytes, next_, count);
    next_ += count;
    VORN_TRACE(HESK_TRACE_EXIT, "VornBuffer::getBytes", qarq::ras::pair(bytes, count));
    return *this;
}

IString VornBuffer::asString() const { return IString("VornBuffer"); }

IString VornBuffer::bufferDebugInfo() const {
    return VornBuffer::asString() + "[this=0x" + hex(this) + ", buffer=0x" + hex(buffer_) +
           ", length=" + IString(static_cast<unsigned>(length_)) + ", next=0x" + hex(next_) +
           ", used=" + IString(calculateUsedLength()) + "]";
}

IString VornBuffer::asDebugInfo() const { return bufferDebugInfo(); }
