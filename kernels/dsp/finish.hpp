// SPDX-License-Identifier: MIT
// Outputs from sums, the same bits as those of the scalar finish.

// finished[i] = the Output, saturated, of sums[i], which contain the channel's start.
template <class Output, size_t kCount>
NNLIB_ALWAYS_INLINE void finish_sums(const RequantizedChannel& c, const int32_t (&sums)[kCount],
                                     int32_t (&finished)[kCount]) {
  if (c.shift > 0) {
    // From 32 on every shift leaves the same.
    const uint32_t shift = static_cast<uint32_t>(dsp::saturated_bits<6>(c.shift));
    NNLIB_UNROLL
    for (size_t i = 0; i < kCount; ++i) {
      finished[i] = dsp::requantized<Output>(wrapping_add(sums[i], sums[i]), c.multiplier, shift,
                                             c.zeropoint);
    }
    return;
  }
  const int32_t left = dsp::saturated_bits<6>(1 - c.shift);
  NNLIB_UNROLL
  for (size_t i = 0; i < kCount; ++i) {
    int32_t value;
    __asm__("lsl %0, %1, %2\n\tsmmulr %0, %0, %3"
            : "=&r"(value)
            : "r"(sums[i]), "r"(left), "r"(c.multiplier));
    finished[i] = dsp::saturated<Output>(value + c.zeropoint);
  }
}

template <class Output, size_t kCount>
NNLIB_ALWAYS_INLINE void finish_sums(const ShiftedChannel& c, const int32_t (&sums)[kCount],
                                     int32_t (&finished)[kCount]) {
  NNLIB_UNROLL
  for (size_t i = 0; i < kCount; ++i) {
    finished[i] = dsp::saturated<Output>(sums[i] >> (c.shift & 31));
  }
}

template <class Output, class Channel>
NNLIB_ALWAYS_INLINE Output finish_sum(const Channel& c, int32_t sum) {
  int32_t finished[1];
  finish_sums<Output>(c, {sum}, finished);
  return static_cast<Output>(finished[0]);
}

template <class Output, class Channel>
NNLIB_ALWAYS_INLINE Output finish(const Channel& c, int32_t sum) {
  return finish_sum<Output>(c, wrapping_add(c.start, sum));
}
