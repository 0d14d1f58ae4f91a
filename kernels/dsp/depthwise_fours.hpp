// SPDX-License-Identifier: MIT
// Blocks of four channels, taps in pairs as the adapted weights have them.

// The zero point taken off two values at a time.
using Offset = uint32_t;

constexpr Offset offset_of(int32_t zeropoint) {
  return dsp::twice(-zeropoint);
}

template <class T>
NNLIB_ALWAYS_INLINE void keep_in_memory(T& value) {
  __asm__("" : "+m"(value));
}

// The weights of two channels, and where they are on the address of a word.
#define NNLIB_LOAD_ANYWHERE "ldr %[w], [%[at]], #4\n\tldr %[ea], [%[at]], #4\n\t"
#define NNLIB_LOAD_WORDS "ldrd %[w], %[ea], [%[at]], #8\n\t"

// Of four channels the words of two taps become pairs of the same channel, as the weights are.
#define NNLIB_ADD_TAPS(widen, load)                                                                \
  __asm__(widen " %[ea], %[less], %[a]\n\t" widen " %[a], %[less], %[a], ror #8\n\t" widen         \
                " %[eb], %[less], %[b]\n\t" widen                                                  \
                " %[b], %[less], %[b], ror #8\n\t"                                                 \
                "pkhbt %[w], %[ea], %[eb], lsl #16\n\tpkhtb %[eb], %[eb], %[ea], asr #16\n\t"      \
                "ldr %[ea], [%[at]], #4\n\tsmlad %[s0], %[w], %[ea], %[s0]\n\t" load               \
                "smlad %[s2], %[eb], %[ea], %[s2]\n\t"                                             \
                "pkhbt %[ea], %[a], %[b], lsl #16\n\tpkhtb %[b], %[b], %[a], asr #16\n\t"          \
                "smlad %[s1], %[ea], %[w], %[s1]\n\t"                                              \
                "ldr %[w], [%[at]], #4\n\tsmlad %[s3], %[b], %[w], %[s3]"                          \
          : [a] "+r"(a), [b] "+r"(b), [ea] "=&r"(even_a), [eb] "=&r"(even_b), [w] "=&r"(w),        \
            [at] "+r"(weights), [s0] "+r"(s[0]), [s1] "+r"(s[1]), [s2] "+r"(s[2]), [s3] "+r"(s[3]) \
          : [less] "r"(less)                                                                       \
          : "memory")

template <bool kInWords, class Activation>
NNLIB_ALWAYS_INLINE void add_taps(const Activation* first, const Activation* second, Offset less,
                                  const int16_t*& weights, int32_t (&s)[4]) {
  uint32_t a = dsp::load_word(first);
  uint32_t b = dsp::load_word(second);
  uint32_t even_a, even_b, w;
  if constexpr (std::is_signed_v<Activation> && kInWords) {
    NNLIB_ADD_TAPS("sxtab16", NNLIB_LOAD_WORDS);
  } else if constexpr (std::is_signed_v<Activation>) {
    NNLIB_ADD_TAPS("sxtab16", NNLIB_LOAD_ANYWHERE);
  } else if constexpr (kInWords) {
    NNLIB_ADD_TAPS("uxtab16", NNLIB_LOAD_WORDS);
  } else {
    NNLIB_ADD_TAPS("uxtab16", NNLIB_LOAD_ANYWHERE);
  }
}
#undef NNLIB_ADD_TAPS
#undef NNLIB_LOAD_WORDS
#undef NNLIB_LOAD_ANYWHERE

template <class Activation>
NNLIB_ALWAYS_INLINE void add_tap(const Activation* only, Offset less, const int16_t*& weights,
                                 int32_t (&s)[4]) {
  const uint32_t bytes = dsp::load_word(only);
  const uint32_t even = dsp::even_bytes<Activation>(less, bytes);
  const uint32_t odd = dsp::odd_bytes<Activation>(less, bytes);
  uint32_t pair;
  __asm__(
      "ldr %[w], [%[at]], #4\n\tsmlabb %[s0], %[e], %[w], %[s0]\n\t"
      "smlabt %[s1], %[o], %[w], %[s1]\n\tldr %[w], [%[at]], #4\n\t"
      "smlatb %[s2], %[e], %[w], %[s2]\n\tsmlatt %[s3], %[o], %[w], %[s3]"
      : [w] "=&r"(pair), [at] "+r"(weights), [s0] "+r"(s[0]), [s1] "+r"(s[1]), [s2] "+r"(s[2]),
        [s3] "+r"(s[3])
      : [e] "r"(even), [o] "r"(odd)
      : "memory");
}

inline bool in_words(const int16_t* weights) {
  return reinterpret_cast<uintptr_t>(weights) % 4 == 0;
}

inline bool quick_shifts(const int16_t* shifts, uint32_t count) {
  while (count > 0 && *shifts > 0 && *shifts < 256) {  // the library's loop takes four at once
    ++shifts;
    --count;
  }
  return count == 0;
}

struct FourSums {
  int32_t sums[4];
};

template <class Output>
__attribute__((noinline)) void finish_each(const int32_t* multipliers, const int16_t* shifts,
                                           int32_t zeropoint, FourSums of, Output* out) {
  for (uint32_t i = 0; i < 4; ++i) {
    out[i] =
        finish_sum<Output>(RequantizedChannel{0, multipliers[i], shifts[i], zeropoint}, of.sums[i]);
  }
}

template <class Output>
NNLIB_ALWAYS_INLINE void finish_four(const int32_t* multipliers, const int16_t* shifts,
                                     int32_t zeropoint, bool quick, const int32_t (&sums)[4],
                                     Output* out) {
  if (!quick) {
    finish_each(multipliers, shifts, zeropoint, {{sums[0], sums[1], sums[2], sums[3]}}, out);
    return;
  }
  const uint32_t pairs[2] = {dsp::load_word(shifts), dsp::load_word(shifts + 2)};
  NNLIB_UNROLL
  for (uint32_t i = 0; i < 4; ++i) {
    const int32_t value = dsp::requantized<Output>(wrapping_add(sums[i], sums[i]), multipliers[i],
                                                   pairs[i / 2] >> (i % 2 * 16), zeropoint);
    out[i] = static_cast<Output>(value);
  }
}

#include "kernels/depthwise_fours.hpp"
