// SPDX-License-Identifier: MIT
#include "layers/layers_upsample_generic_float.h"

#include <algorithm>
#include <cstring>

#include "layers/lanes.hpp"
#include "layers/layer_tensors.hpp"
#include "layers/signed_dims.hpp"

using namespace nnlib;

namespace {

struct Scales {
  float height;
  float width;
};

uint8_t* pixel_at(const ai_tensor& map, uint32_t y, uint32_t x) {
  return tensor_data<uint8_t>(map) + size_t{y} * map.stride.data[AI_SHAPE_H] +
         size_t{x} * map.stride.data[AI_SHAPE_W];
}

uint32_t nearest(uint32_t position, float scale, uint32_t extent) {
  const float last = static_cast<float>(extent - 1);
  return std::min(static_cast<uint32_t>(std::min(static_cast<float>(position) / scale, last)),
                  extent - 1);
}

void upsample_nearest(const ai_tensor& input, const ai_tensor& output, Scales scales) {
  const MapDims in = map_dims(input);
  const MapDims out = map_dims(output);
  const size_t pixel = input.stride.data[AI_SHAPE_W];
  for (uint32_t r = 0; r < out.height; ++r) {
    const uint32_t y = nearest(r, scales.height, in.height);
    for (uint32_t c = 0; c < out.width; ++c) {
      const uint32_t x = nearest(c, scales.width, in.width);
      std::memcpy(pixel_at(output, r, c), pixel_at(input, y, x), pixel);
    }
  }
}

void upsample_zeros(const ai_tensor& input, const ai_tensor& output, Scales scales) {
  const MapDims in = map_dims(input);
  const size_t pixel = input.stride.data[AI_SHAPE_W];
  const uint32_t row_step = static_cast<uint32_t>(scales.height);
  const uint32_t column_step = static_cast<uint32_t>(scales.width);
  std::memset(tensor_data<uint8_t>(output), 0, ai_tensor_batch_bytes(&output));
  for (uint32_t y = 0; y < in.height; ++y) {
    for (uint32_t x = 0; x < in.width; ++x) {
      std::memcpy(pixel_at(output, y * row_step, x * column_step), pixel_at(input, y, x), pixel);
    }
  }
}

// Between which two rows or columns an output position falls, and how far it is from the first.
struct Between {
  Between(uint32_t position, float scale, bool center, uint32_t extent) {
    const float offset = center ? (scale - 1.0f) * 0.5f : 0.0f;
    const float last = static_cast<float>(extent - 1);
    const float at = std::clamp((static_cast<float>(position) - offset) / scale, 0.0f, last);
    first = static_cast<uint32_t>(at);
    second = at == last ? first : first + 1;
    distance = at - static_cast<float>(first);
  }

  uint32_t first;
  uint32_t second;
  float distance;
};

// Four pixels and their weights.
struct Mix {
  const float* pixel[4];
  float weight[4];

  void write(float* out, ptrdiff_t values) const {
    const auto mixed = [this](auto p0, auto p1, auto p2, auto p3) {
      return weight[0] * p0 + weight[1] * p1 + weight[2] * p2 + weight[3] * p3;
    };
    ptrdiff_t i = 0;
    for (; i + kLanes <= values; i += kLanes) {
      store_lanes(out + i, mixed(load_lanes(pixel[0] + i), load_lanes(pixel[1] + i),
                                 load_lanes(pixel[2] + i), load_lanes(pixel[3] + i)));
    }
    for (; i < values; ++i) {
      out[i] = mixed(pixel[0][i], pixel[1][i], pixel[2][i], pixel[3][i]);
    }
  }
};

void upsample_bilinear(const ai_tensor& input, const ai_tensor& output, Scales scales,
                       bool center) {
  const MapDims in = map_dims(input);
  const MapDims out = map_dims(output);
  const ptrdiff_t values = signed_dim(input, AI_SHAPE_C) * signed_dim(input, AI_SHAPE_N);
  const auto values_at = [](const ai_tensor& map, uint32_t y, uint32_t x) {
    return reinterpret_cast<float*>(pixel_at(map, y, x));
  };
  for (uint32_t r = 0; r < out.height; ++r) {
    const Between y(r, scales.height, center, in.height);
    for (uint32_t c = 0; c < out.width; ++c) {
      const Between x(c, scales.width, center, in.width);
      const Mix mix = {{values_at(input, y.first, x.first), values_at(input, y.first, x.second),
                        values_at(input, y.second, x.first), values_at(input, y.second, x.second)},
                       {(1.0f - y.distance) * (1.0f - x.distance), (1.0f - y.distance) * x.distance,
                        y.distance * (1.0f - x.distance), y.distance * x.distance}};
      mix.write(values_at(output, r, c), values);
    }
  }
}

}  // namespace

void forward_upsample(ai_layer* layer) {
  const ai_layer_upsample& upsample = layer_record<ai_layer_upsample>(layer);
  const ai_tensor& input = layer_input(*layer);
  const ai_tensor& output = layer_output(*layer);
  const float* const scale = static_cast<const float*>(upsample.scales->data);
  const Scales scales = {scale[0], scale[1]};
  switch (upsample.mode) {
    case AI_UPSAMPLE_ZEROS:
      upsample_zeros(input, output, scales);
      break;
    case AI_UPSAMPLE_NEAREST:
      upsample_nearest(input, output, scales);
      break;
    case AI_UPSAMPLE_BILINEAR:
      upsample_bilinear(input, output, scales, upsample.center);
      break;
    default:
      break;
  }
}
