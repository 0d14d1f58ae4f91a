// SPDX-License-Identifier: MIT
#include "layers/layers_concat_generic_float.h"

#include <cstring>

#include "layers/layer_tensors.hpp"

using namespace nnlib;

void forward_concat(ai_layer* layer) {
  const uint32_t axis = layer_record<ai_layer_concat>(layer).axis;
  const ai_tensor_list& inputs = layer_list(*layer, AI_CHAIN_INPUT);
  const ai_tensor& output = layer_output(*layer);
  const size_t out_bytes = ai_array_get_byte_size(output.data->format, output.data->size);
  uint8_t* const out = tensor_data<uint8_t>(output);
  size_t start = 0;
  for (uint32_t i = 0; i < ai_tensor_list_count(&inputs); ++i) {
    const ai_tensor& input = *inputs.tensors[i];
    const size_t stride = input.stride.data[axis];
    const size_t block = input.shape.data[axis] * stride;
    const size_t step = output.shape.data[axis] * stride;
    const uint8_t* in = tensor_data<uint8_t>(input);
    for (size_t at = start; at < out_bytes; at += step) {
      std::memcpy(out + at, in, block);
      in += block;
    }
    start += block;
  }
}
