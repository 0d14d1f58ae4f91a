// SPDX-License-Identifier: MIT
#include "layers_quantized/conv2d_fixed_choice.hpp"

namespace nnlib {
namespace {

using Shape = FixedConvShape;

bool depthwise(const Shape& s) {
  return s.groups != 1 && s.groups == s.geometry.in_channels;
}
bool square(const Shape& s) {
  const ConvGeometry& g = s.geometry;
  return g.in_width == g.in_height && g.out_width == g.out_height &&
         g.kernel_width == g.kernel_height && g.stride_x == g.stride_y && g.pad_x == g.pad_y;
}
bool pointwise(const Shape& s) {
  const ConvGeometry& g = s.geometry;
  return g.kernel_width == 1 && g.kernel_height == 1 && g.pad_x == 0 && g.pad_y == 0 &&
         g.stride_x == 1 && g.stride_y == 1;
}
bool fast_channels(const Shape& s) {
  return s.geometry.in_channels % 4 == 0 && s.geometry.out_channels % 2 == 0;
}

// The first kernel whose condition holds.
struct Choice {
  FixedConvKernel kernel;
  bool (*fits)(const Shape& s, bool by_rows);
};

constexpr Choice kQ7Choices[] = {
    {FixedConvKernel::kUnsupported,
     [](const Shape& s, bool) { return s.groups == 0 || (s.groups != 1 && !depthwise(s)); }},
    {FixedConvKernel::kUnsupported,
     [](const Shape& s, bool) {
       return depthwise(s) && s.geometry.out_channels % s.geometry.in_channels != 0;
     }},
    {FixedConvKernel::kDepthwiseQ7,
     [](const Shape& s, bool) {
       const ConvGeometry& g = s.geometry;
       return depthwise(s) && g.in_channels == g.out_channels && g.out_channels % 2 == 0;
     }},
    {FixedConvKernel::kDepthwiseMultiplierQ7, [](const Shape& s, bool) { return depthwise(s); }},
    {FixedConvKernel::kRgbQ7,
     [](const Shape& s, bool by_rows) {
       return !by_rows && s.geometry.in_channels == 3 && square(s);
     }},
    {FixedConvKernel::kPointwiseQ7,
     [](const Shape& s, bool) { return pointwise(s) && fast_channels(s); }},
    {FixedConvKernel::kFastQ7, [](const Shape& s, bool) { return fast_channels(s); }},
    {FixedConvKernel::kBasicQ7, [](const Shape&, bool) { return true; }},
};

constexpr Choice kQ15Choices[] = {
    {FixedConvKernel::kUnsupported,
     [](const Shape& s, bool) { return s.groups != 1 || !square(s); }},
    {FixedConvKernel::kRowsQ15, [](const Shape&, bool by_rows) { return by_rows; }},
    {FixedConvKernel::kSquareQ15, [](const Shape&, bool) { return true; }},
};

template <size_t Count>
FixedConvKernel first_fit(const Choice (&choices)[Count], const Shape& shape, bool by_rows) {
  return std::find_if(choices, choices + Count,
                      [&](const Choice& choice) { return choice.fits(shape, by_rows); })
      ->kernel;
}

}  // namespace

FixedConvKernel choose_fixed_conv(const FixedConvShape& shape, bool by_rows) {
  switch (shape.bits) {
    case 8:
      return first_fit(kQ7Choices, shape, by_rows);
    case 16:
      return first_fit(kQ15Choices, shape, by_rows);
    default:
      return FixedConvKernel::kUnsupported;
  }
}

uint32_t fixed_conv_scratch_elements(FixedConvKernel kernel, const ConvGeometry& geometry) {
  switch (kernel) {
    case FixedConvKernel::kUnsupported:
    case FixedConvKernel::kDepthwiseQ7:
    case FixedConvKernel::kDepthwiseMultiplierQ7:
      return 0;
    default:
      return 2 * geometry.column_length();
  }
}

}  // namespace nnlib
