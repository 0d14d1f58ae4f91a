// SPDX-License-Identifier: MIT
#include "importer/lower/quantized.hpp"

#include <algorithm>

namespace nnlib::importer {
namespace {

bool usable(const Quantization& q) {
  return !q.scales.empty() && q.scales.size() == q.zero_points.size() &&
         std::all_of(q.scales.begin(), q.scales.end(),
                     [](float s) { return s > 0 && s < 3.4e38f; });
}

}  // namespace

void check_activation(const Value& v) {
  require(v.type == Type::s8 || v.type == Type::u8,
          "activations of type " + std::string(type_name(v.type)) + " are not available here",
          "float, int8 and uint8 are");
  require(is_quantized(v) && usable(*v.quantization), "a tensor without scale");
  require(v.quantization->per_tensor(), "activations have to have one scale");
}

void check_fixed(const Value& x, const Value& w, const Value& y, const Value* bias,
                 bool narrow_weights) {
  for (const Value* v : {&x, &w, &y, bias}) {
    require(v == nullptr || is_fixed(*v), "all tensors have to be fixed point");
  }
  const bool narrow = narrow_weights && w.type == Type::s8;
  require(
      y.type == x.type && (w.type == x.type || narrow) && (bias == nullptr || bias->type == w.type),
      "all tensors have to be fixed point of one width");
  const int sum = x.quantization->fraction_bits() + w.quantization->fraction_bits();
  const int left = bias == nullptr ? 0 : sum - bias->quantization->fraction_bits();
  const int right = sum - y.quantization->fraction_bits();
  require(left >= 0 && left < 32 && right < 31 && right > -32,
          "the formats of input, weights, bias and output are too far apart");
}

Quantization check_integer_weights(const Value& x, const Value& w, const Value& y,
                                   const Value* bias, uint32_t out_channels) {
  check_activation(x);
  check_activation(y);
  require(x.type == y.type, "input and output have to have the same type");
  require(w.type == Type::s8 || (w.type == Type::u8 && x.type == Type::u8),
          "weights of type " + std::string(type_name(w.type)) + " for activations of type " +
              std::string(type_name(x.type)) + " are not available");
  require(w.quantization && usable(*w.quantization), "weights without scale");
  const Quantization& q = *w.quantization;
  require(q.per_tensor() || q.scales.size() == out_channels,
          "weights have to have one scale, or one for each output channel");
  require(w.type == Type::u8 || std::all_of(q.zero_points.begin(), q.zero_points.end(),
                                            [](int32_t z) { return z == 0; }),
          "int8 weights have to have zero point 0", "quantize them symmetrically");
  require(bias == nullptr || bias->type == Type::s32, "the bias has to be int32");
  return q;
}

}  // namespace nnlib::importer
