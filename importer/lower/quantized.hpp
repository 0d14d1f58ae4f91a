// SPDX-License-Identifier: MIT
// What the integer layers ask of the tensors' quantization.
#ifndef NNLIB_IMPORTER_LOWER_QUANTIZED_HPP
#define NNLIB_IMPORTER_LOWER_QUANTIZED_HPP

#include "importer/lower/lowering.hpp"

namespace nnlib::importer {

inline bool is_quantized(const Value& v) {
  return (v.type == Type::s8 || v.type == Type::u8) && v.quantization.has_value();
}
inline bool same_quantization(const Value& a, const Value& b) {
  return a.type == b.type && a.quantization == b.quantization;
}

// Throws Unsupported unless the value is 8 bits with one scale above 0.
void check_activation(const Value& v);

// Checks input, weights, output and bias of an integer layer with weights; returns the weights'
// quantization.
Quantization check_integer_weights(const Value& x, const Value& w, const Value& y,
                                   const Value* bias, uint32_t out_channels);

}  // namespace nnlib::importer

#endif
