// SPDX-License-Identifier: MIT
#include "layers/layers_conv2d_generic_float.h"

#include <algorithm>
#include <numeric>

#include "kernels/ai_dictionary.h"
#include "kernels/float_conv2d.hpp"
#include "kernels/float_depthwise.hpp"
#include "kernels/vector.hpp"
#include "kernels/window.hpp"
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
  // The direction's first `out` outputs.
  ConvAxis axis(uint32_t in, uint32_t out, size_t in_pitch, size_t out_pitch,
                uint32_t tap_pitch) const {
    return {in,       out,       -int64_t{pad},
            stride,   taps,      dilation,
            in_pitch, out_pitch, static_cast<ptrdiff_t>(tap_pitch)};
  }
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

// A convolution layer, looked up. (Filled in place and passed by reference: stacks are small.)
struct Convolution {
  Conv2d conv;  // of the first group
  uint32_t groups;
  bool depthwise;
};

// Both directions of a convolution into a dense map of out_width times out_height.
void set_axes(Conv2d& conv, const ai_layer_conv2d& layer, uint32_t out_width, uint32_t out_height) {
  const MapDims in = map_dims(layer_input(layer.base));
  const uint32_t out_channels = map_dims(layer_output(layer.base)).channels;
  const uint32_t tap_channels = layer_weights(layer.base).shape.data[0];
  const Filter x = filter_x(layer), y = filter_y(layer);
  conv.x = x.axis(in.width, out_width, in.channels, out_channels, tap_channels);
  conv.y = y.axis(in.height, out_height, size_t{in.width} * in.channels,
                  size_t{out_width} * out_channels, x.taps * tap_channels);
}

// Of all outputs of a dense map of out_width times out_height at out.
Convolution convolution_of(const ai_layer_conv2d& layer, uint32_t scratch_index, float* out,
                           uint32_t out_width, uint32_t out_height) {
  const ai_tensor& input = layer_input(layer.base);
  const ai_tensor* bias = optional_tensor(layer.base, AI_CHAIN_WEIGHTS, 1);
  const uint32_t* filter = layer_weights(layer.base).shape.data;
  const uint32_t tap_channels = filter[0];
  const bool depthwise =
      layer.groups > 1 && tap_channels == map_dims(input).channels && layer.groups == tap_channels;
  const uint32_t groups = depthwise ? 1 : layer.groups;
  Convolution c;
  c.conv.in = tensor_data<const float>(input);
  c.conv.weights = float_weights(layer.base, scratch_index);
  c.conv.bias = bias != nullptr ? tensor_data<const float>(*bias) : nullptr;
  c.conv.out = out;
  c.conv.in_channels = tap_channels;
  c.conv.out_channels = groups == 0 ? 0 : map_dims(layer_output(layer.base)).channels / groups;
  c.conv.weights_pitch = size_t{filter[1]} * tap_channels * filter[2];
  set_axes(c.conv, layer, out_width, out_height);
  c.groups = groups;
  c.depthwise = depthwise;
  return c;
}

void to_next_group(Conv2d& conv, ptrdiff_t groups = 1) {
  const auto outputs = groups * static_cast<ptrdiff_t>(conv.out_channels);
  conv.in += groups * static_cast<ptrdiff_t>(conv.in_channels);
  conv.weights += outputs * static_cast<ptrdiff_t>(conv.weights_pitch);
  conv.bias += conv.bias != nullptr ? outputs : 0;
  conv.out += outputs;
}

void convolve(Convolution& c) {
  if (c.depthwise) {
    depthwise_conv2d_f32(c.conv);
    return;
  }
  join_rows(c.conv);
  for (uint32_t group = 0; group < c.groups; ++group) {
    conv2d_f32(c.conv);
    to_next_group(c.conv);
  }
  to_next_group(c.conv, -static_cast<ptrdiff_t>(c.groups));
}

uint32_t phases(const ConvAxis& axis) {
  return std::max(axis.stride, uint32_t{1});  // 0 serves a single input position
}

// Turns one direction of a convolution into the outputs phase, phase + stride, ... of its
// transpose. Output o sees input i through tap k where o + pad = i * stride + k * dilation:
// neighbouring outputs of a phase see neighbouring inputs through the same taps, every
// (stride / gcd)th of them, later taps earlier inputs.
void take_phase(Conv2d& conv, ConvAxis& axis, uint32_t phase) {
  const uint32_t stride = phases(axis), dilation = axis.dilation;
  const uint32_t common = std::gcd(stride, dilation);
  const uint32_t tap_step = stride / common;
  const int64_t reach = phase - axis.start;
  uint32_t tap = 0;  // the first of the phase, if it has any
  while (tap < tap_step && (reach - int64_t{tap} * dilation) % stride != 0) {
    ++tap;
  }
  conv.out += phase * axis.out_pitch;
  axis.out = (axis.out - phase + stride - 1) / stride;
  axis.out_pitch *= stride;
  axis.stride = 1;
  if (tap == tap_step || tap >= axis.taps) {
    axis.taps = 0;
    return;
  }
  const uint32_t last = (axis.taps - 1 - tap) / tap_step;
  axis.dilation = dilation / common;
  axis.start = (reach - int64_t{tap} * dilation) / stride - int64_t{last} * axis.dilation;
  axis.taps = last + 1;
  conv.weights += static_cast<ptrdiff_t>(tap + last * tap_step) * axis.tap_pitch;
  axis.tap_pitch *= -static_cast<ptrdiff_t>(tap_step);
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

// Pools `count` rows of the scratch array, the first at `rows`, into row y of the output at `to`.
NNLIB_NOINLINE void pool_row(const ai_layer_conv2d_nl_pool& layer, float* to, void* rows,
                             uint32_t count, uint32_t y) {
  const ai_tensor& scratch = layer_scratch(layer.base.base);
  const ai_tensor& output = layer_output(layer.base.base);
  scratch.data->data = rows;
  output.data->data = to + size_t{y} * map_dims(output).width * map_dims(output).channels;
  const uint32_t* pad = layer.pool_pad.data;
  const uint32_t above = pad[kPadTop] - std::min(pad[kPadTop], y * layer.pool_stride[1]);
  layer.pool_func(scratch.data, u16(map_dims(scratch).width), u16(count),
                  u16(map_dims(output).channels), u16(layer.pool_size[0]), u16(layer.pool_size[1]),
                  u16(pad[kPadLeft]), u16(above), u16(layer.pool_stride[0]),
                  u16(layer.pool_stride[1]), u16(map_dims(output).width), 1, output.data);
}

NNLIB_NOINLINE void apply_to_row(const ai_layer_conv2d& layer, float* row) {
  const ai_tensor& scratch = layer_scratch(layer.base);
  Nonlinearity(layer).apply(*scratch.data, row, map_dims(scratch).width,
                            map_dims(layer_output(layer.base)).channels);
}

// (What is needed for a moment only, calls like this look up again: the convolution's stack comes
// on top of the caller's.)
NNLIB_NOINLINE uint32_t convolved_rows(const ai_layer_conv2d& layer) {
  return filter_y(layer).outputs(map_dims(layer_input(layer.base)).height,
                                 layer.filter_pad.data[kPadBottom]);
}

void convolve_and_pool(const ai_layer_conv2d_nl_pool& layer, const ai_array& scratch, float* to,
                       uint32_t width) {
  Convolution c = convolution_of(layer.base, 1, nullptr, width, 1);
  const MapDims out = map_dims(layer_output(layer.base.base));
  const uint32_t height = convolved_rows(layer.base);
  const uint32_t row_length = width * out.channels;
  const RowWindow window = {static_cast<uint8_t*>(scratch.data), row_length * sizeof(float),
                            row_length == 0 ? 0 : scratch.size / row_length};
  pool_row_by_row(
      out.height,
      [&](uint32_t y) {
        return clip_window(y, layer.pool_stride[1], layer.pool_pad.data[kPadTop],
                           layer.pool_size[1], height);
      },
      window,
      [&](uint8_t* data, uint32_t y) {
        c.conv.out = reinterpret_cast<float*>(data);
        c.conv.y.start =
            int64_t{y} * c.conv.y.stride - int64_t{layer.base.filter_pad.data[kPadTop]};
        convolve(c);
        apply_to_row(layer.base, c.conv.out);
      },
      [&](uint8_t* rows, const Window& of, uint32_t y) { pool_row(layer, to, rows, of.count, y); });
}

}  // namespace
}  // namespace nnlib

void forward_conv2d(ai_layer* layer) {
  using namespace nnlib;
  const ai_layer_conv2d& record = layer_record<ai_layer_conv2d>(layer);
  const ai_tensor& output = layer_output(*layer);
  const MapDims out = map_dims(output);
  float* to = tensor_data<float>(output);
  Convolution convolution = convolution_of(record, 0, to, out.width, out.height);
  convolve(convolution);
  apply_to_rows(record, to);
}

void forward_conv2d_transpose(ai_layer* layer) {
  using namespace nnlib;
  const ai_layer_conv2d& record = layer_record<ai_layer_conv2d>(layer);
  const ai_tensor& output = layer_output(*layer);
  const MapDims out = map_dims(output);
  float* to = tensor_data<float>(output);
  Convolution c = convolution_of(record, 0, to, out.width, out.height);
  const float* weights = c.conv.weights;
  const uint32_t phases_x = std::min(phases(c.conv.x), out.width);
  const uint32_t phases_y = std::min(phases(c.conv.y), out.height);
  for (uint32_t y = 0; y < phases_y; ++y) {
    for (uint32_t x = 0; x < phases_x; ++x) {
      c.conv.out = to;
      c.conv.weights = weights;
      set_axes(c.conv, record, out.width, out.height);
      take_phase(c.conv, c.conv.x, x);
      take_phase(c.conv, c.conv.y, y);
      convolve(c);
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
    convolve_and_pool(record, *scratch.data, tensor_data<float>(output), map_dims(scratch).width);
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
  const uint32_t rows = std::min(layer->pool_size[1], convolved_rows(conv));
  return width * rows * map_dims(layer_output(conv.base)).channels;
}
