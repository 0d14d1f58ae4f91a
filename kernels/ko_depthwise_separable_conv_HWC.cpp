#include "kernels/ko_depthwise_separable_conv_HWC.h"

#include "kernels/integer_depthwise.hpp"

namespace nnlib {
namespace {

template <class Types>
int32_t adapt(const typename Types::Weight* weights, const AdaptedWeights& order,
              const KoQuantization& q, void* scratch) {
  int16_t* adapted = static_cast<int16_t*>(scratch) + order.start();
  for (uint32_t tap = 0; tap < order.taps; ++tap) {
    for (uint32_t channel = 0; channel < order.channels; ++channel) {
      adapted[order.index(channel, tap)] =
          static_cast<int16_t>(*weights++ - weight_zeropoint<Types>(q, channel));
    }
  }
  return 0;
}

}  // namespace
}  // namespace nnlib

#define WEIGHT_ZEROPOINT_uint8 weight_zeropoint
#define WEIGHT_ZEROPOINT_int8symwt nullptr
#define WEIGHT_ZEROPOINT_int8_int8symwt nullptr

#define DEFINE(types, suffix)                                                                     \
  int32_t ko_##types##_DW_HWC_Wadapt##suffix(const KO_WEIGHT(types) * weights, uint16_t channels, \
                                             uint16_t kernel_width, uint16_t kernel_height,       \
                                             KO_WEIGHT_ZEROPOINT_##types void* scratch) {         \
    const nnlib::AdaptedWeights order = {channels, uint32_t{kernel_width} * kernel_height};       \
    const nnlib::KoQuantization zeropoints = {                                                    \
        nullptr, nullptr, 0, WEIGHT_ZEROPOINT_##types, 0, KO_CHANNEL_MASK(suffix)};               \
    return nnlib::adapt<KO_TYPES(types)>(weights, order, zeropoints, scratch);                    \
  }                                                                                               \
  int32_t ko_##types##_depthwise_separable_conv_HWC_nonsquare##suffix(KO_CONVOLUTION(types),      \
                                                                      void* scratch) {            \
    (void)weights;                                                                                \
    nnlib::convolve_depthwise(KO_GEOMETRY, in, bias, KO_QUANTIZATION(types, suffix),              \
                              static_cast<int16_t*>(scratch), out);                               \
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
