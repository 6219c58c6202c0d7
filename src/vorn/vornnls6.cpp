#include "qarq/vorn/vornnls6.hpp"

#include <cstring>

#include "qarq/base/Os.hpp"
#include "qarq/ras/HeskTrace.hpp"
#include "vorn/VornNlsState.hpp"
#include "vorn/VornTrace.hpp"

using qarq::ras::pair;
namespace nls = qarq::vorn::nls;

extern "C" {

VornNlsCodeSet* vornnls6_tis_cs_new(const char* name) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "vornnls6_tis_cs_new",
                     pair(name));
    return vornnls2_cs_new(name);
}

VornNlsCodeSet* vornnls6_tis_def_2_cs_new(void) {
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "vornnls6_tis_def_2_cs_new",
                     pair(nls::lang()));
    const char* lang = nls::lang();
    if (lang != nullptr && (std::strcmp(lang, "FR_FR") == 0 || std::strcmp(lang, "PT_BR") == 0))
        return vornnls2_cs_new("850");
    return nullptr;
}

int vornnls6_tis_cs_free(VornNlsCodeSet* cs, int which) {
    int32_t which32 = which;
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "vornnls6_tis_cs_free",
                     pair(&cs, uint32_t(sizeof cs)), pair(which32));
    const qarq::os::Calls& os = qarq::os::calls();
    if (cs != nullptr) {
        if (cs->table != nullptr) os.free(cs->table);
        os.free(cs);
        return 0;
    }
    VornNlsCodeSet& def = nls::defaultRecord(which == 2 ? 2 : 1);
    if (def.table != nullptr) os.free(def.table);
    def.table = nullptr;
    if (which == 1) nls::tisInitialised() = false;
    return 0;
}

int vornnls6_tis_set_def_cs(VornNlsCodeSet* cs, int which) {
    int32_t which32 = which;
    QARQ_TRACE_POINT(qarq::vorn::traceControl(), HESK_TRACE_ENTRY, "vornnls6_tis_set_def_cs",
                     pair(&cs, uint32_t(sizeof cs)), pair(which32));
    if (cs == nullptr) return 0;
    VornNlsCodeSet& def = nls::defaultRecord(which == 2 ? 2 : 1);
    unsigned char* old = def.table;
    def = *cs;
    if (old != nullptr && old != def.table) qarq::os::calls().free(old);
    return 0;
}

}  // extern "C"
