// Translation of text between code pages by number.
//
// The host code page (KS390CODEPAGE, default 37) keeps a lasting code set
// from VornNlsTranslateCpInitialization until VornNlsTranslateCpTerminate or
// VornNlsResetKS390Cp; code page 0 is the default workstation code set; every
// other code page is loaded for the length of one call and freed again (the
// loads are counted and reported every hundred). Text goes through UTF-8. A
// code page whose table cannot be loaded is no failure: the default code set
// stands in. VornNlsTranslateCp converts from the default code set to the
// alternate one of the French and Brazilian locales.
//
// Order: VornNlsTranslateCpInitialization first, then conversions, then
// VornNlsTranslateCpTerminate. Threads: no locks. Initialisation, termination
// and VornNlsResetKS390Cp free tables that conversions read, so they must not
// overlap a conversion; conversions may run on several threads at once.
// Failures: logged through HESKLOGERROR with the function's name and shown
// in the result; nothing throws. A target is always left terminated when a
// conversion wrote to it.
#pragma once

#include <cstdint>
#include <cstdio>

#include "qarq/export.hpp"

extern "C" {

/// A request of VornNlsTranslateCp.
typedef struct VornNlsTranslateCpRequest {
    const char* source;   ///< NUL-terminated text in the default code set
    uint32_t targetSize;  ///< size of `target` in bytes
    char* target;         ///< receives the text in the alternate code set
} VornNlsTranslateCpRequest;

/// Loads the default code sets and settles the double-byte flag. With a
/// non-null `codePage`, also loads the host code set once and stores the host
/// code page number there. `reserved` is ignored. Returns 0.
QARQ_API int VornNlsTranslateCpInitialization(unsigned short reserved, unsigned short* codePage);

/// Translates `source` from `fromCodePage` to `toCodePage` into `target` of
/// `targetSize` bytes, cut at a character boundary and terminated. Equal code
/// pages copy the text when it fits with its terminator. Returns 1, or 0 for
/// a null text or target, a target too small for a copy, no room at all, or
/// no memory.
QARQ_API int VornNlsTranslateCpString(unsigned reserved, unsigned short fromCodePage,
                                      const char* source, unsigned short toCodePage,
                                      unsigned short targetSize, char* target);

/// 1 when the alternate code set has a table, else 0.
QARQ_API int VornNlsTranslateCpEnabled(void);

/// Translates `request->source` from the default code set to the alternate
/// one. Returns 1, 0 for a failure, 2 when there is no alternate code set (the
/// target is then not touched).
QARQ_API int VornNlsTranslateCp(VornNlsTranslateCpRequest* request);

/// Frees the alternate, the default and the host code sets. The next
/// conversion with the default code set loads it again; the host code page
/// number stays.
QARQ_API void VornNlsTranslateCpTerminate(void);

/// Makes `codePage` the host code page and loads its code set, unless it is
/// the current one already; `*current` (may be null) receives it. Code page
/// 0 changes nothing and leaves `*current` alone. Returns 0.
QARQ_API int VornNlsResetKS390Cp(unsigned short codePage, unsigned short* current);

/// Writes a report of the loaded code sets, the double-byte flag and the load
/// counter to `stream` (lines end in CR LF). A null stream writes nothing.
QARQ_API void VornNlsDumpMisc(FILE* stream);

}  // extern "C"
