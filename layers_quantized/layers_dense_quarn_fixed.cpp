// SPDX-License-Identifier: MIT
#include "layers_quantized/layers_dense_quarn_fixed.h"

#include "kernels/arm_fully_connected.h"
#include "kernels/ko_fxp_dense.h"
#include "layers_quantized/fixed_scale.hpp"

namespace nnlib {
namespace {

template <class Vector, class Weight>
using DenseKernel = arm_status(const Vector*, const Weight*, uint16_t, uint16_t, uint16_t, uint16_t,
                               const Weight*, Vector*, q15_t*);

template <class Vector, class Weight>
void dense(const ai_layer& layer, DenseKernel<Vector, Weight>* kernel) {
  const ai_tensor& input = layer_input(layer);
  const ai_tensor& output = layer_output(layer);
  const ai_tensor& weights = layer_weights(layer);
  const ai_tensor* bias = optional_tensor(layer, AI_CHAIN_WEIGHTS, 1);
  const FixedScale scale = fixed_scale(input, weights, bias, output);
  const uint32_t length = map_dims(input).channels;
  const MapDims out_dims = map_dims(output);
  const uint32_t positions = out_dims.width * out_dims.height;
  const Vector* in = tensor_data<Vector>(input);
  Vector* out = tensor_data<Vector>(output);
  q15_t* scratch =
      static_cast<q15_t*>(ai_tensor_data(ai_tensor_chain_scratch(layer.tensor_chain, 0)));
  for (uint32_t p = 0; p < positions; ++p, in += length, out += out_dims.channels) {
    kernel(in, tensor_data<Weight>(weights), static_cast<uint16_t>(length),
           static_cast<uint16_t>(out_dims.channels), scale.bias_shift, scale.out_shift,
           bias != nullptr ? tensor_data<Weight>(*bias) : nullptr, out, scratch);
  }
  fixed_post_shift(output.data->data, 8 * sizeof(Vector), scale, positions * out_dims.channels);
}

}  // namespace
}  // namespace nnlib

void forward_dense_fixed(ai_layer* layer) {
  const uint32_t in_bits = ai_fmt_get_bits(ai_tensor_format(&nnlib::layer_input(*layer)));
  const uint32_t weight_bits = ai_fmt_get_bits(ai_tensor_format(&nnlib::layer_weights(*layer)));
  if (in_bits == 8 && weight_bits == 8) {
    nnlib::dense(*layer, ko_fxp_fully_connected_q7);
  } else if (in_bits == 16 && weight_bits == 8) {
    nnlib::dense(*layer, arm_fully_connected_mat_q7_vec_q15);
  } else if (in_bits == 16 && weight_bits == 16) {
    nnlib::dense(*layer, arm_fully_connected_q15);
  } else {
    core_hang();
  }
}

ai_size ai_dense_fixed_scratch_size(const ai_layer* layer) {
  const ai_tensor& input = nnlib::layer_input(*layer);
  const bool q7 = ai_fmt_get_bits(ai_tensor_format(&input)) == 8;
  return q7 ? nnlib::map_dims(input).channels * ai_size{sizeof(q15_t)} : 0;
}
