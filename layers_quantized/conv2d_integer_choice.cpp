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

// The kernels of a form, by shape. KO_CONVOLUTION's arguments from a convolution `c`:
#define CONVOLUTION(types)                                                                      \
  static_cast<const KO_ACTIVATION(types)*>(c.in), u16(g.in_width), u16(g.in_height),            \
      u16(g.in_channels), static_cast<const KO_WEIGHT(types)*>(c.weights), u16(g.out_channels), \
      u16(g.kernel_width), u16(g.kernel_height), u16(g.pad_x), u16(g.pad_y), u16(g.stride_x),   \
      u16(g.stride_y), c.bias, c.multiplier, c.shift, ZEROPOINTS_##types,                       \
      static_cast<KO_ACTIVATION(types)*>(c.out), u16(g.out_width), u16(g.out_height), c.scratch
#define ZEROPOINT(types, value) static_cast<KO_ACTIVATION(types)>(value)
#define WEIGHT_ZEROPOINTS static_cast<const uint8_t*>(c.weight_zeropoints)
#define ZEROPOINTS_uint8 \
  ZEROPOINT(uint8, c.in_zeropoint), WEIGHT_ZEROPOINTS, ZEROPOINT(uint8, c.out_zeropoint)
#define ZEROPOINTS_int8symwt \
  ZEROPOINT(int8symwt, c.in_zeropoint), ZEROPOINT(int8symwt, c.out_zeropoint)
#define ZEROPOINTS_int8_int8symwt \
  ZEROPOINT(int8_int8symwt, c.in_zeropoint), ZEROPOINT(int8_int8symwt, c.out_zeropoint)
#define ADAPT_ZEROPOINT_uint8 WEIGHT_ZEROPOINTS,
#define ADAPT_ZEROPOINT_int8symwt
#define ADAPT_ZEROPOINT_int8_int8symwt

#define DEFINE_KERNELS(types, suffix)                                                              \
  struct Kernels_##types##suffix {                                                                 \
    static void correct_biases(const IntegerConvolution& c) {                                      \
      const ConvGeometry& g = c.geometry;                                                          \
      ko_##types##_convolve_HWC_basic_rank1upd##suffix(                                            \
          u16(g.in_channels), static_cast<const KO_WEIGHT(types)*>(c.weights),                     \
          u16(g.out_channels), u16(g.kernel_width), u16(g.kernel_height), c.bias,                  \
          ZEROPOINT(types, c.in_zeropoint), c.scratch);                                            \
    }                                                                                              \
    static void adapt_weights(const IntegerConvolution& c) {                                       \
      const ConvGeometry& g = c.geometry;                                                          \
      ko_##types##_DW_HWC_Wadapt##suffix(static_cast<const KO_WEIGHT(types)*>(c.weights),          \
                                         u16(g.in_channels), u16(g.kernel_width),                  \
                                         u16(g.kernel_height), ADAPT_ZEROPOINT_##types c.scratch); \
    }                                                                                              \
    static void rgb(const IntegerConvolution& c) {                                                 \
      const ConvGeometry& g = c.geometry;                                                          \
      ko_##types##_convolve_HWC_RGB##suffix(                                                       \
          static_cast<const KO_ACTIVATION(types)*>(c.in), u16(g.in_width), u16(g.in_channels),     \
          static_cast<const KO_WEIGHT(types)*>(c.weights), u16(g.out_channels),                    \
          u16(g.kernel_width), u16(g.pad_x), u16(g.stride_x), c.bias, c.multiplier, c.shift,       \
          ZEROPOINTS_##types, static_cast<KO_ACTIVATION(types)*>(c.out), u16(g.out_width),         \
          c.scratch);                                                                              \
    }                                                                                              \
    static void pointwise(const IntegerConvolution& c) {                                           \
      const ConvGeometry& g = c.geometry;                                                          \
      ko_##types##_convolve_1x1_HWC_fast_nonsquare##suffix(CONVOLUTION(types));                    \
    }                                                                                              \
    static void depthwise(const IntegerConvolution& c) {                                           \
      const ConvGeometry& g = c.geometry;                                                          \
      ko_##types##_depthwise_separable_conv_HWC_nonsquare##suffix(CONVOLUTION(types));             \
    }                                                                                              \
    static void basic(const IntegerConvolution& c) {                                               \
      const ConvGeometry& g = c.geometry;                                                          \
      ko_##types##_convolve_HWC_basic_nonsquare##suffix(CONVOLUTION(types));                       \
    }                                                                                              \
  };
KO_FORMS(DEFINE_KERNELS)

uint32_t columns_size(const ConvGeometry& g) {
  return ko_convolve_HWC_scratch_size(u16(g.in_channels), u16(g.out_channels), u16(g.kernel_width),
                                      u16(g.kernel_height));
}

uint32_t depthwise_size(const ConvGeometry& g) {
  return ko_depthwise_separable_conv_HWC_scratch_size(u16(g.in_channels), u16(g.kernel_width),
                                                      u16(g.kernel_height));
}

// Shapes 1 to 5; 4 is reserved and treated like 5.
template <class Kernels>
constexpr IntegerConvKernel kShapes[] = {
    {Kernels::correct_biases, Kernels::rgb, columns_size},
    {nullptr, Kernels::pointwise, columns_size},
    {Kernels::adapt_weights, Kernels::depthwise, depthwise_size},
    {Kernels::correct_biases, Kernels::basic, columns_size},
    {Kernels::correct_biases, Kernels::basic, columns_size},
};

#define FORM_ENTRY(types, suffix) kShapes<Kernels_##types##suffix>,
constexpr const IntegerConvKernel* kForms[] = {KO_FORMS(FORM_ENTRY)};

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
  return &kForms[static_cast<uint32_t>(form)][static_cast<uint32_t>(shape) - 1];
}

}  // namespace nnlib
