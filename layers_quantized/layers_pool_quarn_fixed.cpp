// SPDX-License-Identifier: MIT
#include "layers_quantized/layers_pool_quarn_fixed.h"

#include "kernels/integer_pool.hpp"
#include "layers_quantized/pool_layer.hpp"

namespace nnlib {
namespace {

struct MaxPooling : IntegerMax {
  template <class T>
  static constexpr T outside = std::numeric_limits<T>::min();
};

struct MeanPooling : IntegerSum<true> {
  template <class T>
  static constexpr T outside = 0;
};

template <class Pooling, class T>
void pool_elements(const PoolGeometry& geometry, const ai_array& in, const ai_array& out) {
  integer_pool<Pooling>(geometry, static_cast<const T*>(in.data), static_cast<T*>(out.data),
                        Pooling::template outside<T>, ExactPool<Pooling, T>());
}

template <class Pooling>
void pool_arrays(const PoolGeometry& geometry, const ai_array& in, const ai_array& out) {
  if (ai_fmt_get_bits(in.format) == 8) {
    pool_elements<Pooling, int8_t>(geometry, in, out);
  } else {
    pool_elements<Pooling, int16_t>(geometry, in, out);
  }
}

template <class Pooling>
void pool_layer(ai_layer* layer) {
  pool_arrays<Pooling>(pool_geometry(*layer), *layer_input(*layer).data,
                       *layer_output(*layer).data);
}

}  // namespace
}  // namespace nnlib

void forward_mp_fixed(ai_layer* layer) {
  nnlib::pool_layer<nnlib::MaxPooling>(layer);
}

void forward_ap_fixed(ai_layer* layer) {
  nnlib::pool_layer<nnlib::MeanPooling>(layer);
}

void pool_func_mp_array_fixed(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels,
                              uint16_t pool_w, uint16_t pool_h, uint16_t pad_x, uint16_t pad_y,
                              uint16_t stride_x, uint16_t stride_y, uint16_t out_w, uint16_t out_h,
                              ai_array* out) {
  nnlib::pool_arrays<nnlib::MaxPooling>(
      {in_w, in_h, channels, pool_w, pool_h, pad_x, pad_y, stride_x, stride_y, out_w, out_h}, *in,
      *out);
}

void pool_func_ap_array_fixed(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels,
                              uint16_t pool_w, uint16_t pool_h, uint16_t pad_x, uint16_t pad_y,
                              uint16_t stride_x, uint16_t stride_y, uint16_t out_w, uint16_t out_h,
                              ai_array* out) {
  nnlib::pool_arrays<nnlib::MeanPooling>(
      {in_w, in_h, channels, pool_w, pool_h, pad_x, pad_y, stride_x, stride_y, out_w, out_h}, *in,
      *out);
}
