// SPDX-License-Identifier: MIT
#include "kernels/exact_math.hpp"

namespace nnlib::exact {
namespace {

// The upper halves of products, up to 2 too small.
template <class T>
T high64(T a, T b) {
  const T a_high = a >> 32;
  const T b_high = b >> 32;
  const T a_low = static_cast<uint32_t>(a);
  const T b_low = static_cast<uint32_t>(b);
  return a_high * b_high + ((a_high * b_low) >> 32) + ((a_low * b_high) >> 32);
}

float of_bits(uint32_t bits) {
  return std::bit_cast<float>(bits);
}

bool is_nan(uint32_t bits) {
  return (bits & ~kSign) > kInfinity;
}
float quiet(uint32_t nan_bits) {
  return of_bits(nan_bits | 0x400000u);
}

uint32_t mantissa(uint32_t size) {
  return (size & 0x7fffffu) | 0x800000u;
}

// 2^power y, 1 <= y < 2 in Q60, less than 2^-55 off.
struct Power2Q60 {
  int32_t power;
  int64_t y;
};

// exp(m 2^(exponent - 150)) or its inverse, m of 24 bits, for 102 <= exponent <= 133. As exp_first,
// with a polynomial of e^r - 1; r is taken from x itself.
Power2Q60 exp_q60(uint32_t m, uint32_t exponent, bool inverse) {
  const int32_t m30 = static_cast<int32_t>(m << 7);
  const int64_t product = static_cast<int64_t>(m30) * kLog2E[0] + high(m30, kLog2E[1]);
  int32_t steps = static_cast<int32_t>((product >> (150 - exponent)) >> 32);
  steps = inverse ? ~steps : steps;
  const uint64_t x = static_cast<uint64_t>(m) << (exponent - 81);  // Q69, modulo 2^64
  const int64_t r =
      static_cast<int64_t>((inverse ? 0 - x : x) - static_cast<uint64_t>(2 * int64_t{steps} + 1) *
                                                       static_cast<uint64_t>(kLn2Over64));
  int64_t p = kExpSecond[0];
  for (int i = 1; i < 7; ++i) {
    p = kExpSecond[i] + (high64(r, p) >> 5);
  }
  p = high64(r, p);  // Q67
  const PowerEntry& at = kPowers[steps & 31];
  const int64_t entry = static_cast<int64_t>(uint64_t{mantissa(at.bits)} << 32 | at.more);  // Q55
  return {steps >> 5, (entry << 5) + (high64(entry << 7, p) >> 5)};
}

// The float nearest to a positive 2^power y, y in Q60 and 1 <= y < 2.
float rounded(int32_t power, int64_t y) {
  int32_t cut = 37;
  uint32_t base = static_cast<uint32_t>(power + 126) << 23;
  if (power > 127) {
    return of_bits(kInfinity);
  }
  if (power < -126) {  // subnormal
    cut -= power + 126;
    base = 0;
  }
  if (cut > 61) {
    return 0.0f;
  }
  return of_bits(base + static_cast<uint32_t>((y + (INT64_C(1) << (cut - 1))) >> cut));
}

// exp(|x|) and exp(-|x|), with one power: of 2^-12 <= |x| < 104.
struct BothPowers {
  int32_t power;
  int64_t of_x;
  int64_t of_minus_x;
};
BothPowers both_powers(uint32_t size) {
  const Power2Q60 up = exp_q60(mantissa(size), size >> 23, false);
  const Power2Q60 down = exp_q60(mantissa(size), size >> 23, true);
  const int32_t shift = up.power - down.power;
  return {up.power, up.y, shift < 63 ? down.y >> shift : 0};
}

// Half of 2^power y, for any y from 0.5 to less than 4.
float rounded_half(int32_t power, int64_t y) {
  --power;
  if (y >> 61 != 0) {
    return rounded(power + 1, y >> 1);  // what is cut off is less than the error
  }
  return y >> 60 != 0 ? rounded(power, y) : rounded(power - 1, y << 1);
}

constexpr uint32_t kHyperbolicLeast = kTanhLeast;  // below, cosh(x) rounds to 1 and sinh(x) to x
constexpr uint32_t kHyperbolicMost = 0x42d00000u;  // 104: from here on infinite
constexpr uint32_t kHalf = 0x3f000000u;

// x + x u, u = z (c0 + z (c1 + ...)), z = x^2, below 0.5.
float sinh_low(uint32_t size) {
  const uint64_t m = mantissa(size);
  const uint64_t z = (m * m << 16) >> (2 * (126 - (size >> 23)));  // Q64
  uint64_t u = kSinhSecond[0];
  for (int i = 1; i < 6; ++i) {
    u = kSinhSecond[i] + high64(z, u);
  }
  u = high64(z, u);            // Q66
  const uint64_t x = m << 37;  // Q60
  // Rounded to the double that the library gives: 0x3a1285ff, of all inputs, is one whose sinh lies
  // so near below the middle of two floats that its double is that middle.
  const uint64_t y = (x + (high64(x << 3, u) >> 5) + 128) & ~UINT64_C(255);
  const int32_t power = static_cast<int32_t>(size >> 23) - 127;
  return y >> 61 != 0 ? rounded(power + 1, static_cast<int64_t>(y >> 1))
                      : rounded(power, static_cast<int64_t>(y));
}

}  // namespace

float exp_second(uint32_t bits) {
  const uint32_t size = bits & ~kSign;
  const bool inverse = bits >> 31 != 0;
  if (is_nan(bits)) {
    return quiet(bits);
  }
  if (size < 0x33000000u) {
    return 1.0f;
  }
  if (size >= kHyperbolicMost) {
    return of_bits(inverse ? 0 : kInfinity);
  }
  const Power2Q60 e = exp_q60(mantissa(size), size >> 23, inverse);
  return rounded(e.power, e.y);
}

float tanh_second(uint32_t bits) {
  const uint32_t size = bits & ~kSign;
  const uint32_t sign = bits & kSign;
  if (is_nan(bits)) {
    return quiet(bits);
  }
  if (size < kTanhLeast) {
    return of_bits(bits);
  }
  if (size >= kTanhOne) {
    return of_bits(sign | kOne);
  }
  if (size >= kTanhHalf) {
    // The nearest boundary between two roundings is b: tanh(x) > b when 1 - e > b (1 + e).
    const Power2Q60 power = exp_q60(mantissa(size), (size >> 23) + 1, true);
    const int64_t e = (power.y << 2) >> -power.power;               // Q62
    const uint32_t half = (tanh_first_high(size).y >> 8 << 1) + 1;  // b in Q25
    const int64_t b = int64_t{half} << 37;                          // Q62
    const int64_t above = (INT64_C(1) << 62) - e - b - (high64(e, b) << 2);
    return of_bits(sign | (0x3e800000u + (half >> 1) + (above > 0 ? 1 : 0)));
  }
  const uint64_t m = mantissa(size);
  const uint64_t z = (m * m << 16) >> (2 * (126 - (size >> 23)));  // Q64
  uint64_t u = kTanhSecond[0];                                     // Q65
  for (int i = 1; i < 12; ++i) {
    u = kTanhSecond[i] - high64(z, u);
  }
  u = high64(z, u);
  const uint64_t x = m << 40;  // Q63
  const uint64_t y = x - (high64(x, u) >> 1);
  const int32_t power = static_cast<int32_t>(size >> 23) - 127;
  const float result = y >> 63 != 0 ? rounded(power, static_cast<int64_t>(y >> 3))
                                    : rounded(power - 1, static_cast<int64_t>(y >> 2));
  return of_bits(sign | std::bit_cast<uint32_t>(result));
}

float cosh(float x) {
  const uint32_t bits = std::bit_cast<uint32_t>(x);
  const uint32_t size = bits & ~kSign;
  if (is_nan(bits)) {
    return quiet(bits);
  }
  if (size < kHyperbolicLeast) {
    return 1.0f;
  }
  if (size >= kHyperbolicMost) {
    return of_bits(kInfinity);
  }
  const BothPowers e = both_powers(size);
  return rounded_half(e.power, e.of_x + e.of_minus_x);
}

float sinh(float x) {
  const uint32_t bits = std::bit_cast<uint32_t>(x);
  const uint32_t size = bits & ~kSign;
  const uint32_t sign = bits & kSign;
  if (is_nan(bits)) {
    return quiet(bits);
  }
  if (size < kHyperbolicLeast) {
    return x;
  }
  if (size >= kHyperbolicMost) {
    return of_bits(sign | kInfinity);
  }
  if (size < kHalf) {
    return of_bits(sign | std::bit_cast<uint32_t>(sinh_low(size)));
  }
  const BothPowers e = both_powers(size);
  return of_bits(sign | std::bit_cast<uint32_t>(rounded_half(e.power, e.of_x - e.of_minus_x)));
}

}  // namespace nnlib::exact
