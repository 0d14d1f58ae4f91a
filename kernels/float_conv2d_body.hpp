#include "kernels/float_tile_body.hpp"

// Depth k (tap row, tap column, input channel, in this order) from `first` on, of some columns
// (output channels).
struct Chunk {
  size_t first;
  size_t depth;
  Columns columns;
  Tile tile;          // packed, or the weights in place from tap (0, 0) on
  const float* bias;  // of the columns, padded to whole vectors; null: sums go on from the output
};

template <size_t P, size_t NV>
NNLIB_ALWAYS_INLINE void accumulate_window(Vec (&acc)[P][NV], const Conv2d& conv,
                                           const Chunk& chunk, const Line& line, size_t pixel) {
  const Runs runs = runs_of(conv, line.columns, !kPacks);
  const float* window = conv.in + line.rows.begin * conv.y.in_pitch +
                        line.columns.begin * conv.x.in_pitch + pixel * line.in_pitch;
  for (uint32_t row = 0; row < line.rows.count; ++row) {
    const float* in = window + row * conv.y.dilation * conv.y.in_pitch;
    const size_t tap_row = line.rows.tap + row;
    size_t k = (tap_row * conv.x.taps + line.columns.tap) * conv.in_channels;
    for (size_t run = 0; run < runs.count; ++run, k += runs.length) {
      const size_t begin = std::max(k, chunk.first);
      const size_t end = std::min(k + runs.length, chunk.first + chunk.depth);
      if (begin < end) {
        Tile tile = chunk.tile;
        if constexpr (kPacks) {
          tile.data += (begin - chunk.first) * tile.k_pitch;
        } else {
          tile.data += static_cast<ptrdiff_t>(tap_row) * conv.y.tap_pitch +
                       static_cast<ptrdiff_t>(line.columns.tap + run) * conv.x.tap_pitch;
        }
        accumulate(acc, in + (begin - k), line.in_pitch, 1, tile, end - begin);
      }
      in += conv.x.dilation * conv.x.in_pitch;
    }
  }
}

template <size_t P, size_t NV>
NNLIB_ALWAYS_INLINE void conv_block(const Conv2d& conv, const Chunk& chunk, const Line& line,
                                    size_t pixel) {
  float* out = line.out + pixel * line.out_pitch + chunk.columns.first;
  Vec acc[P][NV];
  if (chunk.bias != nullptr) {
    load_block(acc, chunk.bias, 0, kLanes);
  } else {
    load_block(acc, out, line.out_pitch, chunk.columns.lanes);
  }
  accumulate_window(acc, conv, chunk, line, pixel);
  store_block(out, acc, line.out_pitch, chunk.columns.lanes);
}

template <size_t NV, size_t P = kBlockRows<NV>>
void conv_line(const Conv2d& conv, const Chunk& chunk, const Line& line, size_t pixel = 0) {
  for (; pixel + P <= line.count; pixel += P) {
    conv_block<P, NV>(conv, chunk, line, pixel);
  }
  if constexpr (P > 1) {
    conv_line<NV, P / 2>(conv, chunk, line, pixel);
  }
}

// All pixels over one chunk: complete windows row by row, then the cut ones left and right, which
// share their taps with those above and below.
template <size_t NV>
void conv_sweep(const Conv2d& conv, const Chunk& chunk) {
  const Span inner_x = complete_windows(conv.x);
  const Span inner_y = complete_windows(conv.y);
  for (uint32_t y = 0; y < conv.y.out && inner_x.begin < inner_x.end; ++y) {
    conv_line<NV>(conv, chunk, line_along_x(conv, inner_x.begin, y, inner_x.end - inner_x.begin));
  }
  for (uint32_t x = 0; x < conv.x.out; ++x) {
    if (x >= inner_x.begin && x < inner_x.end) {
      continue;
    }
    for (uint32_t y = 0; y < conv.y.out;) {
      const uint32_t count = y == inner_y.begin && y < inner_y.end ? inner_y.end - y : 1;
      conv_line<NV>(conv, chunk, line_along_y(conv, x, y, count));
      y += count;
    }
  }
}

// Packs the weights of depth k from `first` on.
inline void pack_weights(float* tile, const Conv2d& conv, const Columns& columns, size_t first,
                         size_t depth) {
  const float* weights = conv.weights + columns.first * conv.weights_pitch;
  const size_t width = columns.vectors * kLanes;
  const size_t channels = conv.in_channels;
  const bool contiguous = conv.x.tap_pitch == static_cast<ptrdiff_t>(channels) &&
                          conv.y.tap_pitch == static_cast<ptrdiff_t>(channels * conv.x.taps);
  while (depth != 0) {
    const size_t tap = contiguous ? 0 : first / channels;
    const size_t channel = first - tap * channels;
    const size_t count = contiguous ? depth : std::min(depth, channels - channel);
    const ptrdiff_t offset = static_cast<ptrdiff_t>(tap / conv.x.taps) * conv.y.tap_pitch +
                             static_cast<ptrdiff_t>(tap % conv.x.taps) * conv.x.tap_pitch;
    pack(tile, weights + offset + channel, conv.weights_pitch, 1, columns, count);
    tile += count * width;
    first += count;
    depth -= count;
  }
}

// How much of the depth from `first` on makes a chunk: whole tap rows, or an equal part of one, so
// that a window is few runs.
inline size_t chunk_depth(const Conv2d& conv, size_t first) {
  const size_t row = size_t{conv.x.taps} * conv.in_channels;
  const size_t total = row * conv.y.taps;
  if (row <= kTileDepth) {
    const size_t rows = row == 0 ? 0 : kTileDepth / row * row;
    return std::min(rows, total - first);
  }
  const size_t parts = (row + kTileDepth - 1) / kTileDepth;
  return std::min((row + parts - 1) / parts, row - first % row);
}

inline void conv2d(const Conv2d& conv) {
  alignas(64) TileBuffer buffer;
  const size_t total = size_t{conv.y.taps} * conv.x.taps * conv.in_channels;
  for (size_t channel = 0; channel < conv.out_channels;) {
    const Columns columns = columns_from(channel, conv.out_channels);
    float bias[kTileColumns] = {};
    if (conv.bias != nullptr) {
      std::copy_n(conv.bias + columns.first, (columns.vectors - 1) * kLanes + columns.lanes, bias);
    }
    Chunk chunk = {0, 0, columns, {buffer, columns.vectors * kLanes, kLanes}, bias};
    if (!kPacks) {
      chunk.tile = {conv.weights + columns.first * conv.weights_pitch, 1, conv.weights_pitch};
    }
    do {
      chunk.depth = chunk_depth(conv, chunk.first);
      if (kPacks) {
        pack_weights(buffer, conv, columns, chunk.first, chunk.depth);
      }
      if (columns.vectors == kTileVectors) {
        conv_sweep<kTileVectors>(conv, chunk);
      } else {
        conv_sweep<1>(conv, chunk);
      }
      chunk.bias = nullptr;
      chunk.first += chunk.depth;
    } while (chunk.first < total);
    channel = columns.next;
  }
}

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
          acc[p][v] += (Part ? load_part(x, lanes) : load(x)) * weight;
        }
      }
      in += conv.x.dilation * conv.x.in_pitch;
      weights += conv.x.tap_pitch;
    }
  }
  store_block(line.out + pixel * line.out_pitch + columns.first, acc, line.out_pitch, lanes);
}

template <bool Part, size_t NV, size_t P = Part ? 1 : kBlockRows<NV>>
void depthwise_line(const Conv2d& conv, const Columns& columns, const Line& line,
                    size_t pixel = 0) {
  for (; pixel + P <= line.count; pixel += P) {
    depthwise_block<Part, P, NV>(conv, columns, line, pixel);
  }
  if constexpr (P > 1) {
    depthwise_line<Part, NV, P / 2>(conv, columns, line, pixel);
  }
}

inline void depthwise_channels(const Conv2d& conv, const Columns& columns, const Line& line) {
  if (columns.lanes < kLanes) {
    depthwise_line<true, 1>(conv, columns, line);
  } else if (columns.vectors == 4) {
    depthwise_line<false, 4>(conv, columns, line);
  } else if (columns.vectors == 2) {
    depthwise_line<false, 2>(conv, columns, line);
  } else {
    depthwise_line<false, 1>(conv, columns, line);
  }
}

// Row by row, so that the rows of the input stay in the first-level cache for all channels.
inline void depthwise_conv2d(const Conv2d& conv) {
  const Span inner = complete_windows(conv.x);
  for (uint32_t y = 0; y < conv.y.out; ++y) {
    for (size_t channel = 0; channel < conv.out_channels;) {
      const Columns columns = columns_from(channel, conv.out_channels, 4);
      for (uint32_t x = 0; x < conv.x.out;) {
        const uint32_t count = x == inner.begin && x < inner.end ? inner.end - x : 1;
        depthwise_channels(conv, columns, line_along_x(conv, x, y, count));
        x += count;
      }
      channel = columns.next;
    }
  }
}
