// SPDX-License-Identifier: MIT
// exp, tanh, cosh and sinh in integer arithmetic: for every float the same bits as the C library's
// function of it in double precision, rounded to float. For processors without a double unit, where
// the library takes some thousand instructions; tools/exact_math compares all 2^32 inputs.
//
// Two steps. The first is short and tells its result with 8 to 12 bits below the float's last one.
// Its error is bounded, so only when the bits below lie within that bound of a rounding boundary
// can the rounded result be wrong; then the second step, with 64 bits and an error below 2^-55 of
// the result, decides. No float's exp or tanh lies nearer to a boundary than a library's double
// function errs, so the two agree (found by running all inputs; a library that errs by less
// than 1.2 units of the double's last place would agree as well).
//
// Qn: an integer that stands for itself times 2^-n. Shifts of negative numbers round down.
#ifndef NNLIB_KERNELS_EXACT_MATH_HPP
#define NNLIB_KERNELS_EXACT_MATH_HPP

#include <bit>
#include <cstdint>

#include "kernels/exact_math_tables.hpp"

namespace nnlib::exact {

// Whether to take these instead of the library's: where a double's arithmetic is done by calls.
#if (defined(__arm__) && (!defined(__ARM_FP) || (__ARM_FP & 8) == 0)) || \
    (defined(__riscv) && (!defined(__riscv_flen) || __riscv_flen < 64))
inline constexpr bool kInsteadOfLibrary = true;
#else
inline constexpr bool kInsteadOfLibrary = false;
#endif

// Second steps; they take any float's bits.
float exp_second(uint32_t bits);
float tanh_second(uint32_t bits);

float cosh(float x);
float sinh(float x);

// The upper halves of products.
inline int32_t high(int32_t a, int32_t b) {
  return static_cast<int32_t>((static_cast<int64_t>(a) * b) >> 32);
}
inline uint32_t high(uint32_t a, uint32_t b) {
  return static_cast<uint32_t>((static_cast<uint64_t>(a) * b) >> 32);
}

inline constexpr uint32_t kSign = 0x80000000u;
inline constexpr uint32_t kInfinity = 0x7f800000u;
inline constexpr uint32_t kOne = 0x3f800000u;

// 2^power * (the number of a table entry + rest * 2^-35), with an entry between 1 and 2.
struct Power2 {
  int32_t power;
  PowerEntry entry;
  int32_t rest;
};

// The first step's error of rest, entry included. The polynomial is off by at most 2^-33.7, with an
// entry below 2 this makes 4.9; the index's fraction, cut off at 2^-32, 0.7; the five products, cut
// off, up to 1 together; the entry's last bits 0.5. All inputs: -6.14 to 6.86.
inline constexpr int32_t kExpError = 7;

// exp of m 2^(exponent - 127), with m in Q30 and 1 <= |m| < 2, for 102 <= exponent <= 134.
//
// x log2(e) = power + (index + 0.5 + r) / 32 with |r| <= 0.5, so exp(x) = 2^power * entry[index] *
// 2^(r / 32), the last from a polynomial. As entries are in the middle of their interval, the
// mantissa never leaves [1, 2).
inline Power2 exp_first(int32_t m, uint32_t exponent) {
  const int64_t product = static_cast<int64_t>(m) * kLog2E[0] + high(m, kLog2E[1]);
  const int64_t steps_and_rest = product >> (150 - exponent);  // Q32
  const int32_t steps = static_cast<int32_t>(steps_and_rest >> 32);
  const int32_t r = static_cast<int32_t>(static_cast<uint32_t>(steps_and_rest) ^ kSign);
  // 2^(r / 32) - 1 in Q36
  int32_t p = kPowerFirst[2] + high(r, kPowerFirst[3]);
  p = kPowerFirst[1] + high(r, p);
  p = kPowerFirst[0] + high(r, p);
  const PowerEntry& entry = kPowers[steps & 31];
  // The entry in Q31 is, as a signed number, the entry less 2: that product comes back as p.
  const int32_t less_2 = static_cast<int32_t>(entry.bits << 8 | entry.more >> 24);
  return {steps >> 5, entry, high(less_2, p) + p};
}

inline int32_t mantissa_q30(uint32_t bits) {
  return static_cast<int32_t>((bits << 7 & 0x3fffffffu) | 0x40000000u);
}

inline float exp(float x) {
  const uint32_t bits = std::bit_cast<uint32_t>(x);
  const uint32_t size = bits & ~kSign;
  // 2^-25 <= |x| < 87: the result is neither 1 nor subnormal nor infinite.
  constexpr uint32_t kLeast = 0x33000000u;
  if (size - kLeast >= 0x42ae0000u - kLeast) {
    return exp_second(bits);
  }
  const int32_t m = mantissa_q30(size);
  const Power2 y = exp_first(bits >> 31 != 0 ? -m : m, size >> 23);
  // 12 bits below the float's last one; 2 for what is cut off on the way.
  const int32_t sum = y.rest + static_cast<int32_t>(y.entry.more >> 20) + (1 << 11) + 2;
  if ((static_cast<uint32_t>(sum + kExpError) & 0xfffu) < 2 * kExpError) {
    return exp_second(bits);
  }
  return std::bit_cast<float>(y.entry.bits + static_cast<uint32_t>(sum >> 12) +
                              (static_cast<uint32_t>(y.power) << 23));
}

// A positive float before it is rounded: y has its highest bit set, and 8 bits below the float's
// last one; base are the float's bits for y = 0.
struct Unrounded {
  uint32_t base;
  uint32_t y;

  uint32_t rounded() const { return base + ((y + 128) >> 8); }
  bool is_sure(uint32_t error) const { return ((y + 128 + error) & 0xffu) >= 2 * error; }
};

// The first steps' errors of y. All inputs: -1.34 to 1.69.
inline constexpr uint32_t kTanhError = 2;

inline constexpr uint32_t kTanhLeast = 0x39800001u;  // up to 2^-12, tanh(x) rounds to x
inline constexpr uint32_t kTanhHalf = 0x3f0c9f54u;   // the first float whose tanh is 0.5 or more
inline constexpr uint32_t kTanhOne = 0x41102cb4u;    // the first float whose tanh rounds to 1

// 1 - (1 + e) q in Q32, for e in Q33 and q in Q32.
inline int32_t one_less(uint32_t q, uint32_t e) {
  return static_cast<int32_t>(0u - q - (high(e, q) >> 1));
}
// q w in Q32, for 0.5 <= q < 1: q as a signed number is q - 1.
inline uint32_t scaled(uint32_t q, int32_t w) {
  return static_cast<uint32_t>(high(static_cast<int32_t>(q), w) + w);
}

// tanh(x) = (1 - e) / (1 + e) with e = exp(-2x), from kTanhHalf on.
inline Unrounded tanh_first_high(uint32_t size) {
  const Power2 power = exp_first(-mantissa_q30(size), (size >> 23) + 1);
  const uint32_t mantissa =
      (power.entry.bits << 8 | power.entry.more >> 24) + static_cast<uint32_t>(power.rest >> 4);
  const uint32_t e = mantissa >> (-2 - power.power);  // Q33, at most 1/3
  // q = 1 / (1 + e) in Q32: a line, less than 1/96 off, then q + q w + q w^2, then q + q w.
  uint32_t q = 0xfd5c5f02u - high(e, 0x5f02a3a1u);
  int32_t wrong = one_less(q, e);
  wrong += high(wrong, wrong);
  q += scaled(q, wrong);
  q += scaled(q, one_less(q, e));
  return {0x3e800000u, 0u - high(e, q) - 1};  // 1 - 2 e q
}

// tanh(x) = x - x u, u = z (c0 - z (c1 - ...)), z = x^2, below kTanhHalf.
inline Unrounded tanh_first_low(uint32_t size) {
  const uint32_t m = size << 8 | kSign;                         // x in Q31 of its power
  const uint32_t z = high(m, m) >> (2 * (126 - (size >> 23)));  // Q32
  uint32_t u = kTanhFirst[0];                                   // Q33
  for (int i = 1; i < 6; ++i) {
    u = kTanhFirst[i] - high(z, u);
  }
  const uint32_t less = high(m, high(z, u));  // Q32
  const uint32_t base = (size & kInfinity) - 0x800000u;
  const uint32_t y = m - (less >> 1) - 1;
  if (y >> 31 != 0) {
    return {base, y};
  }
  return {base - 0x800000u, 2 * m - less - 1};
}

inline float tanh(float x) {
  const uint32_t bits = std::bit_cast<uint32_t>(x);
  const uint32_t size = bits & ~kSign;
  if (size - kTanhLeast >= kTanhOne - kTanhLeast) {
    return tanh_second(bits);
  }
  const Unrounded y = size >= kTanhHalf ? tanh_first_high(size) : tanh_first_low(size);
  if (!y.is_sure(kTanhError)) {
    return tanh_second(bits);
  }
  return std::bit_cast<float>((bits & kSign) | y.rounded());
}

inline float sigmoid(float x) {
  return 1.0f / (1.0f + exp(-x));
}

}  // namespace nnlib::exact

#endif
