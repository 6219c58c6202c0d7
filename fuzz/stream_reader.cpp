// Arbitrary bytes to a Java-stream reader that reads a sequence of primitive
// values chosen by the input itself. Whatever the bytes, the reader may only
// return values or raise the family's exception (VornExcBase): never crash,
// read outside its block, leak or grow.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "qarq/ras/HeskLog.hpp"
#include "qarq/vorn/VornExcBase.hpp"
#include "qarq/vorn/VornJavaRead.hpp"
#include "vorn/VornTrace.hpp"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Every refused value writes an error record; keep them off the console.
    setenv("QARZ_LOG_FILE", "/dev/null", 1);
    HeskLogReopen();
    return 0;
}

namespace {

// The reads a plan byte can name; the byte itself shapes the last two.
using Read = void (*)(VornJavaRead&, uint8_t);
const Read kReads[12] = {
    [](VornJavaRead& r, uint8_t) { (void)r.readByte(); },
    [](VornJavaRead& r, uint8_t) { (void)r.readChar(); },
    [](VornJavaRead& r, uint8_t) { (void)r.readShort(); },
    [](VornJavaRead& r, uint8_t) { (void)r.readInt(); },
    [](VornJavaRead& r, uint8_t) { (void)r.readLong(); },
    [](VornJavaRead& r, uint8_t) { (void)r.readBoolean(); },
    [](VornJavaRead& r, uint8_t) { (void)r.readType(); },
    [](VornJavaRead& r, uint8_t) { (void)r.readLength(); },
    [](VornJavaRead& r, uint8_t) { (void)r.readShortLength(); },
    [](VornJavaRead& r, uint8_t) { (void)r.getByte(); },
    [](VornJavaRead& r, uint8_t p) {
        char out[8];
        r.getBytes(out, p % 9);
    },
    [](VornJavaRead& r, uint8_t p) {
        r.assertTypeRead(r.readType(), VORNJAVA_INT, p & 0x40 ? VORNJAVA_LONG : 0);
    },
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0)
        return 0;
    // First byte: how many of the following bytes name the reads.
    size_t reads = data[0] % 32;
    if (reads + 1 > size)
        reads = size - 1;
    const uint8_t* plan = data + 1;
    size_t streamSize = size - 1 - reads;
    char* block = new char[streamSize == 0 ? 1 : streamSize];
    if (streamSize != 0)
        std::memcpy(block, plan + reads, streamSize);

    static TraceControl traceAll = {0xFFFFFFFFu, 3};
    TraceControl*& control = qarq::vorn::traceControl();
    TraceControl* saved = control;
    VornJavaRead reader(block, static_cast<unsigned>(streamSize));
    for (size_t i = 0; i < reads; ++i) {
        // The high bit opens the trace gate, so both the inline and the
        // traced paths see hostile bytes.
        control = (plan[i] & 0x80) != 0 ? &traceAll : saved;
        try {
            kReads[plan[i] % 12](reader, plan[i]);
        } catch (VornExcBase&) {
            // the family's refusal: the next read goes on from where it stopped
        }
        if (reader.getBuffer() != block || reader.getLength() != streamSize ||
            reader.calculateUsedLength() > streamSize)
            std::abort();  // a reader never replaces or passes its block
    }
    control = saved;
    delete[] block;
    return 0;
}
