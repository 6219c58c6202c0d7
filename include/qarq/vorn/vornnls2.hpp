// Code-set records and the table-file loader.
//
// A code-set record is a small malloc'd block that owns one table image held
// whole in memory; a null record always stands for the default code set. The
// loader reads a "ucv" table file by name from $BINDIR/GRV/server/codeset/ or
// the current directory, following up to four pointer files, and refuses a
// table whose positions, rows, nodes, prefixes or sizes reach outside the
// image: such a table is logged and gives a null result, exactly like one
// that could not be read. The engines therefore index an accepted image
// without range checks.
//
// Ownership: a record owns its table; free both with vornnls6_tis_cs_free.
// An image from vornnls2_get_table / vornnls2_load_table is freed with
// free() through the OS seam (qarq::os::calls().free).
// Threads: loading takes no lock; an accepted image is read-only and may be
// shared by any number of converting threads.
// Failures: every failure is logged through HESKLOGERROR and gives null;
// nothing here throws.
#pragma once

#include <cstdint>

#include "qarq/export.hpp"

extern "C" {

/// The handle of a loaded code set.
typedef struct VornNlsCodeSet {
    unsigned char* table;       ///< the table image, or null for a table-less code set
    uint16_t kind;              ///< 1 SBCS, 2 DBCS (ASCII), 3 MBCS (ASCII), 4 DBCS with shifts, 6 UTF-8
    uint16_t state;             ///< 1 once a table is attached
    uint16_t headerWord62;      ///< carried from the header, unused here
    uint16_t headerWord56;      ///< carried from the header, unused here
    unsigned char headerBytes64[16];  ///< carried from the header, unused here
    unsigned char shiftFlag1;
    unsigned char shiftFlag2;
    uint32_t tableSize;         ///< size of the image in bytes, 0 without a table
} VornNlsCodeSet;

/// A new record for the code set `name` ("UTF8" needs no file), or null.
QARQ_API VornNlsCodeSet* vornnls2_cs_new(const char* name);

/// The image of table `name`, tried under $BINDIR first, then in the current
/// directory; *size receives its size. Null when neither gives a valid table.
QARQ_API unsigned char* vornnls2_get_table(const char* name, unsigned* size);

/// The image of table `name` in `directory` ("" is the current directory; a
/// non-empty directory ends with '/'), or null.
QARQ_API unsigned char* vornnls2_load_table(const char* directory, const char* name,
                                            unsigned* size);

}  // extern "C"
