// SPDX-License-Identifier: MIT
#include "layers/layers_transpose_generic_float.h"

#include "layers/layer_tensors.hpp"
#include "layers/signed_dims.hpp"
#include "layers/strided_copy.hpp"

using namespace nnlib;

void forward_transpose(ai_layer* layer) {
  const uint32_t* const perm = layer_record<ai_layer_transpose>(layer).perm;
  const ai_tensor& input = layer_input(*layer);
  const ai_tensor& output = layer_output(*layer);
  const ptrdiff_t element = signed_stride(input, 0);
  LoopNest loops;
  ptrdiff_t out_step = element;
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    loops.add(signed_dim(output, i), out_step, signed_stride(input, perm[i]));
    out_step *= signed_dim(output, i);
  }
  strided_copy(tensor_data<uint8_t>(output), tensor_data<uint8_t>(input), loops, element);
}
