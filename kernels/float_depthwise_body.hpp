// SPDX-License-Identifier: MIT
// Body of float_depthwise.cpp, once for each number of lanes.
#include "kernels/float_conv_lines_body.hpp"
#include "kernels/float_tile_body.hpp"

// Where size counts, other windows than 3 x 3 inside the map are computed one by one.
#if NNLIB_LANES == 1 && defined(__OPTIMIZE_SIZE__)
constexpr bool kSingly = true;
#else
constexpr bool kSingly = false;
#endif
constexpr size_t kChannelVectors = kSingly ? 1 : 4;

// P pixels times NV vectors of channels, each channel with its own input channel. Part: a vector
// with fewer channels than lanes.
template <bool Part, size_t P, size_t NV>
NNLIB_ALWAYS_INLINE void depthwise_block(const Conv2d& conv, const Columns& columns,
                                         const Line& line, size_t pixel) {
  const size_t lanes = Part ? columns.lanes : kLanes;
  Vec acc[P][NV] = {};
  if (conv.bias != nullptr) {
    load_block(acc, conv.bias + columns.first, 0, lanes);
  }
  const float* window = conv.in + line.rows.begin * conv.y.in_pitch +
                        line.columns.begin * conv.x.in_pitch + pixel * line.in_pitch;
  for (uint32_t row = 0; row < line.rows.count; ++row) {
    const float* in = window + row * conv.y.dilation * conv.y.in_pitch + columns.first;
    const float* weights =
        conv.weights + static_cast<ptrdiff_t>(line.rows.tap + row) * conv.y.tap_pitch +
        static_cast<ptrdiff_t>(line.columns.tap) * conv.x.tap_pitch + columns.first;
    for (uint32_t column = 0; column < line.columns.count; ++column) {
      NNLIB_UNROLL
      for (size_t v = 0; v < NV; ++v) {
        const Vec weight = Part ? load_part(weights, lanes) : load(weights + v * kLanes);
        NNLIB_UNROLL
        for (size_t p = 0; p < P; ++p) {
          const float* x = in + p * line.in_pitch + v * kLanes;
          acc[p][v] = multiply_add(acc[p][v], Part ? load_part(x, lanes) : load(x), weight);
        }
      }
      in += conv.x.dilation * conv.x.in_pitch;
      weights += conv.x.tap_pitch;
    }
  }
  store_block(line.out + pixel * line.out_pitch + columns.first, acc, line.out_pitch, lanes);
}

template <bool Part, size_t NV, size_t P = Part || kSingly ? 1 : kBlockRows<NV>>
void depthwise_line(const Conv2d& conv, const Columns& columns, const Line& line,
                    size_t pixel = 0) {
  for (; pixel + P <= line.count; pixel += P) {
    depthwise_block<Part, P, NV>(conv, columns, line, pixel);
  }
  if constexpr (P > 1) {
    depthwise_line<Part, NV, P / 2>(conv, columns, line, pixel);
  }
}

// A line of windows with 3 x 3 taps inside the map: the weights stay in registers.
inline void depthwise_line_3x3(const Conv2d& conv, size_t channel, const Line& line) {
  const float* weights = conv.weights + static_cast<ptrdiff_t>(line.rows.tap) * conv.y.tap_pitch +
                         static_cast<ptrdiff_t>(line.columns.tap) * conv.x.tap_pitch + channel;
  Vec w[3][3];
  NNLIB_UNROLL
  for (ptrdiff_t row = 0; row < 3; ++row) {
    NNLIB_UNROLL
    for (ptrdiff_t column = 0; column < 3; ++column) {
      w[row][column] = load(weights + row * conv.y.tap_pitch + column * conv.x.tap_pitch);
    }
  }
  const Vec bias = conv.bias != nullptr ? load(conv.bias + channel) : Vec{};
  const size_t row_pitch = conv.y.dilation * conv.y.in_pitch;
  const size_t column_pitch = conv.x.dilation * conv.x.in_pitch;
  const ptrdiff_t to_next =
      static_cast<ptrdiff_t>(line.in_pitch) - static_cast<ptrdiff_t>(2 * column_pitch);
  const float* in[3];
  in[0] =
      conv.in + line.rows.begin * conv.y.in_pitch + line.columns.begin * conv.x.in_pitch + channel;
  in[1] = in[0] + row_pitch;
  in[2] = in[1] + row_pitch;
  float* out = line.out + channel;
  for (uint32_t pixel = 0; pixel < line.count; ++pixel) {
    Vec acc = bias;
    NNLIB_UNROLL
    for (size_t row = 0; row < 3; ++row) {
      acc = multiply_add(acc, load(in[row]), w[row][0]);
      in[row] += column_pitch;
      acc = multiply_add(acc, load(in[row]), w[row][1]);
      in[row] += column_pitch;
      acc = multiply_add(acc, load(in[row]), w[row][2]);
      in[row] += to_next;
    }
    store(out, acc);
    out += line.out_pitch;
  }
}

template <size_t NV = kChannelVectors>
NNLIB_ALWAYS_INLINE void depthwise_vectors(const Conv2d& conv, const Columns& columns,
                                           const Line& line) {
  if (columns.vectors == NV) {
    depthwise_line<false, NV>(conv, columns, line);
  } else if constexpr (NV > 1) {
    depthwise_vectors<NV / 2>(conv, columns, line);
  }
}

inline void depthwise_channels(const Conv2d& conv, const Columns& columns, const Line& line) {
  if (kLanes > 1 && columns.lanes < kLanes) {
    depthwise_line<true, 1>(conv, columns, line);
  } else if (line.rows.count == 3 && line.columns.count == 3) {
    for (size_t v = 0; v < columns.vectors; ++v) {
      depthwise_line_3x3(conv, columns.first + v * kLanes, line);
    }
  } else {
    depthwise_vectors(conv, columns, line);
  }
}

// Some pixels of a row at a time, so that their input stays in the first-level cache for all
// channels.
inline void depthwise_conv2d(const Conv2d& conv) {
  constexpr uint32_t kFloats = 2048;
  const uint32_t pixels = std::max<uint32_t>(kFloats / std::max<uint32_t>(conv.out_channels, 1), 8);
  const Span inner = complete_windows(conv.x);
  for (uint32_t y = 0; y < conv.y.out; ++y) {
    for (uint32_t x = 0; x < conv.x.out;) {
      const bool complete = x >= inner.begin && x < inner.end;
      const Line line = line_along_x(conv, x, y, complete ? std::min(inner.end - x, pixels) : 1);
      for (size_t channel = 0; channel < conv.out_channels;) {
        const Columns columns = columns_from(channel, conv.out_channels, kChannelVectors);
        depthwise_channels(conv, columns, line);
        channel = columns.next;
      }
      x += line.count;
    }
  }
}
