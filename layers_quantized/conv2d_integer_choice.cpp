// SPDX-License-Identifier: MIT
#include "layers_quantized/conv2d_integer_choice.hpp"

#include <iterator>

#include "kernels/ko_convolve_HWC.h"
#include "kernels/ko_depthwise_separable_conv_HWC.h"

namespace nnlib {
namespace {

struct Choice {
  bool (*fits)(const ConvGeometry& g, uint32_t groups, bool rgb);
  IntegerConvShape shape;
};

// In order: the first that fits.
constexpr Choice kChoices[] = {
    {[](const ConvGeometry& g, uint32_t groups, bool) {
       return groups == 0 || (groups != 1 && groups != g.in_channels);
     },
     IntegerConvShape::kUnsupported},
    {[](const ConvGeometry& g, uint32_t groups, bool) {
       return groups != 1 && g.out_channels != g.in_channels;  // one filter for each channel
     },
     IntegerConvShape::kUnsupported},
    {[](const ConvGeometry&, uint32_t groups, bool) { return groups != 1; },
     IntegerConvShape::kDepthwise},
    {[](const ConvGeometry& g, uint32_t, bool rgb) {
       return rgb && g.in_channels == 3 && g.in_width == g.in_height &&
              g.out_width == g.out_height && g.kernel_width == g.kernel_height &&
              g.stride_x == g.stride_y && g.pad_x == g.pad_y;
     },
     IntegerConvShape::kRgb},
    {[](const ConvGeometry& g, uint32_t, bool) {
       return g.kernel_width == 1 && g.kernel_height == 1 && g.pad_x == 0 && g.pad_y == 0 &&
              g.stride_x == 1 && g.stride_y == 1;
     },
     IntegerConvShape::kPointwise},
    {[](const ConvGeometry&, uint32_t, bool) { return true; }, IntegerConvShape::kBasic},
};

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

// Shapes 1 to 5; 4 is reserved and treated like 5. Three channels and pointwise need no code of
// their own.
template <class Types>
constexpr IntegerConvKernel kShapes[] = {
    {correct_biases<Types>, convolve_basic<Types>, columns_size},
    {correct_biases<Types>, convolve_basic<Types>, columns_size},
    {adapt_weights<Types>, convolve_depthwise<Types>, depthwise_size},
    {correct_biases<Types>, convolve_basic<Types>, columns_size},
    {correct_biases<Types>, convolve_basic<Types>, columns_size},
};

#define WORD_ENTRY(types) kShapes<KO_TYPES(types)>,
constexpr const IntegerConvKernel* kWords[] = {KO_TYPES_WORDS(WORD_ENTRY)};

}  // namespace

IntegerConvShape choose_integer_conv(const ConvGeometry& geometry, uint32_t groups, bool rgb) {
  const Choice* choice = kChoices;
  while (!choice->fits(geometry, groups, rgb)) {
    ++choice;
  }
  return choice->shape;
}

const IntegerConvKernel* integer_conv_kernel(IntegerForm form, IntegerConvShape shape) {
  if (form == IntegerForm::kNone || shape == IntegerConvShape::kUnsupported) {
    return nullptr;
  }
  return &kWords[types_word(form)][static_cast<uint32_t>(shape) - 1];
}

}  // namespace nnlib
