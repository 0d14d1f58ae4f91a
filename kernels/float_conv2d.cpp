#include "kernels/float_conv2d.hpp"

#include <algorithm>

#include "kernels/vector.hpp"
#include "kernels/window.hpp"

namespace nnlib {
namespace {

// The outputs whose window lies inside the map with all its taps.
struct Span {
  uint32_t begin;
  uint32_t end;
};

Window window_of(const ConvAxis& axis, uint32_t output) {
  return clip_taps(axis.start + int64_t{output} * axis.stride, axis.taps, axis.in, axis.dilation);
}

Span complete_windows(const ConvAxis& axis) {
  const int64_t stride = axis.stride;
  const int64_t last_start =
      int64_t{axis.in} - 1 - (int64_t{axis.taps} - 1) * axis.dilation - axis.start;
  const int64_t begin = axis.start < 0 ? (stride - 1 - axis.start) / stride : 0;
  const int64_t end = last_start < 0 ? 0 : std::min(last_start / stride + 1, int64_t{axis.out});
  if (begin >= end) {
    return {0, 0};
  }
  return {static_cast<uint32_t>(begin), static_cast<uint32_t>(end)};
}

// Outputs in a row, or one above the other, that see the same taps.
struct Line {
  Window rows;     // of the first output
  Window columns;  // of the first output
  size_t in_pitch;
  size_t out_pitch;
  float* out;
  uint32_t count;
};

Line line_along_x(const Conv2d& conv, uint32_t x, uint32_t y, uint32_t count) {
  return {window_of(conv.y, y),
          window_of(conv.x, x),
          conv.x.stride * conv.x.in_pitch,
          conv.x.out_pitch,
          conv.out + y * conv.y.out_pitch + x * conv.x.out_pitch,
          count};
}

Line line_along_y(const Conv2d& conv, uint32_t x, uint32_t y, uint32_t count) {
  Line line = line_along_x(conv, x, y, count);
  line.in_pitch = conv.y.stride * conv.y.in_pitch;
  line.out_pitch = conv.y.out_pitch;
  return line;
}

// Runs of taps that are contiguous in the input: a whole row of the window, or each tap.
struct Runs {
  size_t count;   // in a row
  size_t length;  // floats
};

Runs runs_of(const Conv2d& conv, const Window& columns, bool weights_in_place) {
  const bool contiguous =
      conv.x.dilation == 1 && conv.x.in_pitch == conv.in_channels &&
      (!weights_in_place || conv.x.tap_pitch == static_cast<ptrdiff_t>(conv.in_channels));
  if (contiguous) {
    return {columns.empty() ? 0u : 1u, size_t{columns.count} * conv.in_channels};
  }
  return {columns.count, conv.in_channels};
}

}  // namespace
}  // namespace nnlib

#define NNLIB_VECTOR_BODY "kernels/float_conv2d_body.hpp"
#include "kernels/vector_bodies.hpp"

namespace nnlib {

void conv2d_f32(const Conv2d& conv) {
  NNLIB_VECTOR_IF(conv.out_channels >= kWideLanes, conv2d)(conv);
}

void depthwise_conv2d_f32(const Conv2d& conv) {
  NNLIB_VECTOR_IF(conv.out_channels >= kWideLanes, depthwise_conv2d)(conv);
}

}  // namespace nnlib
