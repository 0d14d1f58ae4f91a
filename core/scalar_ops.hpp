// The scalar operations, one line each, behind the public math helpers and the element-wise
// kernels. The way a comparison is written decides what happens to NaN and to the sign of zero.
#ifndef NNLIB_CORE_SCALAR_OPS_HPP
#define NNLIB_CORE_SCALAR_OPS_HPP

#include <math.h>

#include <bit>
#include <cstdint>

namespace nnlib::ops {

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

// In double precision where the library's double function is called.
inline float abs(float x) {
  return fabsf(x);
}
inline float acos(float x) {
  return acosf(x);
}
inline float acosh(float x) {
  return acoshf(x);
}
inline float asin(float x) {
  return asinf(x);
}
inline float asinh(float x) {
  return asinhf(x);
}
inline float atan(float x) {
  return atanf(x);
}
inline float atanh(float x) {
  return atanhf(x);
}
inline float ceil(float x) {
  return round_by(
      x, [](float value, float truncated) { return select(value > truncated, 1.0f, 0.0f); });
}
inline float cos(float x) {
  return cosf(x);
}
inline float cosh(float x) {
  return static_cast<float>(::cosh(static_cast<double>(x)));
}
inline float erf(float x) {
  return erff(x);
}
inline float exp(float x) {
  return static_cast<float>(::exp(static_cast<double>(x)));
}
inline float floor(float x) {
  return round_by(
      x, [](float value, float truncated) { return select(truncated > value, -1.0f, 0.0f); });
}
inline float log(float x) {
  return logf(x);
}
inline float neg(float x) {
  return -x;
}
inline float reciprocal(float x) {
  return 1.0f / x;
}
inline float relu(float x) {
  return 0.0f > x ? 0.0f : x;
}
inline float round(float x) {
  return roundf(x);
}
inline float sigmoid(float x) {
  return 1.0f / (1.0f + exp(-x));
}
inline float sign(float x) {
  return x > 0.0f ? 1.0f : -1.0f;
}
inline float sin(float x) {
  return sinf(x);
}
inline float sinh(float x) {
  return static_cast<float>(::sinh(static_cast<double>(x)));
}
inline float soft_plus(float x) {
  return logf(exp(x) + 1.0f);
}
inline float soft_sign(float x) {
  return x / (1.0f + fabsf(x));
}
inline float sqrt(float x) {
  return sqrtf(x);
}
inline float rsqrt(float x) {
  return 1.0f / sqrtf(x);
}
inline float tan(float x) {
  return tanf(x);
}
inline float tanh(float x) {
  return static_cast<float>(::tanh(static_cast<double>(x)));
}
inline float hard_sigmoid(float x) {
  const float t = x * 0.2f + 0.5f;
  return t > 1.0f ? 1.0f : 0.0f > t ? 0.0f : t;
}

// With parameters p.
inline float relu_thresholded(float x, const float* p) {
  return p[0] > x ? 0.0f : x;
}
inline float clip(float x, const float* p) {
  const float bounded = x > p[0] ? x : p[0];
  return bounded < p[1] ? bounded : p[1];
}
inline float elu(float x, const float* p) {
  const float e = p[0] * (exp(x) - 1.0f);
  return relu(x) + (e > 0.0f ? 0.0f : e);
}
inline float selu(float x, const float* p) {
  return p[1] * elu(x, p);
}

// max(0, x) + slope * x for x <= 0 and max(0, x) - slope * 0 above: the product with -0 is the
// negated product with 0.
inline float prelu(float x, float slope) {
  return relu(x) + slope * (x > 0.0f ? -0.0f : x);
}

}  // namespace nnlib::ops

#endif
