// SPDX-License-Identifier: MIT
// Pooling layers, alone and behind a convolution.
#include "check/details.hpp"
#include "layers/layers_pool_generic_float.h"

namespace nnlib {
namespace {

// No window lies wholly in the padding.
void check_windows_inside(LayerCheck& check, const WindowWay& way, const char* direction) {
  if (way.before >= way.taps || way.after >= way.taps) {
    Finding(check.report()) << "the pooling window's " << direction << " is " << way.taps
                            << " with a padding of " << way.before << " before and " << way.after
                            << " behind the map: a window lies wholly outside";
  }
}

bool check_way(LayerCheck& check, const WindowWay& way, const char* size, const char* stride) {
  const bool has_size = check_u16(check, way.taps, size);
  return check_u16(check, way.stride, stride) && has_size;
}

}  // namespace

void check_pooling_ways(LayerCheck& check, const WindowWay& x, const WindowWay& y, bool usable) {
  usable &= check_way(check, x, "the pooling window's width", "the pooling stride in x");
  usable &= check_way(check, y, "the pooling window's height", "the pooling stride in y");
  if (!usable) {
    return;
  }
  check_positions(check, x, check.sizes['w'], {AI_CHAIN_OUTPUT, 0}, "width");
  check_positions(check, y, check.sizes['h'], {AI_CHAIN_OUTPUT, 0}, "height");
  check_windows_inside(check, x, "width");
  check_windows_inside(check, y, "height");
}

void check_pooling(LayerCheck& check) {
  const auto& pool = check.record<ai_layer_pool>();
  const Pads pads = check_pads(check, pool.pool_pad, "pool_pad");
  const WindowWay x = {check.sizes['W'], pool.pool_size[0], pool.pool_stride[0], 1,
                       pads.left,        pads.right};
  const WindowWay y = {check.sizes['H'], pool.pool_size[1], pool.pool_stride[1], 1,
                       pads.top,         pads.bottom};
  const bool sound =
      check.sound(AI_CHAIN_INPUT) != nullptr && check.sound(AI_CHAIN_OUTPUT) != nullptr;
  check_pooling_ways(check, x, y, pads.present && sound);
  if (check.rule()->inputs[0] != 'f') {
    check_u16_sizes(check);
  }
  if (check.rule()->inputs[0] == 'q') {
    check_same_bits(check);
  }
}

}  // namespace nnlib
