// Log roll-over of the diagnostics library.
//
// The log directory is $BINDIR/GRV/server/log. Rolling `name` over renames
// `name.xml` to `name.YYYYMMDD-HHMMSS[-N].xml` (local time) beside it, deletes
// the oldest archives beyond $QARZ_LOG_KEEP (default 10), and creates a new
// empty `name.xml` held open for the caller.
//
// Threads: the caller serialises roll-overs of one log (the audit writer holds
// the audit lock around them).
#pragma once

#include <cstdio>

#include "qarq/export.hpp"

extern "C" {

/// Rolls log `name` over when its size is above `limitBytes` and opens the new
/// file for appending in *file. Returns 0 with *file open, else an errno value
/// (or -1) with *file null.
QARQ_API int HeskOpenRetry(const char* name, long limitBytes, FILE** file);

/// Closes a file that HeskOpenRetry opened. Returns 0, else an errno value.
QARQ_API int HeskFileClose(FILE* file);

}  // extern "C"
