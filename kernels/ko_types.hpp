// SPDX-License-Identifier: MIT
// The types words of the integer kernels as traits, and how the public functions reach the
// templates behind them.
#ifndef NNLIB_KERNELS_KO_TYPES_HPP
#define NNLIB_KERNELS_KO_TYPES_HPP

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "kernels/ko_types.h"

namespace nnlib {

template <class ActivationType, class WeightType>
struct KoTypes {
  using Activation = ActivationType;
  using Weight = WeightType;
  static constexpr bool kWeightZeropoint = std::is_unsigned_v<Weight>;
};

#define KO_TYPES(types) ::nnlib::KoTypes<KO_ACTIVATION(types), KO_WEIGHT(types)>

// How a kernel's outputs are quantized. One code serves kernels with an entry for each channel and
// with one for all.
struct KoQuantization {
  const int32_t* multiplier;
  const int16_t* shift;
  int32_t in_zeropoint;
  const uint8_t* weight_zeropoints;  // of unsigned weights
  int32_t out_zeropoint;
  uint32_t channel_mask;  // all ones, or 0: entry 0 serves every channel

  constexpr bool of_channels() const { return channel_mask != 0; }
  constexpr uint32_t entry(uint32_t channel) const { return channel & channel_mask; }
};

template <class Types>
constexpr int32_t weight_zeropoint(const KoQuantization& q, uint32_t channel) {
  if constexpr (Types::kWeightZeropoint) {
    return q.weight_zeropoints[q.entry(channel)];
  } else {
    return 0;
  }
}

// The quantization that a public function was called with.
#define KO_QUANTIZATION(types, suffix)                                      \
  ::nnlib::KoQuantization {                                                 \
    multiplier, shift, KO_ZEROPOINT_VALUES_##types, KO_CHANNEL_MASK(suffix) \
  }
#define KO_CHANNEL_MASK(suffix) (sizeof(#suffix) > 1 ? ~uint32_t{0} : 0)
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
