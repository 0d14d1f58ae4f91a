#include "kernels/ko_requantize.h"

#include <cmath>

extern "C" {

int32_t align_factor(float scale, uint16_t* shift) {
  *shift = 0;
  if (!(scale > 0.0f) || std::isinf(scale)) {
    return 0;
  }
  uint16_t doublings = 0;  // modulo 2^16: halvings count backwards
  for (; scale < 0.5f; scale *= 2.0f) {
    ++doublings;
  }
  for (; scale > 1.0f; scale *= 0.5f) {
    --doublings;
  }
  *shift = doublings;
  const auto multiplier = static_cast<int64_t>(scale * 2147483648.0f);
  return multiplier > INT32_MAX ? INT32_MAX : static_cast<int32_t>(multiplier);
}

void align_factor_ch(float in_scale, float out_scale, const float* wt_scale, uint16_t channels,
                     int32_t* multiplier, int16_t* shift) {
  for (uint16_t i = 0; i < channels; ++i) {
    uint16_t stored = 0;
    multiplier[i] = align_factor((wt_scale[i] * in_scale) / out_scale, &stored);
    shift[i] = static_cast<int16_t>(stored);
  }
}

}  // extern "C"
