// SPDX-License-Identifier: MIT
#include "layers/layers_norm_generic_float.h"

#include <algorithm>
#include <cmath>

#include "core/ai_math_helpers.h"
#include "layers/layer_tensors.hpp"

namespace {

using namespace nnlib;

// One vector of n elements at in, stride apart: out = x * f with f from the sum of term(x).
template <class Term, class Root>
void normalize_vector(float* out, const float* in, float scale, size_t stride, uint32_t n,
                      Term term, Root root) {
  float sum = 0.0f;
  for (size_t j = 0; j < n; ++j) {
    sum += term(in[j * stride]);
  }
  const float factor = root(sum == 0.0f ? scale : scale / sum);
  for (size_t j = 0; j < n; ++j) {
    out[j * stride] = in[j * stride] * factor;
  }
}

// Offsets of a map's positions in the order in which their values are added up.
template <class Visit>
void for_positions(const MapDims& map, Visit visit) {
  for (uint32_t x = 0; x < map.width; ++x) {
    for (uint32_t y = 0; y < map.height; ++y) {
      visit((size_t{y} * map.width + x) * map.channels);
    }
  }
}

constexpr uint32_t kBlockChannels = 16;  // a cache line of each position

// Instance normalization of count channels, at most kBlockChannels, from in, out on.
void normalize_channels(float* out, const float* in, const MapDims& map, uint32_t count,
                        const float* scale, const float* bias, float epsilon) {
  const float positions = static_cast<float>(size_t{map.width} * map.height);
  float mean[kBlockChannels] = {};
  float factor[kBlockChannels] = {};
  for_positions(map, [&](size_t at) {
    for (uint32_t c = 0; c < count; ++c) {
      mean[c] += in[at + c];
    }
  });
  for (uint32_t c = 0; c < count; ++c) {
    mean[c] /= positions;
  }
  for_positions(map, [&](size_t at) {
    for (uint32_t c = 0; c < count; ++c) {
      const float deviation = in[at + c] - mean[c];
      factor[c] += deviation * deviation;
    }
  });
  for (uint32_t c = 0; c < count; ++c) {
    factor[c] = 1.0f / std::sqrt(factor[c] / positions + epsilon);
  }
  for_positions(map, [&](size_t at) {
    for (uint32_t c = 0; c < count; ++c) {
      out[at + c] = (in[at + c] - mean[c]) * scale[c] * factor[c] + bias[c];
    }
  });
}

}  // namespace

void forward_bn(ai_layer* layer) {
  const ai_tensor& input = layer_input(*layer);
  const ai_tensor* bias_tensor = optional_tensor(*layer, AI_CHAIN_WEIGHTS, 1);
  const float* in = tensor_data<const float>(input);
  float* out = tensor_data<float>(layer_output(*layer));
  const float* scale = tensor_data<const float>(layer_weights(*layer));
  const float* bias = bias_tensor != nullptr ? tensor_data<const float>(*bias_tensor) : nullptr;
  const uint32_t channels = map_dims(input).channels;
  const ai_size size = ai_shape_elements(&input.shape);
  for (ai_size pixel = 0; pixel < size; pixel += channels) {
    for (uint32_t c = 0; c < channels; ++c) {
      const float scaled = in[pixel + c] * scale[c];
      out[pixel + c] = bias != nullptr ? scaled + bias[c] : scaled;
    }
  }
}

void func_lrn_channel_f32(float* out, const float* in, int32_t channels, int32_t half, float k,
                          float alpha, float beta) {
  std::fill_n(out, std::max(channels, int32_t{0}), 0.0f);
  for (int32_t i = 0; i < channels; ++i) {
    const float square = in[i] * in[i];
    const int32_t first = i > half ? i - half : 0;
    const int32_t last = half < channels - i ? i + half : channels - 1;
    for (int32_t j = first; j <= last; ++j) {
      out[j] += square;
    }
  }
  for (int32_t j = 0; j < channels; ++j) {
    out[j] = in[j] * ai_math_pow(out[j] * alpha + k, -beta);
  }
}

void func_lrn_array_f32(float* out, const float* in, ai_size size, int32_t channels, int32_t half,
                        float k, float alpha, float beta) {
  if (channels <= 0) {
    return;
  }
  const auto pixel = static_cast<ai_size>(channels);
  for (ai_size i = 0; i < size; i += pixel) {
    func_lrn_channel_f32(out + i, in + i, channels, half, k, alpha, beta);
  }
}

void forward_lrn(ai_layer* layer) {
  const auto& lrn = layer_record<ai_layer_lrn>(layer);
  const ai_tensor& input = layer_input(*layer);
  func_lrn_array_f32(tensor_data<float>(layer_output(*layer)), tensor_data<const float>(input),
                     ai_shape_elements(&input.shape),
                     static_cast<int32_t>(map_dims(input).channels),
                     static_cast<int32_t>(lrn.local_size / 2), lrn.k, lrn.alpha, lrn.beta);
}

void func_norm_array_f32(float* out, const float* in, float p, float scale, uint32_t stride,
                         uint32_t n, uint32_t outer) {
  const auto power = [p](float x) { return ai_math_pow(std::fabs(x), p); };
  const auto root = [p](float x) { return ai_math_pow(x, 1.0f / p); };
  for (size_t block = 0; block < outer; ++block) {
    for (size_t inner = 0; inner < stride; ++inner) {
      const size_t at = block * n * stride + inner;
      normalize_vector(out + at, in + at, scale, stride, n, power, root);
    }
  }
}

void func_norm_l2_fast_array_f32(float* out, const float* in, float scale, uint32_t n,
                                 uint32_t size) {
  if (n == 0) {
    return;
  }
  const auto square = [](float x) { return x * x; };
  for (uint32_t at = 0; at < size; at += n) {
    normalize_vector(out + at, in + at, scale, 1, n, square, ai_math_sqrt);
  }
}

void forward_norm(ai_layer* layer) {
  const auto& norm = layer_record<ai_layer_norm>(layer);
  const ai_tensor& input = layer_input(*layer);
  const float* in = tensor_data<const float>(input);
  float* out = tensor_data<float>(layer_output(*layer));
  const uint32_t n = input.shape.data[norm.axis];
  const uint32_t stride = input.stride.data[norm.axis] / uint32_t{sizeof(float)};
  const float scale = norm.scale ? static_cast<float>(n) : 1.0f;
  const ai_size size = ai_shape_elements(&input.shape);
  if (size == 0) {
    return;
  }
  if (stride == 1 && norm.exponent == 2.0f) {
    func_norm_l2_fast_array_f32(out, in, scale, n, size);
  } else {
    func_norm_array_f32(out, in, norm.exponent, scale, stride, n, size / (n * stride));
  }
}

void forward_instanceNormalization(ai_layer* layer) {
  const float epsilon = layer_record<ai_layer_instance_norm>(layer).epsilon;
  const MapDims map = map_dims(layer_input(*layer));
  const float* in = tensor_data<const float>(layer_input(*layer));
  float* out = tensor_data<float>(layer_output(*layer));
  const float* scale = tensor_data<const float>(layer_weights(*layer, 0));
  const float* bias = tensor_data<const float>(layer_weights(*layer, 1));
  for (uint32_t c = 0; c < map.channels; c += kBlockChannels) {
    normalize_channels(out + c, in + c, map, std::min(kBlockChannels, map.channels - c), scale + c,
                       bias + c, epsilon);
  }
}
