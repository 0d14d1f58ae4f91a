// SPDX-License-Identifier: MIT
// Outputs from sums, the same bits as those of the scalar finish.

// finished[i] = the Output, saturated, of sums[i], which contain the channel's start.
template <class Output, size_t kCount>
NNLIB_ALWAYS_INLINE void finish_sums(const RequantizedChannel& c, const int32_t (&sums)[kCount],
                                     int32_t (&finished)[kCount]) {
  int32_t value;
  if (c.shift > 0) {
    // The carry of the shift is what rounds. From 32 on every shift leaves the same.
    const int32_t shift = dsp::saturated_bits<6>(c.shift);
    NNLIB_UNROLL
    for (size_t i = 0; i < kCount; ++i) {
      __asm__("smmul %0, %1, %2\n\tasrs %0, %0, %3\n\tadc %0, %0, %4"
              : "=&r"(value)
              : "r"(static_cast<uint32_t>(sums[i]) << 1), "r"(c.multiplier), "r"(shift),
                "r"(c.zeropoint)
              : "cc");
      finished[i] = dsp::saturated<Output>(value);
    }
    return;
  }
  const int32_t left = dsp::saturated_bits<6>(1 - c.shift);
  NNLIB_UNROLL
  for (size_t i = 0; i < kCount; ++i) {
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

// What four neighbouring channels after the other are requantized with.
struct FourChannels {
  explicit FourChannels(const KoQuantization& q)
      : zeropoint(q.out_zeropoint),
        multipliers(q.of_channels() ? q.multiplier : all_multipliers),
        shifts(q.of_channels() ? q.shift : all_shifts),
        step(q.of_channels() ? 4 : 0) {
    std::fill_n(all_multipliers, 4, *q.multiplier);
    std::fill_n(all_shifts, 4, *q.shift);
  }
  FourChannels(const FourChannels&) = delete;

  void advance() {
    multipliers += step;
    shifts += step;
  }

  const int32_t zeropoint;
  const int32_t* multipliers;
  const int16_t* shifts;
  const size_t step;
  int32_t all_multipliers[4];
  int16_t all_shifts[4];
};

struct FourSums {
  int32_t sums[4];
};

template <class Output>
__attribute__((noinline)) void finish_each(const FourChannels& four, FourSums values, Output* out) {
  for (uint32_t i = 0; i < 4; ++i) {
    out[i] = finish_sum<Output>(
        RequantizedChannel{0, four.multipliers[i], four.shifts[i], four.zeropoint}, values.sums[i]);
  }
}

// The outputs of four channels' sums, which contain the biases.
template <class Output>
NNLIB_ALWAYS_INLINE void finish_four(const FourChannels& four, const int32_t (&sums)[4],
                                     Output* out) {
  uint32_t first, second;
  const uint32_t shifts[2] = {dsp::load_word(four.shifts), dsp::load_word(four.shifts + 2)};
  __asm__("ssub16 %0, %1, %2" : "=r"(first) : "r"(shifts[0]), "r"(dsp::twice(1)));
  __asm__("ssub16 %0, %1, %2" : "=r"(second) : "r"(shifts[1]), "r"(dsp::twice(1)));
  if (((first | second) & 0xFF80FF80) != 0) {  // some are not from 1 to 128
    finish_each(four, {{sums[0], sums[1], sums[2], sums[3]}}, out);
    return;
  }
  const int32_t* multipliers = four.multipliers;
  NNLIB_UNROLL
  for (uint32_t i = 0; i < 4; ++i) {
    int32_t value;
    // The shift takes the lowest byte of its register.
    __asm__("smmul %0, %1, %2\n\tasrs %0, %0, %3\n\tadc %0, %0, %4"
            : "=&r"(value)
            : "r"(static_cast<uint32_t>(sums[i]) << 1), "r"(multipliers[i]),
              "r"(shifts[i / 2] >> (i % 2 * 16)), "r"(four.zeropoint)
            : "cc");
    value = dsp::saturated<Output>(value);
    __asm__("" : "+r"(value));  // stored as it comes: packed to a word it would cost more
    out[i] = static_cast<Output>(value);
  }
}
