// SPDX-License-Identifier: MIT
#include "kernels/ko_depthwise_separable_conv_HWC.h"

#include "kernels/integer_convolution.hpp"
#include "kernels/integer_depthwise.hpp"
#include "kernels/vector.hpp"

namespace nnlib {

// A channel's weights, the first of them at `weights`.
template <class Weight>
NNLIB_NOINLINE void adapt_channel(const Weight* weights, int32_t zeropoint, AdaptedWeights order,
                                  uint32_t channel, int16_t* adapted) {
  order.for_taps(channel, [&](size_t index) {
    adapted[index] = static_cast<int16_t>(*weights - zeropoint);
    weights += order.channels;
  });
}

template <class Types>
void adapt_weights(const IntegerConvolution& c) {
  const ConvGeometry& g = c.geometry;
  const AdaptedWeights order = {g.in_channels, g.kernel_width * g.kernel_height};
  const auto* weights = static_cast<const typename Types::Weight*>(c.weights);
  int16_t* adapted = static_cast<int16_t*>(c.scratch) + order.start();
  for (uint32_t channel = 0; channel < order.channels; ++channel) {
    adapt_channel(weights + channel, weight_zeropoint<Types>(c.quantization, channel), order,
                  channel, adapted);
  }
}

template <class Types>
void convolve_depthwise(const IntegerConvolution& c) {
  using Activation = typename Types::Activation;
  if (c.geometry.out_channels == 0) {
    return;
  }
  convolve_adapted(c.geometry, static_cast<const Activation*>(c.in), c.bias, c.quantization,
                   static_cast<int16_t*>(c.scratch), static_cast<Activation*>(c.out));
}

#define INSTANTIATE(types)                                                 \
  template void adapt_weights<KO_TYPES(types)>(const IntegerConvolution&); \
  template void convolve_depthwise<KO_TYPES(types)>(const IntegerConvolution&);
KO_TYPES_WORDS(INSTANTIATE)

}  // namespace nnlib

#define WEIGHT_ZEROPOINT_uint8 weight_zeropoint
#define WEIGHT_ZEROPOINT_int8symwt nullptr
#define WEIGHT_ZEROPOINT_int8_int8symwt nullptr

#define DEFINE(types, suffix)                                                                     \
  int32_t ko_##types##_DW_HWC_Wadapt##suffix(const KO_WEIGHT(types) * weights, uint16_t channels, \
                                             uint16_t kernel_width, uint16_t kernel_height,       \
                                             KO_WEIGHT_ZEROPOINT_##types void* scratch) {         \
    nnlib::adapt_weights<KO_TYPES(types)>(                                                        \
        {{0, 0, channels, channels, kernel_width, kernel_height, 0, 0, 0, 0, 0, 0},               \
         nullptr,                                                                                 \
         weights,                                                                                 \
         nullptr,                                                                                 \
         {nullptr, nullptr, 0, WEIGHT_ZEROPOINT_##types, 0, KO_CHANNEL_MASK(suffix)},             \
         nullptr,                                                                                 \
         scratch});                                                                               \
    return 0;                                                                                     \
  }                                                                                               \
  int32_t ko_##types##_depthwise_separable_conv_HWC_nonsquare##suffix(KO_CONVOLUTION(types),      \
                                                                      void* scratch) {            \
    nnlib::convolve_depthwise<KO_TYPES(types)>(                                                   \
        {KO_GEOMETRY, in, weights, bias, KO_QUANTIZATION(types, suffix), out, scratch});          \
    return 0;                                                                                     \
  }

extern "C" {

uint32_t ko_depthwise_separable_conv_HWC_scratch_size(uint16_t channels, uint16_t kernel_width,
                                                      uint16_t kernel_height) {
  const nnlib::AdaptedWeights order = {channels, uint32_t{kernel_width} * kernel_height};
  return static_cast<uint32_t>((order.start() + size_t{channels} * order.taps) * sizeof(int16_t));
}

KO_FORMS(DEFINE)

}  // extern "C"
