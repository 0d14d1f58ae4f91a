// SPDX-License-Identifier: MIT
// Two-dimensional convolution of float32 maps, and its transpose, through one description.
#ifndef NNLIB_KERNELS_FLOAT_CONV2D_HPP
#define NNLIB_KERNELS_FLOAT_CONV2D_HPP

#include <cstddef>
#include <cstdint>

namespace nnlib {

// One direction of a convolution. Output o sees input positions start + o * stride + t * dilation
// for the taps t inside the map. Pitches are distances in floats.
struct ConvAxis {
  uint32_t in;    // positions of the input map
  uint32_t out;   // outputs to compute
  int64_t start;  // may lie before the map
  uint32_t stride;
  uint32_t taps;
  uint32_t dilation;
  size_t in_pitch;      // between input positions
  size_t out_pitch;     // between outputs
  ptrdiff_t tap_pitch;  // between the weights of neighbouring taps
};

// One group. Output channel c of a pixel is the sum from bias[c], or 0, over the valid taps of y, x
// and the in_channels, in this order.
struct Conv2d {
  const float* in;
  const float* weights;  // of the first output channel, tap (0, 0)
  const float* bias;     // or null
  float* out;            // overlaps nothing of the above
  uint32_t in_channels;
  uint32_t out_channels;
  size_t weights_pitch;  // between the weights of neighbouring output channels
  ConvAxis x;
  ConvAxis y;
};

// Makes one row of the rows of a 1 x 1 convolution where they follow each other: no block of pixels
// ends at the end of a row then.
void join_rows(Conv2d& conv);

void conv2d_f32(const Conv2d& conv);

}  // namespace nnlib

#endif
