#include "qarq/vorn/VornJavaByteArray.hpp"

#include <cstdio>
#include <cstring>

#include "qarq/base/Os.hpp"
#include "qarq/ras/HeskLog.hpp"
#include "vorn/VornText.hpp"
#include "vorn/VornTrace.hpp"

namespace {

using qarq::ras::pair;

// The copy notices are printed for the deepest data trace only: they predate
// the trace records and some tools still look for them on standard output.
bool copyNoticeOn() {
    const TraceControl* control = qarq::vorn::traceControl();
    return control != nullptr && (control->mask & HESK_MASK_DATA) != 0 && control->level >= 4;
}

}  // namespace

VornJavaByteArray::VornJavaByteArray(unsigned length) : bytes_(nullptr), length_(0) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY,
                     "VornJavaByteArray::VornJavaByteArray", pair(length));
    setLength(length);
}

VornJavaByteArray::VornJavaByteArray(const VornJavaByteArray& other)
    : IVBase(other), bytes_(nullptr), length_(0) {
    if (copyNoticeOn()) std::printf("   *** Calling copy ctor for VornJavaByteArray \n");
    copyBytes(other.bytes_, other.length_);
}

VornJavaByteArray& VornJavaByteArray::operator=(const VornJavaByteArray& other) {
    if (copyNoticeOn()) std::printf("   *** Calling overloaded operator= for VornJavaByteArray \n");
    if (this != &other) copyBytes(other.bytes_, other.length_);
    return *this;
}

VornJavaByteArray::~VornJavaByteArray() { qarq::os::calls().free(bytes_); }

IString VornJavaByteArray::asString() const { return IString("VornJavaByteArray"); }

IString VornJavaByteArray::asDebugInfo() const {
    return VornJavaByteArray::asString() + "[this=0x" + qarq::vorn::hexText(this) +
           ", bytes_=0x" + qarq::vorn::hexText(bytes_) + ", length_=" + IString(length_) + "]";
}

VornJavaByteArray& VornJavaByteArray::setLength(unsigned length) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornJavaByteArray::setLength",
                     pair(length));
    qarq::os::calls().free(bytes_);
    bytes_ = nullptr;
    length_ = 0;
    if (length > 0) {
        bytes_ = static_cast<char*>(qarq::os::calls().malloc(length));
        if (bytes_ != nullptr) {
            length_ = length;
        } else {
            qarq::ras::logError("VornJavaByteArray::setLength", __LINE__, 0, 0, {pair(length)});
        }
    }
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, "VornJavaByteArray::setLength",
                     pair(length_));
    return *this;
}

VornJavaByteArray& VornJavaByteArray::copyBytes(const char* bytes, unsigned length) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "VornJavaByteArray::copyBytes",
                     pair(length));
    // The source may be this array's own block, which setLength releases.
    if (bytes != nullptr && bytes == bytes_) return *this;
    setLength(length);
    if (bytes_ != nullptr && bytes != nullptr) std::memcpy(bytes_, bytes, length_);
    return *this;
}

VornJavaByteArray& VornJavaByteArray::appendBytes(const char* bytes, unsigned length) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY,
                     "VornJavaByteArray::appendBytes", pair(length));
    if (bytes == nullptr || length == 0) return *this;
    const unsigned total = length_ + length;
    if (total < length_) {
        // The sum does not fit the length field: nothing can hold it.
        qarq::ras::logError("VornJavaByteArray::appendBytes", __LINE__, 0, 0,
                            {pair(length_), pair(length)});
        return *this;
    }
    char* block = static_cast<char*>(qarq::os::calls().malloc(total));
    if (block == nullptr) {
        qarq::ras::logError("VornJavaByteArray::appendBytes", __LINE__, 0, 0, {pair(total)});
        return *this;
    }
    if (length_ != 0) std::memcpy(block, bytes_, length_);
    std::memcpy(block + length_, bytes, length);
    qarq::os::calls().free(bytes_);
    bytes_ = block;
    length_ = total;
    return *this;
}

VornJavaByteArray& VornJavaByteArray::fill(char value) {
    if (length_ != 0) std::memset(bytes_, static_cast<unsigned char>(value), length_);
    return *this;
}
