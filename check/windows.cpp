// SPDX-License-Identifier: MIT
#include "check/windows.hpp"

namespace nnlib {

Pads check_pads(LayerCheck& check, const ai_shape& pads, const char* what) {
  const uint32_t count = pads.data != nullptr ? ai_dims_count(pads.type_size) : 0;
  if (count < AI_SHAPE_DIMS) {
    Finding(check.report()) << what << " has " << count << " values, " << AI_SHAPE_DIMS
                            << " are needed: top, left, bottom, right";
    return {};
  }
  return {pads.data[0], pads.data[1], pads.data[2], pads.data[3], true};
}

void check_positions(LayerCheck& check, const WindowWay& way, uint64_t actual, TensorName output,
                     const char* direction) {
  if (actual == way.outputs()) {
    return;
  }
  Finding(check.report()) << output << " has a " << direction << " of " << actual
                          << "; a window of " << way.extent() << " in steps of " << way.stride
                          << " over " << way.before << " + " << way.in << " + " << way.after
                          << " gives " << way.outputs();
}

bool check_u16(LayerCheck& check, uint64_t value, const char* what) {
  if (value == 0 || value > 0xFFFF) {
    Finding(check.report()) << what << " is " << value << ", 1 to 65535 are possible";
    return false;
  }
  return true;
}

void check_u16_sizes(LayerCheck& check) {
  for (const char* letter = "CWHDwhnm"; *letter != '\0'; ++letter) {
    if (check.sizes[*letter] > 0xFFFF) {
      Finding(check.report()) << "a size of the layer is " << check.sizes[*letter]
                              << ", at most 65535 are possible";
      return;
    }
  }
}

}  // namespace nnlib
