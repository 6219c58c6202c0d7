// The loop every vector kernel shares, whatever its width: whole steps of
// Step::kWidth bytes, then the scalar kernel on the bytes after the last
// whole step.
//
// A step type carries what its level needs (table registers, say), compiled
// by its own file's target attribute:
//   bool copy(const unsigned char* s, char* out, size_t& j) const: converts
//     one step and returns true, or writes only the j bytes before the first
//     that ends the run and returns false;
//   size_t rest(const unsigned char* s, size_t n, char* out) const: the
//     scalar kernel for the tail.
// The kernel that runs the loop carries the same target as its step and
// [[gnu::flatten]], so that loop and step compile inline into it as one
// function of its level; no vector crosses a function of the base level.
#pragma once

#include <cstddef>

namespace qarq::vorn::nls {

template <typename Step>
inline size_t runBySteps(const Step& step, const unsigned char* s, size_t n, char* out) {
    size_t k = 0;
    for (; n - k >= Step::kWidth; k += Step::kWidth) {
        size_t j = 0;
        if (!step.copy(s + k, out + k, j)) return k + j;
    }
    return k + step.rest(s + k, n - k, out + k);
}

}  // namespace qarq::vorn::nls
