// SPDX-License-Identifier: MIT
#include "layers/layers_slice_generic_float.h"

#include <algorithm>

#include "layers/layer_tensors.hpp"
#include "layers/signed_dims.hpp"
#include "layers/strided_copy.hpp"

using namespace nnlib;

namespace {

struct Range {
  ptrdiff_t begin;
  ptrdiff_t end;
};

void restrict_axes(Range (&ranges)[AI_SHAPE_DIMS], const ai_layer_slice& slice,
                   const ai_tensor& input) {
  const int32_t* const starts = static_cast<const int32_t*>(slice.starts->data);
  const int32_t* const ends = static_cast<const int32_t*>(slice.ends->data);
  for (uint32_t i = 0; i < slice.starts->size; ++i) {
    const uint32_t axis =
        slice.axes != nullptr ? static_cast<const uint32_t*>(slice.axes->data)[i] : i;
    const auto index = [extent = signed_dim(input, axis)](ptrdiff_t value) {
      return std::clamp(value, ptrdiff_t{0}, extent);
    };
    ranges[axis] = {index(starts[i]), index(ends[i])};
  }
}

}  // namespace

void forward_slice(ai_layer* layer) {
  const ai_layer_slice& slice = layer_record<ai_layer_slice>(layer);
  const ai_tensor& input = layer_input(*layer);
  const ai_tensor& output = layer_output(*layer);
  if (slice.starts == nullptr || slice.ends == nullptr ||
      ai_fmt_get_bits(input.data->format) != ai_fmt_get_bits(output.data->format)) {
    return;
  }
  Range ranges[AI_SHAPE_DIMS];
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    ranges[i] = {0, signed_dim(input, i)};
  }
  restrict_axes(ranges, slice, input);
  const uint8_t* from = tensor_data<uint8_t>(input);
  LoopNest loops;
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    const ptrdiff_t size = std::max(ranges[i].end - ranges[i].begin, ptrdiff_t{0});
    loops.add(std::min(size, signed_dim(output, i)), signed_stride(output, i),
              signed_stride(input, i));
    from += ranges[i].begin * signed_stride(input, i);
  }
  strided_copy(tensor_data<uint8_t>(output), from, loops, signed_stride(input, 0));
}
