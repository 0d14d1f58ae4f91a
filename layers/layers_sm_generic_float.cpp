// SPDX-License-Identifier: MIT
#include "layers/layers_sm_generic_float.h"

#include <cstddef>
#include <cstring>

#include "core/ai_math_helpers.h"
#include "core/scalar_ops.hpp"
#include "kernels/exact_arrays.hpp"
#include "layers/layer_tensors.hpp"
#include "layers/overlap.hpp"

namespace {

// out[i] = exp(in[i] - largest); returns their sum, from 0 in order.
float exponentials(float* out, const float* in, ai_size count, float largest) {
  float sum = 0.0f;
  if constexpr (nnlib::kHasExactArrays) {
    if (nnlib::same_or_apart(out, in, count)) {
      for (ai_size i = 0; i < count; ++i) {
        out[i] = in[i] - largest;
      }
      nnlib::exp_f32(out, out, count);
      for (ai_size i = 0; i < count; ++i) {
        sum += out[i];
      }
      return sum;
    }
  }
  for (ai_size i = 0; i < count; ++i) {
    out[i] = nnlib::Ops::exp(in[i] - largest);
    sum += out[i];
  }
  return sum;
}

}  // namespace

void nl_func_sm_channel_f32(ai_array* out_array, const ai_array* in_array, ai_size channels) {
  if (channels == 0) {
    return;
  }
  float* out = static_cast<float*>(out_array->data);
  const float* in = static_cast<const float*>(in_array->data);
  float largest = in[0];
  for (ai_size i = 1; i < channels; ++i) {
    largest = largest > in[i] ? largest : in[i];
  }
  const float scale = 1.0f / exponentials(out, in, channels, largest);
  for (ai_size i = 0; i < channels; ++i) {
    out[i] *= scale;
  }
}

void nl_func_sm_group_array_f32(ai_array* out, const ai_array* in, ai_size size,
                                const void* /*params*/) {
  nl_func_sm_channel_f32(out, in, size);
}

void nl_func_sm_array_f32(ai_array* out, ai_array* in, ai_size size, ai_size channels,
                          ai_size in_stride, ai_size out_stride) {
  float* const in_start = static_cast<float*>(in->data_start);
  float* const out_end = static_cast<float*>(out->data) + size;
  // Counted from the start of the input buffer: a pointer must not run below it.
  ptrdiff_t left = static_cast<float*>(in->data) - in_start + static_cast<ptrdiff_t>(size);
  ptrdiff_t behind = 0;
  const ptrdiff_t step = static_cast<ptrdiff_t>(in_stride);
  while (step > 0 && left >= step) {
    left -= step;
    behind += static_cast<ptrdiff_t>(out_stride);
    in->data = in_start + left;
    out->data = out_end - behind;
    nl_func_sm_channel_f32(out, in, channels);
  }
  in->data = in->data_start;
  out->data = out->data_start;
}

void forward_sm(ai_layer* layer) {
  const ai_tensor& input = nnlib::layer_input(*layer);
  const ai_tensor& output = nnlib::layer_output(*layer);
  const ai_size channels = nnlib::map_dims(input).channels;
  nl_func_sm_array_f32(output.data, input.data, ai_shape_elements(&input.shape), channels, channels,
                       nnlib::map_dims(output).channels);
}

void nl_func_hardmax_array_f32(ai_array* out_array, const ai_array* in_array,
                               const ai_shape* in_shape) {
  float* out = static_cast<float*>(out_array->data);
  const float* in = static_cast<const float*>(in_array->data);
  const ai_size group = in_shape->data[AI_SHAPE_C];
  const ai_size total = group * in_shape->data[AI_SHAPE_H];
  for (ai_size start = 0; start < total; start += group) {
    ai_size best = start;
    for (ai_size i = start + 1; i < start + group; ++i) {
      best = in[i] > in[best] ? i : best;
    }
    std::memset(out + start, 0, group * sizeof(float));  // the group was read: it may be the same
    out[best] = 1.0f;
  }
}

void forward_hardmax(ai_layer* layer) {
  const ai_tensor& input = nnlib::layer_input(*layer);
  nl_func_hardmax_array_f32(nnlib::layer_output(*layer).data, input.data, &input.shape);
}
