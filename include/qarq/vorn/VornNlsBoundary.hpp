// Where a stream of text may be cut into separate conversion calls.
//
// The engines keep no state between calls: each call reads its source from a
// character boundary, and a kind-4 (EBCDIC with shifts) call starts
// unshifted. A caller that converts a stream in pieces ends each piece where
// the engine, reading the whole stream, would have ended a character, and
// carries the kind-4 shift state into the next piece (by opening it with a
// shift-out). VornNlsBoundary walks the source by the very rules of the
// engine that vornnls3_tis_to_utf8 picks for the record, and for a record
// with no table (UTF-8) by the rule vornnls3_tis_from_utf8 reads UTF-8 with.
//
// Threads: reads only the caller's memory and the record's table, which must
// stay loaded for the call (with a null record, the first call may initialise
// the code-set modules, as a conversion would). Failures: none; nothing here
// throws; entry and exit are traced.
#pragma once

#include <cstddef>

#include "qarq/export.hpp"
#include "qarq/vorn/vornnls2.hpp"

extern "C" {

/// The shift-out and shift-in bytes of a kind-4 code set.
enum { VORNNLS_SHIFT_OUT = 0x0E, VORNNLS_SHIFT_IN = 0x0F };

/// The length of the longest prefix of [source, source + length) that ends on
/// a character boundary of `cs` (null: the default code set).
/// `shifted` (may be null, meaning "starts unshifted"): on entry, non-zero
/// when the engine would be in a shifted run at `source`; on return, whether
/// it is at the end of the prefix. Only kind 4 shifts; for the others it is
/// set to 0. A null source gives 0.
QARQ_API size_t VornNlsBoundary(const VornNlsCodeSet* cs, const char* source, size_t length,
                                int* shifted);

}  // extern "C"
