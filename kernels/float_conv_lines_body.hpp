// SPDX-License-Identifier: MIT
// Lines of outputs that see the same taps. Included by bodies, since code for wide vectors that
// calls a function compiled without them would lose as much time as a row of pixels takes.

// The outputs whose window lies inside the map with all its taps.
struct Span {
  uint32_t begin;
  uint32_t end;
};

inline Window window_of(const ConvAxis& axis, uint32_t output) {
  return clip_taps(axis.start + int64_t{output} * axis.stride, axis.taps, axis.in, axis.dilation);
}

// Divides in 32 bits, since 64 take small cores a library function.
inline Span complete_windows(const ConvAxis& axis) {
  const int64_t last_start =
      int64_t{axis.in} - 1 - (int64_t{axis.taps} - 1) * axis.dilation - axis.start;
  if (last_start < 0) {
    return {0, 0};
  }
  if (axis.stride == 0) {
    return {0, axis.start < 0 ? 0 : axis.out};
  }
  const uint32_t before = axis.start < 0 ? static_cast<uint32_t>(-axis.start) : 0;
  const uint32_t begin = before / axis.stride + (before % axis.stride != 0);
  const auto last = static_cast<uint32_t>(std::min<int64_t>(last_start, UINT32_MAX - 1));
  const uint32_t end = std::min(last / axis.stride + 1, axis.out);
  return begin < end ? Span{begin, end} : Span{0, 0};
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

inline Line line_along_x(const Conv2d& conv, uint32_t x, uint32_t y, uint32_t count) {
  return {window_of(conv.y, y),
          window_of(conv.x, x),
          conv.x.stride * conv.x.in_pitch,
          conv.x.out_pitch,
          conv.out + y * conv.y.out_pitch + x * conv.x.out_pitch,
          count};
}

inline Line line_along_y(const Conv2d& conv, uint32_t x, uint32_t y, uint32_t count) {
  Line line = line_along_x(conv, x, y, count);
  line.in_pitch = conv.y.stride * conv.y.in_pitch;
  line.out_pitch = conv.y.out_pitch;
  return line;
}
