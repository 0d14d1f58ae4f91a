// SPDX-License-Identifier: MIT
// The geometry of quantized pooling layers.
#ifndef NNLIB_LAYERS_QUANTIZED_POOL_LAYER_HPP
#define NNLIB_LAYERS_QUANTIZED_POOL_LAYER_HPP

#include "kernels/pool_geometry.hpp"
#include "layers/layer_tensors.hpp"
#include "layers/layers_pool_generic_float.h"

namespace nnlib {

inline PoolGeometry pool_geometry(ai_layer& layer) {
  const ai_layer_pool& pool = layer_record<ai_layer_pool>(&layer);
  const MapDims in = map_dims(layer_input(layer));
  const MapDims out = map_dims(layer_output(layer));
  const uint32_t* pad = pool.pool_pad.data;
  return {in.width,  in.height, in.channels,         pool.pool_size[0],   pool.pool_size[1],
          pad[1],    pad[0],    pool.pool_stride[0], pool.pool_stride[1], out.width,
          out.height};
}

}  // namespace nnlib

#endif
