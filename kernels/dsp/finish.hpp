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

// Both pixels' outputs of two rows from the sums of a tile: row 0 with both, row 1 with both. Where
// finishes_pairs. `out` moves on.
template <class Types>
NNLIB_ALWAYS_INLINE bool finishes_pairs(const IntegerRows<Types>& rows) {
  return rows.right_shifts;
}
template <class Weight, class Output>
NNLIB_ALWAYS_INLINE bool finishes_pairs(const FixedRows<Weight, Output>&) {
  return true;
}

// As dsp::requantized, and stored.
#define NNLIB_REQUANTIZE(sum, row, saturate, to)                                                \
  "lsls %[" sum "], %[" sum "], #1\n\tsmmul %[" sum "], %[" sum "], %[m" row "]\n\tasrs %[" sum \
  "], %[" sum "], %[h" row "]\n\tadc %[" sum "], %[" sum "], %[z]\n\t" saturate " %[" sum       \
  "], #8, %[" sum "]\n\tstrb %[" sum "], " to "\n\t"
#define NNLIB_REQUANTIZE_PAIR(saturate)                                                          \
  __asm__ volatile(NNLIB_REQUANTIZE("s1", "0", saturate, "[%[out], %[step]]")                    \
                       NNLIB_REQUANTIZE("s0", "0", saturate, "[%[out]], #1")                     \
                           NNLIB_REQUANTIZE("s3", "1", saturate, "[%[out], %[step]]")            \
                               NNLIB_REQUANTIZE("s2", "1", saturate, "[%[out]], #1")             \
                   : [s0] "+r"(s0), [s1] "+r"(s1), [s2] "+r"(s2), [s3] "+r"(s3), [out] "+r"(out) \
                   : [m0] "r"(m0), [m1] "r"(m1), [h0] "r"(h0), [h1] "r"(h1),                     \
                     [z] "r"(q.out_zeropoint), [step] "r"(rows.count)                            \
                   : "cc", "memory")

template <class Types>
NNLIB_ALWAYS_INLINE void finish_pair(const IntegerRows<Types>& rows, uint32_t row,
                                     const int32_t (&sums)[4],
                                     typename IntegerRows<Types>::Output*& out) {
  const KoQuantization& q = rows.quantization;
  const uint32_t e0 = q.entry(row);
  const uint32_t e1 = q.entry(row + 1);
  const int32_t m0 = q.multiplier[e0], m1 = q.multiplier[e1];
  const int32_t h0 = q.shift[e0], h1 = q.shift[e1];
  int32_t s0 = sums[0], s1 = sums[1], s2 = sums[2], s3 = sums[3];
  if constexpr (std::is_signed_v<typename IntegerRows<Types>::Output>) {
    NNLIB_REQUANTIZE_PAIR("ssat");
  } else {
    NNLIB_REQUANTIZE_PAIR("usat");
  }
}
#undef NNLIB_REQUANTIZE_PAIR
#undef NNLIB_REQUANTIZE

template <class Weight, class Output>
NNLIB_ALWAYS_INLINE void finish_pair(const FixedRows<Weight, Output>& rows, uint32_t /*row*/,
                                     const int32_t (&sums)[4], Output*& out) {
  int32_t values[4];
  finish_sums<Output>(ShiftedChannel{0, rows.shifts.out}, sums, values);
  out[0] = static_cast<Output>(values[0]);
  out[rows.count] = static_cast<Output>(values[1]);
  ++out;
  out[0] = static_cast<Output>(values[2]);
  out[rows.count] = static_cast<Output>(values[3]);
  ++out;
  __asm__("" : "+r"(out));
}
