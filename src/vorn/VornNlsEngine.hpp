// The shape of every conversion engine: [source, sourceEnd) into
// [target, targetEnd), returning where it stopped in the target.
#pragma once

#include "qarq/vorn/vornnls2.hpp"

extern "C" {

typedef char* VornNlsEngine(const VornNlsCodeSet* cs, const unsigned char* source,
                            const unsigned char* sourceEnd, char* target, char* targetEnd);

}  // extern "C"
