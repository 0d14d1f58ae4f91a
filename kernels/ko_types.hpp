// The types words of the integer kernels as traits, and how the public functions reach the
// templates behind them.
#ifndef NNLIB_KERNELS_KO_TYPES_HPP
#define NNLIB_KERNELS_KO_TYPES_HPP

#include <cstddef>
#include <cstdint>

#include "kernels/ko_types.h"

namespace nnlib {

template <class ActivationType, class WeightType, bool kAsymmetric, bool kPerChannel>
struct KoTypes {
  using Activation = ActivationType;
  using Weight = WeightType;
  static constexpr bool kWeightZeropoint = kAsymmetric;
  static constexpr bool kChannels = kPerChannel;
};

template <bool kPerChannel>
using Ko_uint8 = KoTypes<uint8_t, uint8_t, true, kPerChannel>;
template <bool kPerChannel>
using Ko_int8symwt = KoTypes<uint8_t, int8_t, false, kPerChannel>;
template <bool kPerChannel>
using Ko_int8_int8symwt = KoTypes<int8_t, int8_t, false, kPerChannel>;

#define KO_TYPES(types, suffix) ::nnlib::Ko_##types<(sizeof(#suffix) > 1)>

// How a kernel's outputs are quantized.
template <class Types>
struct KoQuantization {
  const int32_t* multiplier;
  const int16_t* shift;
  int32_t in_zeropoint;
  const typename Types::Weight* weight_zeropoints;  // null for symmetric weights
  int32_t out_zeropoint;

  static constexpr uint32_t entry(uint32_t channel) { return Types::kChannels ? channel : 0; }
  constexpr int32_t weight_zeropoint(uint32_t channel) const {
    if constexpr (Types::kWeightZeropoint) {
      return weight_zeropoints[entry(channel)];
    } else {
      return 0;
    }
  }
};

// The quantization that a public function was called with.
#define KO_QUANTIZATION(types, suffix)               \
  ::nnlib::KoQuantization<KO_TYPES(types, suffix)> { \
    multiplier, shift, KO_ZEROPOINT_VALUES_##types   \
  }
#define KO_ZEROPOINT_VALUES_uint8 in_zeropoint, weight_zeropoint, out_zeropoint
#define KO_ZEROPOINT_VALUES_int8symwt in_zeropoint, nullptr, out_zeropoint
#define KO_ZEROPOINT_VALUES_int8_int8symwt in_zeropoint, nullptr, out_zeropoint

// Its geometry, from the arguments of KO_CONVOLUTION.
#define KO_GEOMETRY                                                                            \
  ::nnlib::ConvGeometry {                                                                      \
    in_width, in_height, in_channels, out_channels, kernel_width, kernel_height, pad_x, pad_y, \
        stride_x, stride_y, out_width, out_height                                              \
  }

// The sum of products of 16-bit values wraps as the accumulators of small cores do.
inline int32_t wrapping_add(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
inline int32_t wrapping_multiply(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

}  // namespace nnlib

#endif
