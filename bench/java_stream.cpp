// 1,000,000 ints written and read back through the Java stream, against a
// minimal big-endian encoder and decoder of the same wire form, both into a
// block sized beforehand.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "qarq/vorn/VornJavaRead.hpp"
#include "qarq/vorn/VornJavaWrite.hpp"

namespace {

constexpr int kCount = 1000000;
constexpr unsigned kBytes = kCount * 6;

// The ints through `writer`, then read back; the sum keeps the reads.
int64_t writeThenRead(VornJavaWrite& writer) {
    for (int i = 0; i < kCount; ++i)
        writer.writeInt(i);
    VornJavaRead reader(writer.getBuffer(), writer.calculateUsedLength());
    int64_t sum = 0;
    for (int i = 0; i < kCount; ++i)
        sum += reader.readInt();
    return sum;
}

void StreamWriteReadInts(benchmark::State& state) {
    char* block = new char[kBytes];
    for (auto _ : state) {
        VornJavaWrite writer(block, kBytes);
        benchmark::DoNotOptimize(writeThenRead(writer));
        block = writer.getBuffer();
    }
    delete[] block;
}
BENCHMARK(StreamWriteReadInts)->Unit(benchmark::kMillisecond);

void HandWrittenWriteReadInts(benchmark::State& state) {
    std::vector<unsigned char> block(kBytes);
    for (auto _ : state) {
        unsigned char* out = block.data();
        for (int i = 0; i < kCount; ++i) {
            auto v = static_cast<uint32_t>(i);
            out[0] = 0x00;
            out[1] = 0x08;
            out[2] = static_cast<unsigned char>(v >> 24);
            out[3] = static_cast<unsigned char>(v >> 16);
            out[4] = static_cast<unsigned char>(v >> 8);
            out[5] = static_cast<unsigned char>(v);
            out += 6;
        }
        benchmark::ClobberMemory();
        const unsigned char* in = block.data();
        const unsigned char* end = in + kBytes;
        int64_t sum = 0;
        while (in + 6 <= end) {
            if (in[0] != 0x00 || in[1] != 0x08)
                state.SkipWithError("bad tag");
            sum += static_cast<int32_t>((uint32_t(in[2]) << 24) | (uint32_t(in[3]) << 16) |
                                        (uint32_t(in[4]) << 8) | uint32_t(in[5]));
            in += 6;
        }
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(HandWrittenWriteReadInts)->Unit(benchmark::kMillisecond);

// For the record: the same from a writer with no block, growing 4096 bytes
// at a time as documented.
void StreamWriteReadIntsGrowing(benchmark::State& state) {
    for (auto _ : state) {
        VornJavaWrite writer;
        benchmark::DoNotOptimize(writeThenRead(writer));
        delete[] writer.getBuffer();
    }
}
BENCHMARK(StreamWriteReadIntsGrowing)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

BENCHMARK_MAIN();
