// EBCDIC/ASCII translation through two fixed 256-byte tables, with no
// code-set file: for the few host texts that must be readable before any
// table is loaded.
//
// The tables are the library's own and follow no published code page; 0xFF
// stands for a byte that has no counterpart. On the bytes that do, the two
// tables undo each other. Translation is in place; nothing is allocated and
// nothing fails (a null buffer is left alone). Threads: safe on any thread.
#pragma once

#include "qarq/export.hpp"

extern "C" {

/// Replaces each of the `length` bytes of `buffer` by its ASCII counterpart.
QARQ_API void VornNlsPEngE2A(unsigned char* buffer, unsigned length);

/// Replaces each of the `length` bytes of `buffer` by its EBCDIC counterpart.
QARQ_API void VornNlsPEngA2E(unsigned char* buffer, unsigned length);

}  // extern "C"
