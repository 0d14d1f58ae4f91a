// SPDX-License-Identifier: MIT
// Networks without a fault, for tests to put one in.
#ifndef TEST_CHECK_SAMPLE_NETWORKS_HPP
#define TEST_CHECK_SAMPLE_NETWORKS_HPP

#include <string>

#include "check/ai_network_check.h"
#include "nnlib.h"

// The findings, one a line.
inline std::string findings(const ai_network& network) {
  std::string text;
  const auto collect = [](const ai_check_finding* finding, void* context) {
    std::string& all = *static_cast<std::string*>(context);
    if (!all.empty()) {
      all += '\n';
    }
    all += finding->text;
  };
  ai_network_check(&network, collect, &text);
  return text;
}

// --- changes to records that are declared as constants ------------------------------------------

inline ai_tensor_list& list_of(ai_layer& layer, uint32_t list) {
  return const_cast<ai_tensor_list&>(layer.tensor_chain->chain[list]);
}
inline void replace(ai_layer& layer, uint32_t list, uint32_t index, ai_tensor* tensor) {
  const_cast<ai_tensor**>(list_of(layer, list).tensors)[index] = tensor;
}
// As if declared with these dimensions.
inline void reshape(nnlib::tensor& tensor, nnlib::dims d) {
  const uint32_t sizes[] = {d.n, d.c, d.w, d.h};
  const uint32_t element = ai_fmt_get_bits(tensor.array.format) / 8;
  uint32_t stride = element;
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    tensor.shape.data[i] = sizes[i];
    tensor.stride.data[i] = stride;
    stride *= sizes[i];
  }
  tensor.array.size = stride / element;
}
inline void move_to(nnlib::tensor& tensor, void* data) {
  tensor.array.data = tensor.array.data_start = data;
}

constexpr ai_shape pads_of(uint32_t (&pads)[4]) {
  return {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), pads};
}

// --- convolution, relu, pooling, dense and softmax of floats ------------------------------------

struct FloatNetwork {
  float x_data[90] = {}, filter[72] = {}, bias[4] = {}, matrix[96] = {}, offsets[3] = {};
  float map_data[60] = {}, pooled_data[32] = {}, sums_data[3] = {}, y_data[3] = {};
  uint32_t pads[4] = {}, pool_pads[4] = {};

  nnlib::tensor x{{1, 3, 6, 5}, x_data, nnlib::copied};
  nnlib::tensor conv_weights{{3, 2, 3, 4}, filter}, conv_bias{{1, 4, 1, 1}, bias};
  nnlib::tensor map{{1, 4, 5, 3}, map_data}, other_map{{1, 4, 5, 3}, map_data};
  nnlib::tensor pooled{{1, 4, 4, 2}, pooled_data};
  nnlib::tensor flat{{1, 32, 1, 1}, pooled_data};
  nnlib::tensor dense_weights{{32, 3, 1, 1}, matrix}, dense_bias{{1, 3, 1, 1}, offsets};
  nnlib::tensor sums{{1, 3, 1, 1}, sums_data}, y{{1, 3, 1, 1}, y_data, nnlib::copied};

  nnlib::layer_chain<1, 1, 2> conv_chain{nnlib::list(x), nnlib::list(map),
                                         nnlib::list(conv_weights, conv_bias)};
  nnlib::layer_chain<1, 1> relu_chain{nnlib::list(map), nnlib::list(map)};
  nnlib::layer_chain<1, 1> pool_chain{nnlib::list(map), nnlib::list(pooled)};
  nnlib::layer_chain<1, 1, 2> dense_chain{nnlib::list(flat), nnlib::list(sums),
                                          nnlib::list(dense_weights, dense_bias)};
  nnlib::layer_chain<1, 1> softmax_chain{nnlib::list(sums), nnlib::list(y)};

  ai_layer softmax = nnlib::layer(AI_LAYER_TYPE_SM, forward_sm, softmax_chain);
  ai_layer dense = nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense, dense_chain, &softmax);
  ai_layer_pool pool = {nnlib::layer(AI_LAYER_TYPE_POOL, forward_mp, pool_chain, &dense),
                        {2, 2},
                        {1, 1},
                        pads_of(pool_pads),
                        0};
  ai_layer_nl relu = {nnlib::layer(AI_LAYER_TYPE_NL, forward_relu, relu_chain, &pool.base),
                      nullptr};
  ai_layer_conv2d conv = {
      nnlib::layer(AI_LAYER_TYPE_CONV2D, forward_conv2d, conv_chain, &relu.base),
      1,
      nullptr,
      nullptr,
      {1, 1},
      {1, 1},
      pads_of(pads)};
  nnlib::network<1, 1> network{nnlib::list(x), nnlib::list(y), conv.base};
};

// --- conversion, convolution with relu, pooling and dense layer of int8 -------------------------

struct IntegerNetwork {
  float x_data[60] = {}, y_data[3] = {};
  int8_t codes_data[60] = {}, filter[40] = {}, map_data[60] = {}, pooled_data[10] = {};
  int8_t matrix[30] = {}, sums_data[3] = {};
  int32_t bias[5] = {}, offsets[3] = {};
  alignas(4) uint8_t columns[256] = {};
  int8_t convolved_data[60] = {};
  int8_t least[1] = {-3};
  uint32_t pads[4] = {}, pool_pads[4] = {};

  float scales[5] = {0.5f, 0.25f, 0.125f, 1.0f, 2.0f}, scale[1] = {0.5f};
  int8_t zeros[5] = {}, zero[1] = {0}, zeropoint[1] = {-3};
  nnlib::intq<int8_t, 1> codes_q{scale, zeropoint}, map_q{scale, zeropoint};
  nnlib::intq<int8_t, 5> filter_q{scales, zeros};
  nnlib::intq<int8_t, 1> matrix_q{scale, zero};

  nnlib::tensor x{{1, 2, 6, 5}, x_data, nnlib::copied};
  nnlib::tensor codes{{1, 2, 6, 5}, codes_data, 0, &codes_q};
  nnlib::tensor conv_weights{{2, 2, 2, 5}, filter, 0, &filter_q}, conv_bias{{1, 5, 1, 1}, bias};
  nnlib::tensor scratch{{1, 256, 1, 1}, columns};
  nnlib::tensor convolved{{1, 5, 3, 4}, convolved_data, 0, &map_q};
  nnlib::tensor map{{1, 5, 3, 4}, map_data, 0, &map_q};
  nnlib::tensor pooled{{1, 5, 1, 2}, pooled_data, 0, &map_q};
  nnlib::tensor flat{{1, 10, 1, 1}, pooled_data, 0, &map_q};
  nnlib::tensor dense_weights{{10, 3, 1, 1}, matrix, 0, &matrix_q};
  nnlib::tensor dense_bias{{1, 3, 1, 1}, offsets};
  nnlib::tensor sums{{1, 3, 1, 1}, sums_data, 0, &codes_q};
  nnlib::tensor y{{1, 3, 1, 1}, y_data, nnlib::copied};
  ai_array relu_params = {AI_ARRAY_FORMAT_S8, 1, least, least};

  nnlib::layer_chain<1, 1> quantize_chain{nnlib::list(x), nnlib::list(codes)};
  nnlib::layer_chain<1, 1, 2, 2> conv_chain{nnlib::list(codes), nnlib::list(map),
                                            nnlib::list(conv_weights, conv_bias),
                                            nnlib::list(scratch, convolved)};
  nnlib::layer_chain<1, 1> pool_chain{nnlib::list(map), nnlib::list(pooled)};
  nnlib::layer_chain<1, 1, 2, 1> dense_chain{nnlib::list(flat), nnlib::list(sums),
                                             nnlib::list(dense_weights, dense_bias),
                                             nnlib::list(scratch)};
  nnlib::layer_chain<1, 1> relu_chain{nnlib::list(sums), nnlib::list(sums)};
  nnlib::layer_chain<1, 1> real_chain{nnlib::list(sums), nnlib::list(y)};

  ai_layer real = nnlib::layer(AI_LAYER_TYPE_NL, node_convert, real_chain);
  ai_layer_nl relu = {nnlib::layer(AI_LAYER_TYPE_NL, forward_relu_integer, relu_chain, &real),
                      &relu_params};
  ai_layer dense =
      nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense_integer, dense_chain, &relu.base);
  ai_layer_pool pool = {nnlib::layer(AI_LAYER_TYPE_POOL, forward_mp_integer, pool_chain, &dense),
                        {3, 2},
                        {1, 2},
                        pads_of(pool_pads),
                        0};
  ai_layer_conv2d conv = {
      nnlib::layer(AI_LAYER_TYPE_CONV2D, forward_conv2d_integer, conv_chain, &pool.base),
      1,
      &relu_params,
      nl_func_relu_array_integer,
      {2, 1},
      {1, 1},
      pads_of(pads)};
  ai_layer quantize = nnlib::layer(AI_LAYER_TYPE_NL, node_convert, quantize_chain, &conv.base);
  nnlib::network<1, 1> network{nnlib::list(x), nnlib::list(y), quantize};
};

// --- Q7 convolution fused with relu and pooling, dense layer and softmax ------------------------

struct FixedNetwork {
  static constexpr ai_array_format q(int bits, int fraction) {
    return AI_ARRAY_FORMAT_MAKE_Q(bits, fraction);
  }
  int8_t x_data[75] = {}, filter[48] = {}, bias[4] = {}, rows_data[32] = {}, pooled_data[16] = {};
  int8_t matrix[48] = {}, offsets[3] = {}, sums_data[3] = {}, y_data[3] = {};
  int16_t columns[24] = {};
  uint32_t pads[4] = {}, pool_pads[4] = {};

  nnlib::tensor x{q(8, 5) | nnlib::copied, {1, 3, 5, 5}, x_data};
  nnlib::tensor conv_weights{q(8, 6), {3, 2, 2, 4}, filter};
  nnlib::tensor conv_bias{q(8, 7), {1, 4, 1, 1}, bias};
  nnlib::tensor rows{q(8, 4), {1, 4, 4, 2}, rows_data};
  nnlib::tensor scratch{{1, 24, 1, 1}, columns};
  nnlib::tensor pooled{q(8, 4), {1, 4, 2, 2}, pooled_data};
  nnlib::tensor flat{q(8, 4), {1, 16, 1, 1}, pooled_data};
  nnlib::tensor dense_weights{q(8, 7), {16, 3, 1, 1}, matrix};
  nnlib::tensor dense_bias{q(8, 7), {1, 3, 1, 1}, offsets};
  nnlib::tensor sums{q(8, 3), {1, 3, 1, 1}, sums_data};
  nnlib::tensor y{q(8, 7) | nnlib::copied, {1, 3, 1, 1}, y_data};

  nnlib::layer_chain<1, 1, 2, 2> conv_chain{nnlib::list(x), nnlib::list(pooled),
                                            nnlib::list(conv_weights, conv_bias),
                                            nnlib::list(rows, scratch)};
  nnlib::layer_chain<1, 1, 2> dense_chain{nnlib::list(flat), nnlib::list(sums),
                                          nnlib::list(dense_weights, dense_bias)};
  nnlib::layer_chain<1, 1> softmax_chain{nnlib::list(sums), nnlib::list(y)};

  ai_layer softmax = nnlib::layer(AI_LAYER_TYPE_SM, forward_sm_fixed, softmax_chain);
  ai_layer dense = nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense_fixed, dense_chain, &softmax);
  ai_layer_conv2d_nl_pool conv = {{nnlib::layer(AI_LAYER_TYPE_OPTIMIZED_CONV2D,
                                                forward_conv2d_nl_pool_fixed, conv_chain, &dense),
                                   1,
                                   nullptr,
                                   nl_func_relu_array_fixed,
                                   {1, 1},
                                   {1, 1},
                                   pads_of(pads)},
                                  {2, 2},
                                  {2, 2},
                                  pads_of(pool_pads),
                                  pool_func_mp_array_fixed};
  nnlib::network<1, 1> network{nnlib::list(x), nnlib::list(y), conv.base.base};
};

// --- one layer, whose tensors are the network's -------------------------------------------------

template <class Record, size_t Inputs, size_t Outputs, size_t Weights = 0, size_t Scratch = 0>
struct OneLayer {
  OneLayer(uint16_t type, ai_layer_forward forward, nnlib::tensor_list<Inputs> inputs,
           nnlib::tensor_list<Outputs> outputs, nnlib::tensor_list<Weights> weights = {},
           nnlib::tensor_list<Scratch> scratch = {})
      : chain(inputs, outputs, weights, scratch), network(inputs, outputs, base()) {
    base() = nnlib::layer(type, forward, chain);
  }
  ai_layer& base() { return reinterpret_cast<ai_layer&>(record); }

  nnlib::layer_chain<Inputs, Outputs, Weights, Scratch> chain;
  Record record = {};
  nnlib::network<Inputs, Outputs> network;
};

#endif
