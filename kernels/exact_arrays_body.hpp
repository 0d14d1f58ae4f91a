// SPDX-License-Identifier: MIT
// e^x = 2^n (1 + p) with n = round(x / ln 2) and p = r q(r), a polynomial of degree 7 for
// (e^r - 1) / r, |r| <= ln(2) / 2, that is off by at most 2^-37.7. A double has 29 bits more than
// its float: they tell whether that error can reach a rounding boundary. A vector with such a lane
// takes the C library's function.
#include "kernels/double_lanes.hpp"

struct Scaled {
  Doubles p;  // e^r - 1, within 2^-37.7 of itself
  Longs n;    // in the upper 12 bits
};

// |x| <= 200. r is off by 2^-45 at most.
NNLIB_ALWAYS_INLINE Scaled exp_parts(Doubles x) {
  const double to_integer = 0x1.8p52;  // a sum with it has n in its lower bits
  const Doubles shifted = x * 0x1.71547652b82fep0 + to_integer;
  const Doubles r = x - (shifted - to_integer) * 0x1.62e42fefa39efp-1;
  const Doubles r2 = r * r;
  const auto& c = exact::kExpDoubles;
  const Doubles low = (c[0] + r * c[1]) + r2 * (c[2] + r * c[3]);
  const Doubles high = (c[4] + r * c[5]) + r2 * (c[6] + r * c[7]);
  return {r * (low + (r2 * r2) * high), reinterpret_cast<Longs>(shifted) << 52};
}

// 2^n x, x and the result being normal.
NNLIB_ALWAYS_INLINE Doubles times_power(Doubles x, Longs n) {
  return reinterpret_cast<Doubles>(reinterpret_cast<Longs>(x) + n);
}

// Not 0 for elements nearer than error units of their last place to the middle between two floats,
// in some order.
NNLIB_ALWAYS_INLINE Mask near_middle(const TwoDoubles& y, uint32_t error) {
  const Words above_least = (lower_words(y) + (error - (1u << 28))) & ((1u << 29) - 1);
  return reinterpret_cast<Mask>(above_least) < static_cast<int32_t>(2 * error);
}

// Function::doubles of every element; Function::kError bounds its error in units of the last place.
template <class Function>
NNLIB_ALWAYS_INLINE Vec rounded(Vec x, Vec in_range) {
  const TwoDoubles halves = widened(in_range);
  const TwoDoubles y = {Function::doubles(halves.low), Function::doubles(halves.high)};
  const Vec result = narrowed(y);
  if (__builtin_expect(any(near_middle(y, Function::kError) | Function::in_doubt(result)), 0)) {
    float elements[kLanes];
    store(elements, x);
    by_library(elements, elements, kLanes, Function::library);
    return load(elements);
  }
  return result;
}

struct Exp {
  static constexpr LibraryFunction library = ::exp;
  // p is off by 0.42 * 2^-37.7 at most, of a result that is at least 0.7.
  static constexpr uint32_t kError = 1u << 14;

  static NNLIB_ALWAYS_INLINE Doubles doubles(Doubles x) {
    const Scaled e = exp_parts(x);
    return times_power(1.0 + e.p, e.n);
  }
  // Of subnormal results other bits are cut off.
  static NNLIB_ALWAYS_INLINE Mask in_doubt(Vec result) {
    const Words from_least = reinterpret_cast<Words>(result) - 1 + exact::kSign;
    return reinterpret_cast<Mask>(from_least) < INT32_MIN + 0x7fffff;
  }
  static NNLIB_ALWAYS_INLINE Vec of(Vec x) {
    return rounded<Exp>(x, clamped(x, -104.0f, 100.0f));  // from 0 to infinity
  }
};

struct Sigmoid {
  static NNLIB_ALWAYS_INLINE Vec of(Vec x) { return 1.0f / (1.0f + Exp::of(-x)); }
};

struct Tanh {
  static constexpr LibraryFunction library = ::tanh;
  // e^2x - 1 is within 1.5 * 2^-37.7 of itself, and so is the quotient.
  static constexpr uint32_t kError = 1u << 16;

  static NNLIB_ALWAYS_INLINE Doubles doubles(Doubles x) {
    const Scaled e = exp_parts(x + x);
    const Doubles scale = times_power(Doubles{} + 1.0, e.n);
    const Doubles m = scale * e.p + (scale - 1.0);  // e^2x - 1
    return m / (m + 2.0);
  }
  static NNLIB_ALWAYS_INLINE Mask in_doubt(Vec) { return Mask{}; }
  static NNLIB_ALWAYS_INLINE Vec of(Vec x) {
    const Words sign = reinterpret_cast<Words>(x) & exact::kSign;
    const Vec size = reinterpret_cast<Vec>(reinterpret_cast<Words>(x) ^ sign);
    const Vec y = rounded<Tanh>(size, clamped(size, 0.0f, 10.0f));  // up to 1
    return reinterpret_cast<Vec>(reinterpret_cast<Words>(y) | sign);
  }
};

template <class Function>
NNLIB_ALWAYS_INLINE void map(float* out, const float* in, size_t count) {
  for (; count >= kLanes; count -= kLanes, in += kLanes, out += kLanes) {
    store(out, Function::of(load(in)));
  }
  if (count > 0) {
    store_part(out, Function::of(load_part(in, count)), count);
  }
}

inline void exp_array(float* out, const float* in, size_t count) {
  map<Exp>(out, in, count);
}
inline void sigmoid_array(float* out, const float* in, size_t count) {
  map<Sigmoid>(out, in, count);
}
inline void tanh_array(float* out, const float* in, size_t count) {
  map<Tanh>(out, in, count);
}
