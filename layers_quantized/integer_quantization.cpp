// SPDX-License-Identifier: MIT
#include "layers_quantized/integer_quantization.hpp"

#include "kernels/ko_requantize.h"

namespace nnlib {
namespace {

// The weights' zero points as the kernels take them. A record without them means zero points of 0
// only where one serves all channels; uint8 weights of several scales must have them, or it faults.
const uint8_t* weight_zeropoints(IntegerForm form, const ai_tensor& weights) {
  static constexpr uint8_t kNone = 0;
  const ai_intq_info* info = ai_tensor_intq(&weights);
  if (info != nullptr && info->zeropoint != nullptr) {
    return static_cast<const uint8_t*>(info->zeropoint);
  }
  if (form == IntegerForm::kUint8Channels) {
    core_fault();
  }
  return &kNone;
}

// Counts as an element of the form's activations.
int32_t zeropoint_of(IntegerForm form, const ai_tensor& tensor) {
  const int32_t value = tensor_zeropoint(tensor);
  return form >= IntegerForm::kInt8Int8symwt ? int32_t{static_cast<int8_t>(value)}
                                             : int32_t{static_cast<uint8_t>(value)};
}

}  // namespace

LayerQuantization::LayerQuantization(const ai_layer& layer, IntegerForm form, uint32_t channels,
                                     uint8_t* pairs_scratch)
    : KoQuantization() {
  const ai_tensor& input = layer_input(layer);
  const ai_tensor& weights = layer_weights(layer);
  const ai_tensor& output = layer_output(layer);
  const float in_scale = tensor_scale(input);
  const float out_scale = tensor_scale(output);
  if (has_channels(form)) {
    auto* multipliers = reinterpret_cast<int32_t*>(pairs_scratch);
    auto* shifts = reinterpret_cast<int16_t*>(pairs_scratch + channels * sizeof(int32_t));
    align_factor_ch(in_scale, out_scale, ai_tensor_intq(&weights)->scale,
                    static_cast<uint16_t>(channels), multipliers, shifts);
    multiplier = multipliers;
    shift = shifts;
    channel_mask = ~uint32_t{0};
  } else {
    uint16_t only_shift = 0;
    only_multiplier_ = align_factor((in_scale * tensor_scale(weights)) / out_scale, &only_shift);
    only_shift_ = static_cast<int16_t>(only_shift);
    multiplier = &only_multiplier_;
    shift = &only_shift_;
  }
  in_zeropoint = zeropoint_of(form, input);
  weight_zeropoints = nnlib::weight_zeropoints(form, weights);
  out_zeropoint = zeropoint_of(form, output);
}

}  // namespace nnlib
