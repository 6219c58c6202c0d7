// The library-internal part of the code-page translation front end.
#pragma once

#include "qarq/export.hpp"

extern "C" {

/// 1 when the default code set is a double-byte or multi-byte one (kinds 2, 3
/// and 4), else 0. The double-byte string functions read their code-page flag
/// from it.
QARQ_API int VornNlsIsServerSBCS(void);

}  // extern "C"
