// IString against the standard library in the same run: copy, append of short
// pieces, compare.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "qarq/base/IString.hpp"

namespace {

const char kText[] = "a text of some sixty-four bytes, as a message field would hold..";

void IStringCopy(benchmark::State& state) {
    IString s(kText);
    for (auto _ : state) {
        IString copy(s);
        benchmark::DoNotOptimize(copy.data());
    }
}
BENCHMARK(IStringCopy);

void SharedPtrStringCopy(benchmark::State& state) {
    auto s = std::make_shared<std::string>(kText);
    for (auto _ : state) {
        std::shared_ptr<std::string> copy(s);
        benchmark::DoNotOptimize(copy.get());
    }
}
BENCHMARK(SharedPtrStringCopy);

// 64 pieces of 8 bytes onto an empty string.
void IStringAppend(benchmark::State& state) {
    for (auto _ : state) {
        IString s;
        for (int i = 0; i < 64; ++i)
            s += "piece-8.";
        benchmark::DoNotOptimize(s.data());
    }
}
BENCHMARK(IStringAppend);

void StdStringAppend(benchmark::State& state) {
    for (auto _ : state) {
        std::string s;
        for (int i = 0; i < 64; ++i)
            s += "piece-8.";
        benchmark::DoNotOptimize(s.data());
    }
}
BENCHMARK(StdStringAppend);

// Equal texts in separate buffers: every byte is looked at.
void IStringCompare(benchmark::State& state) {
    IString a(kText);
    IString b(kText, sizeof kText - 1);
    for (auto _ : state) {
        bool equal = a == b;
        benchmark::DoNotOptimize(equal);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(IStringCompare);

void StdStringCompare(benchmark::State& state) {
    std::string a(kText);
    std::string b(kText);
    for (auto _ : state) {
        bool equal = a == b;
        benchmark::DoNotOptimize(equal);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(StdStringCompare);

}  // namespace

BENCHMARK_MAIN();
