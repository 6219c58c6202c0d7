// Process-wide state of the code-set modules: the initialisation flag, the
// locale name and the two default records.
//
// Threads: no lock; written only by initialisation and termination, which
// must not overlap conversions.
#pragma once

#include "qarq/export.hpp"
#include "qarq/vorn/vornnls2.hpp"

namespace qarq::vorn::nls {

/// Set when vornnls1_tis_init has run; cleared by vornnls6_tis_cs_free(0, 1).
QARQ_API bool& tisInitialised();

/// The locale name (LANG in upper case, or "C"); null before vornnls1_get_lang.
QARQ_API const char* lang();

/// Replaces the locale name; takes ownership of a seam-malloc'd string.
void setLang(char* value);

/// The storage of def_cs (which 1) and def_2_cs (which 2).
VornNlsCodeSet& defaultRecord(int which);

}  // namespace qarq::vorn::nls
