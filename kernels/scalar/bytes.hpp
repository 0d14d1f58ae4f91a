// SPDX-License-Identifier: MIT
// Functions of bytes one at a time, or in the compiler's vectors.

#include "kernels/scalar/keep.hpp"
#include "kernels/scalar/look_up.hpp"

template <class T>
void raise_bytes(const T* in, uint32_t count, T low, T* out) {
  for (uint32_t i = 0; i < count; ++i) {
    out[i] = std::max(in[i], low);
  }
}

template <class T>
void clip_bytes(const T* in, uint32_t count, T low, T high, T* out) {
  for (uint32_t i = 0; i < count; ++i) {
    out[i] = std::min(std::max(in[i], low), high);
  }
}
