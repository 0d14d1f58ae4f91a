// SPDX-License-Identifier: MIT
// Layers with records of their own, one wrong field after the other.
#include <gtest/gtest.h>

#include <functional>

#include "test/check/sample_networks.hpp"

namespace {

float numbers[512];

// A right layer, and what is said when a field of its record is wrong.
template <class Layer>
void expect_texts(
    Layer& layer,
    std::initializer_list<std::pair<std::function<void(decltype(Layer::record)&)>, const char*>>
        mistakes) {
  EXPECT_EQ(findings(layer.network), "");
  for (const auto& [make, text] : mistakes) {
    const auto right = layer.record;
    make(layer.record);
    EXPECT_EQ(findings(layer.network), text);
    layer.record = right;
  }
}

// The same of the dimensions of a tensor.
template <class Layer>
void expect_dims_text(Layer& layer, nnlib::tensor& tensor, nnlib::dims wrong, const char* text) {
  const uint32_t* d = tensor.shape.data;
  const nnlib::dims right = {d[0], d[1], d[2], d[3]};
  reshape(tensor, wrong);
  EXPECT_EQ(findings(layer.network), text);
  reshape(tensor, right);
}

TEST(LayerCheck, PadTileAndUpsample) {
  nnlib::tensor in({1, 2, 3, 2}, numbers), out({1, 2, 5, 6}, numbers + 64);
  OneLayer<ai_layer_pad, 1, 1> pad(AI_LAYER_TYPE_PAD, forward_pad, nnlib::list(in),
                                   nnlib::list(out));
  static const uint32_t pads[] = {2, 1}, many[] = {5, 1};
  static const ai_array no_data = {AI_ARRAY_FORMAT_FLOAT, 1, nullptr, nullptr};
  static const ai_array words = {AI_ARRAY_FORMAT_S32, 2, numbers, numbers};
  pad.record.mode = AI_PAD_EDGE;
  pad.record.pads = pads;
  using Pad = ai_layer_pad;
  expect_texts(
      pad,
      {{[](Pad& r) { r.mode = 7; },
        "layer 0, forward_pad: the mode is 7, the function does nothing: 0 to 2 are possible"},
       {[](Pad& r) { r.mode = AI_PAD_CONSTANT; },
        "layer 0, forward_pad: the padding's value is missing, 1 is needed"},
       {[](Pad& r) {
          r.mode = AI_PAD_CONSTANT;
          r.value = &no_data;
        },
        "layer 0, forward_pad: the padding's value is missing, 1 is needed"},
       {[](Pad& r) {
          r.mode = AI_PAD_CONSTANT;
          r.value = &words;
        },
        "layer 0, forward_pad: the padding's value has the format FMT_S32, input 0 has FMT_FLOAT"},
       {[](Pad& r) { r.mode = AI_PAD_REFLECT; },
        "layer 0, forward_pad: with 2 rows and 1 columns before the map, reflection leaves rows 1 "
        "to 1 unwritten"},
       {[](Pad& r) { r.pads = nullptr; }, "layer 0, forward_pad: there are no pads, 2 are needed"},
       {[](Pad& r) { r.pads = many; },
        "layer 0, forward_pad: output 0 has a height of 6, 5 before input 0's 2 need 7"}});

  nnlib::tensor tiled({1, 6, 3, 4}, numbers + 64);
  OneLayer<ai_layer_tile, 1, 1> tile(AI_LAYER_TYPE_TILE, forward_tile, nnlib::list(in),
                                     nnlib::list(tiled));
  static const uint16_t repeats[] = {2, 1, 3}, turned[] = {3, 1, 2};
  tile.record.repeats = repeats;
  expect_texts(tile, {{[](ai_layer_tile& r) { r.repeats = nullptr; },
                       "layer 0, forward_tile: there are no repeats, 3 are needed"},
                      {[](ai_layer_tile& r) { r.repeats = turned; },
                       "layer 0, forward_tile: output 0 has the dimensions (1, 6, 3, 4), (1, 4, 3, "
                       "6) are needed: another order or view of its 72 elements"}});

  nnlib::tensor larger({1, 2, 9, 4}, numbers + 64);
  OneLayer<ai_layer_upsample, 1, 1> upsample(AI_LAYER_TYPE_UPSAMPLE, forward_upsample,
                                             nnlib::list(in), nnlib::list(larger));
  static float factors[] = {2.0f, 3.0f}, swapped[] = {3.0f, 2.0f};
  static const ai_array scales = {AI_ARRAY_FORMAT_FLOAT, 2, factors, factors};
  static const ai_array wrong = {AI_ARRAY_FORMAT_FLOAT, 2, swapped, swapped};
  static float turned_over[] = {-2.0f, 3.0f};
  static const ai_array negative = {AI_ARRAY_FORMAT_FLOAT, 2, turned_over, turned_over};
  upsample.record.mode = AI_UPSAMPLE_NEAREST;
  upsample.record.scales = &scales;
  expect_texts(
      upsample,
      {{[](ai_layer_upsample& r) { r.mode = 3; },
        "layer 0, forward_upsample: the mode is 3, the function does nothing: 0 to 2 are possible"},
       {[](ai_layer_upsample& r) { r.scales = nullptr; },
        "layer 0, forward_upsample: there are 0 scales, 2 are needed"},
       {[](ai_layer_upsample& r) { r.scales = &no_data; },
        "layer 0, forward_upsample: there are 0 scales, 2 are needed"},
       {[](ai_layer_upsample& r) { r.scales = &words; },
        "layer 0, forward_upsample: the scales have the format FMT_S32, needed is float32"},
       {[](ai_layer_upsample& r) { r.scales = &negative; },
        "layer 0, forward_upsample: the scale of the height is -2, not above 0"},
       {[](ai_layer_upsample& r) { r.scales = &wrong; },
        "layer 0, forward_upsample: output 0 has a height of 4, input 0's 2 times 3 is 6\n"
        "layer 0, forward_upsample: output 0 has a width of 9, input 0's 3 times 2 is 6"}});
}

TEST(LayerCheck, ConcatTransposeSliceAndTopK) {
  nnlib::tensor a({1, 2, 3, 2}, numbers), b({1, 4, 3, 2}, numbers + 64);
  nnlib::tensor joined({1, 6, 3, 2}, numbers + 128, nnlib::copied);
  OneLayer<ai_layer_concat, 2, 1> concat(AI_LAYER_TYPE_CONCAT, forward_concat, nnlib::list(a, b),
                                         nnlib::list(joined));
  concat.record.axis = AI_SHAPE_C;
  expect_texts(concat, {{[](ai_layer_concat& r) { r.axis = 4; },
                         "layer 0, forward_concat: the axis is 4, 0 to 3 are possible"},
                        {[](ai_layer_concat& r) { r.axis = AI_SHAPE_H; },
                         "layer 0, forward_concat: input 1 has the dimensions (1, 4, 3, 2), (1, 2, "
                         "3, 2) are needed\n"
                         "layer 0, forward_concat: output 0 has the dimensions (1, 6, 3, 2), (1, "
                         "2, 3, 4) are needed"}});
  joined.array.size = 40;
  EXPECT_EQ(findings(concat.network),
            "layer 0, forward_concat: output 0 has an array of 160 bytes, up to whose end the "
            "function writes; its dimensions take 144");
  nnlib::tensor codes(AI_ARRAY_FORMAT_LUT8_Q15, {1, 6, 3, 2}, numbers);
  nnlib::tensor all(AI_ARRAY_FORMAT_LUT8_Q15, {1, 6, 3, 2}, numbers + 64);
  OneLayer<ai_layer_concat, 1, 1> tables(AI_LAYER_TYPE_CONCAT, forward_concat, nnlib::list(codes),
                                         nnlib::list(all));
  EXPECT_NE(findings(tables.network).find("has an array of 548 bytes"), std::string::npos);

  nnlib::tensor turned({2, 3, 1, 2}, numbers + 128);
  OneLayer<ai_layer_transpose, 1, 1> transpose(AI_LAYER_TYPE_TRANSPOSE, forward_transpose,
                                               nnlib::list(a), nnlib::list(turned));
  static const uint32_t perm[] = {1, 2, 0, 3}, twice[] = {1, 2, 1, 3}, inverse[] = {2, 0, 1, 3};
  transpose.record.perm = perm;
  expect_texts(transpose,
               {{[](ai_layer_transpose& r) { r.perm = nullptr; },
                 "layer 0, forward_transpose: there is no permutation, 4 axes are needed"},
                {[](ai_layer_transpose& r) { r.perm = twice; },
                 "layer 0, forward_transpose: the permutation is (1, 2, 1, 3), each of the axes 0 "
                 "to 3 is needed once"},
                {[](ai_layer_transpose& r) { r.perm = inverse; },
                 "layer 0, forward_transpose: output 0 has the dimensions (2, 3, 1, 2), (3, 1, 2, "
                 "2) are needed: another order or view of its 12 elements"}});

  nnlib::tensor nibbles(AI_ARRAY_FORMAT_U4, {1, 2, 3, 2}, numbers);
  nnlib::tensor turned_nibbles(AI_ARRAY_FORMAT_U4, {2, 3, 1, 2}, numbers + 128);
  OneLayer<ai_layer_transpose, 1, 1> halves(AI_LAYER_TYPE_TRANSPOSE, forward_transpose,
                                            nnlib::list(nibbles), nnlib::list(turned_nibbles));
  halves.record.perm = perm;
  EXPECT_NE(
      findings(halves.network).find("input 0 has the format FMT_U4, the function moves whole"),
      std::string::npos);

  nnlib::tensor cut({1, 2, 2, 2}, numbers + 128);
  OneLayer<ai_layer_slice, 1, 1> slice(AI_LAYER_TYPE_SLICE, forward_slice, nnlib::list(a),
                                       nnlib::list(cut));
  static uint32_t axis_values[] = {AI_SHAPE_W};
  static int32_t start_values[] = {1}, end_values[] = {9};
  static const ai_array axes = {AI_ARRAY_FORMAT_U32, 1, axis_values, axis_values};
  static const ai_array starts = {AI_ARRAY_FORMAT_S32, 1, start_values, start_values};
  static const ai_array ends = {AI_ARRAY_FORMAT_S32, 1, end_values, end_values};
  static const ai_array no_ends = {AI_ARRAY_FORMAT_S32, 1, nullptr, nullptr};
  static const ai_array reals = {AI_ARRAY_FORMAT_FLOAT, 1, numbers, numbers};
  static const ai_array bytes = {AI_ARRAY_FORMAT_U8, 1, numbers, numbers};
  slice.record = {slice.record.base, &axes, &starts, &ends};
  expect_texts(
      slice, {{[](ai_layer_slice& r) { r.starts = nullptr; },
               "layer 0, forward_slice: there are 0 starts, 1 are needed"},
              {[](ai_layer_slice& r) { r.ends = &no_ends; },
               "layer 0, forward_slice: there are 0 ends, 1 are needed"},
              {[](ai_layer_slice& r) { r.axes = &reals; },
               "layer 0, forward_slice: the axes have the format FMT_FLOAT, needed are 32-bit "
               "integers"},
              {[](ai_layer_slice& r) { r.starts = &bytes; },
               "layer 0, forward_slice: the starts have the format FMT_U8, needed are 32-bit "
               "integers"},
              {[](ai_layer_slice& r) { r.axes = nullptr; },
               "layer 0, forward_slice: the slice of axis 0 runs from 1 to 9 of 1: it is empty"},
              {[](ai_layer_slice& r) { r.ends = &starts; },
               "layer 0, forward_slice: the slice of axis 2 runs from 1 to 1 of 3: it is empty"}});

  uint32_t index_data[4];
  nnlib::tensor values({1, 2, 1, 2}, numbers + 128), indices({1, 2, 1, 2}, index_data);
  OneLayer<ai_layer_topk, 1, 2> topk(AI_LAYER_TYPE_GENERIC, forward_topK, nnlib::list(a),
                                     nnlib::list(values, indices));
  topk.record.axis = AI_SHAPE_W;
  topk.record.k = 1;
  // its indices leave the network only as the output of this test
  const std::string format = "network: output 1 has the format FMT_U32, which no buffer has\n";
  for (const auto& [k, text] : {std::pair(4u, "layer 0, forward_topK: k is 4, 1 to 3 are possible"),
                                std::pair(2u,
                                          "layer 0, forward_topK: output 0 has the dimensions (1, "
                                          "2, 1, 2), (1, 2, 2, 2) are needed\n"
                                          "layer 0, forward_topK: output 1 has the dimensions (1, "
                                          "2, 1, 2), (1, 2, 2, 2) are needed")}) {
    topk.record.k = k;
    EXPECT_EQ(findings(topk.network), format + text);
  }
}

TEST(LayerCheck, Sequences) {
  nnlib::tensor in({1, 3, 1, 5}, numbers), out({1, 2, 1, 3}, numbers + 32);
  nnlib::tensor kernel({1, 12, 1, 1}, numbers + 64), bias({1, 2, 1, 1}, numbers + 128);
  OneLayer<ai_layer_time_delay, 1, 1, 2> delay(AI_LAYER_TYPE_TIME_DELAY, forward_time_delay,
                                               nnlib::list(in), nnlib::list(out),
                                               nnlib::list(kernel, bias));
  static uint8_t distances[] = {0, 2}, longer[] = {3, 0};
  static const ai_array delays = {AI_ARRAY_FORMAT_U8, 2, distances, distances};
  static const ai_array wrong = {AI_ARRAY_FORMAT_U8, 2, longer, longer};
  static const ai_array none = {AI_ARRAY_FORMAT_U8, 2, nullptr, nullptr};
  delay.record.delays = &delays;
  using Delay = ai_layer_time_delay;
  expect_texts(delay, {{[](Delay& r) { r.delays = nullptr; },
                        "layer 0, forward_time_delay: weights 0 has 12 elements, 0 are needed\n"
                        "layer 0, forward_time_delay: there are 0 delays, at least 1 is needed"},
                       {[](Delay& r) { r.delays = &none; },
                        "layer 0, forward_time_delay: there are 0 delays, at least 1 is needed"},
                       {[](Delay& r) { r.delays = &wrong; },
                        "layer 0, forward_time_delay: input 0 has 5 steps; 3 steps of output 0 and "
                        "a delay of 3 need 6"}});

  nnlib::tensor states({1, 2, 1, 5}, numbers + 32);
  nnlib::tensor gates({3, 8, 1, 1}, numbers + 64), recurrent({2, 8, 1, 1}, numbers + 128);
  nnlib::tensor peepholes({1, 6, 1, 1}, numbers + 192), biases({1, 8, 1, 1}, numbers + 200);
  OneLayer<ai_layer_lstm, 1, 1, 4> lstm(AI_LAYER_TYPE_LSTM, forward_lstm, nnlib::list(in),
                                        nnlib::list(states),
                                        nnlib::list(gates, recurrent, peepholes, biases));
  lstm.record.n_units = 2;
  lstm.record.out_activation = ai_math_tanh;
  expect_texts(
      lstm,
      {{[](ai_layer_lstm& r) { r.n_units = 3; },
        "layer 0, forward_lstm: output 0 has the dimensions (1, 2, 1, 5), (1, 3, 1, 5) are needed\n"
        "layer 0, forward_lstm: weights 0 has 24 elements, 36 are needed\n"
        "layer 0, forward_lstm: weights 1 has 16 elements, 36 are needed\n"
        "layer 0, forward_lstm: weights 2 has 6 elements, 9 are needed\n"
        "layer 0, forward_lstm: weights 3 has 8 elements, 12 are needed"},
       {[](ai_layer_lstm& r) { r.out_activation = nullptr; },
        "layer 0, forward_lstm: out_activation is null, the function faults"},
       {[](ai_layer_lstm& r) { r.base.forward = forward_gru; },
        "layer 0, forward_gru: the layer's type is LSTM, needed is GRU"}});
  expect_dims_text(lstm, states, {1, 2, 1, 4},
                   "layer 0, forward_lstm: output 0 has 4 steps, 1 or input 0's 5 are possible");
  replace(lstm.base(), AI_CHAIN_WEIGHTS, 3, nullptr);
  EXPECT_EQ(findings(lstm.network), "layer 0, forward_lstm: weights 3 is missing");
}

// The network_check_test has the rest of convolutions.
TEST(LayerCheck, ConvolutionWeights) {
  static const uint8_t codes[18] = {};
  static uint32_t pads[4] = {};
  nnlib::tensor in({1, 2, 4, 5}, numbers), out({1, 2, 2, 3}, numbers + 64);
  nnlib::tensor indices(AI_ARRAY_FORMAT_LUT8_FLOAT, {2, 3, 3, 1}, codes, numbers, nullptr);
  nnlib::tensor expanded({1, 18, 1, 1}, numbers + 128);
  OneLayer<ai_layer_conv2d, 1, 1, 1, 1> conv(AI_LAYER_TYPE_CONV2D, forward_conv2d, nnlib::list(in),
                                             nnlib::list(out), nnlib::list(indices),
                                             nnlib::list(expanded));
  conv.record = {conv.record.base, 2, nullptr, nullptr, {1, 1}, {1, 1}, pads_of(pads)};
  EXPECT_EQ(findings(conv.network), "");
  expect_dims_text(
      conv, expanded, {1, 19, 1, 1},
      "layer 0, forward_conv2d: scratch 0 has an array of 19 elements, as many indices "
      "are read; weights 0 has 18");
  // with more outputs than inputs each output has a filter of its own
  expect_dims_text(conv, out, {1, 4, 2, 3},
                   "layer 0, forward_conv2d: weights 0 has the dimensions (2, 3, 3, 1), (1, 3, 3, "
                   "4) are needed");

  // a slope for each channel of each column, as far as there are columns
  nnlib::tensor bias({1, 2, 1, 1}, numbers), slopes({1, 2, 2, 1}, numbers);
  nnlib::layer_chain<1, 1, 3, 1> chain(nnlib::list(in), nnlib::list(out),
                                       nnlib::list(indices, bias, slopes), nnlib::list(expanded));
  conv.record.base.tensor_chain = &chain;
  conv.record.nl_func = nl_func_prelu_array_f32;
  EXPECT_EQ(findings(conv.network), "");
  expect_dims_text(conv, slopes, {1, 1, 2, 1},
                   "layer 0, forward_conv2d: the parameters of pixel 1 in weights 2 begin at byte "
                   "4 of 8, 8 bytes are needed");
}

TEST(LayerCheck, ProductsAndBroadcasting) {
  nnlib::tensor a({1, 3, 1, 4}, numbers), b({1, 2, 1, 3}, numbers + 32, nnlib::copied);
  nnlib::tensor c({1, 2, 1, 1}, numbers + 64);
  nnlib::tensor y({1, 2, 1, 4}, numbers + 128, nnlib::copied);
  OneLayer<ai_layer_gemm, 2, 1, 1> gemm(AI_LAYER_TYPE_GEMM, forward_gemm, nnlib::list(a, b),
                                        nnlib::list(y), nnlib::list(c));
  expect_texts(gemm, {{[](ai_layer_gemm& r) { r.tA = 1; },
                       "layer 0, forward_gemm: the product of 3 x 4 and 3 x 2 does not give 4 x 2, "
                       "the function writes zeros"}});
  move_to(c, y.array.data);  // C may lie in Y, B may not
  EXPECT_EQ(findings(gemm.network),
            "layer 0, forward_gemm: weights 0 is a constant that output 0 overwrites");
  move_to(b, y.array.data);
  EXPECT_EQ(findings(gemm.network),
            "layer 0, forward_gemm: output 0 begins 0 bytes behind the start of input 1 and shares "
            "memory with it, which the function does not allow");
  move_to(b, numbers + 32);
  move_to(c, numbers + 64);
  expect_dims_text(gemm, c, {1, 1, 1, 3},
                   "layer 0, forward_gemm: weights 0 is 3 x 1, which does not spread over 4 x 2");

  nnlib::tensor left({1, 1, 3, 4}, numbers), right({1, 1, 2, 3}, numbers + 32);
  nnlib::tensor product({1, 1, 2, 4}, numbers + 128);
  OneLayer<ai_layer, 2, 1> matmul(AI_LAYER_TYPE_GEMM, forward_matmul, nnlib::list(left, right),
                                  nnlib::list(product));
  EXPECT_EQ(findings(matmul.network), "");
  expect_dims_text(
      matmul, right, {1, 1, 2, 4},
      "layer 0, forward_matmul: input 1 has the dimensions (1, 1, 2, 4), (1, 1, 2, 3) are needed");
  list_of(matmul.base(), AI_CHAIN_INPUT).size = 1;
  EXPECT_EQ(findings(matmul.network),
            "layer 0, forward_matmul: neither input 1 nor weights 0 is there, the product takes "
            "one of them\n"
            "network: input 1 is read by none of the 1 layers");

  nnlib::tensor map({1, 3, 2, 4}, numbers), row({1, 3, 1, 1}, numbers + 32);
  nnlib::tensor sum({1, 3, 2, 4}, numbers + 64);
  OneLayer<ai_layer_eltwise, 2, 1> eltwise(AI_LAYER_TYPE_ELTWISE, forward_eltwise,
                                           nnlib::list(map, row), nnlib::list(sum));
  eltwise.record.operation = ai_sum;
  expect_texts(
      eltwise,
      {{[](ai_layer_eltwise& r) { r.operation = nullptr; },
        "layer 0, forward_eltwise: operation is null, the layer calls it for each element"}});
  expect_dims_text(eltwise, row, {1, 2, 1, 1},
                   "layer 0, forward_eltwise: input 1 has the dimensions (1, 2, 1, 1), which do "
                   "not spread over (1, 3, 2, 4)");
  expect_dims_text(eltwise, sum, {1, 3, 2, 2},
                   "layer 0, forward_eltwise: output 0 has the dimensions (1, 3, 2, 2), the inputs "
                   "together give (1, 3, 2, 4)");

  nnlib::tensor reduced({1, 3, 1, 4}, numbers + 64);
  OneLayer<ai_layer_reduce, 1, 1> reduce(AI_LAYER_TYPE_REDUCE, forward_reduce, nnlib::list(map),
                                         nnlib::list(reduced));
  reduce.record.operation = ai_max;
  expect_texts(
      reduce,
      {{[](ai_layer_reduce& r) { r.operation = nullptr; },
        "layer 0, forward_reduce: operation is null, the layer calls it for each element"}});
  expect_dims_text(reduce, reduced, {1, 3, 2, 2},
                   "layer 0, forward_reduce: output 0 has the dimensions (1, 3, 2, 2), which do "
                   "not spread over (1, 3, 2, 4)");
}

TEST(LayerCheck, NormalizationAndParameters) {
  nnlib::tensor in({1, 3, 2, 4}, numbers), out({1, 3, 2, 4}, numbers + 32);
  nnlib::tensor scale({1, 3, 1, 1}, numbers + 64), bias({1, 3, 1, 1}, numbers + 68);
  OneLayer<ai_layer_instance_norm, 1, 1, 2> instance(AI_LAYER_TYPE_INSTANCENORMALIZATION,
                                                     forward_instanceNormalization, nnlib::list(in),
                                                     nnlib::list(out), nnlib::list(scale, bias));
  EXPECT_EQ(findings(instance.network), "");
  list_of(instance.base(), AI_CHAIN_WEIGHTS).size = 1;
  EXPECT_EQ(findings(instance.network),
            "layer 0, forward_instanceNormalization: weights 1 is missing");

  OneLayer<ai_layer_norm, 1, 1> norm(AI_LAYER_TYPE_NORM, forward_norm, nnlib::list(in),
                                     nnlib::list(out));
  norm.record.exponent = 2.0f;
  expect_texts(norm, {{[](ai_layer_norm& r) { r.axis = 4; },
                       "layer 0, forward_norm: the axis is 4, 0 to 3 are possible"},
                      {[](ai_layer_norm& r) { r.exponent = 0.0f; },
                       "layer 0, forward_norm: the exponent is 0, its reciprocal is taken"}});

  OneLayer<ai_layer_nl, 1, 1, 1> prelu(AI_LAYER_TYPE_NL, forward_prelu, nnlib::list(in),
                                       nnlib::list(out), nnlib::list(scale));
  EXPECT_EQ(findings(prelu.network), "");
  expect_dims_text(prelu, scale, {1, 5, 1, 1},
                   "layer 0, forward_prelu: weights 0 has 5 slopes, which do not divide the 24 "
                   "elements of input 0");

  OneLayer<ai_layer_nl, 1, 1> clip(AI_LAYER_TYPE_NL, forward_clip, nnlib::list(in),
                                   nnlib::list(out));
  static float two[] = {0.0f, 6.0f};
  static const ai_array bounds = {AI_ARRAY_FORMAT_FLOAT, 2, two, two};
  clip.record.nl_params = &bounds;
  expect_texts(clip, {{[](ai_layer_nl& r) { r.base.forward = forward_relu; },
                       "layer 0, forward_relu: nl_params has 2 values, 3 are needed"},
                      {[](ai_layer_nl& r) { r.base.forward = forward_hardmax; },
                       "layer 0, forward_hardmax: input 0 has the dimensions (1, 3, 2, 4), (1, 3, "
                       "1, 4) are needed\n"
                       "layer 0, forward_hardmax: output 0 has 24 elements, 12 are needed"},
                      {[](ai_layer_nl& r) { r.nl_params = nullptr; },
                       "layer 0, forward_clip: nl_params is missing, 2 values are needed"}});
}

// A conversion to fixed point with integer bits scales its input in place.
TEST(LayerCheck, ConversionThatChangesItsInput) {
  int8_t codes_data[6];
  nnlib::tensor x({1, 2, 1, 3}, numbers, nnlib::copied),
      y({1, 2, 1, 3}, numbers + 8, nnlib::copied);
  nnlib::tensor codes(AI_ARRAY_FORMAT_MAKE_Q(8, 7) | nnlib::copied, {1, 2, 1, 3}, codes_data);
  nnlib::layer_chain tanh_chain(nnlib::list(x), nnlib::list(y));
  nnlib::layer_chain convert_chain(nnlib::list(x), nnlib::list(codes));
  ai_layer_nl tanh = {nnlib::layer(AI_LAYER_TYPE_NL, forward_tanh, tanh_chain), nullptr};
  ai_layer convert = nnlib::layer(AI_LAYER_TYPE_NL, node_convert, convert_chain, &tanh.base);
  nnlib::network<1, 2> network(nnlib::list(x), nnlib::list(codes, y), convert);
  EXPECT_EQ(findings(network), "");
  codes.array.format = AI_ARRAY_FORMAT_MAKE_Q(8, 4) | nnlib::copied;
  EXPECT_EQ(findings(network),
            "layer 1, forward_tanh: input 0, an input of the network, is overwritten by input 0 of "
            "layer 0");
}

// The first branch is one layer, the second two.
struct Branches {
  nnlib::tensor x{{1, 2, 1, 3}, numbers}, between{{1, 2, 1, 3}, numbers + 8};
  nnlib::tensor y{{1, 2, 1, 3}, numbers + 16};
  nnlib::layer_chain<1, 1> both{nnlib::list(x), nnlib::list(y)};
  nnlib::layer_chain<1, 1> first{nnlib::list(x), nnlib::list(between)};
  nnlib::layer_chain<1, 1> second{nnlib::list(between), nnlib::list(y)};
  nnlib::layer_chain<0, 0> none{nnlib::list(), nnlib::list()};
  ai_layer_add add = {nnlib::layer(AI_LAYER_TYPE_ADD, forward_add, none),
                      2,
                      0,
                      nullptr,
                      nullptr,
                      nullptr,
                      &split.base,
                      nullptr};
  ai_layer_nl last = {nnlib::layer(AI_LAYER_TYPE_NL, forward_tanh, second, &add.base), nullptr};
  ai_layer_nl one = {nnlib::layer(AI_LAYER_TYPE_NL, forward_abs, first, &last.base), nullptr};
  ai_layer_nl other = {nnlib::layer(AI_LAYER_TYPE_NL, forward_neg, both, &add.base), nullptr};
  ai_layer* starts[2] = {&other.base, &one.base};
  ai_layer_split split = {nnlib::layer(AI_LAYER_TYPE_SPLIT, forward_split, none, starts[0]),
                          2,
                          0,
                          starts,
                          nullptr,
                          nullptr,
                          nullptr};
  nnlib::network<1, 1> network{nnlib::list(x), nnlib::list(y), split.base};
};

TEST(LayerCheck, BranchesAreAllVisited) {
  const auto text_of = [](const std::function<void(Branches&)>& make) {
    Branches branches;
    make(branches);
    return findings(branches.network);
  };
  EXPECT_EQ(text_of([](Branches&) {}), "");
  EXPECT_EQ(text_of([](Branches& b) { b.last.base.type = AI_LAYER_TYPE_SM; }),
            "layer 4, forward_tanh: the layer's type is SM, needed is NL");
  EXPECT_EQ(text_of([](Branches& b) { b.starts[1] = nullptr; }),
            "layer 0, forward_split: branch 1 of 2 is null");
  EXPECT_EQ(text_of([](Branches& b) { b.split.branches = nullptr; }),
            "layer 0, forward_split: the split has 0 branches, at least 1 is needed");
  EXPECT_EQ(text_of([](Branches& b) { b.split.index = 2; }),
            "layer 0, forward_split: the split begins with branch 2 of 2");
  EXPECT_EQ(text_of([](Branches& b) { b.split.callback = b.add.callback = [](void*, void*) {}; }),
            "layer 0, forward_split: the callback needs 2 branch contexts, there are none\n"
            "layer 2, forward_add: the callback needs 2 entries for branches, there are none\n"
            "layer 5, forward_add: the callback needs 2 entries for branches, there are none");
  EXPECT_EQ(text_of([](Branches& b) { b.split.count = 3; }),
            "layer 2, forward_add: the add has 2 branches, its split has 3\n"
            "layer 5, forward_add: the add has 2 branches, its split has 3");
  EXPECT_EQ(text_of([](Branches& b) { b.add.loop_back = &b.one.base; }),
            "layer 2, forward_add: loop_back points to no split layer");
  EXPECT_EQ(text_of([](Branches& b) { b.last.base.next = &b.one.base; }),
            "network: the list of layers does not end: behind layer 4 comes layer 3");
}

TEST(LayerCheck, InnerLayersOfATimeDistributedOne) {
  nnlib::tensor in({1, 3, 1, 5}, numbers), out({1, 2, 1, 5}, numbers + 32);
  nnlib::tensor between({1, 2, 1, 1}, numbers + 64), kernel({3, 2, 1, 1}, numbers + 128);
  nnlib::layer_chain dense_chain(nnlib::list(in), nnlib::list(between), nnlib::list(kernel));
  nnlib::layer_chain tanh_chain(nnlib::list(between), nnlib::list(out));
  ai_layer_nl tanh = {nnlib::layer(AI_LAYER_TYPE_NL, forward_tanh, tanh_chain), nullptr};
  ai_layer dense = nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense, dense_chain, &tanh.base);
  OneLayer<ai_layer_time_distributed, 1, 1> outer(
      AI_LAYER_TYPE_TIME_DISTRIBUTED, forward_time_distributed, nnlib::list(in), nnlib::list(out));
  outer.record.inner = &dense;
  using Outer = ai_layer_time_distributed;
  expect_texts(
      outer, {{[](Outer& r) { r.inner = nullptr; },
               "layer 0, forward_time_distributed: there are 0 inner layers, at least 1 is needed"},
              {[](Outer& r) { r.inner = r.inner->next; },
               "layer 0, inner layer 0, forward_tanh: output 0 has 2 elements, 3 are needed"}});
  expect_dims_text(outer, kernel, {2, 3, 1, 1},
                   "layer 0, inner layer 0, forward_dense: weights 0 has the dimensions (2, 3, 1, "
                   "1), (3, 2, 1, 1) are needed: another order or view of its 6 elements");
  expect_dims_text(outer, out, {1, 2, 1, 4},
                   "layer 0, forward_time_distributed: output 0 has the dimensions (1, 2, 1, 4), "
                   "(1, 2, 1, 5) are needed");
  out.data = &in.array;
  dense.next = nullptr;
  EXPECT_EQ(findings(outer.network),
            "network: output 0 has an array of 60 bytes, its dimensions (1, 2, 1, 5) and strides "
            "take 40: the caller's memory, at which a run points it\n"
            "network: input 0 and output 0 have one array, which a run can point at 1 of the "
            "caller's 2 buffers: give it AI_FORMAT_FLAG_COPY\n"
            "layer 0, inner layer 0, forward_dense: output 0 begins 0 bytes behind the start of "
            "input 0 and shares memory with it, which the function does not allow");
  out.data = &out.array;
  dense.next = &tanh.base;
  out.array.format |= AI_FORMAT_FLAG_COPY;
  move_to(between, numbers + 34);  // the output's second step
  EXPECT_EQ(findings(outer.network),
            "layer 0, inner layer 1, forward_tanh: output 0 begins 8 bytes before the start of "
            "input 0 and shares memory with it, which the function does not allow\n"
            "network: output 0, written by layer 0, is overwritten by output 0 of layer 0");
  move_to(between, numbers + 64);
  const ai_tensor_chain no_lists = {0, nullptr};
  tanh.base.tensor_chain = &no_lists;
  EXPECT_EQ(findings(outer.network),
            "layer 0, inner layer 1, forward_time_distributed: the layer has 0 outputs, inside a "
            "time-distributed layer 1 to 8 are possible, else it faults\n"
            "layer 0, inner layer 1, forward_tanh: the layer's chain has 0 lists, 2 are needed");
  tanh.base.tensor_chain = &tanh_chain;
  list_of(dense, AI_CHAIN_INPUT).size = 0;
  EXPECT_EQ(findings(outer.network),
            "layer 0, inner layer 0, forward_time_distributed: the layer has 0 inputs, inside a "
            "time-distributed layer 1 to 8 are possible, else it faults\n"
            "layer 0, inner layer 0, forward_dense: input 0 is missing");
  list_of(dense, AI_CHAIN_INPUT).size = 1;
  tanh.base.next = &dense;
  EXPECT_EQ(findings(outer.network),
            "layer 0, forward_time_distributed: the list of inner layers does not end: behind "
            "inner layer 1 comes inner layer 0");
}

TEST(LayerCheck, BrokenRecordsDoNotStopIt) {
  EXPECT_EQ(ai_network_check(nullptr, nullptr, nullptr), 1u);
  ai_network empty = {};
  EXPECT_EQ(ai_network_check(&empty, nullptr, nullptr), 3u);
}

TEST(ErrorText, TypeAndCode) {
  EXPECT_STREQ(ai_error_text(0), "no error");
  EXPECT_STREQ(ai_error_text(AI_ERROR_MAKE(0, 0x17)), "no error");
  EXPECT_STREQ(ai_error_text(0x1712), "invalid input: a null pointer where data was required");
  EXPECT_STREQ(ai_error_text(0x1813),
               "invalid output: a size or shape that does not fit, or a missing list");
  EXPECT_STREQ(ai_error_text(0x30), "the runtime could not be initialised");
  EXPECT_STREQ(ai_error_text(0x99), "unknown error");
  EXPECT_STREQ(ai_error_text(0x9912), "unknown error");
}

}  // namespace
