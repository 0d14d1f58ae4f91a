#include "kernels/ko_pool.h"

#include "kernels/integer_pool.hpp"
#include "kernels/round_quantized.hpp"

namespace nnlib {
namespace {

struct Maximum : IntegerMax {
  template <class T>
  static T exact(T maximum, int64_t /*count*/) {
    return maximum;
  }
  template <class T>
  static float real(T maximum, int64_t /*count*/) {
    return static_cast<float>(maximum);
  }
};

struct Average : IntegerSum {
  template <class T, class Sum>
  static T exact(Sum sum, int64_t count) {
    const Sum cells = static_cast<Sum>(count);
    return divide<T>(sum + cells / 2, cells);
  }
  template <class T, class Sum>
  static float real(Sum sum, int64_t count) {
    return static_cast<float>(sum) / static_cast<float>(count);
  }
};

template <class T>
struct PoolQuantization {
  float in_scale;
  T in_zeropoint;
  float out_scale;
  T out_zeropoint;
};

template <class Pooling, class T>
int32_t pool(const PoolGeometry& g, const T* in, T* out, const PoolQuantization<T>& q) {
  if (q.in_scale == q.out_scale && q.in_zeropoint == q.out_zeropoint) {
    integer_pool<Pooling>(g, in, out, q.out_zeropoint, [](auto folded, int64_t count) {
      return Pooling::template exact<T>(folded, count);
    });
    return 0;
  }
  const float ratio = q.in_scale / q.out_scale;
  const float in_zeropoint = q.in_zeropoint;
  const float out_zeropoint = q.out_zeropoint;
  integer_pool<Pooling>(g, in, out, q.out_zeropoint, [=](auto folded, int64_t count) {
    const float m = Pooling::template real<T>(folded, count);
    return round_quantized<T>((m - in_zeropoint) * ratio + out_zeropoint);
  });
  return 0;
}

}  // namespace
}  // namespace nnlib

#define DEFINE(types, Element, operation, Pooling)                                               \
  int32_t ko_##types##_##operation##pool(                                                        \
      const Element* in, Element* out, uint16_t in_width, uint16_t in_height, uint16_t channels, \
      uint16_t pool_width, uint16_t pool_height, uint16_t pad_x, uint16_t pad_y,                 \
      uint16_t stride_x, uint16_t stride_y, uint16_t out_width, uint16_t out_height,             \
      float in_scale, Element in_zeropoint, float out_scale, Element out_zeropoint) {            \
    const nnlib::PoolGeometry geometry = {in_width,    in_height, channels,  pool_width,         \
                                          pool_height, pad_x,     pad_y,     stride_x,           \
                                          stride_y,    out_width, out_height};                   \
    return nnlib::pool<nnlib::Pooling, Element>(                                                 \
        geometry, in, out, {in_scale, in_zeropoint, out_scale, out_zeropoint});                  \
  }                                                                                              \
  int32_t ko_##types##_glo##operation##pool(                                                     \
      const Element* in, Element* out, uint16_t in_width, uint16_t in_height, uint16_t channels, \
      float in_scale, Element in_zeropoint, float out_scale, Element out_zeropoint) {            \
    return ko_##types##_##operation##pool(in, out, in_width, in_height, channels, in_width,      \
                                          in_height, 0, 0, 1, 1, 1, 1, in_scale, in_zeropoint,   \
                                          out_scale, out_zeropoint);                             \
  }

extern "C" {
DEFINE(uint8, uint8_t, max, Maximum)
DEFINE(uint8, uint8_t, ave, Average)
DEFINE(int8, int8_t, max, Maximum)
DEFINE(int8, int8_t, ave, Average)
}
