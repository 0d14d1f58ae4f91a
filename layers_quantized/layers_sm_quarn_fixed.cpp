// SPDX-License-Identifier: MIT
#include "layers_quantized/layers_sm_quarn_fixed.h"

#include "kernels/arm_softmax.h"
#include "layers/layer_tensors.hpp"

namespace {

// Pixels of channels, one after the other.
void softmax(const ai_array& in, const ai_array& out, uint32_t channels, uint32_t pixels) {
  const uint16_t count = static_cast<uint16_t>(channels);
  for (size_t at = 0; pixels > 0; --pixels, at += channels) {
    if (ai_fmt_get_bits(in.format) == 8) {
      arm_softmax_q7(static_cast<const q7_t*>(in.data) + at, count,
                     static_cast<q7_t*>(out.data) + at);
    } else {
      arm_softmax_q15(static_cast<const q15_t*>(in.data) + at, count,
                      static_cast<q15_t*>(out.data) + at);
    }
  }
}

}  // namespace

void forward_sm_fixed(ai_layer* layer) {
  const ai_tensor& input = nnlib::layer_input(*layer);
  const nnlib::MapDims map = nnlib::map_dims(input);
  softmax(*input.data, *nnlib::layer_output(*layer).data, map.channels, map.width * map.height);
}

void sm_func_sm_array_fixed(ai_array* out, const ai_array* in, ai_size size,
                            const void* /*params*/) {
  softmax(*in, *out, size, 1);
}
