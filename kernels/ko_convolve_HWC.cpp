// SPDX-License-Identifier: MIT
#include "kernels/ko_convolve_HWC.h"

#include "kernels/integer_convolution.hpp"
#include "kernels/row_products.hpp"

namespace nnlib {
namespace {

int32_t* corrected_biases(const IntegerConvolution& c) {
  return reinterpret_cast<int32_t*>(static_cast<int16_t*>(c.scratch) +
                                    size_t{c.geometry.column_length()} * 2);
}

bool right_shifts(const KoQuantization& q, uint32_t channels) {
  uint32_t left = q.of_channels() ? channels : 1;
  for (const int16_t* s = q.shift; left > 0 && *s > 0 && *s < 256; ++s) {
    --left;
  }
  return left == 0;
}

}  // namespace

template <class Types>
void correct_biases(const IntegerConvolution& c) {
  const auto* weights = static_cast<const typename Types::Weight*>(c.weights);
  const uint32_t length = c.geometry.column_length();
  int32_t* corrected = corrected_biases(c);
  for (uint32_t channel = 0; channel < c.geometry.out_channels; ++channel, weights += length) {
    uint32_t sum = 0;
    for (uint32_t k = 0; k < length; ++k) {
      sum += static_cast<uint32_t>(weights[k]);
    }
    corrected[channel] =
        wrapping_add(c.bias != nullptr ? c.bias[channel] : 0,
                     wrapping_multiply(-c.quantization.in_zeropoint, static_cast<int32_t>(sum)));
  }
}

template <class Types>
void convolve_basic(const IntegerConvolution& c) {
  using Activation = typename Types::Activation;
  const ConvGeometry& g = c.geometry;
  const IntegerRows<Types> rows = {static_cast<const typename Types::Weight*>(c.weights),
                                   corrected_biases(c),
                                   g.out_channels,
                                   g.column_length(),
                                   c.quantization.in_zeropoint,
                                   c.quantization,
                                   right_shifts(c.quantization, g.out_channels)};
  convolve_rows(rows, g, static_cast<const Activation*>(c.in), 2, static_cast<int16_t*>(c.scratch),
                static_cast<Activation*>(c.out));
}

#define INSTANTIATE(types)                                                  \
  template void correct_biases<KO_TYPES(types)>(const IntegerConvolution&); \
  template void convolve_basic<KO_TYPES(types)>(const IntegerConvolution&);
KO_TYPES_WORDS(INSTANTIATE)

}  // namespace nnlib

#define DEFINE(types, suffix)                                                                      \
  int32_t ko_##types##_convolve_HWC_basic_rank1upd##suffix(                                        \
      uint16_t in_channels, const KO_WEIGHT(types) * weights, uint16_t out_channels,               \
      uint16_t kernel_width, uint16_t kernel_height, const int32_t* bias,                          \
      KO_ACTIVATION(types) in_zeropoint, void* scratch) {                                          \
    nnlib::correct_biases<KO_TYPES(types)>(                                                        \
        {{0, 0, in_channels, out_channels, kernel_width, kernel_height, 0, 0, 0, 0, 0, 0},         \
         nullptr,                                                                                  \
         weights,                                                                                  \
         bias,                                                                                     \
         {nullptr, nullptr, in_zeropoint, nullptr, 0, 0},                                          \
         nullptr,                                                                                  \
         scratch});                                                                                \
    return 0;                                                                                      \
  }                                                                                                \
  int32_t ko_##types##_convolve_HWC_basic_nonsquare##suffix(KO_CONVOLUTION(types),                 \
                                                            void* scratch) {                       \
    nnlib::convolve_basic<KO_TYPES(types)>(                                                        \
        {KO_GEOMETRY, in, weights, bias, KO_QUANTIZATION(types, suffix), out, scratch});           \
    return 0;                                                                                      \
  }                                                                                                \
  int32_t ko_##types##_convolve_HWC_RGB##suffix(                                                   \
      const KO_ACTIVATION(types) * in, uint16_t in_size, uint16_t in_channels,                     \
      const KO_WEIGHT(types) * weights, uint16_t out_channels, uint16_t kernel_size, uint16_t pad, \
      uint16_t stride, const int32_t* bias, const int32_t* multiplier, const int16_t* shift,       \
      KO_ZEROPOINTS(types), KO_ACTIVATION(types) * out, uint16_t out_size, void* scratch) {        \
    const nnlib::ConvGeometry geometry = {in_size,     in_size,     in_channels, out_channels,     \
                                          kernel_size, kernel_size, pad,         pad,              \
                                          stride,      stride,      out_size,    out_size};        \
    nnlib::convolve_basic<KO_TYPES(types)>(                                                        \
        {geometry, in, weights, bias, KO_QUANTIZATION(types, suffix), out, scratch});              \
    return 0;                                                                                      \
  }                                                                                                \
  int32_t ko_##types##_convolve_1x1_HWC_fast_nonsquare##suffix(KO_CONVOLUTION(types),              \
                                                               void* scratch) {                    \
    const nnlib::IntegerConvolution c = {                                                          \
        KO_GEOMETRY, in, weights, bias, KO_QUANTIZATION(types, suffix), out, scratch};             \
    nnlib::correct_biases<KO_TYPES(types)>(c);                                                     \
    nnlib::convolve_basic<KO_TYPES(types)>(c);                                                     \
    return 0;                                                                                      \
  }

extern "C" {

uint32_t ko_convolve_HWC_scratch_size(uint16_t in_channels, uint16_t out_channels,
                                      uint16_t kernel_width, uint16_t kernel_height) {
  return uint32_t{kernel_width} * kernel_height * in_channels * 4 + uint32_t{out_channels} * 4;
}

KO_FORMS(DEFINE)

}  // extern "C"
