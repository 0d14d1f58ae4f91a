// SPDX-License-Identifier: MIT
#include "kernels/ko_add.h"

#include "kernels/round_quantized.hpp"

namespace nnlib {
namespace {

template <class T>
struct Operand {
  const T* data;
  float scale;
  T zeropoint;

  float centred(uint32_t i) const { return static_cast<float>(data[i] - zeropoint); }
};

uint8_t quantized_sum(float sum, uint8_t zeropoint) {
  return saturate<uint8_t>(sum + (static_cast<float>(zeropoint) + 0.5f));
}
int8_t quantized_sum(float sum, int8_t zeropoint) {
  return round_quantized<int8_t>(sum + static_cast<float>(zeropoint));
}

template <class T>
int32_t add(const Operand<T>& a, const Operand<T>& b, T* out, uint32_t count, float out_scale,
            T out_zeropoint) {
  if (a.scale == b.scale && a.scale == out_scale && a.zeropoint == b.zeropoint &&
      a.zeropoint == out_zeropoint) {
    for (uint32_t i = 0; i < count; ++i) {
      out[i] = saturate<T>(int32_t{a.data[i]} + b.data[i] - out_zeropoint);
    }
    return 0;
  }
  const float ratio_a = a.scale / out_scale;
  const float ratio_b = b.scale / out_scale;
  for (uint32_t i = 0; i < count; ++i) {
    out[i] = quantized_sum(b.centred(i) * ratio_b + a.centred(i) * ratio_a, out_zeropoint);
  }
  return 0;
}

}  // namespace
}  // namespace nnlib

extern "C" {

int32_t ko_uint8_add(const uint8_t* in1, const uint8_t* in2, uint8_t* out, uint32_t count,
                     float scale1, uint8_t zeropoint1, float scale2, uint8_t zeropoint2,
                     float out_scale, uint8_t out_zeropoint) {
  return nnlib::add<uint8_t>({in1, scale1, zeropoint1}, {in2, scale2, zeropoint2}, out, count,
                             out_scale, out_zeropoint);
}

int32_t ko_int8_add(const int8_t* in1, const int8_t* in2, int8_t* out, uint32_t count, float scale1,
                    int8_t zeropoint1, float scale2, int8_t zeropoint2, float out_scale,
                    int8_t out_zeropoint) {
  return nnlib::add<int8_t>({in1, scale1, zeropoint1}, {in2, scale2, zeropoint2}, out, count,
                            out_scale, out_zeropoint);
}

}  // extern "C"
