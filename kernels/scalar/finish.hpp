// SPDX-License-Identifier: MIT
// Outputs from sums, without instructions of their own.

template <class Output>
NNLIB_ALWAYS_INLINE Output finish(const RequantizedChannel& c, int32_t sum) {
  return saturate<Output>(
      requantize(wrapping_add(c.start, sum), c.multiplier, c.shift, c.zeropoint));
}

template <class Output>
NNLIB_ALWAYS_INLINE Output finish(const ShiftedChannel& c, int32_t sum) {
  return saturate<Output>(wrapping_add(c.start, sum) >> (c.shift & 31));
}
