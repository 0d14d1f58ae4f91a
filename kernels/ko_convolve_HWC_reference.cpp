// SPDX-License-Identifier: MIT
#include "kernels/ko_convolve_HWC_reference.h"

#include "kernels/conv_geometry.hpp"
#include "kernels/ko_requantize.hpp"

namespace nnlib {
namespace {

template <class Types>
int32_t accumulate(const ConvGeometry& g, const typename Types::Activation* in,
                   const typename Types::Weight* weights, const Window& rows, const Window& columns,
                   const KoQuantization& q, uint32_t channel) {
  uint32_t sum = 0;
  for (uint32_t ky = 0; ky < rows.count; ++ky) {
    for (uint32_t kx = 0; kx < columns.count; ++kx) {
      const size_t pixel = size_t{rows.begin + ky} * g.in_width + columns.begin + kx;
      const size_t tap =
          (size_t{channel} * g.kernel_height + rows.tap + ky) * g.kernel_width + columns.tap + kx;
      for (uint32_t c = 0; c < g.in_channels; ++c) {
        const int32_t weight =
            weights[tap * g.in_channels + c] - weight_zeropoint<Types>(q, channel);
        sum += static_cast<uint32_t>(weight * (in[pixel * g.in_channels + c] - q.in_zeropoint));
      }
    }
  }
  return static_cast<int32_t>(sum);
}

template <class Types>
int32_t convolve(const ConvGeometry& g, const typename Types::Activation* in,
                 const typename Types::Weight* weights, const int32_t* bias,
                 const KoQuantization& q, typename Types::Activation* out) {
  for (uint32_t y = 0; y < g.out_height; ++y) {
    for (uint32_t x = 0; x < g.out_width; ++x) {
      for (uint32_t channel = 0; channel < g.out_channels; ++channel) {
        const int32_t sum = accumulate<Types>(g, in, weights, g.rows(y), g.columns(x), q, channel);
        *out++ = requantize<typename Types::Activation>(
            q, channel, wrapping_add(bias != nullptr ? bias[channel] : 0, sum));
      }
    }
  }
  return 0;
}

}  // namespace
}  // namespace nnlib

#define DEFINE(types, suffix)                                                     \
  int32_t ko_##types##_convolve_HWC_reference##suffix(KO_CONVOLUTION(types)) {    \
    return nnlib::convolve<KO_TYPES(types)>(KO_GEOMETRY, in, weights, bias,       \
                                            KO_QUANTIZATION(types, suffix), out); \
  }
extern "C" {
KO_FORMS(DEFINE)
}
