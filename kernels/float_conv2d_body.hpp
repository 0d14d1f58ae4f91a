// SPDX-License-Identifier: MIT
// Body of float_conv2d.cpp, once for each number of lanes.
#include "kernels/float_conv_lines_body.hpp"
#include "kernels/float_tile_body.hpp"

// Whether a row of the window is one run of the input, and of the weights where those are used in
// place; if not, each tap is a run.
inline bool rows_are_runs(const Conv2d& conv, bool weights_in_place) {
  const auto tap = static_cast<ptrdiff_t>(conv.in_channels);
  return conv.x.dilation == 1 && conv.x.in_pitch == conv.in_channels &&
         (!weights_in_place || conv.x.tap_pitch == tap);
}

// (What reads weights in place has little stack, too.)
constexpr size_t kMostRuns = kPacks ? 16 : NNLIB_FOR_SPEED ? 5 : 3;

// Where the tile of some columns (output channels) is: packed, or the weights in place from tap (0,
// 0) on.
inline Tile tile_of(const Conv2d& conv, const Columns& columns, const float* packed) {
  if (kPacks) {
    return {packed, columns.vectors * kLanes, kLanes, {1, kLanes}};
  }
  return {conv.weights + columns.first * conv.weights_pitch,
          1,
          kLanes * conv.weights_pitch,
          {conv.weights_pitch, columns.lanes}};
}

// Depth k (tap row, tap column, input channel, in this order) from `first` on, of some columns.
struct Chunk {
  Chunk(const Conv2d& conv, size_t channel, const float* packed, const float* start)
      : row_runs(rows_are_runs(conv, !kPacks)),
        columns(columns_from(channel, conv.out_channels)),
        tile(tile_of(conv, columns, packed)),
        bias(start) {}

  size_t first = 0;
  size_t depth = 0;
  bool row_runs;
  Columns columns;
  Tile tile;
  const float* bias;  // of the columns, padded to whole vectors; null: sums go on from the output
};

// How a window reads one chunk: runs of products, in order.
struct Runs {
  struct Run {
    size_t in;       // from the window's first position inside the map
    ptrdiff_t tile;  // from the tile's data
    size_t depth;
  };
  const float* in;
  size_t count;
  Run run[kMostRuns];
};

inline Runs runs_of(const Conv2d& conv, const Chunk& chunk, const Window& rows,
                    const Window& columns) {
  Runs runs = {conv.in + rows.begin * conv.y.in_pitch + columns.begin * conv.x.in_pitch, 0, {}};
  const size_t taps = chunk.row_runs ? columns.count : 1;  // of a run
  const size_t end = chunk.first + chunk.depth;
  for (uint32_t row = 0; row < rows.count; ++row) {
    for (uint32_t column = 0; column < columns.count; column += static_cast<uint32_t>(taps)) {
      const size_t tap_row = rows.tap + row, tap_column = columns.tap + column;
      const size_t k = (tap_row * conv.x.taps + tap_column) * conv.in_channels;
      const size_t from = std::max(k, chunk.first);
      const size_t to = std::min<size_t>(k + taps * conv.in_channels, end);
      if (from < to) {
        const ptrdiff_t in_place = static_cast<ptrdiff_t>(tap_row) * conv.y.tap_pitch +
                                   static_cast<ptrdiff_t>(tap_column) * conv.x.tap_pitch +
                                   static_cast<ptrdiff_t>(from - k);
        runs.run[runs.count++] = {
            row * conv.y.dilation * conv.y.in_pitch + column * conv.x.dilation * conv.x.in_pitch +
                (from - k),
            kPacks ? static_cast<ptrdiff_t>((from - chunk.first) * chunk.tile.k_pitch) : in_place,
            to - from};
      }
    }
  }
  return runs;
}

// Where size counts a run is a call of its own: what stands around it would take the registers that
// its pointers need. Without floating point it is a call's work anyway.
#if defined(__ARM_FP)
#define NNLIB_RUN_CALL NNLIB_CALL_FOR_SIZE
#else
#define NNLIB_RUN_CALL NNLIB_ALWAYS_INLINE
#endif

template <size_t P, size_t NV>
NNLIB_RUN_CALL void add_run(Vec (&sums)[P][NV], const Chunk& chunk, const Line& line,
                            const float* in, const Runs::Run& run) {
  Vec acc[P][NV];
  copy_block(acc, sums);
  Tile tile = chunk.tile;
  tile.data += run.tile;
  if constexpr (kPacks) {
    accumulate(acc, in + run.in, line.in_pitch, 1, tile, run.depth);
  } else {
    accumulate_contiguous(acc, in + run.in, line.in_pitch, tile, run.depth);
  }
  copy_block(sums, acc);
}
#undef NNLIB_RUN_CALL

template <size_t P, size_t NV>
NNLIB_ALWAYS_INLINE void conv_block(const Chunk& chunk, const Line& line, const Runs& runs,
                                    size_t pixel) {
  float* out = line.out + pixel * line.out_pitch + chunk.columns.first;
  const float* in = runs.in + pixel * line.in_pitch;
  Vec acc[P][NV];
  if (chunk.bias != nullptr) {
    load_block(acc, chunk.bias, 0, kLanes);
  } else {
    load_block(acc, out, line.out_pitch, chunk.columns.lanes);
  }
  for (size_t i = 0; i < runs.count; ++i) {
    add_run(acc, chunk, line, in, runs.run[i]);
  }
  store_block(out, acc, line.out_pitch, chunk.columns.lanes);
}

template <size_t NV, size_t P = kBlockRows<NV>>
NNLIB_ALWAYS_INLINE void conv_pixels(const Chunk& chunk, const Line& line, const Runs& runs,
                                     size_t pixel = 0) {
  for (; pixel + P <= line.count; pixel += P) {
    conv_block<P, NV>(chunk, line, runs, pixel);
  }
  if constexpr (P > 1) {
    conv_pixels<NV, P / 2>(chunk, line, runs, pixel);
  }
}

template <size_t NV = kTileVectors>
NNLIB_ALWAYS_INLINE void conv_columns(const Chunk& chunk, const Line& line, const Runs& runs) {
  if (chunk.columns.vectors == NV) {
    conv_pixels<NV>(chunk, line, runs);
  } else if constexpr (NV > 1) {
    conv_columns<NV / 2>(chunk, line, runs);
  }
}

inline void conv_line(const Conv2d& conv, const Chunk& chunk, const Line& line) {
  conv_columns(chunk, line, runs_of(conv, chunk, line.rows, line.columns));
}

// All pixels over one chunk: complete windows row by row, then the cut ones left and right, which
// share their taps with those above and below.
NNLIB_ALWAYS_INLINE void conv_sweep(const Conv2d& conv, const Chunk& chunk) {
  const Span inner_x = complete_windows(conv.x);
  const Span inner_y = complete_windows(conv.y);
  for (uint32_t y = 0; y < conv.y.out && inner_x.begin < inner_x.end; ++y) {
    conv_line(conv, chunk, line_along_x(conv, inner_x.begin, y, inner_x.end - inner_x.begin));
  }
  for (uint32_t x = 0; x < conv.x.out; ++x) {
    if (x >= inner_x.begin && x < inner_x.end) {
      continue;
    }
    for (uint32_t y = 0; y < conv.y.out;) {
      const uint32_t count = y == inner_y.begin && y < inner_y.end ? inner_y.end - y : 1;
      conv_line(conv, chunk, line_along_y(conv, x, y, count));
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

// How much of the depth makes the chunk from `first` on: so many whole runs, or an equal part of
// one.
inline size_t chunk_depth(const Conv2d& conv, bool row_runs, size_t first) {
  const size_t row = size_t{conv.x.taps} * conv.in_channels;
  const size_t run = row_runs ? row : conv.in_channels;
  const size_t left = row * conv.y.taps - first;
  if (run <= kTileDepth) {
    const size_t runs = run == 0 ? 0 : std::min(kTileDepth / run, kMostRuns);
    return std::min(runs * run, left);
  }
  const size_t parts = (run + kTileDepth - 1) / kTileDepth;
  return std::min({(run + parts - 1) / parts, run - first % run, left});
}

static void conv2d(const Conv2d& conv) {
  TileBuffer buffer;
  const size_t total = size_t{conv.y.taps} * conv.x.taps * conv.in_channels;
  for (size_t channel = 0; channel < conv.out_channels;) {
    float bias[kTileColumns] = {};
    Chunk chunk(conv, channel, buffer.data, bias);
    const Columns& columns = chunk.columns;
    if (conv.bias != nullptr) {
      std::copy_n(conv.bias + columns.first, (columns.vectors - 1) * kLanes + columns.lanes, bias);
    }
    do {
      chunk.depth = chunk_depth(conv, chunk.row_runs, chunk.first);
      if (kPacks) {
        pack_weights(buffer.data, conv, columns, chunk.first, chunk.depth);
      }
      conv_sweep(conv, chunk);
      chunk.bias = nullptr;
      chunk.first += chunk.depth;
    } while (chunk.first < total);
    channel = columns.next;
  }
}
