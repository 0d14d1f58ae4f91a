// SPDX-License-Identifier: MIT
// As layers.cpp, for layers that are counted by the element or, recurrent ones, by the step. Prints
// layer, unit, number of units.
#include <cstdio>

#include "nnlib.h"
#include "tools/instructions/region.hpp"

namespace {

constexpr uint32_t kElements = 1024;
constexpr uint32_t kFeatures = 16;
constexpr uint32_t kUnits = 16;
constexpr uint32_t kSteps = 8;

// Irregular numbers from -range to range.
template <uint32_t Count>
void fill(float (&values)[Count], float range) {
  uint32_t state = 1;
  for (float& value : values) {
    state = state * 1664525 + 1013904223;
    value = static_cast<float>(static_cast<int32_t>(state)) * 0x1p-31f * range;
  }
}

void count(const char* name, const char* unit, uint32_t units, ai_layer& layer) {
  region_begin();
  layer.forward(&layer);
  region_end();
  std::printf("%s;%s;%lu\n", name, unit, static_cast<unsigned long>(units));
}

float in_data[kElements];
float out_data[kElements];
nnlib::tensor in({1, kElements, 1, 1}, in_data);
nnlib::tensor out({1, kElements, 1, 1}, out_data);

void count_nonlinear() {
  static const nnlib::layer_chain chain(nnlib::list(in), nnlib::list(out));
  static float values[] = {1.6732f, 1.0507f};
  static const ai_array params = {AI_ARRAY_FORMAT_FLOAT, 2, values, values};
  const struct {
    const char* name;
    ai_layer_forward forward;
    const ai_array* params;
  } kLayers[] = {
      {"relu", forward_relu, nullptr},       {"exp", forward_exp, nullptr},
      {"sigmoid", forward_sigmoid, nullptr}, {"tanh", forward_tanh, nullptr},
      {"elu", forward_elu, &params},         {"selu", forward_selu, &params},
      {"softmax", forward_sm, nullptr},      {"softplus", forward_soft_plus, nullptr},
      {"cosh", forward_cosh, nullptr},       {"sinh", forward_sinh, nullptr},
  };
  fill(in_data, 8.0f);
  for (const auto& of : kLayers) {
    ai_layer_nl layer = {nnlib::layer(AI_LAYER_TYPE_NL, of.forward, chain), of.params};
    count(of.name, "float element", kElements, layer.base);
  }
}

float scales[] = {0.0625f, 0.09375f, 0.125f};
int8_t zero_points[] = {-3, 5, 0};
const ai_intq_info infos[] = {
    {scales, zero_points}, {scales + 1, zero_points + 1}, {scales + 2, zero_points + 2}};
const ai_intq_info_list quantizations[] = {
    {1u << 16, infos}, {1u << 16, infos + 1}, {1u << 16, infos + 2}};
int8_t bytes[3][kElements];
nnlib::tensor int8s[] = {{AI_ARRAY_FORMAT_S8, {1, kElements, 1, 1}, bytes[0], quantizations},
                         {AI_ARRAY_FORMAT_S8, {1, kElements, 1, 1}, bytes[1], quantizations + 1},
                         {AI_ARRAY_FORMAT_S8, {1, kElements, 1, 1}, bytes[2], quantizations + 2}};
nnlib::tensor q7(AI_ARRAY_FORMAT_MAKE_Q(8, 4), {1, kElements, 1, 1}, bytes[1]);
nnlib::tensor q7_out(AI_ARRAY_FORMAT_MAKE_Q(8, 4), {1, kElements, 1, 1}, bytes[2]);

void count_conversions() {
  nnlib::tensor uint8s(AI_ARRAY_FORMAT_U8, {1, kElements, 1, 1}, bytes[1], quantizations);
  const nnlib::layer_chain to_int8(nnlib::list(in), nnlib::list(int8s[0]));
  const nnlib::layer_chain from_int8(nnlib::list(int8s[0]), nnlib::list(out));
  const nnlib::layer_chain to_q7(nnlib::list(in), nnlib::list(q7));
  const nnlib::layer_chain from_q7(nnlib::list(q7), nnlib::list(out));
  const nnlib::layer_chain to_uint8(nnlib::list(int8s[0]), nnlib::list(uint8s));
  const struct {
    const char* name;
    ai_layer_forward forward;
    const ai_tensor_chain& chain;
  } kLayers[] = {
      {"float to int8", node_convert, to_int8},
      {"int8 to float", node_convert, from_int8},
      {"float to Q7", node_convert, to_q7},
      {"Q7 to float", node_convert, from_q7},
      {"int8 to uint8", node_convert_integer, to_uint8},
  };
  for (const auto& of : kLayers) {
    fill(in_data, 8.0f);  // which a conversion to fixed point scales
    ai_layer layer = nnlib::layer(AI_LAYER_TYPE_GENERIC, of.forward, of.chain);
    count(of.name, "element", kElements, layer);
  }
}

void count_quantized() {
  static int8_t table[256] = {-20, 100};  // as bounds too
  static const ai_array params = {AI_ARRAY_FORMAT_S8, 256, table, table};
  const nnlib::layer_chain of_int8(nnlib::list(int8s[0]), nnlib::list(int8s[2]));
  const nnlib::layer_chain of_q7(nnlib::list(q7), nnlib::list(q7_out));
  const struct {
    const char* name;
    const char* unit;
    ai_layer_forward forward;
    const ai_tensor_chain& chain;
  } kLayers[] = {
      {"relu", "int8 element", forward_relu_integer, of_int8},
      {"relu", "Q7 element", forward_relu_fixed, of_q7},
      {"clip", "int8 element", forward_clip_integer, of_int8},
      {"table", "int8 element", forward_nl_integer, of_int8},
  };
  for (const auto& of : kLayers) {
    ai_layer_nl layer = {nnlib::layer(AI_LAYER_TYPE_NL, of.forward, of.chain), &params};
    count(of.name, of.unit, kElements, layer.base);
  }
}

void count_additions() {
  const nnlib::layer_chain of_floats(nnlib::list(in, in), nnlib::list(out));
  ai_layer_eltwise sum = {nnlib::layer(AI_LAYER_TYPE_ELTWISE, forward_eltwise, of_floats), ai_sum};
  count("addition", "float element", kElements, sum.base);
  const nnlib::layer_chain of_int8s(nnlib::list(int8s[0], int8s[1]), nnlib::list(int8s[2]));
  ai_layer layer = nnlib::layer(AI_LAYER_TYPE_ELTWISE, forward_add_integer, of_int8s);
  count("addition", "int8 element", kElements, layer);
}

void count_recurrent() {
  static float weight_data[4 * kUnits * kUnits];
  fill(weight_data, 0.5f);
  fill(in_data, 1.0f);
  nnlib::tensor sequence({1, kFeatures, 1, kSteps}, in_data);
  nnlib::tensor states({1, kUnits, 1, kSteps}, out_data);
  nnlib::tensor weights({kUnits, kUnits, 1, 4}, weight_data);
  const nnlib::layer_chain chain(nnlib::list(sequence), nnlib::list(states),
                                 nnlib::list(weights, weights, weights, weights));
  ai_layer_lstm lstm = {nnlib::layer(AI_LAYER_TYPE_LSTM, forward_lstm, chain),
                        kUnits,
                        ai_math_tanh,
                        ai_math_sigmoid,
                        ai_math_tanh,
                        0,
                        0};
  ai_layer_gru gru = {nnlib::layer(AI_LAYER_TYPE_GRU, forward_gru, chain),
                      kUnits,
                      ai_math_tanh,
                      ai_math_sigmoid,
                      0,
                      0,
                      0};
  count("LSTM, 16 features, 16 units", "step", kSteps, lstm.base);
  count("GRU, 16 features, 16 units", "step", kSteps, gru.base);
}

}  // namespace

int main() {
  count_nonlinear();
  count_conversions();
  count_quantized();
  count_additions();
  count_recurrent();
  return 0;
}
