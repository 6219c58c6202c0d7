// Converts a byte stream from one code set to another through UTF-8, in
// chunks of a fixed size, so that memory stays constant whatever the input.
//
// Chunks end on character boundaries of the source (VornNlsBoundary); the shift
// state of a kind-4 source is carried by starting the next call with a
// shift-out. A kind-4 target closes each call with a shift-in; when the next
// call opens with a shift-out the pair is dropped, so that the output is the
// one a single call over the whole input would give.
//
// The output of a chunk is written by an AsyncWriter while the next chunk is
// read and converted, into the other of two sets of buffers.
//
// Ownership: borrows the code sets (kind 6 stands for UTF-8), which must
// outlive it; owns its buffers. Threads: one caller at a time (run() uses a
// writer thread of its own, joined before it returns).
// Failures: run() returns false with a message naming the input or output.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "AsyncWriter.hpp"
#include "qarq/vorn/VornNlsBoundary.hpp"
#include "qarq/vorn/vornnls2.hpp"

namespace qarqtool {

class StreamConverter {
  public:
    static constexpr size_t kDefaultChunk = 256 * 1024;
    static constexpr size_t kMinChunk = 16;
    static constexpr size_t kMaxChunk = 64u << 20;
    // The longest character a table can define (a multi-byte class is a byte).
    static constexpr size_t kMaxCharacter = 256;

    StreamConverter(const VornNlsCodeSet* from, const VornNlsCodeSet* to,
                    size_t chunk = kDefaultChunk);

    /// Converts all of `in` (named `inName` in messages) onto `out`.
    bool run(FILE* in, const std::string& inName, FILE* out, std::string& error);

  private:
    // What one chunk is read and converted into; the output pieces of a
    // chunk point into its own set (or at a constant shift-in).
    struct Buffers {
        std::vector<unsigned char> in;  // one spare byte in front for a shift-out
        std::vector<char> mid;
        std::vector<char> out;
    };

    void convertChunk(Buffers& b, const unsigned char* source, size_t length);
    void emit(const char* data, size_t length);

    const VornNlsCodeSet* from_;
    const VornNlsCodeSet* to_;
    bool fromUtf8_;
    bool toUtf8_;
    bool toShifts_;
    size_t chunk_;
    Buffers buffers_[2];
    std::vector<AsyncWriter::Piece> batch_;
    bool heldShiftIn_ = false;
};

}  // namespace qarqtool
