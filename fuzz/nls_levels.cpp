// Arbitrary bytes through every engine at every instruction-set level the
// processor has: each level must give the scalar level's count and bytes,
// and stay inside a target of exactly the given size (ASan watches its
// edges; the source is a block of exactly its length).
#include <cstdlib>
#include <cstring>
#include <vector>

#include "NlsFuzzTables.hpp"
#include "qarq/vorn/vornnls3.hpp"
#include "vorn/VornNlsSimd.hpp"

namespace {

namespace nls = qarq::vorn::nls;

unsigned run(const VornNlsCodeSet* cs, bool toUtf8, const char* in, int length, char* out,
             unsigned room) {
    return toUtf8 ? vornnls3_tis_to_utf8(cs, in, length, out, room)
                  : vornnls3_tis_from_utf8(cs, in, length, out, room);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3)
        return 0;
    const auto& records = qarq::fuzz::sampleRecords();
    // First byte: table and direction; then the target size (16 bits, at
    // most three times the text plus one).
    const VornNlsCodeSet* cs = records[data[0] % records.size()];
    if (cs == nullptr)
        std::abort();
    const bool toUtf8 = (data[0] / 8) % 2 == 0;
    const size_t n = size - 3;
    const unsigned room = unsigned((data[1] | data[2] << 8) % (3 * n + 2));
    char* in = static_cast<char*>(std::malloc(n + 1));
    if (n != 0)
        std::memcpy(in, data + 3, n);

    std::vector<char> expected(room + 1, '\x5A');
    nls::selectSimdLevel(nls::SimdLevel::scalar);
    unsigned want = run(cs, toUtf8, in, int(n), expected.data(), room);
    for (int l = 1; l <= int(nls::cpuLevel()); ++l) {
        nls::selectSimdLevel(nls::SimdLevel(l));
        char* target = static_cast<char*>(std::malloc(room + 1));
        std::memset(target, 0x5A, room);
        unsigned got = run(cs, toUtf8, in, int(n), target, room);
        if (got != want || std::memcmp(target, expected.data(), room) != 0)
            std::abort();
        std::free(target);
    }
    std::free(in);
    return 0;
}
