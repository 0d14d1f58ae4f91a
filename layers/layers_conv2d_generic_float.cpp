// SPDX-License-Identifier: MIT
#include "layers/layers_conv2d_generic_float.h"

#include <algorithm>
#include <numeric>

#include "kernels/ai_dictionary.h"
#include "kernels/float_conv2d.hpp"
#include "kernels/float_depthwise.hpp"
#include "kernels/pool_geometry.hpp"
#include "layers/dictionary_weights.hpp"
#include "layers/layer_tensors.hpp"
#include "layers/pooled_rows.hpp"

namespace nnlib {
namespace {

constexpr uint32_t kPadTop = 0;
constexpr uint32_t kPadLeft = 1;
constexpr uint32_t kPadBottom = 2;
constexpr uint32_t kPadRight = 3;

// The record's options of one direction.
struct Filter {
  uint32_t taps;
  uint32_t stride;
  uint32_t dilation;
  uint32_t pad;  // before the map

  // Outputs of a map of `in` positions with pad_after positions of padding behind it.
  uint32_t outputs(uint32_t in, uint32_t pad_after) const {
    return window_positions(pad + in + pad_after, (taps - 1) * dilation + 1, stride);
  }
};

// A convolution layer, looked up.
struct Convolution {
  const float* in;
  const float* weights;
  const float* bias;  // or null
  MapDims in_dims;
  uint32_t out_channels;
  uint32_t groups;
  uint32_t tap_channels;  // weights of a tap side by side: C_in / groups, depthwise C
  bool depthwise;
  Filter x;
  Filter y;
};

Filter filter_of(const ai_layer_conv2d& layer, uint32_t direction, uint32_t pad) {
  return {layer_weights(layer.base).shape.data[1 + direction],
          layer.filter_stride[direction] & 0xFFFFu, layer.dilation[direction] & 0xFFFFu,
          layer.filter_pad.data[pad]};
}
Filter filter_x(const ai_layer_conv2d& layer) {
  return filter_of(layer, 0, kPadLeft);
}
Filter filter_y(const ai_layer_conv2d& layer) {
  return filter_of(layer, 1, kPadTop);
}

// Expands weights that are indices into scratch tensor scratch_index.
const float* float_weights(const ai_layer& layer, uint32_t scratch_index) {
  const ai_tensor& weights = layer_weights(layer);
  const float* dictionary = weights_dictionary(weights);
  if (dictionary == nullptr) {
    return tensor_data<const float>(weights);
  }
  const ai_array& scratch = *layer_scratch(layer, scratch_index).data;
  float* expanded = static_cast<float*>(scratch.data);
  ai_dict_decompress_f32(expanded, tensor_data<const uint8_t>(weights), dictionary,
                         weights_index_bits(weights), weights.shape.data[0], scratch.size);
  return expanded;
}

Convolution convolution_of(const ai_layer_conv2d& layer, uint32_t scratch_index) {
  const ai_tensor& in = layer_input(layer.base);
  const ai_tensor& weights = layer_weights(layer.base);
  const ai_tensor* bias = optional_tensor(layer.base, AI_CHAIN_WEIGHTS, 1);
  const MapDims in_dims = map_dims(in);
  const uint32_t tap_channels = weights.shape.data[0];
  return {tensor_data<const float>(in),
          float_weights(layer.base, scratch_index),
          bias != nullptr ? tensor_data<const float>(*bias) : nullptr,
          in_dims,
          map_dims(layer_output(layer.base)).channels,
          layer.groups,
          tap_channels,
          layer.groups > 1 && tap_channels == in_dims.channels && layer.groups == tap_channels,
          filter_x(layer),
          filter_y(layer)};
}

// The positions of one direction: what differs between a convolution and its transpose.
struct Positions {
  uint32_t out_first;
  uint32_t out_step;
  uint32_t out;
  int64_t start;
  uint32_t stride;
  uint32_t taps;
  uint32_t dilation;
  uint32_t first_tap;  // of the kernel
  int32_t tap_step;
};

Positions forward_positions(const Filter& filter, uint32_t first, uint32_t count) {
  return {0,
          1,
          count,
          int64_t{first} * filter.stride - filter.pad,
          filter.stride,
          filter.taps,
          filter.dilation,
          0,
          1};
}

// The outputs phase, phase + stride, ... of a transposed convolution. Output o sees input i through
// tap k where o + pad = i * stride + k * dilation: neighbouring outputs of a phase see neighbouring
// inputs through the same taps, every (stride / gcd)th of them, later taps earlier inputs.
Positions transposed_positions(const Filter& filter, uint32_t phase, uint32_t out) {
  const uint32_t common = std::gcd(filter.stride, filter.dilation);
  const uint32_t tap_step = filter.stride / common;
  const int64_t reach = int64_t{phase} + filter.pad;
  uint32_t tap = 0;  // the first of the phase, if it has any
  while (tap < tap_step && (reach - int64_t{tap} * filter.dilation) % filter.stride != 0) {
    ++tap;
  }
  const uint32_t outputs = (out - phase + filter.stride - 1) / filter.stride;
  if (tap == tap_step || tap >= filter.taps) {
    return {phase, filter.stride, outputs, 0, 1, 0, 1, 0, 0};
  }
  const uint32_t last = (filter.taps - 1 - tap) / tap_step;
  const uint32_t dilation = filter.dilation / common;
  const int64_t first_in = (reach - int64_t{tap} * filter.dilation) / filter.stride;
  return {phase,
          filter.stride,
          outputs,
          first_in - int64_t{last} * dilation,
          1,
          last + 1,
          dilation,
          tap + last * tap_step,
          -static_cast<int32_t>(tap_step)};
}

ConvAxis axis_of(const Positions& p, uint32_t in, size_t in_pitch, size_t out_pitch,
                 size_t tap_pitch) {
  return {in,
          p.out,
          p.start,
          p.stride,
          p.taps,
          p.dilation,
          in_pitch,
          p.out_step * out_pitch,
          p.tap_step * static_cast<ptrdiff_t>(tap_pitch)};
}

// Computes the given outputs of a dense map of width out_width at out.
void convolve(const Convolution& c, const Positions& x, const Positions& y, uint32_t out_width,
              float* out) {
  const size_t in_row = size_t{c.in_dims.width} * c.in_dims.channels;
  const size_t out_row = size_t{out_width} * c.out_channels;
  const size_t tap_row = size_t{c.x.taps} * c.tap_channels;
  const uint32_t groups = c.depthwise ? 1 : c.groups;
  const uint32_t out_channels = c.out_channels / groups;
  const size_t weights_pitch = c.depthwise ? 1 : tap_row * c.y.taps;
  Conv2d conv = {c.in,
                 c.weights + y.first_tap * tap_row + size_t{x.first_tap} * c.tap_channels,
                 c.bias,
                 out + y.out_first * out_row + size_t{x.out_first} * c.out_channels,
                 c.tap_channels,
                 out_channels,
                 weights_pitch,
                 axis_of(x, c.in_dims.width, c.in_dims.channels, c.out_channels, c.tap_channels),
                 axis_of(y, c.in_dims.height, in_row, out_row, tap_row)};
  if (c.depthwise) {
    depthwise_conv2d_f32(conv);
    return;
  }
  for (uint32_t group = 0; group < groups; ++group) {
    conv2d_f32(conv);
    conv.in += conv.in_channels;
    conv.weights += out_channels * weights_pitch;
    conv.bias += conv.bias != nullptr ? out_channels : 0;
    conv.out += out_channels;
  }
}

// The nonlinearity of a convolution layer and its parameters.
class Nonlinearity {
 public:
  explicit Nonlinearity(const ai_layer_conv2d& layer) : function_(layer.nl_func) {
    const ai_tensor* tensor = optional_tensor(layer.base, AI_CHAIN_WEIGHTS, 2);
    if (tensor != nullptr) {
      const uint32_t bytes = ai_array_get_byte_size(tensor->data->format, tensor->data->size);
      params_ = static_cast<const char*>(tensor->data->data);
      step_ = tensor->stride.data[AI_SHAPE_W];
      period_ = step_ == 0 || bytes == 0 ? 1 : (bytes + step_ - 1) / step_;
    } else if (layer.nl_params != nullptr) {
      params_ = static_cast<const char*>(layer.nl_params->data);
    }
  }

  // Applies it to the pixels of a row. Leaves the array's data at its data_start.
  void apply(ai_array& array, float* row, size_t width, uint32_t channels) const {
    if (function_ != nullptr) {
      for (size_t x = 0; x < width; ++x) {
        array.data = row + x * channels;
        const char* params = params_ != nullptr ? params_ + x % period_ * step_ : nullptr;
        function_(&array, &array, channels, params);
      }
    }
    array.data = array.data_start;
  }

 private:
  ai_nl_func function_;
  const char* params_ = nullptr;
  size_t step_ = 0;    // bytes from pixel to pixel
  size_t period_ = 1;  // pixels after which the parameters start again
};

void apply_to_rows(const ai_layer_conv2d& layer, float* out) {
  const Nonlinearity nonlinearity(layer);
  const ai_tensor& tensor = layer_output(layer.base);
  const MapDims dims = map_dims(tensor);
  for (size_t y = 0; y < dims.height; ++y) {
    nonlinearity.apply(*tensor.data, out + y * dims.width * dims.channels, dims.width,
                       dims.channels);
  }
}

uint16_t u16(uint32_t value) {
  return static_cast<uint16_t>(value);
}

PoolGeometry pooling_of(const ai_layer_conv2d_nl_pool& layer, uint32_t in_width,
                        uint32_t in_height) {
  const MapDims out = map_dims(layer_output(layer.base.base));
  return {in_width,
          in_height,
          out.channels,
          layer.pool_size[0],
          layer.pool_size[1],
          layer.pool_pad.data[kPadLeft],
          layer.pool_pad.data[kPadTop],
          layer.pool_stride[0],
          layer.pool_stride[1],
          out.width,
          out.height};
}

void convolve_and_pool(const ai_layer_conv2d_nl_pool& layer, ai_array& scratch, ai_array& output,
                       uint32_t width) {
  const Convolution c = convolution_of(layer.base, 1);
  const Nonlinearity nonlinearity(layer.base);
  const uint32_t height = c.y.outputs(c.in_dims.height, layer.base.filter_pad.data[kPadBottom]);
  const PoolGeometry g = pooling_of(layer, width, height);
  const uint32_t row_length = width * c.out_channels;
  const RowWindow window = {static_cast<uint8_t*>(scratch.data), row_length * sizeof(float),
                            row_length == 0 ? 0 : scratch.size / row_length};
  float* out = static_cast<float*>(output.data);
  pool_row_by_row(
      g, window,
      [&](uint8_t* data, uint32_t y) {
        float* row = reinterpret_cast<float*>(data);
        convolve(c, forward_positions(c.x, 0, width), forward_positions(c.y, y, 1), width, row);
        nonlinearity.apply(scratch, row, width, c.out_channels);
      },
      [&](uint8_t* rows, uint32_t count, uint32_t /*above*/, uint32_t y) {
        const uint32_t above = g.pad_y - std::min(g.pad_y, y * g.stride_y);
        scratch.data = rows;
        output.data = out + size_t{y} * g.out_width * g.channels;
        layer.pool_func(&scratch, u16(width), u16(count), u16(g.channels), u16(g.pool_width),
                        u16(g.pool_height), u16(g.pad_x), u16(above), u16(g.stride_x),
                        u16(g.stride_y), u16(g.out_width), 1, &output);
      });
}

}  // namespace
}  // namespace nnlib

void forward_conv2d(ai_layer* layer) {
  using namespace nnlib;
  const ai_layer_conv2d& record = layer_record<ai_layer_conv2d>(layer);
  const ai_tensor& output = layer_output(*layer);
  const MapDims out = map_dims(output);
  const Convolution convolution = convolution_of(record, 0);
  float* to = tensor_data<float>(output);
  convolve(convolution, forward_positions(convolution.x, 0, out.width),
           forward_positions(convolution.y, 0, out.height), out.width, to);
  apply_to_rows(record, to);
}

void forward_conv2d_transpose(ai_layer* layer) {
  using namespace nnlib;
  const ai_layer_conv2d& record = layer_record<ai_layer_conv2d>(layer);
  const ai_tensor& output = layer_output(*layer);
  const MapDims out = map_dims(output);
  Convolution convolution = convolution_of(record, 0);
  for (Filter* filter : {&convolution.x, &convolution.y}) {
    filter->stride = std::max(filter->stride, uint32_t{1});  // 0 serves a single input position
  }
  float* to = tensor_data<float>(output);
  for (uint32_t y = 0; y < std::min(convolution.y.stride, out.height); ++y) {
    for (uint32_t x = 0; x < std::min(convolution.x.stride, out.width); ++x) {
      convolve(convolution, transposed_positions(convolution.x, x, out.width),
               transposed_positions(convolution.y, y, out.height), out.width, to);
    }
  }
  apply_to_rows(record, to);
}

void forward_conv2d_nl_pool(ai_layer* layer) {
  using namespace nnlib;
  const ai_layer_conv2d_nl_pool& record = layer_record<ai_layer_conv2d_nl_pool>(layer);
  const ai_tensor& output = layer_output(*layer);
  const ai_tensor& scratch = layer_scratch(*layer);
  if (map_dims(output).height != 0) {
    convolve_and_pool(record, *scratch.data, *output.data, map_dims(scratch).width);
  }
  output.data->data = output.data->data_start;
  scratch.data->data = scratch.data->data_start;
}

ai_size ai_conv2d_scratch_size(const ai_layer_conv2d* layer) {
  const ai_tensor& weights = nnlib::layer_weights(layer->base);
  return nnlib::weights_dictionary(weights) != nullptr ? ai_shape_elements(&weights.shape) : 0;
}

ai_size ai_conv2d_nl_pool_scratch_size(const ai_layer_conv2d_nl_pool* layer) {
  using namespace nnlib;
  const ai_layer_conv2d& conv = layer->base;
  const MapDims in = map_dims(layer_input(conv.base));
  const uint32_t width = filter_x(conv).outputs(in.width, conv.filter_pad.data[kPadRight]);
  const uint32_t height = filter_y(conv).outputs(in.height, conv.filter_pad.data[kPadBottom]);
  const uint32_t rows = std::min(layer->pool_size[1], height);
  return width * rows * map_dims(layer_output(conv.base)).channels;
}
