// SPDX-License-Identifier: MIT
#include "layers/layers_topk_generic_float.h"

#include <algorithm>

#include "layers/layer_tensors.hpp"
#include "layers/loop_nest.hpp"
#include "layers/signed_dims.hpp"

using namespace nnlib;

namespace {

// A line of the input or of the outputs; the step in elements.
struct Line {
  ptrdiff_t step;
  uint32_t size;

  ptrdiff_t at(uint32_t i) const { return static_cast<ptrdiff_t>(i) * step; }
};

// Insertion from below: a value rises past the smaller ones only, so equal ones keep their order.
void select_largest(const float* in, Line from, float* values, uint32_t* indices, Line to) {
  uint32_t kept = 0;
  for (uint32_t i = 0; i < from.size; ++i) {
    const float value = in[from.at(i)];
    if (kept < to.size) {
      ++kept;
    } else if (!(value > values[to.at(kept - 1)])) {
      continue;
    }
    uint32_t place = kept - 1;
    for (; place > 0 && value > values[to.at(place - 1)]; --place) {
      values[to.at(place)] = values[to.at(place - 1)];
      indices[to.at(place)] = indices[to.at(place - 1)];
    }
    values[to.at(place)] = value;
    indices[to.at(place)] = i;
  }
}

ptrdiff_t element_step(const ai_tensor& tensor, uint32_t dim) {
  return signed_stride(tensor, dim) / static_cast<ptrdiff_t>(sizeof(float));
}

}  // namespace

void forward_topK(ai_layer* layer) {
  const ai_layer_topk& topk = layer_record<ai_layer_topk>(layer);
  const ai_tensor& input = layer_input(*layer);
  const ai_tensor& output = layer_output(*layer);
  const float* const in = tensor_data<float>(input);
  float* const values = tensor_data<float>(output);
  uint32_t* const indices = tensor_data<uint32_t>(layer_output(*layer, 1));
  const uint32_t extent = input.shape.data[topk.axis];
  const Line from = {element_step(input, topk.axis), extent};
  const Line to = {element_step(output, topk.axis), std::min(topk.k, extent)};
  if (to.size == 0) {
    return;
  }
  LoopNest lines;
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    lines.add(i == topk.axis ? 1 : signed_dim(input, i), element_step(output, i),
              element_step(input, i));
  }
  lines.for_each_run([=](ptrdiff_t out_offset, ptrdiff_t in_offset, const LoopNest::Loop& loop) {
    for (ptrdiff_t i = 0; i < loop.size; ++i) {
      const ptrdiff_t out_at = out_offset + i * loop.step_a;
      select_largest(in + in_offset + i * loop.step_b, from, values + out_at, indices + out_at, to);
    }
  });
}
