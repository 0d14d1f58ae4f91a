// SPDX-License-Identifier: MIT
// Times and work of layers: which run counts, what is counted, how it is printed.
#include <gtest/gtest.h>

#include <string>

#include "nnlib.h"
#include "profile/ai_profile.h"

namespace {

uint32_t fake_time = 0;
uint32_t now() {
  return fake_time;
}

// Runs for ticks[run].
struct Waiting {
  ai_layer base;
  const uint32_t* ticks;
};
void forward_waiting(ai_layer* layer) {
  fake_time += *reinterpret_cast<Waiting*>(layer)->ticks++;
}

ai_layer waiting(ai_layer* next = nullptr) {
  static const nnlib::layer_chain chain(nnlib::list(), nnlib::list());
  return nnlib::layer(AI_LAYER_TYPE_GENERIC, forward_waiting, chain, next);
}

void append(const char* text, void* context) {
  *static_cast<std::string*>(context) += text;
}

TEST(Profile, FastestRunOfEachLayerAcrossTheClocksWrap) {
  const uint32_t first_ticks[] = {30, 20, 25};
  const uint32_t second_ticks[] = {5, 6, 4};
  Waiting second{waiting(), second_ticks};
  Waiting first{waiting(&second.base), first_ticks};
  ai_network net{};
  net.layers = &first.base;
  fake_time = 0xFFFFFFF0u;
  ai_profile_entry entries[3] = {};
  ASSERT_EQ(ai_profile_run(&net, now, 3, entries, 3), 2u);
  EXPECT_EQ(entries[0].layer, &first.base);
  EXPECT_EQ(entries[0].ticks, 20u);
  EXPECT_EQ(entries[1].layer, &second.base);
  EXPECT_EQ(entries[1].ticks, 4u);
  EXPECT_EQ(net.current_layer, nullptr);
}

TEST(Profile, LayersBeyondTheCapacityRunAndOneRunIsTheLeast) {
  const uint32_t ticks[] = {7, 8};
  Waiting second{waiting(), ticks + 1};
  Waiting first{waiting(&second.base), ticks};
  ai_network net{};
  net.layers = &first.base;
  fake_time = 0;
  ai_profile_entry entries[2] = {{}, {nullptr, 99}};
  EXPECT_EQ(ai_profile_run(&net, now, 0, entries, 1), 1u);
  EXPECT_EQ(entries[0].ticks, 7u);
  EXPECT_EQ(entries[1].ticks, 99u);
  EXPECT_EQ(fake_time, 15u);
}

// A layer of two inputs and two weights of the given dimensions.
template <class Record>
uint64_t work(ai_layer_forward forward, nnlib::dims in, nnlib::dims out, nnlib::dims weights,
              nnlib::dims more_weights, Record record) {
  float* const none = nullptr;
  nnlib::tensor x(in, none), y(out, none), w(weights, none), v(more_weights, none);
  nnlib::layer_chain chain(nnlib::list(x), nnlib::list(y), nnlib::list(w, v));
  ai_layer& base = reinterpret_cast<ai_layer&>(record);
  base.forward = forward;
  base.tensor_chain = &chain;
  return ai_layer_multiply_accumulates(&base);
}

TEST(LayerWork, ProductsOfEachFamily) {
  uint32_t pads[] = {1, 2, 0, 3};  // top, left, bottom, right
  ai_layer_conv2d conv{};
  conv.filter_stride[0] = 2;
  conv.filter_stride[1] = 1;
  conv.dilation[0] = 1;
  conv.dilation[1] = 3;
  conv.filter_pad = {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), pads};
  const nnlib::dims map{1, 6, 9, 8}, kernel{3, 3, 2, 4}, bias{1, 4, 1, 1};
  // Two groups of three channels, 3 wide and 2 high: 18 products for each of 4 * 6 * 6 outputs.
  EXPECT_EQ(work(forward_conv2d, map, {1, 4, 6, 6}, kernel, bias, conv), 18u * 4 * 6 * 6);
  EXPECT_EQ(work(forward_conv2d_integer, map, {1, 4, 6, 6}, kernel, bias, conv), 18u * 4 * 6 * 6);
  EXPECT_EQ(work(forward_conv2d_transpose, map, {1, 4, 19, 9}, kernel, bias, conv),
            18u * 4 * 9 * 8);
  // The map before pooling: (2 + 9 + 3 - 3) / 2 + 1 = 6 wide, 1 + 8 - 4 + 1 = 6 high.
  EXPECT_EQ(work(forward_conv2d_nl_pool_fixed, map, {1, 4, 3, 2}, kernel, bias,
                 ai_layer_conv2d_nl_pool{conv, {}, {}, {}, nullptr}),
            18u * 4 * 6 * 6);
  EXPECT_EQ(work(forward_dense, {1, 5, 3, 2}, {1, 7, 3, 2}, {5, 7, 1, 1}, {1, 7, 1, 1}, ai_layer{}),
            5u * 7 * 6);
  EXPECT_EQ(work(forward_lstm, {1, 5, 1, 11}, {1, 3, 1, 1}, {5, 12, 1, 1}, {3, 12, 1, 1},
                 ai_layer_lstm{}),
            4u * 3 * (5 + 3) * 11);
  ai_layer_gemm transposed{};
  transposed.tA = 1;
  EXPECT_EQ(work(forward_gemm, {1, 4, 1, 5}, {1, 3, 1, 4}, {1, 3, 1, 5}, {1, 1, 1, 1}, transposed),
            5u * 3 * 4);
  EXPECT_EQ(
      work(forward_matmul, {2, 3, 5, 4}, {2, 3, 6, 4}, {2, 3, 6, 5}, {1, 1, 1, 1}, ai_layer{}),
      2u * 3 * 4 * 5 * 6);
  EXPECT_EQ(work(forward_relu, map, map, kernel, bias, ai_layer{}), 0u);
}

TEST(LayerWork, InnerLayersRunOnceForEachStep) {
  float* const none = nullptr;
  nnlib::tensor x({1, 5, 1, 6}, none), y({1, 7, 1, 6}, none), w({5, 7, 1, 1}, none);
  nnlib::layer_chain chain(nnlib::list(x), nnlib::list(y));
  nnlib::layer_chain inner_chain(nnlib::list(x), nnlib::list(y), nnlib::list(w));
  ai_layer dense = nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense, inner_chain);
  ai_layer_time_distributed steps = {
      nnlib::layer(AI_LAYER_TYPE_TIME_DISTRIBUTED, forward_time_distributed, chain), &dense};
  EXPECT_EQ(ai_layer_multiply_accumulates(&steps.base), 5u * 7 * 6);
}

TEST(Profile, TableAndJson) {
  float* const none = nullptr;
  nnlib::tensor x({1, 5, 3, 2}, none), y({1, 7, 3, 2}, none), w({5, 7, 1, 1}, none);
  nnlib::layer_chain chain(nnlib::list(x), nnlib::list(y), nnlib::list(w));
  const ai_layer dense = nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense, chain);
  const ai_layer own = nnlib::layer(AI_LAYER_TYPE_NL, forward_waiting, chain);
  const ai_profile_entry entries[] = {{&dense, 525}, {&own, 1575}};
  std::string table, json;
  ai_profile_print(entries, 2, "cycles", append, &table);
  ai_profile_print_json(entries, 2, "cycles", append, &json);
  EXPECT_EQ(table,
            "#   function                          output              cycles       %        macs"
            "   per mac\n"
            "0   forward_dense                     2x3x7                  525    25.0         210"
            "      2.50\n"
            "1   (application)                     2x3x7                 1575    75.0           0"
            "         -\n"
            "all                                                         2100   100.0         210"
            "     10.00\n");
  EXPECT_EQ(json,
            "{\"unit\": \"cycles\", \"layers\": [{\"function\": \"forward_dense\", \"shape\": "
            "[1, 7, 3, 2], \"ticks\": 525, \"macs\": 210}, {\"function\": \"(application)\", "
            "\"shape\": [1, 7, 3, 2], \"ticks\": 1575, \"macs\": 0}]}\n");
}

}  // namespace
