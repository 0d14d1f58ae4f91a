// SPDX-License-Identifier: MIT
// Every layer that works element by element or pixel by pixel, with its output in place of its
// input: the bytes that it gives from memory to memory, on maps of several vectors, pixels and
// rows, and nothing around them touched.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <vector>

#include "core/ai_declare.h"
#include "core/core_convert.h"
#include "layers/layers_eltwise_generic_float.h"
#include "layers/layers_nl_generic_float.h"
#include "layers/layers_norm_generic_float.h"
#include "layers_quantized/layers_nl_quarn_fixed.h"
#include "layers_quantized/layers_nl_quarn_integer.h"
#include "layers_quantized/layers_quarn_integer.h"
#include "layers_quantized/layers_sm_quarn_fixed.h"
#include "test/unit/float_data.hpp"

namespace {

constexpr nnlib::dims kMap = {1, 7, 5, 6};
constexpr nnlib::dims kPixel = {1, 7, 1, 1};
constexpr nnlib::dims kColumn = {1, 7, 1, 6};
constexpr size_t kMargin = 64;  // elements on each side

// Where the map stands among the inputs, beside an operand that is no output; or the operands are
// weights.
enum Place { kAlone, kFirst, kSecond, kBesideWeights };

struct Row {
  const char* name;
  ai_array_format format;
  ai_layer_forward forward;
  std::vector<float> params = {};  // of the element's type
  ai_binary_fn operation = nullptr;
  Place place = kAlone;
  nnlib::dims operand = kMap;
  nnlib::dims map = kMap;
};

void PrintTo(const Row& row, std::ostream* to) {
  *to << row.name;
}

size_t bytes_of(const Row& row, size_t elements) {
  return ai_array_get_byte_size(row.format, static_cast<uint32_t>(elements));
}

std::vector<uint8_t> data_of(const Row& row, size_t elements, uint32_t seed) {
  const std::vector<float> values = irregular_floats(elements, seed);
  std::vector<uint8_t> data(bytes_of(row, elements));
  std::memcpy(data.data(), values.data(), data.size());
  if (!ai_fmt_is_float(row.format)) {
    for (size_t i = 0; i < data.size(); ++i) data[i] = data[4 * i % data.size()] ^ uint8_t(i * 37);
  }
  return data;
}

std::vector<uint8_t> params_of(const Row& row) {
  std::vector<uint8_t> bytes;
  for (const float value : row.params) {
    if (ai_fmt_is_float(row.format)) {
      const auto* word = reinterpret_cast<const uint8_t*>(&value);
      bytes.insert(bytes.end(), word, word + sizeof(value));
    } else {
      const auto element = static_cast<int16_t>(value);
      const auto byte = static_cast<uint8_t>(element);
      const auto* word = reinterpret_cast<const uint8_t*>(&element);
      if (bytes_of(row, 1) == 1) {
        bytes.push_back(byte);
      } else {
        bytes.insert(bytes.end(), word, word + sizeof(element));
      }
    }
  }
  return bytes;
}

const float kScale[] = {0.05f}, kOtherScale[] = {0.07f};
const int8_t kZero[] = {3}, kOtherZero[] = {11};
const nnlib::intq<int8_t, 1> kQuantization(kScale, kZero),
    kOtherQuantization(kOtherScale, kOtherZero);

const ai_intq_info_list* quantization(const Row& row, bool other = false) {
  if (row.forward != forward_add_integer) return nullptr;
  return other ? &kOtherQuantization : &kQuantization;
}

// Runs the row's layer from one tensor to the other.
void run(const Row& row, ai_tensor& in, ai_tensor& out) {
  const std::vector<uint8_t> operands = data_of(row, 2 * row.operand.elements(), 99);
  std::vector<uint8_t> params = params_of(row);
  const size_t half = operands.size() / 2;
  nnlib::tensor operand(row.format, row.operand, operands.data(), quantization(row, true));
  nnlib::tensor second(row.format, row.operand, operands.data() + half);
  const ai_array values = {row.format, static_cast<ai_size>(row.params.size()), params.data(),
                           params.data()};
  ai_tensor* inputs[] = {&in, &operand};
  if (row.place == kSecond) std::swap(inputs[0], inputs[1]);
  ai_tensor* outputs[] = {&out};
  ai_tensor* weights[] = {&operand, &second};
  const bool two = row.place == kFirst || row.place == kSecond;
  const uint16_t given = row.place == kBesideWeights ? 2 : 0;
  const ai_tensor_list lists[] = {{static_cast<uint16_t>(two ? 2 : 1), inputs, nullptr},
                                  {1, outputs, nullptr},
                                  {given, weights, nullptr}};
  const ai_tensor_chain chain = {3, lists};
  union {
    ai_layer_nl nl;
    ai_layer_eltwise eltwise;
    ai_layer_norm norm;
    ai_layer_instance_norm instance;
  } layer;
  std::memset(&layer, 0, sizeof(layer));
  if (row.forward == forward_norm) {
    layer.norm.axis = AI_SHAPE_C;
    layer.norm.exponent = 2.0f;
  } else if (row.forward == forward_eltwise) {
    layer.eltwise.operation = row.operation;
  } else if (row.forward != forward_instanceNormalization) {
    layer.nl.nl_params = params.empty() ? nullptr : &values;
  }
  layer.nl.base = nnlib::layer(AI_LAYER_TYPE_NL, row.forward, chain);
  row.forward(&layer.nl.base);
}

class InPlace : public testing::TestWithParam<Row> {};

TEST_P(InPlace, SameBytesAsFromMemoryToMemory) {
  const Row& row = GetParam();
  const size_t margin = bytes_of(row, kMargin);
  const std::vector<uint8_t> before = data_of(row, row.map.elements() + 2 * kMargin, 5);
  std::vector<uint8_t> source = before, expected = before;
  nnlib::tensor in(row.format, row.map, source.data() + margin, quantization(row));
  nnlib::tensor out(row.format, row.map, expected.data() + margin, quantization(row));
  run(row, in, out);
  ASSERT_NE(expected, before);
  for (const int records : {1, 2, 3}) {  // tensors, arrays: 1 and 1, 2 and 1, 2 and 2
    std::vector<uint8_t> memory = before;
    nnlib::tensor from(row.format, row.map, memory.data() + margin, quantization(row));
    nnlib::tensor to(row.format, row.map, memory.data() + margin, quantization(row));
    if (records == 2) static_cast<ai_tensor&>(to).data = &from.array;
    run(row, from, records == 1 ? from : to);
    EXPECT_EQ(memory, expected) << records;
    EXPECT_EQ(from.array.data, memory.data() + margin);
    EXPECT_EQ(to.array.data, memory.data() + margin);
  }
}

constexpr ai_array_format kFloat = AI_ARRAY_FORMAT_FLOAT;
constexpr ai_array_format kS8 = AI_ARRAY_FORMAT_S8, kU8 = AI_ARRAY_FORMAT_U8;
constexpr ai_array_format kQ7 = AI_ARRAY_FORMAT_MAKE_Q(8, 4), kQ15 = AI_ARRAY_FORMAT_MAKE_Q(16, 11);

std::vector<float> table() {
  std::vector<float> entries(256);
  for (size_t i = 0; i < entries.size(); ++i) entries[i] = static_cast<float>(i * 5 % 251) - 100;
  return entries;
}

#define NL(op) {#op, kFloat, forward_##op},
#define FIXED(op, ...)                               \
  {#op " Q7", kQ7, op __VA_OPT__(, ) __VA_ARGS__}, { \
#op " Q15", kQ15, op __VA_OPT__(, ) __VA_ARGS__  \
  }
#define INTEGER(op, ...)                             \
  {#op " S8", kS8, op __VA_OPT__(, ) __VA_ARGS__}, { \
#op " U8", kU8, op __VA_OPT__(, ) __VA_ARGS__    \
  }

INSTANTIATE_TEST_SUITE_P(
    Layers, InPlace,
    testing::ValuesIn(std::vector<Row>{
        // clang-format off
        AI_NL_ARITHMETIC_OPS(NL) AI_NL_LIBRARY_OPS(NL) AI_NL_EXP_OPS(NL) NL(relu) NL(sm)
        {"clip", kFloat, forward_clip, {-0.5f, 0.25f}},
        {"elu", kFloat, forward_elu, {0.5f}},
        {"selu", kFloat, forward_selu, {1.6f, 1.05f}},
        {"relu_thresholded", kFloat, forward_relu_thresholded, {0.25f}},
        {"relu of one", kFloat, forward_relu, {0.25f}},
        {"relu of three", kFloat, forward_relu, {0.25f, 0.5f, 0.75f}},
        {"prelu of channels", kFloat, forward_prelu, {}, nullptr, kBesideWeights, kPixel},
        {"prelu of rows", kFloat, forward_prelu, {}, nullptr, kBesideWeights, {1, 7, 5, 1}},
        {"prelu of positions", kFloat, forward_prelu, {}, nullptr, kBesideWeights, kMap},
        {"hardmax", kFloat, forward_hardmax, {}, nullptr, kAlone, kMap, {1, 7, 1, 6}},
        {"bn", kFloat, forward_bn, {}, nullptr, kBesideWeights, kPixel},
        {"norm", kFloat, forward_norm},
        {"instance norm", kFloat, forward_instanceNormalization, {}, nullptr, kBesideWeights,
         kPixel},
        {"sum", kFloat, forward_eltwise, {}, ai_sum, kFirst},
        {"second of a difference", kFloat, forward_eltwise, {}, ai_sub, kSecond},
        {"quotient by channels", kFloat, forward_eltwise, {}, ai_div, kFirst, kPixel},
        {"channels by a map", kFloat, forward_eltwise, {}, ai_div, kSecond, kPixel},
        {"product of columns", kFloat, forward_eltwise, {}, ai_mul, kFirst, kColumn},
        {"largest of a number", kFloat, forward_eltwise, {}, ai_max, kSecond, {1, 1, 1, 1}},
        {"a function of its own", kFloat, forward_eltwise, {}, ai_floor_mod, kSecond, kPixel},
        FIXED(forward_relu_fixed), FIXED(forward_relu_max_fixed, {70.0f}),
        FIXED(forward_tanh_fixed), FIXED(forward_sigmoid_fixed), FIXED(forward_sm_fixed),
        INTEGER(forward_relu_integer, {20.0f}), INTEGER(forward_clip_integer, {20.0f, 90.0f}),
        INTEGER(forward_nl_integer, table()), INTEGER(node_convert_integer),
        INTEGER(forward_add_integer, {}, nullptr, kFirst),
        INTEGER(forward_add_integer, {}, nullptr, kSecond, kPixel),
        INTEGER(forward_add_integer, {}, nullptr, kFirst, {1, 1, 1, 1}),
        // clang-format on
    }));

}  // namespace
