// SPDX-License-Identifier: MIT
// Sums of bytes one at a time, or in the compiler's vectors.

template <class T>
void add_exactly(const T* a, const T* b, uint32_t count, T zeropoint, T* out) {
  for (uint32_t i = 0; i < count; ++i) {
    out[i] = exact_sum(a[i], b[i], zeropoint);
  }
}

template <class T>
void add_rescaled(const Operand<T>& a, const Operand<T>& b, uint32_t count, T zeropoint, T* out) {
  for (uint32_t i = 0; i < count; ++i) {
    out[i] = rescaled_sum(a, b, i, zeropoint);
  }
}
