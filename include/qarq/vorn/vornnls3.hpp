// The two conversion entry points between a code set and UTF-8.
//
// A null code set means the default one, loaded at first use. A negative
// source length means a NUL-terminated source, and then the output is
// terminated too (the NUL counted when it fits; otherwise the last byte of a
// full target becomes the NUL). The engines stop quietly where the target is
// full, never splitting a character, and write nothing beyond the count they
// return. Unmapped characters become the question mark of the target code
// set; malformed UTF-8 bytes read as '?'. A null source reads as empty and a
// null target as one of no room.
//
// Threads: no lock and no static state; any number of threads may convert
// with one unchanging code set. The first call with no code set may load the
// default code set, which must not race with another such first call.
// Failures: none are reported beyond the count; nothing throws or logs.
#pragma once

#include "qarq/export.hpp"
#include "qarq/vorn/vornnls2.hpp"

extern "C" {

/// Converts `source` in code set `cs` to UTF-8; returns the bytes in `target`.
QARQ_API unsigned vornnls3_tis_to_utf8(const VornNlsCodeSet* cs, const char* source,
                                       int sourceLength, char* target, unsigned targetLength);

/// Converts UTF-8 `source` to code set `cs`; returns the bytes in `target`.
QARQ_API unsigned vornnls3_tis_from_utf8(const VornNlsCodeSet* cs, const char* source,
                                         int sourceLength, char* target,
                                         unsigned targetLength);

}  // extern "C"
