// Vector kernels of the engines, chosen at run time for the processor.
//
// Each kernel converts a prefix of its input and returns how far it got; the
// scalar engine goes on from there with exactly the same rules, so a
// processor without the instructions (or another architecture) gives the
// same bytes, only slower.
#pragma once

#include "vorn/VornNlsTable.hpp"

namespace qarq::vorn::nls {

/// True when the AVX2 kernels may run on this processor.
bool haveAvx2();

/// ASCII-family single bytes to UTF-8 through `d`: runs of bytes below 0x80
/// are copied 32 at a time, other bytes go through the packed table. Runs
/// while at least 64 source bytes and room for 224 output bytes are left at
/// the start of a step, so that at least 32 source bytes follow the last
/// step. Its stores may leave up to 32 bytes of garbage behind the output;
/// those following source bytes, each of which writes at least one byte,
/// cover it before the engine can stop. Advances `s` and `out`.
void asciiSbcsToUtf8Avx2(const Derived* d, const unsigned char*& s, const unsigned char* se,
                         char*& out, const char* end);

}  // namespace qarq::vorn::nls
