// Code-set names and aliases: which table file is the machine's code page.
//
// The machine's code page is the user's default ANSI code page, taken from
// the process locale (LC_ALL, LC_CTYPE, LANG, in that order) as decimal text:
// "65001" for a UTF-8 codeset, "932"/"936"/"949"/"950" for the double-byte
// ones, otherwise the Windows ANSI page of the language ("1252" for C/POSIX).
// That name is filtered to [0-9A-Z] and may be replaced through the site's
// `aliases` file ($BINDIR/GRV/server/codeset/aliases, else ./aliases).
//
// Names are at most 127 characters and a NUL: buffers are 128 bytes.
// Threads: nothing takes a lock; vornnls1_tis_init is meant to run once,
// before conversions start on several threads.
// Failures: none reach the caller; a name that can't be had becomes empty
// and fails later at the table's open. Nothing throws.
#pragma once

#include "qarq/export.hpp"

extern "C" {

/// Loads the default code sets once (again after vornnls6_tis_cs_free(0, 1)).
QARQ_API unsigned vornnls1_tis_init(void);

/// The table name of the machine's code page, into `name` of `length` bytes.
QARQ_API unsigned vornnls1_tis_os_cs_name(char* name, int length);

/// Reads LANG (upper case) into the library's locale name; an unset or
/// empty LANG becomes "C" and the process gets LANG=C.
QARQ_API unsigned vornnls1_get_lang(void);

/// The default ANSI code page as decimal text; 1 when `length` is 0.
QARQ_API unsigned vornnls1_get_cs_name(char* name, unsigned length);

/// Filters `source` into a table name and applies the aliases.
QARQ_API unsigned vornnls1_get_table_name(const char* source, char* name, unsigned length);

/// Replaces `name` by its alias; 0 when an aliases file was read, 1 when none opened.
QARQ_API unsigned vornnls1_get_alias(char* name, unsigned length);

}  // extern "C"
