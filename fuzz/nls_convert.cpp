// Arbitrary bytes as UTF-8 and as text of each kind of code set, through both
// directions: the output must stay inside a target of exactly the given
// size (ASan watches its edges) and match the plain reference engines.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "../tests/nls/ReferenceEngines.hpp"
#include "NlsFuzzTables.hpp"
#include "qarq/vorn/vornnls3.hpp"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2) return 0;
    const auto& records = qarq::fuzz::sampleRecords();
    // First byte: table, direction, NUL-terminated or not. Second: target size.
    const VornNlsCodeSet* cs = records[data[0] % records.size()];
    if (cs == nullptr) std::abort();
    const bool toUtf8 = (data[0] / 8) % 2 == 0;
    const bool terminated = (data[0] / 16) % 2 == 1;
    const unsigned room = data[1] % 2 == 0 ? data[1] : unsigned(3 * (size - 2) + 1);
    std::vector<char> source(data + 2, data + size);
    source.push_back('\0');
    const int length = terminated ? -1 : int(size - 2);

    char* target = room != 0 ? static_cast<char*>(std::malloc(room)) : nullptr;
    std::vector<char> expected(room + 1, '\x5A');
    if (target != nullptr) std::memset(target, 0x5A, room);
    unsigned n = toUtf8 ? vornnls3_tis_to_utf8(cs, source.data(), length, target, room)
                        : vornnls3_tis_from_utf8(cs, source.data(), length, target, room);
    unsigned m = qarq::test::ref::convert(cs, source.data(), length, expected.data(), room, toUtf8);
    if (n > room || n != m || (room != 0 && std::memcmp(target, expected.data(), room) != 0))
        std::abort();
    std::free(target);
    return 0;
}
