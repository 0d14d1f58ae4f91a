// SPDX-License-Identifier: MIT
// The convolutions behind ko_convolve_HWC.h and ko_depthwise_separable_conv_HWC.h.
#ifndef NNLIB_KERNELS_INTEGER_CONVOLUTION_HPP
#define NNLIB_KERNELS_INTEGER_CONVOLUTION_HPP

#include "kernels/conv_geometry.hpp"
#include "kernels/ko_types.hpp"

namespace nnlib {

// The arguments of a kernel for any types; in, weights and out are of the types it is called with.
struct IntegerConvolution {
  ConvGeometry geometry;
  const void* in;
  const void* weights;
  const int32_t* bias;  // or null
  KoQuantization quantization;
  void* out;
  void* scratch;
};

// Columns of inputs as they are, and the biases that correct_biases left in the scratch.
template <class Types>
void correct_biases(const IntegerConvolution& c);
template <class Types>
void convolve_basic(const IntegerConvolution& c);

// With the weights that adapt_weights left in the scratch.
template <class Types>
void adapt_weights(const IntegerConvolution& c);
template <class Types>
void convolve_depthwise(const IntegerConvolution& c);

}  // namespace nnlib

#endif
