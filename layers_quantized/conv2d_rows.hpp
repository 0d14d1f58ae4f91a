// SPDX-License-Identifier: MIT
// The geometry of quantized convolution layers, and convolutions that are pooled row by row.
#ifndef NNLIB_LAYERS_QUANTIZED_CONV2D_ROWS_HPP
#define NNLIB_LAYERS_QUANTIZED_CONV2D_ROWS_HPP

#include <algorithm>

#include "kernels/conv_geometry.hpp"
#include "kernels/pool_geometry.hpp"
#include "layers/layer_tensors.hpp"
#include "layers/layers_conv2d_generic_float.h"
#include "layers/pooled_rows.hpp"

namespace nnlib {

// Places of filter_pad and pool_pad.
enum Pad : uint32_t { kPadTop, kPadLeft, kPadBottom };

// The output width and height are those of the convolved map.
inline ConvGeometry conv_geometry(const ai_layer_conv2d& layer, uint32_t out_width,
                                  uint32_t out_height) {
  const MapDims in = map_dims(layer_input(layer.base));
  const uint32_t* kernel = layer_weights(layer.base).shape.data + 1;
  const uint32_t* pad = layer.filter_pad.data;
  return {in.width,
          in.height,
          in.channels,
          map_dims(layer_output(layer.base)).channels,
          kernel[0],
          kernel[1],
          pad[kPadLeft],
          pad[kPadTop],
          layer.filter_stride[0] & 0xFFFFu,
          layer.filter_stride[1] & 0xFFFFu,
          out_width,
          out_height};
}

inline ConvGeometry conv_geometry(const ai_layer_conv2d& layer) {
  const MapDims out = map_dims(layer_output(layer.base));
  return conv_geometry(layer, out.width, out.height);
}

// Of the convolution inside a fused layer, whose scratch 0 is a window of its rows.
inline ConvGeometry fused_conv_geometry(const ai_layer_conv2d& layer) {
  ConvGeometry g = conv_geometry(layer, map_dims(layer_scratch(layer.base)).width, 0);
  g.out_height = window_positions(g.in_height + g.pad_y + layer.filter_pad.data[kPadBottom],
                                  g.kernel_height, g.stride_y);
  return g;
}

// A convolution of output row y alone, and the first row of the input that it is given.
struct ConvRow {
  ConvGeometry geometry;
  uint32_t first_row;
};
inline ConvRow conv_row(ConvGeometry g, uint32_t y) {
  const int64_t start = int64_t{y} * g.stride_y - g.pad_y;
  const auto above = static_cast<uint32_t>(std::clamp<int64_t>(start, 0, g.in_height));
  g.in_height -= above;
  g.pad_y = static_cast<uint32_t>(std::max<int64_t>(-start, 0));
  g.out_height = 1;
  return {g, above};
}

// Pools the map of the convolution g into the layer's output, elements of element_bytes each:
// make_row(row, y) writes row y of the map. pool_func gets arrays like the output's.
template <class MakeRow>
void pool_convolved_rows(const ai_layer_conv2d_nl_pool& layer, const ConvGeometry& g,
                         size_t element_bytes, MakeRow make_row) {
  const ai_tensor& window = layer_scratch(layer.base.base);
  const ai_tensor& output = layer_output(layer.base.base);
  const MapDims out = map_dims(output);
  const uint32_t* pad = layer.pool_pad.data;
  const PoolGeometry pooling = {
      g.out_width,          g.out_height,  g.out_channels, layer.pool_size[0],
      layer.pool_size[1],   pad[kPadLeft], pad[kPadTop],   layer.pool_stride[0],
      layer.pool_stride[1], out.width,     out.height};
  const uint32_t row_elements = std::max(g.out_width * g.out_channels, uint32_t{1});
  const size_t row_bytes = row_elements * element_bytes;
  const size_t window_bytes = ai_array_get_data_byte_size(window.data->format, window.data->size);
  const RowWindow rows = {tensor_data<uint8_t>(window), row_bytes,
                          static_cast<uint32_t>(window_bytes / row_bytes)};
  ai_array convolved = *output.data;
  ai_array pooled = *output.data;
  const auto u16 = [](uint32_t size) { return static_cast<uint16_t>(size); };
  pool_row_by_row(
      pooling.out_height, [&](uint32_t y) { return pooling.rows(y); }, rows, make_row,
      [&](uint8_t* first, const Window& of, uint32_t y) {
        convolved.data = first;
        pooled.data = tensor_data<uint8_t>(output) +
                      size_t{y} * pooling.out_width * pooling.channels * element_bytes;
        layer.pool_func(&convolved, u16(pooling.in_width), u16(of.count), u16(pooling.channels),
                        u16(pooling.pool_width), u16(pooling.pool_height), u16(pooling.pad_x),
                        u16(of.tap), u16(pooling.stride_x), u16(pooling.stride_y),
                        u16(pooling.out_width), 1, &pooled);
      });
}

}  // namespace nnlib

#endif
