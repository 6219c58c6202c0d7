// The library-internal part of the code-page translation front end: the host
// code page, its code set and the load counter. Exported only so that tests
// can see and reset them; no lock guards them (see VornNlsTranslateCp.hpp).
#pragma once

#include <cstdint>

#include "qarq/export.hpp"
#include "qarq/vorn/vornnls2.hpp"

extern "C" {

/// 1 when the default code set is a double-byte or multi-byte one (kinds 2, 3
/// and 4), else 0. The double-byte string functions read their code-page flag
/// from it.
QARQ_API int VornNlsIsServerSBCS(void);

}  // extern "C"

namespace qarq::vorn::translate {

/// The host code page number; 0 until initialisation.
QARQ_API extern uint16_t gKs390_cp;

/// The lasting code set of the host code page; null stands for the default.
QARQ_API extern VornNlsCodeSet* gpKs390_cs;

/// Temporary code sets loaded by VornNlsTranslateCpString since the last report.
QARQ_API extern int32_t gNumbOfCpLoads;

/// More temporary loads than this are reported, and the count starts again.
constexpr int32_t kLoadReportLimit = 100;

}  // namespace qarq::vorn::translate
