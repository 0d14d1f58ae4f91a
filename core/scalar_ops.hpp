// SPDX-License-Identifier: MIT
// The scalar operations, one line each, behind the public math helpers and the element-wise
// kernels. The way a comparison is written decides what happens to NaN and to the sign of zero.
#ifndef NNLIB_CORE_SCALAR_OPS_HPP
#define NNLIB_CORE_SCALAR_OPS_HPP

#include <math.h>

#include <bit>
#include <cstdint>

#include "kernels/exact_math.hpp"

namespace nnlib {

// condition ? a : b with both computed: a choice between results, where a compiler would branch
// around the arithmetic instead of vectorising it.
inline float select(bool condition, float a, float b) {
  const uint32_t mask = condition ? UINT32_MAX : 0;
  return std::bit_cast<float>((std::bit_cast<uint32_t>(a) & mask) |
                              (std::bit_cast<uint32_t>(b) & ~mask));
}

// From 2^23 on a float has no fraction.
inline constexpr float kNoFraction = 8388608.0f;

// x truncated plus step(x, x truncated), with the sign bit of x. Numbers without a fraction,
// infinities and NaN come back as they are.
template <class Step>
inline float round_by(float x, Step step) {
  const bool has_fraction = fabsf(x) < kNoFraction;
  const float truncated = static_cast<float>(static_cast<int32_t>(select(has_fraction, x, 0.0f)));
  return select(has_fraction, copysignf(truncated + step(x, truncated), x), x);
}

// The library's function in double, rounded; or what gives the same bits without doubles.
template <bool Exact = exact::kInsteadOfLibrary>
inline float in_double(float x, double (*library)(double), float (*exact)(float)) {
  return Exact ? exact(x) : static_cast<float>(library(static_cast<double>(x)));
}

// Named like the public functions. e is the exponential of x (see exp), p are the parameters of an
// operation.
struct Ops {
  static float abs(float x) { return fabsf(x); }
  static float acos(float x) { return acosf(x); }
  static float acosh(float x) { return acoshf(x); }
  static float asin(float x) { return asinf(x); }
  static float asinh(float x) { return asinhf(x); }
  static float atan(float x) { return atanf(x); }
  static float atanh(float x) { return atanhf(x); }
  static float ceil(float x) {
    return round_by(x, [](float v, float truncated) { return select(v > truncated, 1.0f, 0.0f); });
  }
  static float clip(float x, const float* p) { return at_most(x > p[0] ? x : p[0], p[1]); }
  static float cos(float x) { return cosf(x); }
  static float cosh(float x) { return in_double(x, ::cosh, exact::cosh); }
  static float elu(float x, float e, const float* p) {
    return relu(x) + at_most_zero(p[0] * (e - 1.0f));
  }
  static float erf(float x) { return erff(x); }
  static float exp(float x) { return in_double(x, ::exp, exact::exp); }
  static float floor(float x) {
    return round_by(x, [](float v, float truncated) { return select(truncated > v, -1.0f, 0.0f); });
  }
  static float hard_sigmoid(float x) { return unit(x * 0.2f + 0.5f); }
  static float log(float x) { return logf(x); }
  static float neg(float x) { return -x; }
  // The product with 0 brings an infinite or NaN slope in above 0, too.
  static float prelu(float x, float slope) { return relu(x) + slope * (x > 0.0f ? 0.0f : x); }
  static float reciprocal(float x) { return 1.0f / x; }
  static float relu(float x) { return 0.0f > x ? 0.0f : x; }
  static float relu_thresholded(float x, const float* p) { return p[0] > x ? 0.0f : x; }
  static float round(float x) { return roundf(x); }
  static float rsqrt(float x) { return 1.0f / sqrtf(x); }
  static float selu(float x, float e, const float* p) { return p[1] * elu(x, e, p); }
  static float sigmoid(float x) { return 1.0f / (1.0f + exp(-x)); }
  static float sign(float x) { return x > 0.0f ? 1.0f : -1.0f; }
  static float sin(float x) { return sinf(x); }
  static float sinh(float x) { return in_double(x, ::sinh, exact::sinh); }
  static float soft_plus(float e) { return logf(e + 1.0f); }
  static float soft_sign(float x) { return x / (1.0f + fabsf(x)); }
  static float sqrt(float x) { return sqrtf(x); }
  static float tan(float x) { return tanf(x); }
  static float tanh(float x) { return in_double(x, ::tanh, exact::tanh); }

 private:
  static float at_most(float x, float hi) { return x < hi ? x : hi; }
  static float at_most_zero(float x) { return x > 0.0f ? 0.0f : x; }
  static float unit(float x) { return x > 1.0f ? 1.0f : 0.0f > x ? 0.0f : x; }
};

}  // namespace nnlib

#endif
