// Wildcard comparison of text that may hold double-byte characters.
//
// Contract: both strings are NUL-terminated and not null (a null one simply
// does not match). `leadRanges` decides which bytes lead a two-byte
// character, whatever the library's code-page flag says. The comparison
// allocates nothing, takes no locks, never throws and never reads behind a
// terminator. Its time is bounded by (pattern length x text length), however
// many `*` the pattern holds. Threads: safe on any thread.
#pragma once

#include "qarq/export.hpp"

extern "C" {

/// 1 when `text` matches `pattern`, else 0. `*` matches any run of bytes, `?`
/// one character (both bytes of a double-byte one). `leadRanges` is a list of
/// low and high bytes, ended by a pair with a zero in it; null means no lead
/// bytes. Where the text ends right behind a matched character and the pattern
/// goes on with a wildcard, the wildcard is tried against that last character
/// again: so "ab*" and "ab*b" both match "ab", and "a?" matches "a".
QARQ_API int VornStringCompare(const char* pattern, const char* text,
                               const unsigned char* leadRanges);

}  // extern "C"
