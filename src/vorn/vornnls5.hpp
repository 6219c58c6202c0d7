// Engines of the EBCDIC-family code sets (kind 1 with the EBCDIC scheme, and
// kind 4 with shift state) to and from UTF-8.
//
// Each is a VornNlsEngine. Every byte and value goes through the
// table, ASCII included. The shift state of kind 4 starts unshifted in each
// call. Preconditions: `cs` holds a table that the loader accepted, of the
// engine's kind; source and target do not overlap. No state, no allocation,
// no lock; they never fail.
#pragma once

#include "vorn/VornNlsEngine.hpp"

extern "C" {

VornNlsEngine vornnls5_ebcdic_sbcs_to_utf8;
VornNlsEngine vornnls5_ebcdic_dbcs_to_utf8;
VornNlsEngine vornnls5_ebcdic_sbcs_from_utf8;
VornNlsEngine vornnls5_ebcdic_dbcs_from_utf8;

}  // extern "C"
