// SPDX-License-Identifier: MIT
// Single instructions of Arm's DSP extension on words of four bytes or two 16-bit values, where
// compilers make more of the same in C. Pairs are values 0 and 2, or 1 and 3, of four bytes.
#ifndef NNLIB_KERNELS_DSP_INSTRUCTIONS_HPP
#define NNLIB_KERNELS_DSP_INSTRUCTIONS_HPP

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "kernels/vector.hpp"

namespace nnlib::dsp {

// From any address.
NNLIB_ALWAYS_INLINE uint32_t load_word(const void* from) {
  uint32_t word;
  std::memcpy(&word, from, sizeof(word));
  return word;
}
NNLIB_ALWAYS_INLINE void store_word(void* to, uint32_t word) {
  std::memcpy(to, &word, sizeof(word));
}

// The same 16-bit value twice.
constexpr uint32_t twice(int32_t value) {
  return static_cast<uint16_t>(value) * uint32_t{0x10001};
}

// Bytes 0 and 2 of `bytes`, widened, plus the two values of `added`.
template <class Byte>
NNLIB_ALWAYS_INLINE uint32_t even_bytes(uint32_t added, uint32_t bytes) {
  uint32_t sum;
  if constexpr (std::is_signed_v<Byte>) {
    __asm__("sxtab16 %0, %1, %2" : "=r"(sum) : "r"(added), "r"(bytes));
  } else {
    __asm__("uxtab16 %0, %1, %2" : "=r"(sum) : "r"(added), "r"(bytes));
  }
  return sum;
}
// Bytes 1 and 3.
template <class Byte>
NNLIB_ALWAYS_INLINE uint32_t odd_bytes(uint32_t added, uint32_t bytes) {
  uint32_t sum;
  if constexpr (std::is_signed_v<Byte>) {
    __asm__("sxtab16 %0, %1, %2, ror #8" : "=r"(sum) : "r"(added), "r"(bytes));
  } else {
    __asm__("uxtab16 %0, %1, %2, ror #8" : "=r"(sum) : "r"(added), "r"(bytes));
  }
  return sum;
}

// The same byte four times.
constexpr uint32_t four_times(int32_t value) {
  return static_cast<uint8_t>(value) * uint32_t{0x01010101};
}

// The greater and the lesser of each byte or 16-bit value, as T is.
#define NNLIB_SELECT(subtract, select) \
  __asm__(subtract " %1, %0, %2\n\tsel " select : "+r"(a), "=&r"(difference) : "r"(b))
#define NNLIB_SELECT_LANES(select)            \
  uint32_t difference;                        \
  if constexpr (sizeof(T) == 2) {             \
    static_assert(std::is_signed_v<T>);       \
    NNLIB_SELECT("ssub16", select);           \
  } else if constexpr (std::is_signed_v<T>) { \
    NNLIB_SELECT("ssub8", select);            \
  } else {                                    \
    NNLIB_SELECT("usub8", select);            \
  }                                           \
  return a
template <class T>
NNLIB_ALWAYS_INLINE uint32_t greater_lanes(uint32_t a, uint32_t b) {
  NNLIB_SELECT_LANES("%0, %0, %2");
}
template <class T>
NNLIB_ALWAYS_INLINE uint32_t lesser_lanes(uint32_t a, uint32_t b) {
  NNLIB_SELECT_LANES("%0, %2, %0");
}
#undef NNLIB_SELECT_LANES
#undef NNLIB_SELECT

// The low halves of a and b, and their high ones.
NNLIB_ALWAYS_INLINE uint32_t low_halves(uint32_t a, uint32_t b) {
  uint32_t halves;
  __asm__("pkhbt %0, %1, %2, lsl #16" : "=r"(halves) : "r"(a), "r"(b));
  return halves;
}
NNLIB_ALWAYS_INLINE uint32_t high_halves(uint32_t a, uint32_t b) {
  uint32_t halves;
  __asm__("pkhtb %0, %1, %2, asr #16" : "=r"(halves) : "r"(b), "r"(a));
  return halves;
}

// sum + the products of two pairs; wraps.
NNLIB_ALWAYS_INLINE int32_t multiply_pairs(uint32_t a, uint32_t b, int32_t sum) {
  __asm__("smlad %0, %1, %2, %0" : "+r"(sum) : "r"(a), "r"(b));
  return sum;
}

// To 0 .. 2^kBits - 1.
template <int kBits>
NNLIB_ALWAYS_INLINE int32_t saturated_bits(int32_t value) {
  int32_t saturated;
  __asm__("usat %0, %2, %1" : "=r"(saturated) : "r"(value), "I"(kBits));
  return saturated;
}

// Four bytes from pairs of 16-bit values, saturated.
template <class Byte>
NNLIB_ALWAYS_INLINE uint32_t saturated_bytes(uint32_t even, uint32_t odd) {
  if constexpr (std::is_signed_v<Byte>) {
    __asm__("ssat16 %0, #8, %0\n\tssat16 %1, #8, %1" : "+r"(even), "+r"(odd));
  } else {
    __asm__("usat16 %0, #8, %0\n\tusat16 %1, #8, %1" : "+r"(even), "+r"(odd));
  }
  return (even & 0x00ff00ff) | (odd & 0x00ff00ff) << 8;
}

// To the range of Output.
template <class Output>
NNLIB_ALWAYS_INLINE int32_t saturated(int32_t value) {
  constexpr int kBits = 8 * sizeof(Output);
  if constexpr (std::is_signed_v<Output>) {
    __asm__("ssat %0, %1, %0" : "+r"(value) : "I"(kBits));
    return value;
  } else {
    return saturated_bits<kBits>(value);
  }
}

// The Output of a sum, given twice, by a shift to the right of at least 1, the lowest byte of
// `shift`: the shift's carry is what rounds.
template <class Output>
NNLIB_ALWAYS_INLINE int32_t requantized(int32_t twice_sum, int32_t multiplier, uint32_t shift,
                                        int32_t zeropoint) {
  int32_t value;
#define NNLIB_REQUANTIZE(saturate)                                                               \
  __asm__("smmul %0, %1, %2\n\tasrs %0, %0, %3\n\tadc %0, %0, %4\n\t" saturate " %0, %5, %0"     \
          : "=&r"(value)                                                                         \
          : "r"(twice_sum), "r"(multiplier), "r"(shift), "r"(zeropoint), "I"(8 * sizeof(Output)) \
          : "cc")
  if constexpr (std::is_signed_v<Output>) {
    NNLIB_REQUANTIZE("ssat");
  } else {
    NNLIB_REQUANTIZE("usat");
  }
#undef NNLIB_REQUANTIZE
  return value;
}

}  // namespace nnlib::dsp

#endif
