// SPDX-License-Identifier: MIT
// Windows that move over a map: kernels of convolutions and of pooling.
#ifndef NNLIB_CHECK_WINDOWS_HPP
#define NNLIB_CHECK_WINDOWS_HPP

#include "check/layer_check.hpp"

namespace nnlib {

// One direction of a window's way.
struct WindowWay {
  uint64_t in;
  uint64_t taps;
  uint64_t stride;
  uint64_t dilation;
  uint64_t before;  // padding
  uint64_t after;

  uint64_t extent() const { return taps == 0 ? 0 : (taps - 1) * dilation + 1; }
  // Positions inside the padded map; 0 when the window is larger or does not move.
  uint64_t outputs() const {
    const uint64_t padded = before + in + after;
    return extent() == 0 || stride == 0 || padded < extent() ? 0 : (padded - extent()) / stride + 1;
  }
};

// The padding of a record: top, left, bottom, right.
struct Pads {
  uint64_t top = 0, left = 0, bottom = 0, right = 0;
  bool present = false;
};
Pads check_pads(LayerCheck& check, const ai_shape& pads, const char* what);

// As many positions as the output has; "is 5 wide".
void check_positions(LayerCheck& check, const WindowWay& way, uint64_t actual, TensorName output,
                     const char* direction);

// The number is not 0 and fits 16 bits.
bool check_u16(LayerCheck& check, uint64_t value, const char* what);

// All sizes of the layer fit 16 bits, in which kernels of integers and fixed point and pooling
// functions count.
void check_u16_sizes(LayerCheck& check);

}  // namespace nnlib

#endif
