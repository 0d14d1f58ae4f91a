// SPDX-License-Identifier: MIT
#include "layers_quantized/layers_conv2d_quarn_fixed.h"

#include "kernels/arm_convolve_1x1_HWC_q7_fast_nonsquare.h"
#include "kernels/arm_convolve_HWC_q15.h"
#include "kernels/arm_convolve_HWC_q7_RGB.h"
#include "kernels/arm_convolve_HWC_q7_basic_nonsquare.h"
#include "kernels/arm_depthwise_separable_conv_HWC_q7_nonsquare.h"
#include "kernels/ko_fxp_convolve_HWC_q15_nonsquare.h"
#include "kernels/ko_fxp_convolve_HWC_q7_fast_nonsquare.h"
#include "kernels/ko_fxp_depthwise_conv_HWC_q7_nonsquare.h"
#include "layers_quantized/conv2d_fixed_choice.hpp"
#include "layers_quantized/conv2d_rows.hpp"
#include "layers_quantized/fixed_scale.hpp"

namespace nnlib {
namespace {

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
      // Any channels: as arm_convolve_HWC_q15_basic, which takes one column where there is room for
      // two.
      return status != ARM_MATH_SIZE_MISMATCH ? status : call(ko_fxp_convolve_HWC_q15_nonsquare, c);
    }
    case FixedConvKernel::kRowsQ15:
      return call(ko_fxp_convolve_HWC_q15_nonsquare, c);
    case FixedConvKernel::kUnsupported:
      break;
  }
  core_hang();
}

FixedConvShape shape_of(const ai_layer_conv2d& layer, const ConvGeometry& geometry) {
  const auto bits = [](const ai_tensor& t) { return ai_fmt_get_bits(ai_tensor_format(&t)); };
  const ai_tensor* bias = optional_tensor(layer.base, AI_CHAIN_WEIGHTS, 1);
  const uint32_t in = bits(layer_input(layer.base));
  const bool same = bits(layer_weights(layer.base)) == in && bits(layer_output(layer.base)) == in &&
                    (bias == nullptr || bits(*bias) == in);
  return {same ? in : 0, layer.groups, geometry};
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
  const ConvGeometry& g = c.shape.geometry;
  const ConvRow alone = conv_row(g, y);
  FixedConvolution row = c;
  row.shape.geometry = alone.geometry;
  row.in = static_cast<const uint8_t*>(c.in) +
           size_t{alone.first_row} * g.in_width * g.in_channels * (c.shape.bits / 8);
  row.out = out;
  return row;
}

ai_size scratch_bytes(const FixedConvShape& shape, bool by_rows) {
  const FixedConvKernel kernel = choose_fixed_conv(shape, by_rows);
  return fixed_conv_scratch_elements(kernel, shape.geometry) * ai_size{sizeof(q15_t)};
}

}  // namespace
}  // namespace nnlib

void forward_conv2d_fixed(ai_layer* layer) {
  const ai_layer_conv2d& conv = nnlib::layer_record<ai_layer_conv2d>(layer);
  const nnlib::FixedConvShape shape = nnlib::shape_of(conv, nnlib::conv_geometry(conv));
  const nnlib::FixedConvKernel kernel = nnlib::choose_fixed_conv(shape, /*by_rows=*/false);
  nnlib::convolve(nnlib::convolution_of(conv, shape, kernel, 0), conv,
                  *nnlib::layer_output(*layer).data);
}

void forward_conv2d_nl_pool_fixed(ai_layer* layer) {
  const ai_layer_conv2d_nl_pool& fused = nnlib::layer_record<ai_layer_conv2d_nl_pool>(layer);
  const ai_layer_conv2d& conv = fused.base;
  const nnlib::FixedConvShape shape = nnlib::shape_of(conv, nnlib::fused_conv_geometry(conv));
  const nnlib::FixedConvKernel kernel = nnlib::choose_fixed_conv(shape, /*by_rows=*/true);
  if (kernel == nnlib::FixedConvKernel::kUnsupported) {
    core_hang();  // even without a row to make
  }
  const nnlib::FixedConvolution whole = nnlib::convolution_of(conv, shape, kernel, 1);
  const ai_array& output = *nnlib::layer_output(*layer).data;
  nnlib::pool_convolved_rows(fused, shape.geometry, shape.bits / 8, [&](uint8_t* row, uint32_t y) {
    nnlib::convolve(nnlib::row_of(whole, y, row), conv, output);
  });
}

ai_size ai_conv2d_fixed_scratch_size(const ai_layer_conv2d* layer) {
  return nnlib::scratch_bytes(nnlib::shape_of(*layer, nnlib::conv_geometry(*layer)),
                              /*by_rows=*/false);
}

ai_size ai_conv2d_nl_pool_fixed_scratch_size(const ai_layer_conv2d_nl_pool* layer) {
  const ai_layer_conv2d& conv = layer->base;
  return nnlib::scratch_bytes(nnlib::shape_of(conv, nnlib::fused_conv_geometry(conv)),
                              /*by_rows=*/true);
}
