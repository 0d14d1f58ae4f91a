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
    count(of.name, "element", kElements, layer.base);
  }
}

void count_conversions() {
  static int8_t integers[kElements];
  static float scale = 0.0625f;
  static int8_t zero_point = -3;
  static const ai_intq_info info = {&scale, &zero_point};
  static const ai_intq_info_list quantization = {1u << 16, &info};
  nnlib::tensor quantized(AI_ARRAY_FORMAT_S8, {1, kElements, 1, 1}, integers, &quantization);
  const nnlib::layer_chain to(nnlib::list(in), nnlib::list(quantized));
  const nnlib::layer_chain from(nnlib::list(quantized), nnlib::list(out));
  ai_layer layer = nnlib::layer(AI_LAYER_TYPE_GENERIC, node_convert, to);
  count("float to int8", "element", kElements, layer);
  layer = nnlib::layer(AI_LAYER_TYPE_GENERIC, node_convert, from);
  count("int8 to float", "element", kElements, layer);
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
  count_recurrent();
  return 0;
}
