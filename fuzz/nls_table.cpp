// Arbitrary bytes as a table file to the loader. Odd first bytes patch one of
// the sample tables instead (three bytes a patch: offset high, offset low,
// value; a zero high byte cuts the file there), which reaches the checks of
// pages, rows, nodes and prefixes far more often than random headers do.
// A table that is accepted is then converted over, and the plain reference
// engines read it from a copy of exactly its size, so that any reach outside
// the image that the checks let through shows as an ASan error.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "../tests/nls/ReferenceEngines.hpp"
#include "NlsFuzzTables.hpp"
#include "qarq/base/Os.hpp"
#include "qarq/vorn/vornnls3.hpp"
#include "qarq/vorn/vornnls6.hpp"

namespace {

void convertBoth(const VornNlsCodeSet* cs, const VornNlsCodeSet* exact, const uint8_t* data,
                 size_t size) {
    static const char kText[] =
        "A\x80\xC3\xA9\x0E\x42\x41\x0F\x8F\xB0\xA1\xE3\x81\x82\xFF\xA4\xA2\x8E\xB1 z\xF0\x9F";
    std::vector<char> in(kText, kText + sizeof kText - 1);
    in.insert(in.end(), data, data + (size < 512 ? size : 512));
    for (bool toUtf8 : {true, false}) {
        std::vector<char> out(3 * in.size() + 1), ref(3 * in.size() + 1);
        unsigned n = toUtf8 ? vornnls3_tis_to_utf8(cs, in.data(), int(in.size()), out.data(),
                                                   unsigned(out.size()))
                            : vornnls3_tis_from_utf8(cs, in.data(), int(in.size()), out.data(),
                                                     unsigned(out.size()));
        unsigned m = qarq::test::ref::convert(exact, in.data(), int(in.size()), ref.data(),
                                              unsigned(ref.size()), toUtf8);
        if (n != m || std::memcmp(out.data(), ref.data(), n) != 0) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setenv("QARZ_LOG_FILE", "/dev/null", 1);  // refused tables are logged by design
    qarq::fuzz::sampleRecords();                // sample files a pointer may name
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const auto images = qarq::fuzz::sampleImages();
    std::vector<uint8_t> file;
    if (size > 0 && data[0] % 2 == 1) {
        file = images[(data[0] / 2) % images.size()].bytes();
        for (size_t i = 1; i + 2 < size; i += 3) {
            if (data[i] == 0 && data[i + 1] < 8) {
                file.resize(size_t(data[i + 2]) * 16 % (file.size() + 1));
                continue;
            }
            size_t at = (size_t(data[i]) << 8 | data[i + 1]) * 7 % (file.size() + 1);
            if (at < file.size()) file[at] = data[i + 2];
        }
    } else {
        file.assign(data, data + size);
    }
    const std::string path = qarq::fuzz::scratchDir() + "table";
    qarq::fuzz::writeFile(path, file.data(), file.size());
    VornNlsCodeSet* cs = qarq::fuzz::loadRecord("table");
    if (cs == nullptr) return 0;
    // A pointer file may have led to a sample table: check whatever loaded.
    VornNlsCodeSet exact = *cs;
    exact.table = static_cast<unsigned char*>(std::malloc(cs->tableSize));
    std::memcpy(exact.table, cs->table, cs->tableSize);
    convertBoth(cs, &exact, data, size);
    std::free(exact.table);
    qarq::os::calls().free(cs->table);
    delete cs;
    return 0;
}
