// SPDX-License-Identifier: MIT
#include "layers_quantized/conv2d_integer_choice.hpp"

#include "kernels/ko_convolve_HWC.h"
#include "kernels/ko_depthwise_separable_conv_HWC.h"

namespace nnlib {
namespace {

constexpr uint16_t u16(uint32_t size) {
  return static_cast<uint16_t>(size);
}

uint32_t columns_size(const ConvGeometry& g) {
  return ko_convolve_HWC_scratch_size(u16(g.in_channels), u16(g.out_channels), u16(g.kernel_width),
                                      u16(g.kernel_height));
}

uint32_t depthwise_size(const ConvGeometry& g) {
  return ko_depthwise_separable_conv_HWC_scratch_size(u16(g.in_channels), u16(g.kernel_width),
                                                      u16(g.kernel_height));
}

// Three channels, pointwise and what is reserved need no code of their own.
struct Kernels {
  IntegerConvKernel basic;
  IntegerConvKernel depthwise;
};
template <class Types>
constexpr Kernels kKernels = {{correct_biases<Types>, convolve_basic<Types>, columns_size},
                              {adapt_weights<Types>, convolve_depthwise<Types>, depthwise_size}};

#define WORD_ENTRY(types) kTypesLinked<KO_TYPES(types)> ? &kKernels<KO_TYPES(types)> : nullptr,
constexpr const Kernels* kWords[] = {KO_TYPES_WORDS(WORD_ENTRY)};

}  // namespace

IntegerConvShape choose_integer_conv(const ConvGeometry& g, uint32_t groups, bool rgb) {
  if (groups != 1) {  // one filter for each channel
    const bool of_each = groups != 0 && groups == g.in_channels && groups == g.out_channels;
    return of_each ? IntegerConvShape::kDepthwise : IntegerConvShape::kUnsupported;
  }
  if (rgb && g.in_channels == 3 && g.in_width == g.in_height && g.out_width == g.out_height &&
      g.kernel_width == g.kernel_height && g.stride_x == g.stride_y && g.pad_x == g.pad_y) {
    return IntegerConvShape::kRgb;
  }
  const bool pointwise = g.kernel_width == 1 && g.kernel_height == 1 && g.pad_x == 0 &&
                         g.pad_y == 0 && g.stride_x == 1 && g.stride_y == 1;
  return pointwise ? IntegerConvShape::kPointwise : IntegerConvShape::kBasic;
}

const IntegerConvKernel* integer_conv_kernel(IntegerForm form, IntegerConvShape shape) {
  if (form == IntegerForm::kNone || shape == IntegerConvShape::kUnsupported) {
    return nullptr;
  }
  const Kernels& kernels = *kWords[types_word(form)];
  return shape == IntegerConvShape::kDepthwise ? &kernels.depthwise : &kernels.basic;
}

}  // namespace nnlib
