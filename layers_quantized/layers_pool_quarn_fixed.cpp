#include "layers_quantized/layers_pool_quarn_fixed.h"

#include "kernels/integer_pool.hpp"
#include "layers/layer_tensors.hpp"

namespace nnlib {
namespace {

struct MaxPooling : IntegerMax {
  template <class T>
  static constexpr T outside = std::numeric_limits<T>::min();
  template <class T>
  static T finish(T folded, int64_t /*count*/) {
    return folded;
  }
};

struct MeanPooling : IntegerSum {
  template <class T>
  static constexpr T outside = 0;
  template <class T, class Sum>
  static T finish(Sum sum, int64_t count) {
    const Sum cells = static_cast<Sum>(count);
    const Sum half = cells / 2;
    return divide<T>(sum + (sum < 0 ? -half : half), cells);
  }
};

template <class Pooling, class T>
void pool_elements(const PoolGeometry& geometry, const ai_array& in, const ai_array& out) {
  integer_pool<Pooling>(geometry, static_cast<const T*>(in.data), static_cast<T*>(out.data),
                        Pooling::template outside<T>, [](auto folded, int64_t count) {
                          return Pooling::template finish<T>(folded, count);
                        });
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
  const ai_layer_pool& pool = layer_record<ai_layer_pool>(layer);
  const ai_tensor& input = layer_input(*layer);
  const ai_tensor& output = layer_output(*layer);
  const MapDims in = map_dims(input);
  const MapDims out = map_dims(output);
  const uint32_t* pad = pool.pool_pad.data;
  pool_arrays<Pooling>(
      {in.width, in.height, in.channels, pool.pool_size[0], pool.pool_size[1], pad[1], pad[0],
       pool.pool_stride[0], pool.pool_stride[1], out.width, out.height},
      *input.data, *output.data);
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
