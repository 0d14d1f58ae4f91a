// SPDX-License-Identifier: MIT
// Products of 16-bit pairs, two in an instruction, on cores with the DSP extension of Arm.
#ifndef NNLIB_KERNELS_DUAL_MAC_HPP
#define NNLIB_KERNELS_DUAL_MAC_HPP

#if defined(__ARM_FEATURE_SIMD32) && !defined(__ARM_BIG_ENDIAN)
#define NNLIB_DUAL_MAC 1

#include <arm_acle.h>

#include <cstdint>
#include <cstring>

#include "kernels/vector.hpp"

namespace nnlib {

// Two 16-bit values, the first one low.
NNLIB_ALWAYS_INLINE uint32_t load_pair(const int16_t* from) {
  uint32_t pair;
  std::memcpy(&pair, from, sizeof(pair));
  return pair;
}

// Four values as pairs: 0 and 1, 2 and 3. The pointer moves on behind them.
struct TwoPairs {
  uint32_t first;
  uint32_t second;
};

NNLIB_ALWAYS_INLINE TwoPairs take_pairs(const int16_t*& from) {
  const TwoPairs pairs = {load_pair(from), load_pair(from + 2)};
  from += 4;
  return pairs;
}

// In one piece of assembler: from the same in C, compilers make twice as many instructions.
#define NNLIB_TAKE_BYTES(Byte, extend)                                                      \
  NNLIB_ALWAYS_INLINE TwoPairs take_pairs(const Byte*& from) {                              \
    TwoPairs pairs;                                                                         \
    uint32_t even;                                                                          \
    __asm__("ldr %[first], [%[from]], #4\n\t" extend " %[even], %[first]\n\t" extend        \
            " %[second], %[first], ror #8\n\t"                                              \
            "pkhbt %[first], %[even], %[second], lsl #16\n\t"                               \
            "pkhtb %[second], %[second], %[even], asr #16"                                  \
            : [first] "=&r"(pairs.first), [second] "=&r"(pairs.second), [even] "=&r"(even), \
              [from] "+r"(from)                                                             \
            : "m"(*reinterpret_cast<const Byte(*)[4]>(from)));                              \
    return pairs;                                                                           \
  }
NNLIB_TAKE_BYTES(int8_t, "sxtb16")
NNLIB_TAKE_BYTES(uint8_t, "uxtb16")
#undef NNLIB_TAKE_BYTES

// The sum wraps.
NNLIB_ALWAYS_INLINE uint32_t dual_mac(uint32_t a, uint32_t b, uint32_t sum) {
  return static_cast<uint32_t>(
      __smlad(static_cast<int32_t>(a), static_cast<int32_t>(b), static_cast<int32_t>(sum)));
}

}  // namespace nnlib

#else
#define NNLIB_DUAL_MAC 0
#endif

#endif
