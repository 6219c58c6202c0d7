#include "vorn/VornNlsTranslateCpInternal.hpp"

#include "vorn/VornTrace.hpp"

using qarq::vorn::traceControl;

extern "C" int VornNlsIsServerSBCS(void) {
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_ENTRY, "VornNlsIsServerSBCS");
    // Until a code set is loaded the default is the built-in pass-through,
    // which is single-byte as far as the string functions are concerned.
    const int result = 0;
    QARQ_TRACE_POINT(traceControl(), HESK_TRACE_EXIT, "VornNlsIsServerSBCS",
                     qarq::ras::pair(result));
    return result;
}
