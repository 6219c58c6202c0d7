// Log roll-over of the diagnostics library.
//
// The log directory is $BINDIR/GRV/server/log. Rolling log `name` over renames
// `name.xml` to `name.YYYYMMDD-HHMMSS.xml` (local time; `-1`, `-2`, ... added
// when that archive exists already, which is never replaced), deletes the
// oldest archives beyond $QARZ_LOG_KEEP (1 to 10000, default 10), and creates
// a new empty `name.xml`, held open for the caller until HeskFileClose.
//
// A file that is not above the limit (another process rolled it over a moment
// ago) or not there at all is not archived: the call opens or creates it and
// succeeds, since the log then starts afresh as far as the caller is concerned.
//
// Threads: the caller serialises roll-overs of one log (the audit writer holds
// the audit lock around them); should two still meet, neither loses an archive.
// Failures: results are codes, nothing throws.
#pragma once

#include <cstdio>

#include "qarq/export.hpp"

extern "C" {

/// Rolls log `name` over when its size is above `limitBytes` (negative reads
/// as 0) and opens the current file for appending in *file. Returns 0 with
/// *file open, else an errno value with *file null: EINVAL for a null file
/// word or a name that is empty, longer than 128 bytes, or holds anything but
/// [A-Za-z0-9._-] or starts with '.'; ENOENT when BINDIR is not set or the
/// directory is missing; ENAMETOOLONG for an over-long BINDIR; what rename or
/// open said otherwise (the current file is then left as it was). Pruning old
/// archives never fails the call: a file that cannot be deleted is noted.
QARQ_API int HeskOpenRetry(const char* name, long limitBytes, FILE** file);

/// Closes a file that HeskOpenRetry opened. Returns 0, EBADF for a null file,
/// else the errno value of the failed close (the file is closed either way).
QARQ_API int HeskFileClose(FILE* file);

}  // extern "C"
