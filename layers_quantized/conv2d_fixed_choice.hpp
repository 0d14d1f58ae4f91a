// SPDX-License-Identifier: MIT
// Which kernel a fixed-point convolution gets.
#ifndef NNLIB_LAYERS_QUANTIZED_CONV2D_FIXED_CHOICE_HPP
#define NNLIB_LAYERS_QUANTIZED_CONV2D_FIXED_CHOICE_HPP

#include "kernels/conv_geometry.hpp"

namespace nnlib {

enum class FixedConvKernel {
  kUnsupported,
  kDepthwiseQ7,
  kDepthwiseMultiplierQ7,
  kRgbQ7,
  kPointwiseQ7,
  kFastQ7,
  kBasicQ7,
  kSquareQ15,  // the fast kernel, and where that does not take the sizes the basic one
  kRowsQ15,
};

struct FixedConvShape {
  uint32_t bits;  // of input, weights, bias and output; 0 when they differ
  uint32_t groups;
  ConvGeometry geometry;
};

// by_rows: the convolution is computed row by row, with kernels that take any height.
FixedConvKernel choose_fixed_conv(const FixedConvShape& shape, bool by_rows);

// 16-bit elements of column buffer.
uint32_t fixed_conv_scratch_elements(FixedConvKernel kernel, const ConvGeometry& geometry);

}  // namespace nnlib

#endif
