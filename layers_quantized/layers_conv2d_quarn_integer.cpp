// SPDX-License-Identifier: MIT
#include "layers_quantized/layers_conv2d_quarn_integer.h"

#include "layers_quantized/conv2d_integer_choice.hpp"
#include "layers_quantized/conv2d_rows.hpp"

namespace nnlib {
namespace {

IntegerForm form_of(const ai_layer_conv2d& layer) {
  return integer_form(layer_input(layer.base), layer_weights(layer.base));
}

// The kernel of a layer whose convolution has the geometry g, or null.
const IntegerConvKernel* kernel_of(const ai_layer_conv2d& layer, const ConvGeometry& g, bool rgb) {
  return integer_conv_kernel(form_of(layer), choose_integer_conv(g, layer.groups, rgb));
}

ai_size scratch_bytes(const ai_layer_conv2d& layer, const ConvGeometry& g, bool rgb) {
  const IntegerConvKernel* kernel = kernel_of(layer, g, rgb);
  if (kernel == nullptr) {
    return 0;
  }
  const uint32_t pairs =
      has_channels(form_of(layer)) ? LayerQuantization::scratch_size(g.out_channels) : 0;
  return aligned_to_word(kernel->scratch_size(g)) + pairs;
}

// A convolution ready to run: kernel chosen, pairs computed, scratch prepared.
class PreparedConvolution {
 public:
  PreparedConvolution(const ai_layer_conv2d& layer, const ConvGeometry& g, bool rgb,
                      uint32_t scratch_index)
      : kernel_(supported(kernel_of(layer, g, rgb))),
        scratch_(aligned_scratch(layer_scratch(layer.base, scratch_index))),
        quantization_(layer.base, form_of(layer), g.out_channels,
                      scratch_ + aligned_to_word(kernel_.scratch_size(g))),
        arguments_{g,
                   ai_tensor_data(&layer_input(layer.base)),
                   ai_tensor_data(&layer_weights(layer.base)),
                   static_cast<const int32_t*>(
                       ai_tensor_data(optional_tensor(layer.base, AI_CHAIN_WEIGHTS, 1))),
                   quantization_,
                   nullptr,
                   scratch_} {
    kernel_.prepare(arguments_);
  }
  PreparedConvolution(const PreparedConvolution&) = delete;
  PreparedConvolution& operator=(const PreparedConvolution&) = delete;

  void run(void* out) {
    arguments_.out = out;
    kernel_.run(arguments_);
  }

  void run_row(uint32_t y, void* out) const {
    const ConvRow part = conv_row(arguments_.geometry, y);
    IntegerConvolution row = arguments_;
    row.geometry = part.geometry;
    row.in = static_cast<const uint8_t*>(row.in) +
             size_t{part.first_row} * part.geometry.in_width * part.geometry.in_channels;
    row.out = out;
    kernel_.run(row);
  }

 private:
  static const IntegerConvKernel& supported(const IntegerConvKernel* kernel) {
    if (kernel == nullptr) {
      core_hang();
    }
    return *kernel;
  }

  const IntegerConvKernel& kernel_;
  uint8_t* scratch_;
  LayerQuantization quantization_;
  IntegerConvolution arguments_;
};

// Applies the layer's function, which gets arrays like the output's.
void apply_function(const ai_layer_conv2d& layer, void* from, void* to, ai_size size) {
  const ai_tensor* params = optional_tensor(layer.base, AI_CHAIN_WEIGHTS, 2);
  const ai_array* values = params != nullptr ? params->data : layer.nl_params;
  ai_array in = *layer_output(layer.base).data;
  ai_array out = in;
  in.data = from;
  out.data = to;
  layer.nl_func(&out, &in, size, values != nullptr ? values->data : nullptr);
}

}  // namespace
}  // namespace nnlib

void forward_conv2d_integer(ai_layer* layer) {
  const ai_layer_conv2d& conv = nnlib::layer_record<ai_layer_conv2d>(layer);
  const nnlib::ConvGeometry g = nnlib::conv_geometry(conv);
  nnlib::PreparedConvolution convolution(conv, g, /*rgb=*/true, 0);
  void* out = ai_tensor_data(&nnlib::layer_output(*layer));
  if (conv.nl_func == nullptr) {
    convolution.run(out);
    return;
  }
  void* map = ai_tensor_data(&nnlib::layer_scratch(*layer, 1));
  convolution.run(map);
  nnlib::apply_function(conv, map, out, g.pixels() * g.out_channels);
}

void forward_conv2d_nl_pool_integer(ai_layer* layer) {
  const auto& fused = nnlib::layer_record<ai_layer_conv2d_nl_pool>(layer);
  const nnlib::ConvGeometry g = nnlib::fused_conv_geometry(fused.base);
  const nnlib::PreparedConvolution convolution(fused.base, g, /*rgb=*/false, 1);
  nnlib::pool_convolved_rows(fused, g, 1, [&](uint8_t* row, uint32_t y) {
    convolution.run_row(y, row);
    if (fused.base.nl_func != nullptr) {
      nnlib::apply_function(fused.base, row, row, g.out_width * g.out_channels);
    }
  });
}

ai_size ai_conv2d_integer_scratch_size(const ai_layer_conv2d* layer) {
  return nnlib::scratch_bytes(*layer, nnlib::conv_geometry(*layer), /*rgb=*/true);
}

ai_size ai_conv2d_nl_pool_integer_scratch_size(const ai_layer_conv2d_nl_pool* layer) {
  return nnlib::scratch_bytes(layer->base, nnlib::fused_conv_geometry(layer->base),
                              /*rgb=*/false);
}
