// SPDX-License-Identifier: MIT
// The sizes of a convolution.
#ifndef NNLIB_KERNELS_CONV_GEOMETRY_HPP
#define NNLIB_KERNELS_CONV_GEOMETRY_HPP

#include <cstdint>

#include "kernels/window.hpp"

namespace nnlib {

// x is the direction of the width. Maps are rows of pixels of channels; padding is what lies left
// of and above the map, the output size says what lies beyond it on the other sides.
struct ConvGeometry {
  uint32_t in_width, in_height, in_channels;
  uint32_t out_channels;
  uint32_t kernel_width, kernel_height;
  uint32_t pad_x, pad_y;
  uint32_t stride_x, stride_y;
  uint32_t out_width, out_height;

  constexpr uint32_t column_length() const { return kernel_width * kernel_height * in_channels; }
  constexpr uint32_t pixels() const { return out_width * out_height; }
  // Whether the columns are the pixels of the input as they lie there.
  constexpr bool is_product() const {
    return kernel_width == 1 && kernel_height == 1 && pad_x == 0 && pad_y == 0 && stride_x == 1 &&
           stride_y == 1 && out_width == in_width && out_height <= in_height;
  }
  constexpr Window rows(uint32_t out_y) const {
    return clip_window(out_y, stride_y, pad_y, kernel_height, in_height);
  }
  constexpr Window columns(uint32_t out_x) const {
    return clip_window(out_x, stride_x, pad_x, kernel_width, in_width);
  }
};

}  // namespace nnlib

#endif
