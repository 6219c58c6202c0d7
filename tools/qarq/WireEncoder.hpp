// Reads the listing that WireDecoder prints and writes the bytes back, one
// line at a time, through the library's stream writer.
//
// A line is an optional offset (ignored), a type and its value; indentation,
// blank lines and lines starting with '#' are ignored. Each line stands for
// its own bytes only, so counts of string arrays and vectors are written as
// given and their elements come from the lines that follow:
//   byte N | char 'c' | char N | short N | int N | long N
//   boolean true|false|N | classhandle N | strings N | vector N
//   string "TEXT" [length=N] | class "NAME" [length=N] [short=N]
//   bytes N HEX
// Numbers are decimal or 0x hex; each must fit its field (signed or
// unsigned reading). length= and short= give length fields that differ
// from the byte count, as a peer may send them.
//
// Ownership: owns its writer's block. Threads: one object per thread.
// Failures: encodeLine() returns false and error() says what is wrong.
#pragma once

#include <cstdio>
#include <string>

namespace qarqtool {

class WireEncoder {
  public:
    WireEncoder();
    ~WireEncoder();
    WireEncoder(const WireEncoder&) = delete;
    WireEncoder& operator=(const WireEncoder&) = delete;

    /// Appends the bytes of one line of a listing.
    bool encodeLine(const std::string& line);

    /// Writes the bytes gathered so far to `out` and starts afresh.
    bool flush(FILE* out);

    const std::string& error() const { return error_; }

  private:
    std::string error_;
    struct Writer;
    Writer* writer_;
};

}  // namespace qarqtool
