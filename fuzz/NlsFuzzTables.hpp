// Tables for the code-set fuzz targets: the sample tables of the tests,
// written once into a temporary directory and loaded through the loader.
#pragma once

#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <vector>

#include "../tests/nls/TestTables.hpp"
#include "qarq/vorn/vornnls2.hpp"
#include "vorn/VornNlsTable.hpp"

namespace qarq::fuzz {

inline const std::string& scratchDir() {
    static const std::string dir = [] {
        char pattern[] = "/tmp/qarq-fuzz-XXXXXX";
        const char* made = mkdtemp(pattern);
        return std::string(made != nullptr ? made : "/tmp") + "/";
    }();
    return dir;
}

inline void writeFile(const std::string& path, const uint8_t* data, size_t size) {
    if (FILE* f = std::fopen(path.c_str(), "wb")) {
        if (size != 0) std::fwrite(data, 1, size, f);
        std::fclose(f);
    }
}

/// A record for the image in `name`, loaded from the scratch directory.
inline VornNlsCodeSet* loadRecord(const char* name) {
    unsigned size = 0;
    unsigned char* table = vornnls2_load_table(scratchDir().c_str(), name, &size);
    if (table == nullptr) return nullptr;
    auto* cs = new VornNlsCodeSet{};
    cs->table = table;
    cs->kind = qarq::vorn::nls::rd16(table + qarq::vorn::nls::kOffKind);
    cs->tableSize = size;
    cs->state = 1;
    return cs;
}

/// The five sample tables: ASCII SBCS, EBCDIC SBCS, DBCS, MBCS, shifted DBCS.
inline std::vector<test::UcvImage> sampleImages() {
    return {test::asciiSbcs(), test::ebcdicSbcs(), test::sampleDbcs(2), test::sampleMbcs(),
            test::sampleDbcs(4)};
}

// Kept for the life of the process (never destroyed, so never reported).
inline const std::vector<VornNlsCodeSet*>& sampleRecords() {
    static const std::vector<VornNlsCodeSet*>* records = [] {
        auto* r = new std::vector<VornNlsCodeSet*>;
        auto images = sampleImages();
        for (size_t i = 0; i < images.size(); ++i) {
            std::string name = "sample" + std::to_string(i);
            writeFile(scratchDir() + name, images[i].bytes().data(), images[i].bytes().size());
            r->push_back(loadRecord(name.c_str()));
        }
        return r;
    }();
    return *records;
}

}  // namespace qarq::fuzz
