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
            switch (plan[i] % 12) {
                case 0: (void)reader.readByte(); break;
                case 1: (void)reader.readChar(); break;
                case 2: (void)reader.readShort(); break;
                case 3: (void)reader.readInt(); break;
                case 4: (void)reader.readLong(); break;
                case 5: (void)reader.readBoolean(); break;
                case 6: (void)reader.readType(); break;
                case 7: (void)reader.readLength(); break;
                case 8: (void)reader.readShortLength(); break;
                case 9: (void)reader.getByte(); break;
                case 10: {
                    char out[8];
                    reader.getBytes(out, plan[i] % 9);
                    break;
                }
                default: reader.assertTypeRead(reader.readType(), VORNJAVA_INT, plan[i] & 0x40 ? VORNJAVA_LONG : 0);
            }
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
