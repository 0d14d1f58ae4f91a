// SPDX-License-Identifier: MIT
// As layers.cpp, for pooling layers, which are counted by the element of their output. Prints
// layer, unit, number of units.
#include <cstdio>
#include <initializer_list>

#include "nnlib.h"
#include "tools/instructions/region.hpp"

namespace {

constexpr uint32_t kInSide = 16;
constexpr uint32_t kChannels = 32;

constexpr struct {
  uint32_t side;
  uint32_t stride;
} kWindows[] = {{2, 2}, {3, 1}};

// All data types use the same memory.
alignas(8) uint8_t g_in[kInSide * kInSide * kChannels * sizeof(float)];
alignas(8) uint8_t g_out[sizeof(g_in)];

// Irregular numbers from -128 to 127.
template <class T>
void fill() {
  T* elements = reinterpret_cast<T*>(g_in);
  uint32_t state = 1;
  for (uint32_t i = 0; i < sizeof(g_in) / sizeof(T); ++i) {
    state = state * 1664525 + 1013904223;
    elements[i] = static_cast<T>(static_cast<int32_t>(state >> 24) - 128);
  }
}

template <class T>
void count(const char* type, ai_array_format format, ai_layer_forward max, ai_layer_forward average,
           const ai_intq_info_list* quantization = nullptr) {
  fill<T>();
  for (const auto& [side, stride] : kWindows) {
    const uint32_t out_side = (kInSide - side) / stride + 1;
    nnlib::tensor in(format, {1, kChannels, kInSide, kInSide}, g_in, quantization);
    nnlib::tensor out(format, {1, kChannels, out_side, out_side}, g_out, quantization);
    const nnlib::layer_chain chain(nnlib::list(in), nnlib::list(out));
    uint32_t no_pad[AI_SHAPE_DIMS] = {};
    for (const ai_layer_forward forward : {max, average}) {
      ai_layer_pool layer = {nnlib::layer(AI_LAYER_TYPE_POOL, forward, chain),
                             {side, side},
                             {stride, stride},
                             {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), no_pad},
                             0};
      region_begin();
      layer.base.forward(&layer.base);
      region_end();
      std::printf("%s pooling %lux%lu, stride %lu;%s element;%lu\n",
                  forward == max ? "max" : "average", static_cast<unsigned long>(side),
                  static_cast<unsigned long>(side), static_cast<unsigned long>(stride), type,
                  static_cast<unsigned long>(out_side * out_side * kChannels));
    }
  }
}

}  // namespace

int main() {
  static float scale = 0.0625f;
  static int8_t zero_point = -3;
  static const ai_intq_info info = {&scale, &zero_point};
  static const ai_intq_info_list quantization = {1u << 16, &info};
  count<float>("float", AI_ARRAY_FORMAT_FLOAT, forward_mp, forward_ap);
  count<int8_t>("int8", AI_ARRAY_FORMAT_S8, forward_mp_integer, forward_ap_integer, &quantization);
  count<int8_t>("Q7", AI_ARRAY_FORMAT_MAKE_Q(8, 5), forward_mp_fixed, forward_ap_fixed);
  return 0;
}
