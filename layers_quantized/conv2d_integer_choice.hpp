// SPDX-License-Identifier: MIT
// Which kernel an integer convolution gets, and the kernels' scratch.
#ifndef NNLIB_LAYERS_QUANTIZED_CONV2D_INTEGER_CHOICE_HPP
#define NNLIB_LAYERS_QUANTIZED_CONV2D_INTEGER_CHOICE_HPP

#include "kernels/integer_convolution.hpp"
#include "layers_quantized/integer_quantization.hpp"

namespace nnlib {

// The shapes of kernels; with a form a kernel's case number: 5 * form + shape.
enum class IntegerConvShape : uint32_t {
  kUnsupported = 0,
  kRgb = 1,
  kPointwise = 2,
  kDepthwise = 3,
  kBasic = 5,
};

// rgb: whether the kernels for three channels may be chosen.
IntegerConvShape choose_integer_conv(const ConvGeometry& geometry, uint32_t groups, bool rgb);

struct IntegerConvKernel {
  // Prepares the scratch for any number of runs with the same weights.
  void (*prepare)(const IntegerConvolution&);
  void (*run)(const IntegerConvolution&);
  uint32_t (*scratch_size)(const ConvGeometry&);
};

// The kernel of case number 5 * form + shape, or null.
const IntegerConvKernel* integer_conv_kernel(IntegerForm form, IntegerConvShape shape);

}  // namespace nnlib

#endif
