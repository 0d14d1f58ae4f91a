// SPDX-License-Identifier: MIT
#include "layers/layers_pool_generic_float.h"

#include <algorithm>

#include "kernels/float_pool.hpp"
#include "layers/layer_tensors.hpp"

namespace {

using nnlib::Pooling;

// The running maximum of the whole-map kernel starts at -2^31.
constexpr float kLeastMaximum = -2147483648.0f;

void pool_layer(ai_layer* layer, Pooling pooling, float start, bool by_whole_window) {
  const ai_layer_pool& pool = nnlib::layer_record<ai_layer_pool>(layer);
  const ai_tensor& input = nnlib::layer_input(*layer);
  const ai_tensor& output = nnlib::layer_output(*layer);
  const nnlib::MapDims in = nnlib::map_dims(input);
  const nnlib::MapDims out = nnlib::map_dims(output);
  const uint32_t* pad = pool.pool_pad.data;
  const nnlib::PoolGeometry geometry = {
      in.width,  in.height, in.channels,         pool.pool_size[0],   pool.pool_size[1],
      pad[1],    pad[0],    pool.pool_stride[0], pool.pool_stride[1], out.width,
      out.height};
  const uint32_t count = by_whole_window ? pool.pool_size[0] * pool.pool_size[1] : 0;
  nnlib::pool_f32(pooling, geometry, {start, count, /*skip_empty=*/true},
                  nnlib::tensor_data<const float>(input), nnlib::tensor_data<float>(output));
}

void pool_arrays(Pooling pooling, float start, const ai_array& in, const ai_array& out,
                 const nnlib::PoolGeometry& geometry) {
  nnlib::pool_f32(pooling, geometry, {start, /*count=*/0, /*skip_empty=*/false},
                  static_cast<const float*>(in.data), static_cast<float*>(out.data));
}

}  // namespace

void forward_mp(ai_layer* layer) {
  pool_layer(layer, Pooling::kMax, nnlib::kMaxOfNone, false);
}

void forward_ap(ai_layer* layer) {
  pool_layer(layer, Pooling::kScaledSum, nnlib::kSumOfNone,
             nnlib::layer_record<ai_layer_pool>(layer).count_include_pad != 0);
}

void pool_func_mp_array_f32(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels,
                            uint16_t pool_w, uint16_t pool_h, uint16_t pad_x, uint16_t pad_y,
                            uint16_t stride_x, uint16_t stride_y, uint16_t out_w, uint16_t out_h,
                            ai_array* out) {
  pool_arrays(
      Pooling::kMax, kLeastMaximum, *in, *out,
      {in_w, in_h, channels, pool_w, pool_h, pad_x, pad_y, stride_x, stride_y, out_w, out_h});
}

void pool_func_ap_array_f32(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels,
                            uint16_t pool_w, uint16_t pool_h, uint16_t pad_x, uint16_t pad_y,
                            uint16_t stride_x, uint16_t stride_y, uint16_t out_w, uint16_t out_h,
                            ai_array* out) {
  pool_arrays(
      Pooling::kMean, 0.0f, *in, *out,
      {in_w, in_h, channels, pool_w, pool_h, pad_x, pad_y, stride_x, stride_y, out_w, out_h});
}

void pool_func_mp_kernel_array_f32(float* out, const float* in, uint32_t n, uint32_t channels) {
  for (uint32_t pixels = channels != 0 ? n / channels : 0; pixels > 0; --pixels, in += channels) {
    for (uint32_t c = 0; c < channels; ++c) {
      out[c] = out[c] > in[c] ? out[c] : in[c];
    }
  }
}

void pool_func_ap_kernel_array_f32(float* out, const float* in, uint32_t n, uint32_t channels,
                                   uint32_t count, int32_t first) {
  bool replace = first == 1;
  for (uint32_t pixels = channels != 0 ? n / channels : 0; pixels > 0; --pixels, in += channels) {
    for (uint32_t c = 0; c < channels; ++c) {
      out[c] = replace ? in[c] : out[c] + in[c];
    }
    replace = false;
  }
  if (count != 0) {
    const float scale = 1.0f / static_cast<float>(count);
    std::transform(out, out + channels, out, [scale](float sum) { return sum * scale; });
  }
}
