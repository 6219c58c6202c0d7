// Which instruction-set level the code-set engines use.
//
// The level is chosen once, at the first conversion (or the first call
// here), from what the processor reports, capped by the environment
// variable QARQ_SIMD ("scalar", "sse42", "avx2", "avx512"); a level the
// processor lacks is never chosen, and an unknown value caps nothing.
// Every level gives the same counts and bytes; only the speed differs.
//
// Threads: any thread; the first call settles the level.
// Failures: none.
#pragma once

#include "qarq/export.hpp"

extern "C" {

/// The level in use: "scalar", "sse42", "avx2" or "avx512" (static text).
QARQ_API const char* VornNlsSimdLevel(void);

}  // extern "C"
