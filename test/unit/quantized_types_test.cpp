// SPDX-License-Identifier: MIT
// Integer layers and conversions of a build for int8_int8symwt alone: they compute int8 and hang
// with all else, which the checker says.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <vector>

#include "check/ai_network_check.h"
#include "core/ai_declare.h"
#include "core/core_common.h"
#include "core/core_convert.h"
#include "layers_quantized/layers_conv2d_quarn_integer.h"
#include "layers_quantized/layers_nl_quarn_integer.h"
#include "layers_quantized/layers_pool_quarn_integer.h"
#include "layers_quantized/layers_quarn_integer.h"

constexpr int kHung = 77, kHungUnseen = 78;
uint32_t findings;  // about types that are left out

void core_hang(void) {
  std::_Exit(findings == 1 ? kHung : kHungUnseen);
}

namespace {

enum Ends { kIntegers, kFromFloat, kToFloat };

// A layer from a pixel of two channels to another, the scales 1 and the zero points 0.
struct Row {
  const char* name;
  uint16_t type;
  ai_layer_forward forward;
  std::vector<float> want;
  Ends ends = kIntegers;
  nnlib::dims weights = {2, 1, 1, 2};
  uint32_t groups = 1;
};

// The record of any of the layers.
union Record {
  ai_layer base;
  ai_layer_conv2d conv;
  ai_layer_pool pool;
  ai_layer_nl nl;
};

void count_findings(const ai_network& network) {
  const auto look = [](const ai_check_finding* finding, void*) {
    findings += std::strstr(finding->sentence, "left out") != nullptr;
  };
  findings = 0;
  ai_network_check(&network, look, nullptr);
}

// fixed: without a record of quantization.
template <class T, class W>
std::vector<float> run(const Row& row, bool fixed = false) {
  static constexpr float scale[] = {1.0f};
  static constexpr T zero[] = {0};
  static constexpr W weight_zero[] = {0};
  const nnlib::intq<T, 1> q(scale, zero);
  const nnlib::intq<W, 1> weight_q(scale, weight_zero);
  T in_data[] = {10, 20}, out_data[2] = {}, limits[] = {15, 18};
  W weight_data[] = {1, 2, 3, 4};
  float from[] = {1.6f, 2.4f}, to[2] = {};
  uint32_t none[4] = {}, scratch_data[16] = {};
  const nnlib::dims pixel = {1, 2, 1, 1};
  nnlib::tensor in(pixel, in_data, 0, fixed ? nullptr : &q);
  nnlib::tensor out(pixel, out_data, 0, fixed ? nullptr : &q);
  nnlib::tensor float_in(pixel, from), float_out(pixel, to);
  nnlib::tensor weights(row.weights, weight_data, 0, &weight_q);
  nnlib::tensor scratch({1, 64, 1, 1}, reinterpret_cast<uint8_t*>(scratch_data));
  nnlib::layer_chain chain(nnlib::list(row.ends == kFromFloat ? float_in : in, in),
                           nnlib::list(row.ends == kToFloat ? float_out : out),
                           nnlib::list(weights), nnlib::list(scratch));
  const ai_layer base = nnlib::layer(row.type, row.forward, chain);
  const ai_array params = {in.array.format, 2, limits, limits};
  const ai_shape no_pad = {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), none};
  Record record;
  if (row.forward == forward_conv2d_integer) {
    record.conv = {base, row.groups, nullptr, nullptr, {1, 1}, {1, 1}, no_pad};
  } else if (row.forward == forward_mp_integer || row.forward == forward_ap_integer) {
    record.pool = {base, {1, 1}, {1, 1}, no_pad, 0};
  } else {
    record.nl = {base, &params};
  }
  count_findings(nnlib::network(nnlib::list(in), nnlib::list(out), record.base));
  row.forward(&record.base);
  return row.ends == kToFloat ? std::vector<float>(to, to + 2)
                              : std::vector<float>(out_data, out_data + 2);
}

const Row kRows[] = {
    {"convolution", AI_LAYER_TYPE_CONV2D, forward_conv2d_integer, {50, 110}},
    {"depthwise",
     AI_LAYER_TYPE_CONV2D,
     forward_conv2d_integer,
     {10, 40},
     kIntegers,
     {2, 1, 1, 1},
     2},
    {"dense", AI_LAYER_TYPE_DENSE, forward_dense_integer, {50, 110}, kIntegers, {2, 2, 1, 1}},
    {"maximum", AI_LAYER_TYPE_POOL, forward_mp_integer, {10, 20}},
    {"average", AI_LAYER_TYPE_POOL, forward_ap_integer, {10, 20}},
    {"relu", AI_LAYER_TYPE_NL, forward_relu_integer, {15, 20}},
    {"clip", AI_LAYER_TYPE_NL, forward_clip_integer, {15, 18}},
    {"addition", AI_LAYER_TYPE_ADD, forward_add_integer, {20, 40}},
    {"from float", AI_LAYER_TYPE_NL, node_convert, {2, 2}, kFromFloat},
    {"to float", AI_LAYER_TYPE_NL, node_convert, {10, 20}, kToFloat},
};

TEST(QuantizedTypes, ThoseNamedAreComputed) {
  for (const Row& row : kRows) {
    EXPECT_EQ(row.want, (run<int8_t, int8_t>(row))) << row.name;
    EXPECT_EQ(0u, findings) << row.name;
  }
}

TEST(QuantizedTypesDeathTest, OthersHang) {
  for (const Row& row : kRows) {
    EXPECT_EXIT((run<uint8_t, uint8_t>(row)), testing::ExitedWithCode(kHung), "") << row.name;
    EXPECT_EXIT((run<uint8_t, int8_t>(row)), testing::ExitedWithCode(kHung), "") << row.name;
    if (row.ends != kIntegers) {
      EXPECT_EXIT((run<int8_t, int8_t>(row, true)), testing::ExitedWithCode(kHung), "");
    }
  }
}

}  // namespace
