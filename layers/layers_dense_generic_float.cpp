// SPDX-License-Identifier: MIT
#include "layers/layers_dense_generic_float.h"

#include "kernels/dictionary_dot.hpp"
#include "kernels/float_product.hpp"
#include "layers/dictionary_weights.hpp"
#include "layers/layer_tensors.hpp"

namespace nnlib {
namespace {

struct Dense {
  const float* in;
  float* out;
  size_t n_in;
  size_t n_out;
  size_t positions;
};

template <unsigned Bits>
void dictionary_products(const Dense& d, const uint8_t* indices, size_t row_bytes,
                         const float* dictionary) {
  for (size_t position = 0; position < d.positions; ++position) {
    const float* in = d.in + position * d.n_in;
    float* out = d.out + position * d.n_out;
    size_t j = 0;
    for (; j + 4 <= d.n_out; j += 4) {
      float sums[4];
      dictionary_dots<Bits>(sums, indices + j * row_bytes, row_bytes, dictionary, in, d.n_in);
      for (size_t i = 0; i < 4; ++i) {
        out[j + i] = sums[i];
      }
    }
    for (; j < d.n_out; ++j) {
      float sum[1];
      dictionary_dots<Bits>(sum, indices + j * row_bytes, row_bytes, dictionary, in, d.n_in);
      out[j] = sum[0];
    }
  }
}

void products(const Dense& d, const ai_tensor& weights) {
  const size_t row_bytes = weights.stride.data[AI_SHAPE_C];
  const float* dictionary = weights_dictionary(weights);
  if (dictionary == nullptr) {
    product_f32(d.out, d.n_out, {d.in, d.n_in, 1},
                {tensor_data<const float>(weights), row_bytes / sizeof(float), 1}, d.positions,
                d.n_out, d.n_in);
  } else if (weights_index_bits(weights) == 4) {
    dictionary_products<4>(d, tensor_data<const uint8_t>(weights), row_bytes, dictionary);
  } else {
    dictionary_products<8>(d, tensor_data<const uint8_t>(weights), row_bytes, dictionary);
  }
}

}  // namespace
}  // namespace nnlib

void forward_dense(ai_layer* layer) {
  using namespace nnlib;
  const ai_tensor& in = layer_input(*layer);
  const ai_tensor& out = layer_output(*layer);
  const ai_tensor* bias = optional_tensor(*layer, AI_CHAIN_WEIGHTS, 1);
  const MapDims out_dims = map_dims(out);
  const Dense dense = {tensor_data<const float>(in), tensor_data<float>(out),
                       in.shape.data[AI_SHAPE_C], out_dims.channels,
                       size_t{out_dims.width} * out_dims.height};
  products(dense, layer_weights(*layer));
  if (bias != nullptr) {
    const float* values = tensor_data<const float>(*bias);
    for (size_t i = 0; i < dense.positions; ++i) {
      for (size_t j = 0; j < dense.n_out; ++j) {
        dense.out[i * dense.n_out + j] += values[j];
      }
    }
  }
}
