// String functions for NUL-terminated text in which a character is one or two
// bytes (the default workstation code page may be a double-byte one).
//
// They do what strspn, strpbrk, strstr, strtok and a path splitter do, but
// never take the trail byte of a double-byte character for a character of its
// own. Whether the code page is double-byte, and which bytes lead a two-byte
// character, is settled once by VornDbcsInit (run at first use, and again by
// VornNlsTranslateCpInitialization once the real default code set is loaded).
//
// Contract: text arguments are not null and are NUL-terminated; a null set
// counts as an empty set. The functions work in place, allocate nothing, take
// no locks, keep no state between calls and never throw. None reads behind a
// terminator. A lead byte with the NUL right behind it is an invalid
// character of length 0: any walk along a text or a set ends there.
// Threads: safe on any thread, as long as VornDbcsInit does not run at the
// same time as a walk that depends on the code page.
#pragma once

#include "qarq/export.hpp"

extern "C" {

/// Byte types returned by VornDbcsByteType.
enum VornDbcsType {
    VORN_DBCS_INVALID = 0,  ///< a lead byte with a NUL behind it
    VORN_DBCS_SINGLE = 1,   ///< a single-byte character
    VORN_DBCS_LEAD = 2,     ///< the lead byte of a double-byte character
    VORN_DBCS_TRAIL = 3     ///< the trail byte of a double-byte character
};

/// The type of the byte at `index`, found by walking `text` from its start
/// (cost linear in `index`: callers that go along a text pass `text + i` and
/// index 0, with `i` on a character start). In a single-byte code page every
/// byte is of type 1. An index at or behind the terminator, or negative,
/// gives 1: the walk does not go past the NUL.
QARQ_API int VornDbcsByteType(const char* text, int index);

/// `text` behind its leading run of characters that are in `set`.
QARQ_API char* VornDbcs_strip_leading(const char* text, const char* set);

/// Cuts the trailing run of characters that are in `set` off `text` in place
/// (a NUL goes to the run's first byte). Returns `text`.
QARQ_API char* VornDbcs_strip_trailing(char* text, const char* set);

/// The first character of `text` that is not in `delimiters`, or null when
/// there is none. The first delimiter behind that token is overwritten with
/// NULs (all its bytes). Keeps no state: to go on, pass the position behind
/// the returned token.
QARQ_API char* VornDbcs_strtok(char* text, const char* delimiters);

/// The first occurrence of `pattern` in `text` that starts on a character,
/// `text` itself for an empty pattern, null when there is none or when the
/// pattern starts with an invalid character.
QARQ_API char* VornDbcs_strstr(const char* text, const char* pattern);

/// Splits `path` into drive ("c:", room for 3 bytes), directory (up to and
/// with the last `\` or `/`), name and extension (from the last dot), each
/// with room for 256 bytes. Any output may be null; each given one is emptied
/// first. A separator that is the trail byte of a double-byte character does
/// not count. A part that does not fit is left out.
QARQ_API void VornDbcs_splitpath(const char* path, char* drive, char* directory, char* name,
                                 char* extension);

}  // extern "C"
