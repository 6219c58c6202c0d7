// The quoted text form of strings and class names in a listing.
//
// Wire text is UTF-8 and is shown as it is, between double quotes; what
// would not survive a round trip through a line of text is escaped:
// \" \\ \n \r \t, \xNN for other control characters, DEL, and every byte
// that is not part of a well-formed UTF-8 sequence. So any byte string has
// exactly one quoted form and reads back to the same bytes.
//
// Hex digits are read here too, for the escapes as for byte arrays and hex
// input.
//
// Threads: pure functions.
#pragma once

#include <string>

namespace qarqtool {

/// The quoted form of `bytes`.
std::string quoteText(const std::string& bytes);

/// Reads a quoted form at text[at] (the opening quote) into `bytes` and moves
/// `at` behind the closing quote. False with `error` set on a bad form.
bool unquoteText(const std::string& text, size_t& at, std::string& bytes, std::string& error);

/// The value of a hex digit of either case, or -1.
int hexDigit(char c);

}  // namespace qarqtool
