// Export control for libqarq and libqarzras.
//
// Both libraries are built with hidden visibility; only declarations marked
// QARQ_API form the export table. On ELF one attribute serves building and
// consuming alike, so a single macro covers both libraries.
#pragma once

#if defined(__GNUC__) || defined(__clang__)
#define QARQ_API __attribute__((visibility("default")))
#else
#define QARQ_API
#endif
