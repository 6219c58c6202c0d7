#include "qarq/vorn/vornnls2.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <cctype>
#include <cstdio>
#include <cstring>

#include "qarq/base/Os.hpp"
#include "qarq/ras/HeskLog.hpp"
#include "vorn/VornNlsTable.hpp"
#include "vorn/VornTrace.hpp"

using qarq::ras::pair;
namespace nls = qarq::vorn::nls;

namespace {

constexpr int kMaxFilesInChain = 5;
constexpr size_t kPathMax = 256;

void closeQuietly(int fd) { qarq::os::calls().close(fd); }

// Reads the whole file at `path`; null (logged) on any failure.
unsigned char* readWhole(const char* path, size_t* size) {
    static const char* const kFn = "vornnls2_load_table";
    const qarq::os::Calls& os = qarq::os::calls();
    int fd = os.open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK, 0);
    if (fd < 0) {
        qarq::ras::logError(kFn, __LINE__, 0, 0, {pair(path)});
        return nullptr;
    }
    struct stat st;
    std::memset(&st, 0, sizeof st);
    if (os.fstat(fd, &st) != 0 || !S_ISREG(st.st_mode) || st.st_size < 0 ||
        uint64_t(st.st_size) > nls::kMaxFileSize) {
        closeQuietly(fd);
        int32_t handle = fd;
        qarq::ras::logError(kFn, __LINE__, 0, 0,
                            {pair(path), pair(handle), pair(&st, uint32_t(sizeof st))});
        return nullptr;
    }
    size_t want = size_t(st.st_size);
    // Room for the lookup data derived at load, so that one block holds all.
    size_t room = nls::alignedImageSize(want) + nls::kMaxDerivedSize;
    auto* image = static_cast<unsigned char*>(os.malloc(room));
    if (image == nullptr) {
        closeQuietly(fd);
        uint32_t size32 = uint32_t(want);
        qarq::ras::logError(kFn, __LINE__, 0, 0, {pair(path), pair(size32)});
        return nullptr;
    }
    size_t got = 0;
    while (got < want) {
        ssize_t n = os.read(fd, image + got, want - got);
        if (n <= 0) break;
        got += size_t(n);
    }
    if (got != want) {
        os.free(image);
        closeQuietly(fd);
        uint32_t size32 = uint32_t(want);
        qarq::ras::logError(kFn, __LINE__, 0, 0, {pair(path), pair(size32)});
        return nullptr;
    }
    closeQuietly(fd);
    *size = want;
    return image;
}

}  // namespace

extern "C" {

unsigned char* vornnls2_load_table(const char* directory, const char* name, unsigned* size) {
    static const char* const kFn = "vornnls2_load_table";
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, kFn, pair(directory),
                     pair(name));
    unsigned dummy = 0;
    if (size == nullptr) size = &dummy;
    *size = 0;
    if (directory == nullptr) directory = "";
    if (name == nullptr) name = "";
    const size_t dirLength = std::strlen(directory);
    if (dirLength + std::strlen(name) + 2 >= kPathMax) {
        qarq::ras::logError(kFn, __LINE__, 0, 0, {pair(directory), pair(name)});
        return nullptr;
    }
    char path[kPathMax];
    std::snprintf(path, sizeof path, "%s%s", directory, name);

    for (int round = 0; round < kMaxFilesInChain; ++round) {
        size_t fileSize = 0;
        unsigned char* image = readWhole(path, &fileSize);
        if (image == nullptr) return nullptr;
        if (fileSize >= nls::kMinTableSize && std::memcmp(image + nls::kOffTag, "ucv", 3) == 0) {
            if (const char* reason = nls::validateImage(image, fileSize)) {
                qarq::os::calls().free(image);
                uint32_t size32 = uint32_t(fileSize);
                qarq::ras::logError(kFn, __LINE__, 0, 0,
                                    {pair(path), pair(size32), pair(reason)});
                return nullptr;
            }
            // Give back what this kind's lookup data does not need; a
            // shrink that fails leaves the larger block, which is as good.
            size_t keep = nls::alignedImageSize(fileSize) + nls::derivedSize(image);
            if (void* smaller = qarq::os::calls().realloc(image, keep))
                image = static_cast<unsigned char*>(smaller);
            nls::buildDerived(image, fileSize, image + nls::alignedImageSize(fileSize));
            *size = unsigned(fileSize);
            QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, kFn, pair(path),
                             pair(*size));
            return image;
        }
        // A pointer file: its printable bytes name the next file, in the
        // same directory, cut where the path reaches 254 characters.
        size_t at = dirLength;
        for (size_t i = 0; i < fileSize && at < kPathMax - 2; ++i) {
            unsigned char c = image[i];
            if (std::isspace(c) || std::iscntrl(c)) continue;
            path[at++] = char(c);
        }
        path[at] = '\0';
        qarq::os::calls().free(image);
    }
    qarq::ras::logError(kFn, __LINE__, 0, 0, {pair(path)});
    return nullptr;
}

unsigned char* vornnls2_get_table(const char* name, unsigned* size) {
    static const char* const kFn = "vornnls2_get_table";
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, kFn, pair(name));
    const char* bindir = qarq::os::calls().getenv("BINDIR");
    if (bindir != nullptr && *bindir != '\0' && std::strlen(bindir) + 27 < 255) {
        char directory[kPathMax];
        std::snprintf(directory, sizeof directory, "%s%cGRV%cserver%ccodeset%c", bindir, '/',
                      '/', '/', '/');
        if (unsigned char* image = vornnls2_load_table(directory, name, size)) return image;
    }
    unsigned char* image = vornnls2_load_table("", name, size);
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, kFn,
                     pair(image != nullptr ? "table" : "none"));
    return image;
}

VornNlsCodeSet* vornnls2_cs_new(const char* name) {
    static const char* const kFn = "vornnls2_cs_new";
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, kFn, pair(name));
    if (name == nullptr) name = "";
    auto* cs = static_cast<VornNlsCodeSet*>(qarq::os::calls().malloc(sizeof(VornNlsCodeSet)));
    if (cs == nullptr) {
        qarq::ras::logError(kFn, __LINE__, 0, 0, {pair(name)});
        return nullptr;
    }
    std::memset(cs, 0, sizeof *cs);
    if (std::strcmp(name, "UTF8") == 0) {
        cs->kind = 6;
        return cs;
    }
    unsigned size = 0;
    unsigned char* table = vornnls2_get_table(name, &size);
    if (table == nullptr) {
        qarq::os::calls().free(cs);
        qarq::ras::logError(kFn, __LINE__, 0, 0, {pair(name)});
        return nullptr;
    }
    cs->table = table;
    cs->kind = nls::rd16(table + nls::kOffKind);
    cs->headerWord56 = nls::rd16(table + nls::kOffWord56);
    std::memcpy(cs->headerBytes64, table + nls::kOffBytes64, sizeof cs->headerBytes64);
    cs->headerWord62 = nls::rd16(table + nls::kOffWord62);
    cs->state = 1;
    cs->shiftFlag1 = 0;
    cs->shiftFlag2 = 0;
    cs->tableSize = size;
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_EXIT, kFn, pair(name));
    return cs;
}

}  // extern "C"
