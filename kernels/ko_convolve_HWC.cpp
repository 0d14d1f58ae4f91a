#include "kernels/ko_convolve_HWC.h"

#include "kernels/integer_columns.hpp"

namespace nnlib {
namespace {

int32_t* corrected_biases(void* scratch, uint32_t length) {
  return reinterpret_cast<int32_t*>(static_cast<int16_t*>(scratch) + size_t{length} * 2);
}

template <class Weight>
int32_t correct_biases(const Weight* weights, uint32_t length, uint32_t out_channels,
                       const int32_t* bias, int32_t in_zeropoint, void* scratch) {
  int32_t* corrected = corrected_biases(scratch, length);
  for (uint32_t channel = 0; channel < out_channels; ++channel, weights += length) {
    uint32_t sum = 0;
    for (uint32_t k = 0; k < length; ++k) {
      sum += static_cast<uint32_t>(weights[k]);
    }
    corrected[channel] = wrapping_add(bias != nullptr ? bias[channel] : 0,
                                      wrapping_multiply(-in_zeropoint, static_cast<int32_t>(sum)));
  }
  return 0;
}

// Columns of inputs as they are, and corrected biases.
template <class Types>
int32_t convolve_basic(const ConvGeometry& g, const typename Types::Activation* in,
                       const typename Types::Weight* weights, const KoQuantization& q,
                       typename Types::Activation* out, void* scratch) {
  const uint32_t length = g.column_length();
  const KoMatrix<Types> matrix = {
      weights, corrected_biases(scratch, length), g.out_channels, length, q.in_zeropoint, q};
  convolve_columns(matrix, g, in, 0, static_cast<int16_t*>(scratch), out);
  return 0;
}

// Columns of inputs less their zero point, and the biases as they are.
template <class Types>
int32_t convolve_1x1(const ConvGeometry& g, const typename Types::Activation* in,
                     const typename Types::Weight* weights, const int32_t* bias,
                     const KoQuantization& q, typename Types::Activation* out, void* scratch) {
  const KoMatrix<Types> matrix = {weights, bias, g.out_channels, g.column_length(), 0, q};
  convolve_columns(matrix, g, in, q.in_zeropoint, static_cast<int16_t*>(scratch), out);
  return 0;
}

}  // namespace
}  // namespace nnlib

#define DEFINE(types, suffix)                                                                      \
  int32_t ko_##types##_convolve_HWC_basic_rank1upd##suffix(                                        \
      uint16_t in_channels, const KO_WEIGHT(types) * weights, uint16_t out_channels,               \
      uint16_t kernel_width, uint16_t kernel_height, const int32_t* bias,                          \
      KO_ACTIVATION(types) in_zeropoint, void* scratch) {                                          \
    const uint32_t length = uint32_t{kernel_width} * kernel_height * in_channels;                  \
    return nnlib::correct_biases(weights, length, out_channels, bias, in_zeropoint, scratch);      \
  }                                                                                                \
  int32_t ko_##types##_convolve_HWC_basic_nonsquare##suffix(KO_CONVOLUTION(types),                 \
                                                            void* scratch) {                       \
    (void)bias;                                                                                    \
    return nnlib::convolve_basic<KO_TYPES(types)>(KO_GEOMETRY, in, weights,                        \
                                                  KO_QUANTIZATION(types, suffix), out, scratch);   \
  }                                                                                                \
  int32_t ko_##types##_convolve_HWC_RGB##suffix(                                                   \
      const KO_ACTIVATION(types) * in, uint16_t in_size, uint16_t in_channels,                     \
      const KO_WEIGHT(types) * weights, uint16_t out_channels, uint16_t kernel_size, uint16_t pad, \
      uint16_t stride, const int32_t* bias, const int32_t* multiplier, const int16_t* shift,       \
      KO_ZEROPOINTS(types), KO_ACTIVATION(types) * out, uint16_t out_size, void* scratch) {        \
    (void)bias;                                                                                    \
    const nnlib::ConvGeometry geometry = {in_size,     in_size,     in_channels, out_channels,     \
                                          kernel_size, kernel_size, pad,         pad,              \
                                          stride,      stride,      out_size,    out_size};        \
    return nnlib::convolve_basic<KO_TYPES(types)>(geometry, in, weights,                           \
                                                  KO_QUANTIZATION(types, suffix), out, scratch);   \
  }                                                                                                \
  int32_t ko_##types##_convolve_1x1_HWC_fast_nonsquare##suffix(KO_CONVOLUTION(types),              \
                                                               void* scratch) {                    \
    return nnlib::convolve_1x1<KO_TYPES(types)>(KO_GEOMETRY, in, weights, bias,                    \
                                                KO_QUANTIZATION(types, suffix), out, scratch);     \
  }

extern "C" {

uint32_t ko_convolve_HWC_scratch_size(uint16_t in_channels, uint16_t out_channels,
                                      uint16_t kernel_width, uint16_t kernel_height) {
  return uint32_t{kernel_width} * kernel_height * in_channels * 4 + uint32_t{out_channels} * 4;
}

KO_FORMS(DEFINE)

}  // extern "C"
