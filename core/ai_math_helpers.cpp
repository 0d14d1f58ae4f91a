// SPDX-License-Identifier: MIT
#include "core/ai_math_helpers.h"

#include <math.h>

#include "core/scalar_ops.hpp"

using nnlib::Ops;

float func_dummy(float x) {
  return x;
}

const float* ai_math_dot_array(float* out, const float* a, const float* b, ai_size n) {
  float sum = 0.0f;
  for (ai_size i = 0; i < n; ++i) {
    sum += a[i] * b[i];
  }
  *out += sum;
  return a + n;
}

float ai_math_sqrt(float x) {
  return Ops::sqrt(x);
}
float ai_math_exp(float x) {
  return Ops::exp(x);
}
float ai_math_pow(float x, float y) {
  return static_cast<float>(pow(static_cast<double>(x), static_cast<double>(y)));
}
float ai_math_tanh(float x) {
  return Ops::tanh(x);
}
float ai_math_cosh(float x) {
  return Ops::cosh(x);
}

float ai_math_relu(float x) {
  return Ops::relu(x);
}
float ai_math_prelu(float x, float slope) {
  return 0.0f > x ? x * slope : x;
}
float ai_math_sigmoid(float x) {
  return Ops::sigmoid(x);
}
float ai_math_hard_sigmoid(float x) {
  return Ops::hard_sigmoid(x);
}
float ai_math_sign(float x) {
  return Ops::sign(x);
}

float ai_sum(float a, float b) {
  return a + b;
}
float ai_sub(float a, float b) {
  return a - b;
}
float ai_mul(float a, float b) {
  return a * b;
}
float ai_div(float a, float b) {
  return a / b;
}
float ai_max(float a, float b) {
  return a > b ? a : b;
}
float ai_min(float a, float b) {
  return a < b ? a : b;
}
float ai_floor_div(float a, float b) {
  return Ops::floor(a / b);
}
float ai_floor_mod(float a, float b) {
  return fmodf(a, b);
}
