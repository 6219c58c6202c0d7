#include "qarq/vorn/VornNlsTranslateCp.hpp"

#include <cstdlib>
#include <cstring>

#include "qarq/base/Os.hpp"
#include "qarq/ras/HeskLog.hpp"
#include "qarq/vorn/vornnls1.hpp"
#include "qarq/vorn/vornnls3.hpp"
#include "qarq/vorn/vornnls6.hpp"
#include "vorn/VornDbcsInternal.hpp"
#include "vorn/VornNlsTable.hpp"
#include "vorn/VornNlsTranslateCpInternal.hpp"
#include "vorn/VornTrace.hpp"

namespace qarq::vorn::translate {

uint16_t gKs390_cp = 0;
VornNlsCodeSet* gpKs390_cs = nullptr;
int32_t gNumbOfCpLoads = 0;

}  // namespace qarq::vorn::translate

namespace {

using qarq::ras::pair;
using qarq::vorn::traceControl;
using namespace qarq::vorn::translate;

constexpr uint16_t kDefaultHostCodePage = 37;
constexpr const char* kTranslateString = "VornNlsTranslateCpString";
constexpr const char* kTranslate = "VornNlsTranslateCp";

// A code set chosen for one side of a translation.
struct Side {
    VornNlsCodeSet* cs = nullptr;
    bool temporary = false;
};

// Code page 0 is the default code set, the host code page has its lasting
// code set, and any other is loaded now by its decimal name. A failed load
// leaves null: the default code set stands in.
Side codeSetFor(unsigned short codePage) {
    Side side;
    if (codePage == 0) {
        return side;
    }
    if (codePage == gKs390_cp) {
        side.cs = gpKs390_cs;
        return side;
    }
    char name[8];
    std::snprintf(name, sizeof name, "%u", static_cast<unsigned>(codePage));
    side.cs = vornnls6_tis_cs_new(name);
    side.temporary = side.cs != nullptr;
    ++gNumbOfCpLoads;
    return side;
}

VornNlsCodeSet* loadByNumber(unsigned short codePage) {
    char name[8];
    std::snprintf(name, sizeof name, "%u", static_cast<unsigned>(codePage));
    return vornnls6_tis_cs_new(name);
}

// Converts `source` through UTF-8 into `target`, whose last byte stays NUL.
// False when the work buffer cannot be had (logged under `function`).
bool convert(const char* function, const VornNlsCodeSet* from, const VornNlsCodeSet* to,
             const char* source, char* target, uint32_t targetSize) {
    const size_t length = std::strlen(source);
    // A UTF-8 form is at most three bytes per source byte.
    const size_t workSize = length * 3 + 1;
    char* work = static_cast<char*>(qarq::os::calls().malloc(workSize));
    if (work == nullptr) {
        const uint32_t size32 = static_cast<uint32_t>(workSize);
        qarq::ras::logError(function, __LINE__, 0, 0, {pair(size32), pair(source)});
        return false;
    }
    std::memset(work, 0, workSize);
    std::memset(target, 0, targetSize);
    vornnls3_tis_to_utf8(from, source, static_cast<int>(length), work,
                         static_cast<unsigned>(workSize - 1));
    vornnls3_tis_from_utf8(to, work, static_cast<int>(std::strlen(work)), target, targetSize - 1);
    qarq::os::calls().free(work);
    return true;
}

const char* headerName(const VornNlsCodeSet* cs) {
    return reinterpret_cast<const char*>(cs->table + qarq::vorn::nls::kOffName);
}

int headerCodePage(const VornNlsCodeSet* cs) {
    return qarq::vorn::nls::rd16(cs->table + qarq::vorn::nls::kOffCodepage);
}

int translateString(unsigned short fromCodePage, const char* source, unsigned short toCodePage,
                    unsigned short targetSize, char* target) {
    const int32_t from32 = fromCodePage;
    const int32_t to32 = toCodePage;
    const int32_t size32 = targetSize;
    if (source == nullptr || target == nullptr) {
        qarq::ras::logError(kTranslateString, __LINE__, 0, 0, {pair(from32), pair(to32)});
        return 0;
    }
    if (fromCodePage == toCodePage) {
        qarq::ras::logError(kTranslateString, __LINE__, 0, 0, {pair(from32), pair(source)});
        if (targetSize > std::strlen(source)) {
            std::strcpy(target, source);
            return 1;
        }
        qarq::ras::logError(kTranslateString, __LINE__, 0, 0, {pair(size32)});
        return 0;
    }
    if (targetSize == 0) {
        // Not even the terminator fits: nothing is written.
        qarq::ras::logError(kTranslateString, __LINE__, 0, 0, {pair(size32)});
        return 0;
    }

    const Side from = codeSetFor(fromCodePage);
    const Side to = codeSetFor(toCodePage);
    const int result =
        convert(kTranslateString, from.cs, to.cs, source, target, targetSize) ? 1 : 0;
    if (from.temporary) {
        vornnls6_tis_cs_free(from.cs, 0);
    }
    if (to.temporary) {
        vornnls6_tis_cs_free(to.cs, 0);
    }
    // Only the host and the default code pages have lasting code sets; a
    // caller that keeps using others pays a file load per call, and this is
    // where that shows.
    if (gNumbOfCpLoads > kLoadReportLimit) {
        const int32_t loaded = from.temporary ? from32 : to32;
        qarq::ras::logError(kTranslateString, __LINE__, 0, 0, {pair(gNumbOfCpLoads), pair(loaded)});
        gNumbOfCpLoads = 0;
    }
    return result;
}

int translateToAlternate(VornNlsTranslateCpRequest* request) {
    if (request == nullptr) {
        qarq::ras::logError(kTranslate, __LINE__, 0, 0, {});
        return 0;
    }
    if (def_2_cs->table == nullptr) {
        return 2;
    }
    if (request->source == nullptr || request->target == nullptr) {
        if (request->source != nullptr) {
            qarq::ras::logError(kTranslate, __LINE__, 0, 0, {pair(request->source)});
        } else {
            qarq::ras::logError(kTranslate, __LINE__, 0, 0, {});
        }
        return 0;
    }
    if (request->targetSize == 0) {
        const uint32_t size = 0;
        qarq::ras::logError(kTranslate, __LINE__, 0, 0, {pair(size)});
        return 0;
    }
    return convert(kTranslate, def_cs, def_2_cs, request->source, request->target,
                   request->targetSize)
               ? 1
               : 0;
}

// The report of VornNlsDumpMisc; every line ends in CR LF.
void dumpTo(FILE* stream) {
    static const char kBanner[] =
        "###############################################################################\r\n";
    std::fprintf(stream, "\r\n");
    std::fprintf(stream, "%s", kBanner);
    std::fprintf(
        stream,
        "############## Dump of misc NLS stuff from VORN                  ##############\r\n");
    std::fprintf(stream, "%s", kBanner);
    std::fprintf(stream, "\r\n");

    // Table names are read with a bound: the header field is 32 bytes.
    std::fprintf(stream, "Default Workstation codepage info : \r\n");
    if (def_cs->table != nullptr) {
        std::fprintf(stream, "  def_cs->table->base.codepage    : %d \r\n", headerCodePage(def_cs));
        std::fprintf(stream, "  def_cs->table->base.name        : '%.32s' \r\n",
                     headerName(def_cs));
    } else {
        std::fprintf(stream, "  def_cs->table                   : '%s' \r\n", "null");
    }
    std::fprintf(stream, "  VornDbcsIsCodePageSingleByte    : ");
    std::fprintf(stream, "%s",
                 VornDbcsIsCodePageSingleByte.load() != 0 ? "TRUE  \r\n" : "FALSE \r\n");

    std::fprintf(stream, "Kestrum390 codepage info          : \r\n");
    std::fprintf(stream, "  gKs390_cp                       : %d \r\n",
                 static_cast<int>(gKs390_cp));
    // A host code set without a table (UTF8) has no header to show.
    if (gpKs390_cs != nullptr && gpKs390_cs->table != nullptr) {
        std::fprintf(stream, "  gpKs390_cs->table->base.codepage: %d \r\n",
                     headerCodePage(gpKs390_cs));
        std::fprintf(stream, "  gpKs390_cs->table->base.name    : '%.32s' \r\n",
                     headerName(gpKs390_cs));
    }

    std::fprintf(stream, "Alternate codepage info           : \r\n");
    if (def_2_cs->table != nullptr) {
        std::fprintf(stream, "  def_2_cs->table->base.codepage  : %d \r\n",
                     headerCodePage(def_2_cs));
        std::fprintf(stream, "  def_2_cs->table->base.name      : '%.32s' \r\n",
                     headerName(def_2_cs));
    } else {
        std::fprintf(stream, "  def_2_cs->table                 : '%s' \r\n", "null");
    }
    std::fprintf(stream, "gNumbOfCpLoads                    : %d \r\n",
                 static_cast<int>(gNumbOfCpLoads));
}

}  // namespace

extern "C" {

int VornNlsIsServerSBCS(void) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornNlsIsServerSBCS",
                     pair(static_cast<int32_t>(def_cs->kind)));
    const int result = def_cs->kind == 2 || def_cs->kind == 3 || def_cs->kind == 4 ? 1 : 0;
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornNlsIsServerSBCS", pair(result));
    return result;
}

int VornNlsTranslateCpInitialization(unsigned short reserved, unsigned short* codePage) {
    (void)reserved;
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornNlsTranslateCpInitialization",
                     pair(&codePage, static_cast<uint32_t>(sizeof codePage)));
    vornnls1_tis_init();
    // The table-name lookup may have settled the flag while the default code
    // set was still the built-in one; now the real one is loaded.
    VornDbcsInit();
    if (codePage != nullptr) {
        if (gpKs390_cs == nullptr) {
            const char* value = qarq::os::calls().getenv("KS390CODEPAGE");
            char fallback[8];
            if (value != nullptr && value[0] != '\0') {
                gKs390_cp = static_cast<uint16_t>(std::strtol(value, nullptr, 10));
            } else {
                gKs390_cp = kDefaultHostCodePage;
                std::snprintf(fallback, sizeof fallback, "%u", kDefaultHostCodePage);
                value = fallback;
            }
            gpKs390_cs = vornnls6_tis_cs_new(value);
        }
        *codePage = gKs390_cp;
    }
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornNlsTranslateCpInitialization",
                     pair(static_cast<int32_t>(gKs390_cp)));
    return 0;
}

int VornNlsTranslateCpString(unsigned reserved, unsigned short fromCodePage, const char* source,
                             unsigned short toCodePage, unsigned short targetSize, char* target) {
    (void)reserved;
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, kTranslateString,
                     pair(static_cast<int32_t>(fromCodePage)), pair(source),
                     pair(static_cast<int32_t>(toCodePage)),
                     pair(static_cast<int32_t>(targetSize)));
    const int result = translateString(fromCodePage, source, toCodePage, targetSize, target);
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, kTranslateString, pair(result),
                     pair(result != 0 ? target : nullptr));
    return result;
}

int VornNlsTranslateCpEnabled(void) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornNlsTranslateCpEnabled",
                     pair(def_2_cs->table, 0u));
    const int result = def_2_cs->table != nullptr ? 1 : 0;
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornNlsTranslateCpEnabled", pair(result));
    return result;
}

int VornNlsTranslateCp(VornNlsTranslateCpRequest* request) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, kTranslate,
                     pair(request != nullptr ? request->source : nullptr));
    const int result = translateToAlternate(request);
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, kTranslate, pair(result),
                     pair(result == 1 ? request->target : nullptr));
    return result;
}

void VornNlsTranslateCpTerminate(void) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornNlsTranslateCpTerminate",
                     pair(static_cast<int32_t>(gKs390_cp)));
    vornnls6_tis_cs_free(nullptr, 2);
    vornnls6_tis_cs_free(nullptr, 1);
    if (gpKs390_cs != nullptr) {
        vornnls6_tis_cs_free(gpKs390_cs, 0);
        gpKs390_cs = nullptr;
    }
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornNlsTranslateCpTerminate",
                     pair(static_cast<int32_t>(gKs390_cp)));
}

int VornNlsResetKS390Cp(unsigned short codePage, unsigned short* current) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornNlsResetKS390Cp",
                     pair(static_cast<int32_t>(codePage)), pair(static_cast<int32_t>(gKs390_cp)));
    if (codePage != 0 && codePage != gKs390_cp) {
        if (gpKs390_cs != nullptr) {
            vornnls6_tis_cs_free(gpKs390_cs, 0);
        }
        gKs390_cp = codePage;
        // A page without a table is not reported: the number stands and the
        // default code set serves in its place.
        gpKs390_cs = loadByNumber(codePage);
    }
    if (codePage != 0 && current != nullptr) {
        *current = codePage;
    }
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornNlsResetKS390Cp", pair(gpKs390_cs, 0u));
    return 0;
}

void VornNlsDumpMisc(FILE* stream) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornNlsDumpMisc",
                     pair(&stream, static_cast<uint32_t>(sizeof stream)));
    if (stream != nullptr) {
        dumpTo(stream);
    }
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornNlsDumpMisc", pair(gNumbOfCpLoads));
}

}  // extern "C"
