// Breaking long text into lines in place, by inserting carriage returns (13),
// without cutting a double-byte character.
//
// Contract: `text` is NUL-terminated and lives in a buffer of `capacity`
// bytes; a break is inserted only while the text and one more byte fit. The
// functions allocate nothing, take no locks and never throw. A null set of
// delimiters or newlines counts as empty. Each inserted break moves the rest
// of the text up by one byte, so the work always ends: at the end of the
// text, at a full buffer, or at an invalid character.
#pragma once

#include "qarq/export.hpp"

extern "C" {

/// Inserts a carriage return into the line that starts at `lineStart` and is
/// full at `position`: in front of the last delimiter character of the line,
/// or at `position` when the line has none (or only one at its very start,
/// which would leave an empty line and no progress). The delimiter stays, at
/// the head of the next line. `*length` (if not null) grows by one. Returns
/// the index behind the carriage return. The buffer must have room for one
/// more byte.
QARQ_API unsigned VornDbcs_chop_word(char* text, unsigned lineStart, unsigned position,
                                     unsigned* length, const char* delimiters);

/// Breaks `text` into lines of at most `width` characters (not bytes); a
/// character in `newlines` restarts the count. Returns 1 when done or when the
/// buffer became full at the top of a round, 0 on an invalid character, a full
/// buffer where a break was due, or a width below 1.
QARQ_API int VornDbcs_dice_msg_text(char* text, int width, unsigned capacity,
                                    const char* delimiters, const char* newlines);

/// Breaks `text` into lines of at most `width` bytes, never inside a
/// double-byte character; `*count` (if not null) receives the number of
/// breaks inserted. Returns 1 when done, 0 on an invalid character, a full
/// buffer where a break was due, or a width that cannot hold a character.
QARQ_API int VornDbcs_dice_str_text(char* text, unsigned short width, unsigned short capacity,
                                    const char* delimiters, unsigned short* count);

}  // extern "C"
