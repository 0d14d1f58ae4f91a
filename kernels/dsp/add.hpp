// SPDX-License-Identifier: MIT
// Sums of four bytes at a time.

template <class T>
void add_exactly(const T* a, const T* b, uint32_t count, T zeropoint, T* out) {
  const uint32_t less = dsp::twice(-zeropoint);
  for (; count >= 4; count -= 4, a += 4, b += 4, out += 4) {
    const uint32_t of_a = dsp::load_word(a);
    const uint32_t of_b = dsp::load_word(b);
    dsp::store_word(
        out, dsp::saturated_bytes<T>(dsp::even_bytes<T>(dsp::even_bytes<T>(less, of_a), of_b),
                                     dsp::odd_bytes<T>(dsp::odd_bytes<T>(less, of_a), of_b)));
  }
  for (uint32_t i = 0; i < count; ++i) {
    out[i] = saturate<T>(int32_t{a[i]} + b[i] - zeropoint);
  }
}

// Operands as values: what is stored changes none of them.
template <class T>
void add_rescaled(Operand<T> a, Operand<T> b, uint32_t count, T zeropoint, T* out) {
  constexpr uint32_t kRound = NNLIB_FOR_SPEED ? 4 : 1;
  for (; count >= kRound; count -= kRound, a.data += kRound, b.data += kRound, out += kRound) {
    NNLIB_UNROLL
    for (uint32_t i = 0; i < kRound; ++i) {
      out[i] = rescaled_sum(a, b, i, zeropoint);
    }
  }
  for (; kRound > 1 && count > 0; --count, ++a.data, ++b.data, ++out) {
    *out = rescaled_sum(a, b, 0, zeropoint);
  }
}
