// The library-internal part of the double-byte string module: the code-page
// flag, the lead-byte table and the helpers that the exported functions, the
// line breaking and the code-set layer build on. Same contract as
// qarq/vorn/VornDbcs.hpp (no allocation, no locks, no throw, no read behind a
// terminator, a null set is empty). Exported only so that tests can reach them.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "qarq/export.hpp"
#include "qarq/vorn/VornDbcs.hpp"

/// Non-zero: every byte is a character of its own. Starts 1; VornDbcsInit sets
/// it from the default code set. Tests may store into it after VornDbcsInit.
QARQ_API extern std::atomic<int32_t> VornDbcsIsCodePageSingleByte;

extern "C" {

/// Sets the flag from the default code set (clear when it is a double-byte or
/// multi-byte one) and the lead-byte table from the process locale. Runs at
/// the first use of any function that needs the flag, and again at start-up of
/// the translation front end. Returns 0.
QARQ_API int VornDbcsInit(void);

/// The length of the character at `text + index` when it is in `set`, else 0
/// (also for a trail byte or an invalid character at `index`).
QARQ_API unsigned VornDbcsCharVal(const char* text, unsigned index, const char* set);

/// Bytes at the start of `text` whose characters are all in `set`.
QARQ_API size_t VornDbcs_strspn(const char* text, const char* set);

/// Byte index of the first character in `set`, or strlen(text) when none is.
QARQ_API size_t VornDbcs_strcspn(const char* text, const char* set);

/// The first character that is not in `set`, or null when all are.
QARQ_API char* VornDbcs_strvalidate(const char* text, const char* set);

/// The first character that is in `set`, or null.
QARQ_API char* VornDbcs_strpbrk(const char* text, const char* set);

/// Byte index of the last character in `set`, or strlen(text) when none is.
QARQ_API size_t VornDbcs_strlastchr(const char* text, const char* set);

}  // extern "C"

namespace qarq::vorn::dbcs {

/// Most lead-byte ranges the table holds.
constexpr int kMaxLeadRanges = 20;

/// Replaces the lead-byte table by `pairs`: low and high bytes, ended by a pair
/// of zeros, at most kMaxLeadRanges pairs read. Null empties the table.
QARQ_API void setLeadRanges(const unsigned char* pairs);

/// The lead-byte ranges of the machine's code page as the process locale
/// gives it (932, 936, 949 and 950 have some), written to `pairs` and ended by
/// a pair of zeros; `pairs` has room for kMaxLeadRanges + 1 pairs. Returns the
/// count.
QARQ_API int localeLeadRanges(unsigned char* pairs);

/// True when `byte` is in the lead-byte table (whatever the flag says).
QARQ_API bool isLeadByte(unsigned char byte);

/// Set once VornDbcsInit has run; tests clear it to see the lazy start.
QARQ_API extern std::atomic<int32_t> dbcsInitialised;

}  // namespace qarq::vorn::dbcs
