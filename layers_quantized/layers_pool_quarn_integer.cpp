// SPDX-License-Identifier: MIT
#include "layers_quantized/layers_pool_quarn_integer.h"

#include "kernels/ko_pool.hpp"
#include "layers_quantized/pool_layer.hpp"
#include "layers_quantized/quantized_types.hpp"

namespace nnlib {
namespace {

using PoolKernel = void(const PoolGeometry&, const void*, void*, const PoolQuantization&);

// The kernels of one operation, null for types left out of the build.
struct Kernels {
  PoolKernel* of_uint8;
  PoolKernel* of_int8;
};
template <class T>
constexpr PoolKernel* linked(PoolKernel* kernel) {
  return kElementsLinked<T> ? kernel : nullptr;
}
constexpr Kernels kMaximum = {linked<uint8_t>(max_pool<uint8_t>), linked<int8_t>(max_pool<int8_t>)};
constexpr Kernels kAverage = {linked<uint8_t>(average_pool<uint8_t>),
                              linked<int8_t>(average_pool<int8_t>)};

void pool_arrays(const Kernels& kernels, const PoolGeometry& geometry, const ai_array& in,
                 const ai_array& out, const PoolQuantization& quantization) {
  PoolKernel* kernel = ai_fmt_is_signed(in.format) ? kernels.of_int8 : kernels.of_uint8;
  if (kernel == nullptr) {
    core_hang();
  }
  kernel(geometry, in.data, out.data, quantization);
}

void pool_layer(const Kernels& kernels, ai_layer* layer) {
  const ai_tensor& input = layer_input(*layer);
  const ai_tensor& output = layer_output(*layer);
  pool_arrays(kernels, pool_geometry(*layer), *input.data, *output.data,
              {tensor_scale(input), tensor_zeropoint(input), tensor_scale(output),
               tensor_zeropoint(output)});
}

constexpr PoolQuantization kUnchanged = {1.0f, 0, 1.0f, 0};

}  // namespace
}  // namespace nnlib

void forward_mp_integer(ai_layer* layer) {
  nnlib::pool_layer(nnlib::kMaximum, layer);
}

void forward_ap_integer(ai_layer* layer) {
  nnlib::pool_layer(nnlib::kAverage, layer);
}

void pool_func_mp_array_integer(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels,
                                uint16_t pool_w, uint16_t pool_h, uint16_t pad_x, uint16_t pad_y,
                                uint16_t stride_x, uint16_t stride_y, uint16_t out_w,
                                uint16_t out_h, ai_array* out) {
  nnlib::pool_arrays(
      nnlib::kMaximum,
      {in_w, in_h, channels, pool_w, pool_h, pad_x, pad_y, stride_x, stride_y, out_w, out_h}, *in,
      *out, nnlib::kUnchanged);
}

void pool_func_ap_array_integer(ai_array* in, uint16_t in_w, uint16_t in_h, uint16_t channels,
                                uint16_t pool_w, uint16_t pool_h, uint16_t pad_x, uint16_t pad_y,
                                uint16_t stride_x, uint16_t stride_y, uint16_t out_w,
                                uint16_t out_h, ai_array* out) {
  nnlib::pool_arrays(
      nnlib::kAverage,
      {in_w, in_h, channels, pool_w, pool_h, pad_x, pad_y, stride_x, stride_y, out_w, out_h}, *in,
      *out, nnlib::kUnchanged);
}
