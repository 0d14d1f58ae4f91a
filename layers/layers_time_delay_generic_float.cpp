// SPDX-License-Identifier: MIT
#include "layers/layers_time_delay_generic_float.h"

#include "kernels/vector.hpp"
#include "layers/layer_tensors.hpp"

using namespace nnlib;

namespace {

constexpr uint32_t kStepsAtOnce = 8;  // sums side by side hide the latency of each one's additions

struct Filter {
  const float* kernel;  // of one unit
  const uint8_t* delays;
  uint32_t taps;
  uint32_t features;
};

// One unit's outputs of consecutive steps; in and out at the first of them.
template <uint32_t Steps>
void filter_steps(const Filter& filter, float bias, const float* in, float* out, size_t out_step) {
  float sums[Steps];
  NNLIB_UNROLL for (uint32_t s = 0; s < Steps; ++s) {
    sums[s] = bias;
  }
  const float* weight = filter.kernel;
  for (uint32_t j = 0; j < filter.taps; ++j) {
    const float* const delayed = in + size_t{filter.delays[j]} * filter.features;
    for (uint32_t k = 0; k < filter.features; ++k, ++weight) {
      NNLIB_UNROLL for (uint32_t s = 0; s < Steps; ++s) {
        sums[s] += *weight * delayed[size_t{s} * filter.features + k];
      }
    }
  }
  NNLIB_UNROLL for (uint32_t s = 0; s < Steps; ++s) {
    out[s * out_step] = sums[s];
  }
}

}  // namespace

void forward_time_delay(ai_layer* layer) {
  const ai_array& delays = *layer_record<ai_layer_time_delay>(layer).delays;
  const ai_tensor& output = layer_output(*layer);
  const ai_tensor* const bias = optional_tensor(*layer, AI_CHAIN_WEIGHTS, 1);
  const MapDims out_dims = map_dims(output);
  const uint32_t features = map_dims(layer_input(*layer)).channels;
  const float* const in = tensor_data<float>(layer_input(*layer));
  float* const out = tensor_data<float>(output);
  Filter filter = {tensor_data<float>(layer_weights(*layer)),
                   static_cast<const uint8_t*>(delays.data), delays.size, features};
  for (uint32_t u = 0; u < out_dims.channels; ++u) {
    const float start = bias != nullptr ? tensor_data<float>(*bias)[u] : 0.0f;
    const size_t units = out_dims.channels;
    uint32_t t = 0;
    for (; t + kStepsAtOnce <= out_dims.height; t += kStepsAtOnce) {
      filter_steps<kStepsAtOnce>(filter, start, in + size_t{t} * features, out + t * units + u,
                                 units);
    }
    for (; t < out_dims.height; ++t) {
      filter_steps<1>(filter, start, in + size_t{t} * features, out + t * units + u, units);
    }
    filter.kernel += size_t{delays.size} * features;
  }
}
