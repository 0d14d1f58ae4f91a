// SPDX-License-Identifier: MIT
// Runs convolution and dense layers between region_begin and region_end, for an emulator that
// counts instructions there. Prints a line for each: layer, data type, multiply-accumulates.
#include <cstdio>

#include "nnlib.h"
#include "tools/instructions/region.hpp"

namespace {

struct Shape {
  const char* name;
  uint32_t in_side;
  uint32_t in_channels;
  uint32_t kernel_side;
  uint32_t out_channels;
  uint32_t groups;
  bool is_dense = false;

  constexpr uint32_t out_side() const { return in_side - kernel_side + 1; }
  constexpr uint32_t products() const { return kernel_side * kernel_side * in_channels / groups; }
  constexpr uint32_t out_size() const { return out_side() * out_side() * out_channels; }
};

constexpr Shape kShapes[] = {
    {"convolution 3x3, 16 to 16 channels", 18, 16, 3, 16, 1},
    {"convolution 3x3, 32 to 32 channels", 18, 32, 3, 32, 1},
    {"convolution 3x3, 3 to 16 channels", 18, 3, 3, 16, 1},
    {"convolution 1x1, 32 to 32 channels", 16, 32, 1, 32, 1},
    {"convolution 1x1, 64 to 64 channels", 12, 64, 1, 64, 1},
    {"depthwise 3x3, 32 channels", 18, 32, 3, 32, 32},
    {"dense, 512 to 64", 1, 512, 1, 64, 1, true},
};

constexpr uint32_t kMaxChannels = 64;
constexpr uint32_t kMaxElements = 512 * 64;
constexpr uint32_t kScratchBytes = 8192;

alignas(4) uint8_t g_scratch[kScratchBytes];
// Inputs and outputs, and weights; all data types use the same memory.
constexpr uint32_t kMapBytes = 18 * 18 * 32 * sizeof(float);
alignas(8) uint8_t g_in[kMapBytes];
alignas(8) uint8_t g_weights[kMaxElements * sizeof(float)];
alignas(8) uint8_t g_out[kMapBytes];

// Irregular small numbers; exponents do not matter to a count of instructions.
template <class T>
T* numbers(uint8_t* storage, uint32_t bytes) {
  T* elements = reinterpret_cast<T*>(storage);
  uint32_t state = 1;
  for (uint32_t i = 0; i < bytes / sizeof(T); ++i) {
    state = state * 1664525 + 1013904223;
    elements[i] = static_cast<T>(static_cast<int32_t>(state >> 24) - 128);
  }
  return elements;
}

// What the data types differ in.
struct Float {
  using Element = float;
  using Bias = float;
  static constexpr const char* kName = "float";
  static constexpr ai_array_format kFormat = AI_ARRAY_FORMAT_FLOAT;
  static constexpr ai_layer_forward kConvolution = forward_conv2d;
  static constexpr ai_layer_forward kDense = forward_dense;
  static const ai_intq_info_list* quantization(uint32_t) { return nullptr; }
};

struct Q7 {
  using Element = int8_t;
  using Bias = int8_t;
  static constexpr const char* kName = "Q7";
  static constexpr ai_array_format kFormat = AI_ARRAY_FORMAT_MAKE_Q(8, 5);
  static constexpr ai_layer_forward kConvolution = forward_conv2d_fixed;
  static constexpr ai_layer_forward kDense = forward_dense_fixed;
  static const ai_intq_info_list* quantization(uint32_t) { return nullptr; }
};

struct Q15 {
  using Element = int16_t;
  using Bias = int16_t;
  static constexpr const char* kName = "Q15";
  static constexpr ai_array_format kFormat = AI_ARRAY_FORMAT_MAKE_Q(16, 10);
  static constexpr ai_layer_forward kConvolution = forward_conv2d_fixed;
  static constexpr ai_layer_forward kDense = forward_dense_fixed;
  static const ai_intq_info_list* quantization(uint32_t) { return nullptr; }
};

// Maps and weights of the same type, with zero points that are not 0 where they are unsigned.
template <class T>
struct Integer {
  using Element = T;
  using Bias = int32_t;
  static constexpr bool kSigned = std::is_signed_v<T>;
  static constexpr const char* kName = kSigned ? "int8 per channel" : "uint8 per channel";
  static constexpr ai_array_format kFormat = kSigned ? AI_ARRAY_FORMAT_S8 : AI_ARRAY_FORMAT_U8;
  static constexpr ai_layer_forward kConvolution = forward_conv2d_integer;
  static constexpr ai_layer_forward kDense = forward_dense_integer;
  static const ai_intq_info_list* quantization(uint32_t entries) {
    static float scales[kMaxChannels];
    static T zeropoints[kMaxChannels];
    static const ai_intq_info info = {scales, zeropoints};
    static const ai_intq_info_list of_maps = {1u << 16, &info};
    static ai_intq_info_list of_weights = {0, &info};
    for (uint32_t i = 0; i < kMaxChannels; ++i) {
      scales[i] = 0.01f + 0.0001f * static_cast<float>(i);
      zeropoints[i] = kSigned ? 0 : 128;
    }
    if (entries == 1) {
      return &of_maps;
    }
    of_weights = {entries << 16, &info};
    return &of_weights;
  }
};

template <class Type>
void run(const Shape& s) {
  using Element = typename Type::Element;
  using Bias = typename Type::Bias;
  static Bias bias_data[kMaxChannels];
  const nnlib::dims weight_dims =
      s.is_dense      ? nnlib::dims{s.in_channels, s.out_channels, 1, 1}
      : s.groups == 1 ? nnlib::dims{s.in_channels, s.kernel_side, s.kernel_side, s.out_channels}
                      : nnlib::dims{s.out_channels, s.kernel_side, s.kernel_side, 1};
  nnlib::tensor in(Type::kFormat, {1, s.in_channels, s.in_side, s.in_side},
                   numbers<Element>(g_in, sizeof(g_in)), Type::quantization(1));
  nnlib::tensor weights(Type::kFormat, weight_dims, numbers<Element>(g_weights, sizeof(g_weights)),
                        Type::quantization(s.out_channels));
  nnlib::tensor bias(std::is_same_v<Bias, int32_t> ? AI_ARRAY_FORMAT_S32 : Type::kFormat,
                     {1, s.out_channels, 1, 1}, bias_data);
  nnlib::tensor out(Type::kFormat, {1, s.out_channels, s.out_side(), s.out_side()},
                    reinterpret_cast<Element*>(g_out), Type::quantization(1));
  nnlib::tensor scratch({1, kScratchBytes, 1, 1}, g_scratch);
  nnlib::layer_chain chain(nnlib::list(in), nnlib::list(out), nnlib::list(weights, bias),
                           nnlib::list(scratch));
  uint32_t no_pad[AI_SHAPE_DIMS] = {};
  ai_layer_conv2d layer = {nnlib::layer(s.is_dense ? AI_LAYER_TYPE_DENSE : AI_LAYER_TYPE_CONV2D,
                                        s.is_dense ? Type::kDense : Type::kConvolution, chain),
                           s.groups,
                           nullptr,
                           nullptr,
                           {1, 1},
                           {1, 1},
                           {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), no_pad}};
  region_begin();
  layer.base.forward(&layer.base);
  region_end();
  std::printf("%s;%s;%lu\n", s.name, Type::kName,
              static_cast<unsigned long>(s.out_size() * s.products()));
}

}  // namespace

int main() {
  for (const Shape& shape : kShapes) {
    run<Float>(shape);
    run<Q7>(shape);
    if (shape.groups == 1) {
      run<Q15>(shape);
    }
    run<Integer<int8_t>>(shape);
    run<Integer<uint8_t>>(shape);
  }
  return 0;
}
