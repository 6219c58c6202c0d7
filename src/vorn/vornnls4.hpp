// Engines of the ASCII-family code sets (kinds 1, 2 and 3) to and from UTF-8.
//
// Each is a VornNlsEngine. Bytes below 0x80 are copied with no table.
// Preconditions: `cs` holds a table that the loader accepted, of the
// engine's kind; source and target do not overlap. No state, no allocation,
// no lock; they never fail.
#pragma once

#include "vorn/VornNlsEngine.hpp"

extern "C" {

VornNlsEngine vornnls4_ascii_sbcs_to_utf8;
VornNlsEngine vornnls4_ascii_dbcs_to_utf8;
VornNlsEngine vornnls4_ascii_mbcs_to_utf8;
VornNlsEngine vornnls4_ascii_sbcs_from_utf8;
VornNlsEngine vornnls4_ascii_dbcs_from_utf8;
VornNlsEngine vornnls4_ascii_mbcs_from_utf8;

}  // extern "C"
