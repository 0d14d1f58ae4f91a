// SPDX-License-Identifier: MIT
#include "kernels/ko_add.h"

#include <limits>

#include "kernels/instruction_set.hpp"
#include "kernels/round_quantized.hpp"
#include "kernels/vector.hpp"

namespace nnlib {
namespace {

template <class T>
struct Operand {
  const T* data;
  float factor;  // to the output's scale
  T zeropoint;

  float part(uint32_t i) const { return static_cast<float>(data[i] - zeropoint) * factor; }
};

uint8_t quantized_sum(float sum, uint8_t zeropoint) {
  return saturate<uint8_t>(sum + (static_cast<float>(zeropoint) + 0.5f));
}
int8_t quantized_sum(float sum, int8_t zeropoint) {
  return round_quantized<int8_t>(sum + static_cast<float>(zeropoint));
}

template <class T>
T exact_sum(T a, T b, T zeropoint) {
  return saturate<T>(int32_t{a} + b - zeropoint);
}
template <class T>
T rescaled_sum(const Operand<T>& a, const Operand<T>& b, uint32_t i, T zeropoint) {
  return quantized_sum(b.part(i) + a.part(i), zeropoint);
}

#define NNLIB_SET NNLIB_NARROW_SET
#include NNLIB_PART(add)
#undef NNLIB_SET

template <class T>
int32_t add(const T* a, float scale_a, T zeropoint_a, const T* b, float scale_b, T zeropoint_b,
            T* out, uint32_t count, float out_scale, T out_zeropoint) {
  if (scale_a == scale_b && scale_a == out_scale && zeropoint_a == zeropoint_b &&
      zeropoint_a == out_zeropoint) {
    add_exactly(a, b, count, out_zeropoint, out);
  } else {
    add_rescaled<T>({a, scale_a / out_scale, zeropoint_a}, {b, scale_b / out_scale, zeropoint_b},
                    count, out_zeropoint, out);
  }
  return 0;
}

}  // namespace
}  // namespace nnlib

extern "C" {

int32_t ko_uint8_add(const uint8_t* in1, const uint8_t* in2, uint8_t* out, uint32_t count,
                     float scale1, uint8_t zeropoint1, float scale2, uint8_t zeropoint2,
                     float out_scale, uint8_t out_zeropoint) {
  return nnlib::add(in1, scale1, zeropoint1, in2, scale2, zeropoint2, out, count, out_scale,
                    out_zeropoint);
}

int32_t ko_int8_add(const int8_t* in1, const int8_t* in2, int8_t* out, uint32_t count, float scale1,
                    int8_t zeropoint1, float scale2, int8_t zeropoint2, float out_scale,
                    int8_t out_zeropoint) {
  return nnlib::add(in1, scale1, zeropoint1, in2, scale2, zeropoint2, out, count, out_scale,
                    out_zeropoint);
}

}  // extern "C"
