// SPDX-License-Identifier: MIT
#include "layers/layers_tile_generic_float.h"

#include <cstring>

#include "layers/layer_tensors.hpp"
#include "layers/repeat_block.hpp"

using namespace nnlib;

void forward_tile(ai_layer* layer) {
  const uint16_t* const repeats = layer_record<ai_layer_tile>(layer).repeats;
  const ai_tensor& input = layer_input(*layer);
  const MapDims map = map_dims(input);
  const size_t pixel = input.stride.data[AI_SHAPE_W];
  if (repeats[0] == 0 || repeats[1] == 0 || repeats[2] == 0) {
    return;
  }
  const uint8_t* in = tensor_data<uint8_t>(input);
  uint8_t* const tile = tensor_data<uint8_t>(layer_output(*layer));
  uint8_t* out = tile;
  for (uint32_t y = 0; y < map.height; ++y) {
    uint8_t* const row = out;
    for (uint32_t x = 0; x < map.width; ++x) {
      std::memcpy(out, in, pixel);
      in += pixel;
      out = repeat_block(out, pixel, repeats[2]);
    }
    out = repeat_block(row, static_cast<size_t>(out - row), repeats[1]);
  }
  repeat_block(tile, static_cast<size_t>(out - tile), repeats[0]);
}
