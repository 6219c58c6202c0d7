// Character boundaries of a code set, as its conversion engine reads them.
//
// A stream is converted in chunks, and the engines keep no state between
// calls: each call reads from a character boundary, and a kind-4 (EBCDIC
// with shifts) call starts unshifted. So a chunk must end where the engine,
// reading the whole stream from its start, would have ended a character,
// and the shift state at that point must be carried into the next call.
// This class walks a chunk with the same rules the engines follow:
//   kind 1        every byte is a character;
//   kind 2        a byte of class 2 (table byte classes) leads a pair;
//   kind 3        a byte from 0x80 up of class n > 1 leads n bytes;
//   kind 4        0x0E shifts out, 0x0F in; shifted, 0x40-0xFE lead a pair;
//   UTF-8 (6)     0xC0-0xDF lead two bytes, 0xE0 and up three, others one
//                 (continuation bytes are not checked, as in the engines).
//
// Threads: immutable after construction; the code set must outlive it.
#pragma once

#include <cstddef>

#include "qarq/vorn/vornnls2.hpp"

namespace qarqtool {

class CharBoundary {
  public:
    /// Byte classes sit at this offset of a table image (256 bytes).
    static constexpr size_t kByteClassOffset = 1248;
    static constexpr unsigned char kShiftOut = 0x0E;
    static constexpr unsigned char kShiftIn = 0x0F;

    explicit CharBoundary(const VornNlsCodeSet* cs);

    /// Walks [data, data + n) from a character boundary, in shift state
    /// `shifted`; returns the end of the last whole character and leaves
    /// `shifted` as it stands there.
    size_t cut(const unsigned char* data, size_t n, bool& shifted) const;

    /// True when the engine's shift state has to be carried between calls.
    bool shifts() const { return kind_ == 4; }

  private:
    unsigned kind_;
    const unsigned char* byteClass_;
};

}  // namespace qarqtool
