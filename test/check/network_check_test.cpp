// SPDX-License-Identifier: MIT
// One mistake after the other in networks that are right, and the sentence that names it.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>

#include "test/check/sample_networks.hpp"

namespace {

template <class Network>
struct Mistake {
  std::function<void(Network&)> make;
  const char* text;
};

template <class Network>
void expect_texts(std::initializer_list<Mistake<Network>> mistakes) {
  EXPECT_EQ(findings(Network().network), "");
  for (const Mistake<Network>& mistake : mistakes) {
    Network sample;
    mistake.make(sample);
    EXPECT_EQ(findings(sample.network), mistake.text);
  }
}

// The same of one finding among others.
template <class Network>
void expect_among(std::initializer_list<Mistake<Network>> mistakes) {
  for (const Mistake<Network>& mistake : mistakes) {
    Network sample;
    mistake.make(sample);
    EXPECT_NE(findings(sample.network).find(mistake.text), std::string::npos)
        << mistake.text << "\nin\n"
        << findings(sample.network);
  }
}

TEST(NetworkCheck, WeightsAndMapsOfFloatLayers) {
  using N = FloatNetwork;
  expect_texts<N>({
      {[](N& n) {
         reshape(n.conv_weights, {4, 2, 3, 3});
       },
       "layer 0, forward_conv2d: weights 0 has the dimensions (4, 2, 3, 3), (3, 2, 3, 4) are "
       "needed: another order or view of its 72 elements"},
      {[](N& n) { replace(n.conv.base, AI_CHAIN_WEIGHTS, 0, nullptr); },
       "layer 0, forward_conv2d: weights 0 is missing"},
      {[](N& n) {
         reshape(n.dense_weights, {3, 32, 1, 1});
       },
       "layer 3, forward_dense: weights 0 has the dimensions (3, 32, 1, 1), (32, 3, 1, 1) are "
       "needed: another order or view of its 96 elements"},
      {[](N& n) {
         reshape(n.conv_bias, {1, 3, 1, 1});
       },
       "layer 0, forward_conv2d: weights 1 has 3 elements, 4 are needed"},
      // height, width, channels instead of channels, width, height
      {[](N& n) {
         reshape(n.x, {1, 5, 6, 3});
       },
       "layer 0, forward_conv2d: weights 0 has the dimensions (3, 2, 3, 4), (5, 2, 3, 4) are "
       "needed\n"
       "layer 0, forward_conv2d: output 0 has a height of 3; a window of 3 in steps of 1 over 0 + "
       "3 + 0 gives 1"},
      {[](N& n) { replace(n.dense, AI_CHAIN_INPUT, 0, &n.pooled); },
       "layer 3, forward_dense: input 0 has the dimensions (1, 4, 4, 2), (1, 32, 1, 1) are needed: "
       "another order or view of its 32 elements"},
      {[](N& n) { n.flat.array.size = 31; },
       "layer 3, forward_dense: input 0 has an array of 31 elements, its dimensions (1, 32, 1, 1) "
       "take 32"},
      {[](N& n) { n.flat.stride.data[2] = 4; },
       "layer 3, forward_dense: input 0 has the strides (4, 4, 4, 128), (4, 4, 128, 128) are "
       "needed"},
      {[](N& n) { n.x.shape.type_size = AI_DIMS_WORD(AI_SHAPE_TYPE, 3); },
       "network: input 0 has no array or no shape of 4 dimensions\n"
       "layer 0, forward_conv2d: input 0 has 3 dimensions, 4 are needed"},
      {[](N& n) { n.dense_weights.data = nullptr; },
       "layer 3, forward_dense: weights 0 has no array"},
      {[](N& n) { move_to(n.conv_weights, nullptr); },
       "layer 0, forward_conv2d: weights 0 has no data: the array of 72 elements points to none"},
      {[](N& n) { move_to(n.conv_weights, reinterpret_cast<char*>(n.filter) + 2); },
       "layer 0, forward_conv2d: weights 0 lies 2 bytes behind a multiple of 4"},
      {[](N& n) { n.sums.array.data_start = n.map_data; },
       "layer 4, forward_sm: input 0 has its data 368 bytes behind data_start, to which the "
       "function moves it back"},
  });
}

TEST(NetworkCheck, RecordsOfFloatLayers) {
  using N = FloatNetwork;
  static float table[256];
  static const ai_array indices = {AI_ARRAY_FORMAT_LUT8_FLOAT, 2, table, table};
  expect_texts<N>({
      {[](N& n) { n.conv.groups = 2; },
       "layer 0, forward_conv2d: weights 0 has the dimensions (3, 2, 3, 4), (1, 2, 3, 4) are "
       "needed\n"
       "layer 0, forward_conv2d: groups is 2, which does not divide 3 input and 4 output channels"},
      {[](N& n) { n.conv.groups = 0; },
       "layer 0, forward_conv2d: groups is 0, at least 1 is needed"},
      {[](N& n) { n.conv.filter_stride[1] = 0; },
       "layer 0, forward_conv2d: the filter's stride in y is 0, 1 to 65535 are possible"},
      {[](N& n) { n.dense_weights.stride.data[1] += 2; },
       "layer 3, forward_dense: weights 0 has the strides (4, 130, 384, 384), (4, 128, 384, 384) "
       "are needed"},
      {[](N& n) { n.dense_weights.stride.data[1] += 4; },
       "layer 3, forward_dense: weights 0 has an array of 384 bytes, its dimensions (32, 3, 1, 1) "
       "and strides take 392"},
      {[](N& n) { n.conv.dilation[0] = 0; },
       "layer 0, forward_conv2d: the dilation in x is 0, 1 to 65535 are possible"},
      {[](N& n) { n.conv.dilation[0] = 2; },
       "layer 0, forward_conv2d: output 0 has a width of 5; a window of 3 in steps of 1 over 0 + 6 "
       "+ 0 gives 4"},
      {[](N& n) { n.pads[1] = 1; },
       "layer 0, forward_conv2d: output 0 has a width of 5; a window of 2 in steps of 1 over 1 + 6 "
       "+ 0 gives 6"},
      {[](N& n) { n.conv.filter_pad.type_size = AI_DIMS_WORD(AI_SHAPE_TYPE, 2); },
       "layer 0, forward_conv2d: filter_pad has 2 values, 4 are needed: top, left, bottom, right"},
      {[](N& n) { n.conv.nl_func = nl_func_clip_array_f32; },
       "layer 0, forward_conv2d: nl_params is missing, 2 values are needed"},
      {[](N& n) {
         n.conv.nl_func = nl_func_clip_array_f32;
         n.conv.nl_params = &indices;
       },
       "layer 0, forward_conv2d: nl_params has the format FMT_LUT8_FLOAT, input 0 has FMT_FLOAT"},
      {[](N& n) { n.conv.nl_func = nl_func_tanh_array_fixed; },
       "layer 0, forward_conv2d: nl_func is nl_func_tanh_array_fixed for fixed point, the layer "
       "computes float32"},
      {[](N& n) { n.pool.pool_stride[0] = 0; },
       "layer 2, forward_mp: the pooling stride in x is 0, 1 to 65535 are possible"},
      {[](N& n) {
         n.pool_pads[0] = 2;
         n.pool.pool_stride[1] = 3;
       },
       "layer 2, forward_mp: the pooling window's height is 2 with a padding of 2 before and 0 "
       "behind the map: a window lies wholly outside"},
      {[](N& n) { n.dense.type = AI_LAYER_TYPE_CONV2D; },
       "layer 3, forward_dense: the layer's type is CONV2D, needed is DENSE"},
      {[](N& n) { n.dense.forward = nullptr; },
       "layer 3: the layer of type DENSE has no function, the pointer is null"},
      {[](N& n) { n.dense.tensor_chain = nullptr; },
       "layer 3, forward_dense: the layer's chain has 0 lists, 3 are needed\n"
       "layer 2, forward_mp: none of its 1 outputs is read by a later layer or is an output of the "
       "network\n"
       "layer 4, forward_sm: none of its 1 inputs is written by an earlier layer or is an input of "
       "the network"},
      {[](N& n) { n.softmax.forward = forward_sm_fixed; },
       "layer 4, forward_sm_fixed: input 0 has the format FMT_FLOAT, needed is fixed point of 8 or "
       "16 bits\n"
       "layer 4, forward_sm_fixed: output 0 has the format FMT_FLOAT, needed is fixed point of the "
       "width of input 0"},
  });
}

TEST(NetworkCheck, BetweenLayers) {
  using N = FloatNetwork;
  expect_texts<N>({
      {[](N& n) { n.relu.base.next = nullptr; },
       "layer 1, forward_relu: none of its 1 outputs is read by a later layer or is an output of "
       "the network\n"
       "network: output 0 is written by none of the 2 layers"},
      {[](N& n) { n.network.layers = &n.relu.base; },
       "layer 0, forward_relu: none of its 1 inputs is written by an earlier layer or is an input "
       "of the network\n"
       "network: input 0 is read by none of the 4 layers"},
      {[](N& n) { n.network.layers = nullptr; },
       "network: the network has 0 layers, at least 1 is needed"},
      {[](N& n) { n.softmax.next = &n.relu.base; },
       "network: the list of layers does not end: behind layer 4 comes layer 1"},
      {[](N& n) { move_to(n.map, n.x_data + 8); },
       "layer 0, forward_conv2d: output 0 begins 32 bytes behind the start of input 0 and shares "
       "memory with it, which the function does not allow"},
      {[](N& n) { move_to(n.sums, n.pooled_data + 4); },
       "layer 3, forward_dense: output 0 begins 16 bytes behind the start of input 0 and shares "
       "memory with it, which the function does not allow"},
      {[](N& n) {
         move_to(n.pooled, n.map_data);
         move_to(n.flat, n.map_data);
       },
       "layer 2, forward_mp: output 0 begins 0 bytes behind the start of input 0 and shares memory "
       "with it, which the function does not allow"},
      {[](N& n) {
         move_to(n.pooled, n.matrix);
         move_to(n.flat, n.matrix);
       },
       "layer 3, forward_dense: weights 0 is overwritten by output 0 of layer 2"},
      {[](N& n) { replace(n.softmax, AI_CHAIN_INPUT, 0, &n.dense_bias); },
       "layer 3, forward_dense: none of its 1 outputs is read by a later layer or is an output of "
       "the network\n"
       "layer 4, forward_sm: none of its 1 inputs is written by an earlier layer or is an input of "
       "the network"},
      {[](N& n) { replace(n.relu.base, AI_CHAIN_OUTPUT, 0, &n.other_map); },
       "layer 2, forward_mp: input 0, written by layer 0, is overwritten by output 0 of layer 1"},
      {[](N& n) {
         n.x.array.format = AI_ARRAY_FORMAT_FLOAT;
         move_to(n.sums, n.x_data);
       },
       "layer 3, forward_dense: output 0 lies in the memory of the network's input 0, which a run "
       "points at the caller's: give them one array, or the latter AI_FORMAT_FLAG_COPY\n"
       "layer 4, forward_sm: input 0 lies in the memory of the network's input 0, which a run "
       "points at the caller's: give them one array, or the latter AI_FORMAT_FLAG_COPY"},
      {[](N& n) {
         n.x.array.format = AI_ARRAY_FORMAT_FLOAT;
         n.y.data = &n.x.array;
       },
       "network: output 0 has an array of 360 bytes, its dimensions (1, 3, 1, 1) and strides take "
       "12: the caller's memory, at which a run points it\n"
       "network: input 0 and output 0 have one array, which a run can point at 1 of the caller's 2 "
       "buffers: give it AI_FORMAT_FLAG_COPY"},
      {[](N& n) { n.x.stride.data = nullptr; },
       "network: input 0 has no 4 strides\n"
       "layer 0, forward_conv2d: input 0 has 0 strides, 4 are needed"},
      {[](N& n) { replace(n.softmax, AI_CHAIN_OUTPUT, 0, &n.sums); },
       "layer 4, forward_sm: none of its 1 outputs is read by a later layer or is an output of the "
       "network\n"
       "network: output 0 is written by none of the 5 layers"},
      {[](N& n) { const_cast<ai_tensor_list&>(n.network.io.chain[0]).info = nullptr; },
       "network: the list of the network's 1 inputs has no cursors, buffers and meta infos: it is "
       "declared by AI_IO_LIST, not by AI_LIST"},
      {[](N& n) { const_cast<ai_tensor_list&>(n.network.io.chain[1]).size = 0; },
       "network: the network has 0 outputs, at least 1 is needed\n"
       "layer 4, forward_sm: none of its 1 outputs is read by a later layer or is an output of the "
       "network"},
  });
}

// Records that a layer or a tensor does not have, and numbers that stand for nothing. Further
// findings may follow from such a one.
// The exponentials of a tensor that two layers write, one piece each.
struct PiecesNetwork {
  float a_data[5] = {}, b_data[3] = {}, whole_data[9] = {}, y_data[8] = {};
  nnlib::tensor a{{1, 5, 1, 1}, a_data, nnlib::copied}, b{{1, 3, 1, 1}, b_data, nnlib::copied};
  nnlib::tensor first{{1, 5, 1, 1}, whole_data}, second{{1, 3, 1, 1}, whole_data + 5};
  nnlib::tensor whole{{1, 8, 1, 1}, whole_data}, y{{1, 8, 1, 1}, y_data, nnlib::copied};
  nnlib::layer_chain<1, 1> first_chain{nnlib::list(a), nnlib::list(first)};
  nnlib::layer_chain<1, 1> second_chain{nnlib::list(b), nnlib::list(second)};
  nnlib::layer_chain<1, 1> exp_chain{nnlib::list(whole), nnlib::list(y)};
  ai_layer_nl exp = {nnlib::layer(AI_LAYER_TYPE_NL, forward_exp, exp_chain), nullptr};
  ai_layer_nl abs = {nnlib::layer(AI_LAYER_TYPE_NL, forward_abs, second_chain, &exp.base), nullptr};
  ai_layer_nl neg = {nnlib::layer(AI_LAYER_TYPE_NL, forward_neg, first_chain, &abs.base), nullptr};
  nnlib::network<2, 1> network{nnlib::list(a, b), nnlib::list(y), neg.base};
};

TEST(NetworkCheck, TensorsOfPieces) {
  using N = PiecesNetwork;
  expect_texts<N>({
      {[](N& n) { move_to(n.second, n.whole_data + 4); },
       "layer 2, forward_exp: input 0 is overwritten by output 0 of layer 0"},
      {[](N& n) { move_to(n.second, n.whole_data + 6); },
       "layer 2, forward_exp: input 0 is overwritten by output 0 of layer 0"},
  });
}

TEST(NetworkCheck, ConstantsInTheWay) {
  float x_data[4] = {}, c_data[4] = {};
  nnlib::tensor x({1, 4, 1, 1}, x_data, nnlib::copied), c({1, 4, 1, 1}, c_data);
  nnlib::tensor y({1, 4, 1, 1}, c_data, nnlib::copied);
  const nnlib::layer_chain chain(nnlib::list(x, c), nnlib::list(y));
  ai_layer_eltwise sum = {nnlib::layer(AI_LAYER_TYPE_ELTWISE, forward_eltwise, chain), ai_sum};
  nnlib::network<1, 1> network{nnlib::list(x), nnlib::list(y), sum.base};
  EXPECT_EQ(findings(network),
            "layer 0, forward_eltwise: input 1 is a constant that output 0 overwrites");
}

TEST(NetworkCheck, BuffersOfMoreElementsThanArrays) {
  float x_data[4] = {}, y_data[4] = {};
  nnlib::tensor x({1, 4, 1, 1}, x_data), y({1, 4, 1, 1}, y_data, nnlib::copied);
  nnlib::tensor view({1, 6, 1, 1}, x_data, nnlib::copied);
  view.array.size = 4;
  view.stride.data[AI_SHAPE_H] = sizeof(x_data);
  const nnlib::layer_chain chain(nnlib::list(x), nnlib::list(y));
  ai_layer_nl abs = {nnlib::layer(AI_LAYER_TYPE_NL, forward_abs, chain), nullptr};
  nnlib::network<1, 1> network{nnlib::list(view), nnlib::list(y), abs.base};
  EXPECT_EQ(findings(network),
            "network: input 0 has an array of 4 elements, a buffer of its dimensions (1, 6, 1, 1) "
            "has 6");
}

TEST(NetworkCheck, MissingRecords) {
  using N = FloatNetwork;
  static const ai_array no_data = {AI_ARRAY_FORMAT_FLOAT, 3, nullptr, nullptr};
  static ai_tensor* two[2];
  static ai_tensor_list_info without;
  expect_among<N>({
      {[](N& n) { n.conv_weights.shape.data = nullptr; },
       "layer 0, forward_conv2d: weights 0 has a shape without its 4 sizes"},
      {[](N& n) { n.map.stride.data = nullptr; },
       "layer 0, forward_conv2d: output 0 has 0 strides, 4 are needed"},
      {[](N& n) {
         n.conv_weights.array.format = AI_ARRAY_FORMAT_LUT4_FLOAT;
         n.conv_weights.array.data_start = nullptr;
       },
       "layer 0, forward_conv2d: weights 0 is of indices, but data_start points to no table of 16 "
       "values"},
      {[](N& n) { n.conv.base.tensor_chain = nullptr; },
       "layer 0, forward_conv2d: the layer's chain has 0 lists, 4 are needed"},
      {[](N& n) { n.conv.filter_pad.data = nullptr; },
       "layer 0, forward_conv2d: filter_pad has 0 values, 4 are needed: top, left, bottom, right"},
      {[](N& n) {
         n.conv.nl_func = nl_func_clip_array_f32;
         n.conv.nl_params = &no_data;
       },
       "layer 0, forward_conv2d: nl_params is missing, 2 values are needed"},
      {[](N& n) {
         n.softmax.forward = [](ai_layer*) {};
         n.softmax.type = 77;
       },
       "layer 4: type 77 is no layer type"},
      {[](N& n) { n.x.shape.data[AI_SHAPE_W] = 70000; },
       "network: input 0 has the dimensions (1, 3, 70000, 5), a buffer's width and height are at "
       "most 65535"},
      {[](N& n) {
         two[0] = &n.x;
         const_cast<ai_tensor_list&>(n.network.io.chain[0]).tensors = two;
         const_cast<ai_tensor_list&>(n.network.io.chain[0]).size = 2;
       },
       "network: entry 1 of the network's 2 inputs is null"},
      {[](N& n) {
         without = *n.network.io.chain[1].info;
         without.meta_infos = nullptr;
         const_cast<ai_tensor_list&>(n.network.io.chain[1]).info = &without;
       },
       "network: the list of the network's 1 outputs has no cursors, buffers and meta infos: it is "
       "declared by AI_IO_LIST, not by AI_LIST"},
  });
  using I = IntegerNetwork;
  expect_among<I>({
      {[](I& n) { const_cast<ai_intq_info*>(n.map_q.info)->scale = nullptr; },
       "layer 1, forward_conv2d_integer: the quantization record of output 0 has no scales, 1 is "
       "needed"},
      {[](I& n) { const_cast<ai_intq_info*>(n.map_q.info)->zeropoint = nullptr; },
       "layer 1, forward_conv2d_integer: the quantization record of output 0 has no zero points, 1 "
       "is needed"},
      {[](I& n) { n.map_q.flags_size = 2u << 16; },
       "layer 1, forward_conv2d_integer: the quantization record of output 0 has 2 scales, 1 is "
       "needed"},
      {[](I& n) { n.scale[0] = std::nanf(""); }, "is NaN, not above 0"},
      {[](I& n) { n.scale[0] = -1.5f; }, "is -1.5, not above 0"},
      {[](I& n) { n.scale[0] = HUGE_VALF; }, "is infinity, not above 0"},
  });
}

TEST(NetworkCheck, IntegerLayers) {
  using N = IntegerNetwork;
  expect_texts<N>({
      {[](N& n) {
         reshape(n.scratch, {1, 64, 1, 1});
       },
       "layer 1, forward_conv2d_integer: scratch 0 holds 64 bytes, 82 are needed"},
      {[](N& n) {
         move_to(n.scratch, n.columns + 1);
         reshape(n.scratch, {1, 250, 1, 1});
       },
       "layer 1, forward_conv2d_integer: scratch 0 lies 1 bytes behind a multiple of 4\n"
       "layer 3, forward_dense_integer: scratch 0 lies 1 bytes behind a multiple of 4"},
      {[](N& n) { list_of(n.conv.base, AI_CHAIN_SCRATCH).size = 0; },
       "layer 1, forward_conv2d_integer: scratch 0 is missing, 82 bytes are needed\n"
       "layer 1, forward_conv2d_integer: scratch 1 is missing, 60 bytes are needed"},
      {[](N& n) { list_of(n.conv.base, AI_CHAIN_SCRATCH).size = 1; },
       "layer 1, forward_conv2d_integer: scratch 1 is missing, 60 bytes are needed"},
      {[](N& n) { n.map.klass = nullptr; },
       "layer 1, forward_conv2d_integer: output 0 has no quantization record, one of 1 scale is "
       "needed\n"
       "layer 2, forward_mp_integer: input 0 has no quantization record, one of 1 scale is needed"},
      {[](N& n) { n.filter_q.flags_size = 4u << 16; },
       "layer 1, forward_conv2d_integer: the quantization record of weights 0 has 4 scales, 1 or 5 "
       "are needed"},
      {[](N& n) { n.scales[2] = 0.0f; },
       "layer 1, forward_conv2d_integer: scale 2 of weights 0 is 0, not above 0"},
      {[](N& n) { n.zeros[3] = 7; },
       "layer 1, forward_conv2d_integer: zero point 3 of weights 0 is 7, int8 weights have 0"},
      {[](N& n) { n.conv_bias.array.format = AI_ARRAY_FORMAT_FLOAT; },
       "layer 1, forward_conv2d_integer: weights 1 has the format FMT_FLOAT, needed is int32"},
      {[](N& n) { n.codes.array.format = AI_ARRAY_FORMAT_U8; },
       "layer 1, forward_conv2d_integer: output 0 has the format FMT_S8, input 0 has FMT_U8"},
      {[](N& n) { n.conv_weights.array.format = AI_ARRAY_FORMAT_U8; },
       "layer 1, forward_conv2d_integer: input 0 is FMT_S8, weights 0 are FMT_U8: the function "
       "hangs"},
      {[](N& n) { n.conv.groups = 2; },
       "layer 1, forward_conv2d_integer: weights 0 has the dimensions (2, 2, 2, 5), (2, 2, 2, 1) "
       "are needed\n"
       "layer 1, forward_conv2d_integer: groups is 2 with 2 input and 5 output channels; unless "
       "they are as many, the function hangs"},
      {[](N& n) { n.conv.dilation[1] = 2; },
       "layer 1, forward_conv2d_integer: the dilation in y is 2, the function knows only 1"},
      {[](N& n) { n.conv.base.forward = forward_conv2d_fixed; },
       "layer 1, forward_conv2d_fixed: input 0 has a quantization record of 1 scale, fixed point "
       "of 8 or 16 bits has none\n"
       "layer 1, forward_conv2d_fixed: output 0 has a quantization record of 1 scale, fixed point "
       "of the width of input 0 has none\n"
       "layer 1, forward_conv2d_fixed: weights 0 has a quantization record of 5 scales, fixed "
       "point of the width of input 0 has none\n"
       "layer 1, forward_conv2d_fixed: weights 1 has the format FMT_S32, needed is fixed point of "
       "the width of input 0\n"
       "layer 1, forward_conv2d_fixed: the list of scratch has 2 tensors, at most 1 is taken\n"
       "layer 1, forward_conv2d_fixed: nl_func is nl_func_relu_array_integer for 8-bit integers, "
       "the layer computes fixed point"},
      {[](N& n) { n.conv.nl_params = nullptr; },
       "layer 1, forward_conv2d_integer: nl_params is missing, 1 value is needed"},
      {[](N& n) { n.relu.nl_params = nullptr; },
       "layer 4, forward_relu_integer: nl_params is missing, 1 value is needed"},
      {[](N& n) { n.relu.base.forward = forward_clip_integer; },
       "layer 4, forward_clip_integer: nl_params has 1 value, 2 are needed"},
      {[](N& n) {
         n.relu.base.forward = forward_sm;
         n.relu.base.type = AI_LAYER_TYPE_SM;
       },
       "layer 4, forward_sm: input 0 has the format FMT_S8, needed is float32\n"
       "layer 4, forward_sm: output 0 has the format FMT_S8, needed is float32"},
      {[](N& n) { replace(n.dense, AI_CHAIN_INPUT, 0, &n.pooled); },
       "layer 3, forward_dense_integer: input 0 has the dimensions (1, 5, 1, 2), (1, 10, 1, 1) are "
       "needed: another order or view of its 10 elements"},
      {[](N& n) {
         move_to(n.scratch, n.map_data);
         reshape(n.scratch, {1, 60, 1, 1});
       },
       "layer 1, forward_conv2d_integer: scratch 0 begins 0 bytes behind the start of output 0 and "
       "shares memory with it, which the function does not allow"},
  });
}

TEST(NetworkCheck, FixedPointLayers) {
  using N = FixedNetwork;
  expect_texts<N>({
      {[](N& n) { n.conv_bias.array.format = N::q(8, 12); },
       "layer 0, forward_conv2d_nl_pool_fixed: weights 1 have 12 fractional bits, more than the "
       "products' 11"},
      {[](N& n) { n.y.array.format = N::q(8, 5) | nnlib::copied; },
       "layer 2, forward_sm_fixed: output 0 has 5 fractional bits, the function gives 7"},
      {[](N& n) {
         reshape(n.rows, {1, 4, 4, 1});
       },
       "layer 0, forward_conv2d_nl_pool_fixed: scratch 0 holds 16 bytes, 32 are needed"},
      {[](N& n) {
         reshape(n.rows, {1, 4, 3, 2});
       },
       "layer 0, forward_conv2d_nl_pool_fixed: scratch 0 has a width of 3; a window of 2 in steps "
       "of 1 over 0 + 5 + 0 gives 4"},
      {[](N& n) {
         reshape(n.scratch, {1, 23, 1, 1});
       },
       "layer 0, forward_conv2d_nl_pool_fixed: scratch 1 holds 46 bytes, 48 are needed"},
      {[](N& n) { n.rows.data = nullptr; },
       "layer 0, forward_conv2d_nl_pool_fixed: scratch 0 has no array\n"
       "layer 0, forward_conv2d_nl_pool_fixed: scratch 0 has a width of 0; a window of 2 in steps "
       "of 1 over 0 + 5 + 0 gives 4"},
      {[](N& n) { n.conv.pool_func = nullptr; },
       "layer 0, forward_conv2d_nl_pool_fixed: pool_func is null, the layer pools with it"},
      {[](N& n) { n.conv.pool_func = pool_func_ap_array_integer; },
       "layer 0, forward_conv2d_nl_pool_fixed: pool_func is pool_func_ap_array_integer for 8-bit "
       "integers, the layer computes fixed point"},
      {[](N& n) { n.conv.base.groups = 2; },
       "layer 0, forward_conv2d_nl_pool_fixed: groups is 2, the function takes 1 or as many as the "
       "3 input channels, else it hangs"},
      {[](N& n) { n.conv.pool_size[1] = 0; },
       "layer 0, forward_conv2d_nl_pool_fixed: the pooling window's height is 0, 1 to 65535 are "
       "possible"},
  });
}

}  // namespace
