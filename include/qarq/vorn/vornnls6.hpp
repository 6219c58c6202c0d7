// The default code sets and the life of code-set records.
//
// `def_cs` is the default workstation code set and `def_2_cs` the alternate
// one (French and Brazilian locales only). Both start with no table, kind 6,
// so that text passes through unchanged until a table is attached.
//
// Ownership: vornnls6_tis_set_def_cs moves a record's table into a default
// record; the caller then frees the record itself with free() (through the
// OS seam) and must not use its table any more.
// Threads: none of these take a lock. Setting or freeing a default must not
// overlap conversions that use it.
// Failures: none; results are as documented, nothing throws.
#pragma once

#include "qarq/export.hpp"
#include "qarq/vorn/vornnls2.hpp"

extern "C" {

/// The default workstation code set (which 1) and the alternate one (which 2).
QARQ_API extern VornNlsCodeSet* const def_cs;
QARQ_API extern VornNlsCodeSet* const def_2_cs;

/// Same as vornnls2_cs_new.
QARQ_API VornNlsCodeSet* vornnls6_tis_cs_new(const char* name);

/// Code set 850 when the locale (LANG) is exactly FR_FR or PT_BR, else null.
QARQ_API VornNlsCodeSet* vornnls6_tis_def_2_cs_new(void);

/// With `cs`: frees its table and the record. With null: frees the table of
/// the default chosen by `which` (2: def_2_cs; else def_cs, and with 1 the
/// next conversion with no code set initialises again). Returns 0.
QARQ_API int vornnls6_tis_cs_free(VornNlsCodeSet* cs, int which);

/// Copies `*cs` over def_cs (which 1) or def_2_cs (which 2) and frees the
/// table the default had. `cs` itself is left for the caller to free. Returns 0.
QARQ_API int vornnls6_tis_set_def_cs(VornNlsCodeSet* cs, int which);

}  // extern "C"
