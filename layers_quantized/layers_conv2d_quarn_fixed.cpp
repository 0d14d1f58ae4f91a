#include "layers_quantized/layers_conv2d_quarn_fixed.h"

#include <algorithm>

#include "kernels/arm_convolve_1x1_HWC_q7_fast_nonsquare.h"
#include "kernels/arm_convolve_HWC_q15.h"
#include "kernels/arm_convolve_HWC_q7_RGB.h"
#include "kernels/arm_convolve_HWC_q7_basic_nonsquare.h"
#include "kernels/arm_depthwise_separable_conv_HWC_q7_nonsquare.h"
#include "kernels/ko_fxp_convolve_HWC_q15_nonsquare.h"
#include "kernels/ko_fxp_convolve_HWC_q7_fast_nonsquare.h"
#include "kernels/ko_fxp_depthwise_conv_HWC_q7_nonsquare.h"
#include "layers/pooled_rows.hpp"
#include "layers_quantized/conv2d_fixed_choice.hpp"
#include "layers_quantized/fixed_scale.hpp"

namespace nnlib {
namespace {

enum Pad : uint32_t { kTop, kLeft, kBottom };

// A convolution with everything looked up.
struct FixedConvolution {
  FixedConvKernel kernel;
  FixedConvShape shape;
  const void* in;
  const void* weights;
  const void* bias;  // or null
  FixedScale scale;
  void* out;
  q15_t* columns;
};

template <class T>
using AnyShapeKernel = arm_status(const T*, uint16_t, uint16_t, uint16_t, const T*, uint16_t,
                                  uint16_t, uint16_t, uint16_t, uint16_t, uint16_t, uint16_t,
                                  const T*, uint16_t, uint16_t, T*, uint16_t, uint16_t, q15_t*,
                                  q7_t*);
template <class T>
using SquareKernel = arm_status(const T*, uint16_t, uint16_t, const T*, uint16_t, uint16_t,
                                uint16_t, uint16_t, const T*, uint16_t, uint16_t, T*, uint16_t,
                                q15_t*, q7_t*);

uint16_t u16(uint32_t size) {
  return static_cast<uint16_t>(size);
}

template <class T>
arm_status call(AnyShapeKernel<T>* kernel, const FixedConvolution& c) {
  const ConvGeometry& g = c.shape.geometry;
  return kernel(static_cast<const T*>(c.in), u16(g.in_width), u16(g.in_height), u16(g.in_channels),
                static_cast<const T*>(c.weights), u16(g.out_channels), u16(g.kernel_width),
                u16(g.kernel_height), u16(g.pad_x), u16(g.pad_y), u16(g.stride_x), u16(g.stride_y),
                static_cast<const T*>(c.bias), c.scale.bias_shift, c.scale.out_shift,
                static_cast<T*>(c.out), u16(g.out_width), u16(g.out_height), c.columns, nullptr);
}

template <class T>
arm_status call(SquareKernel<T>* kernel, const FixedConvolution& c) {
  const ConvGeometry& g = c.shape.geometry;
  return kernel(static_cast<const T*>(c.in), u16(g.in_width), u16(g.in_channels),
                static_cast<const T*>(c.weights), u16(g.out_channels), u16(g.kernel_width),
                u16(g.pad_x), u16(g.stride_x), static_cast<const T*>(c.bias), c.scale.bias_shift,
                c.scale.out_shift, static_cast<T*>(c.out), u16(g.out_width), c.columns, nullptr);
}

arm_status run(const FixedConvolution& c) {
  switch (c.kernel) {
    case FixedConvKernel::kDepthwiseQ7:
      return call(arm_depthwise_separable_conv_HWC_q7_nonsquare, c);
    case FixedConvKernel::kDepthwiseMultiplierQ7:
      return call(ko_fxp_depthwise_conv_HWC_q7_nonsquare, c);
    case FixedConvKernel::kRgbQ7:
      return call(arm_convolve_HWC_q7_RGB, c);
    case FixedConvKernel::kPointwiseQ7:
      return call(arm_convolve_1x1_HWC_q7_fast_nonsquare, c);
    case FixedConvKernel::kFastQ7:
      return call(ko_fxp_convolve_HWC_q7_fast_nonsquare, c);
    case FixedConvKernel::kBasicQ7:
      return call(arm_convolve_HWC_q7_basic_nonsquare, c);
    case FixedConvKernel::kSquareQ15: {
      const arm_status status = call(arm_convolve_HWC_q15_fast, c);
      return status != ARM_MATH_SIZE_MISMATCH ? status : call(arm_convolve_HWC_q15_basic, c);
    }
    case FixedConvKernel::kRowsQ15:
      return call(ko_fxp_convolve_HWC_q15_nonsquare, c);
    case FixedConvKernel::kUnsupported:
      break;
  }
  core_hang();
}

// The output width and height are those of the convolved map.
FixedConvShape shape_of(const ai_layer_conv2d& layer, uint32_t out_width, uint32_t out_height) {
  const ai_tensor& input = layer_input(layer.base);
  const MapDims in = map_dims(input);
  const uint32_t* kernel = layer_weights(layer.base).shape.data + 1;
  const uint32_t* pad = layer.filter_pad.data;
  return {ai_fmt_get_bits(ai_tensor_format(&input)),
          layer.groups,
          {in.width, in.height, in.channels, map_dims(layer_output(layer.base)).channels, kernel[0],
           kernel[1], pad[kLeft], pad[kTop], layer.filter_stride[0] & 0xFFFFu,
           layer.filter_stride[1] & 0xFFFFu, out_width, out_height}};
}

// scratch_index is where the kernel finds its column buffer, if it needs one.
FixedConvolution convolution_of(const ai_layer_conv2d& layer, const FixedConvShape& shape,
                                FixedConvKernel kernel, uint32_t scratch_index) {
  const ai_tensor& input = layer_input(layer.base);
  const ai_tensor& output = layer_output(layer.base);
  const ai_tensor& weights = layer_weights(layer.base);
  const ai_tensor* bias = optional_tensor(layer.base, AI_CHAIN_WEIGHTS, 1);
  const bool columns = fixed_conv_scratch_elements(kernel, shape.geometry) != 0;
  return {kernel,
          shape,
          ai_tensor_data(&input),
          ai_tensor_data(&weights),
          ai_tensor_data(bias),
          fixed_scale(input, weights, bias, output),
          ai_tensor_data(&output),
          columns ? tensor_data<q15_t>(layer_scratch(layer.base, scratch_index)) : nullptr};
}

// The kernel, the shift behind it and nl_func, which gets an array like the given one.
void convolve(const FixedConvolution& c, const ai_layer_conv2d& layer, ai_array array) {
  const ConvGeometry& g = c.shape.geometry;
  run(c);
  fixed_post_shift(c.out, c.shape.bits, c.scale, g.pixels() * g.out_channels);
  if (layer.nl_func == nullptr) {
    return;
  }
  const ai_tensor* params = optional_tensor(layer.base, AI_CHAIN_WEIGHTS, 2);
  const ai_array* values = params != nullptr ? params->data : layer.nl_params;
  uint8_t* pixel = static_cast<uint8_t*>(c.out);
  for (uint32_t i = 0; i < g.pixels(); ++i, pixel += g.out_channels * (c.shape.bits / 8)) {
    array.data = pixel;
    layer.nl_func(&array, &array, g.out_channels, values != nullptr ? values->data : nullptr);
  }
}

// The same convolution, of row y alone and to `out`.
FixedConvolution row_of(const FixedConvolution& c, uint32_t y, void* out) {
  FixedConvolution row = c;
  ConvGeometry& g = row.shape.geometry;
  const int64_t start = int64_t{y} * g.stride_y - g.pad_y;
  const uint32_t above = static_cast<uint32_t>(std::clamp<int64_t>(start, 0, g.in_height));
  row.in = static_cast<const uint8_t*>(c.in) +
           size_t{above} * g.in_width * g.in_channels * (c.shape.bits / 8);
  row.out = out;
  g.in_height -= above;
  g.pad_y = static_cast<uint32_t>(std::max<int64_t>(-start, 0));
  g.out_height = 1;
  return row;
}

PoolGeometry pooling_of(const ai_layer_conv2d_nl_pool& layer, const ConvGeometry& conv) {
  const MapDims out = map_dims(layer_output(layer.base.base));
  const uint32_t* pad = layer.pool_pad.data;
  return {conv.out_width,       conv.out_height, conv.out_channels, layer.pool_size[0],
          layer.pool_size[1],   pad[kLeft],      pad[kTop],         layer.pool_stride[0],
          layer.pool_stride[1], out.width,       out.height};
}

// Of the convolution inside a fused layer.
FixedConvShape convolved_shape(const ai_layer_conv2d& layer) {
  FixedConvShape shape = shape_of(layer, map_dims(layer_scratch(layer.base)).width, 0);
  ConvGeometry& g = shape.geometry;
  const uint32_t padded = g.in_height + g.pad_y + layer.filter_pad.data[kBottom];
  g.out_height = padded < g.kernel_height ? 0 : (padded - g.kernel_height) / g.stride_y + 1;
  return shape;
}

ai_size scratch_bytes(const FixedConvShape& shape, bool by_rows) {
  const FixedConvKernel kernel = choose_fixed_conv(shape, by_rows);
  return fixed_conv_scratch_elements(kernel, shape.geometry) * ai_size{sizeof(q15_t)};
}

void convolve_and_pool(const ai_layer_conv2d_nl_pool& layer) {
  const ai_layer_conv2d& conv = layer.base;
  const ai_tensor& window = layer_scratch(conv.base);
  const ai_array& output = *layer_output(conv.base).data;
  const FixedConvShape shape = convolved_shape(conv);
  const FixedConvolution whole =
      convolution_of(conv, shape, choose_fixed_conv(shape, /*by_rows=*/true), 1);
  const PoolGeometry g = pooling_of(layer, shape.geometry);
  const uint32_t row_elements = std::max(g.in_width * g.channels, uint32_t{1});
  const size_t element_bytes = shape.bits / 8;
  const RowWindow rows = {tensor_data<uint8_t>(window), row_elements * element_bytes,
                          ai_tensor_size(&window) / row_elements};
  ai_array convolved = output;
  ai_array pooled = output;
  pool_row_by_row(
      g, rows, [&](uint8_t* row, uint32_t y) { convolve(row_of(whole, y, row), conv, output); },
      [&](uint8_t* first, uint32_t count, uint32_t above, uint32_t out_y) {
        convolved.data = first;
        pooled.data = static_cast<uint8_t*>(output.data) +
                      size_t{out_y} * g.out_width * g.channels * element_bytes;
        layer.pool_func(&convolved, u16(g.in_width), u16(count), u16(g.channels), u16(g.pool_width),
                        u16(g.pool_height), u16(g.pad_x), u16(above), u16(g.stride_x),
                        u16(g.stride_y), u16(g.out_width), 1, &pooled);
      });
}

}  // namespace
}  // namespace nnlib

void forward_conv2d_fixed(ai_layer* layer) {
  const ai_layer_conv2d& conv = nnlib::layer_record<ai_layer_conv2d>(layer);
  const ai_tensor& output = nnlib::layer_output(*layer);
  const nnlib::MapDims out = nnlib::map_dims(output);
  const nnlib::FixedConvShape shape = nnlib::shape_of(conv, out.width, out.height);
  const nnlib::FixedConvKernel kernel = nnlib::choose_fixed_conv(shape, /*by_rows=*/false);
  nnlib::convolve(nnlib::convolution_of(conv, shape, kernel, 0), conv, *output.data);
}

void forward_conv2d_nl_pool_fixed(ai_layer* layer) {
  nnlib::convolve_and_pool(nnlib::layer_record<ai_layer_conv2d_nl_pool>(layer));
}

ai_size ai_conv2d_fixed_scratch_size(const ai_layer_conv2d* layer) {
  const nnlib::MapDims out = nnlib::map_dims(nnlib::layer_output(layer->base));
  return nnlib::scratch_bytes(nnlib::shape_of(*layer, out.width, out.height), /*by_rows=*/false);
}

ai_size ai_conv2d_nl_pool_fixed_scratch_size(const ai_layer_conv2d_nl_pool* layer) {
  return nnlib::scratch_bytes(nnlib::convolved_shape(layer->base), /*by_rows=*/true);
}
