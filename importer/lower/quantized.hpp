// SPDX-License-Identifier: MIT
// What the integer layers ask of the tensors' quantization.
#ifndef NNLIB_IMPORTER_LOWER_QUANTIZED_HPP
#define NNLIB_IMPORTER_LOWER_QUANTIZED_HPP

#include "importer/lower/lowering.hpp"

namespace nnlib::importer {

inline bool is_fixed(const Value& v) {
  return v.quantization && v.quantization->fixed;
}
// An 8-bit integer with scale and zero point.
inline bool is_quantized(const Value& v) {
  return (v.type == Type::s8 || v.type == Type::u8) && v.quantization && !is_fixed(v);
}
inline bool same_quantization(const Value& a, const Value& b) {
  return a.type == b.type && a.quantization == b.quantization;
}

// Throws Unsupported unless the value is 8 bits with one scale above 0.
void check_activation(const Value& v);

// Throws Unsupported unless input, weights, output and the optional bias are fixed point of one
// width (weights and bias may have 8 bits only where narrow_weights) and the shifts between them
// are those that the kernels take.
void check_fixed(const Value& x, const Value& w, const Value& y, const Value* bias,
                 bool narrow_weights = false);

// Checks input, weights, output and bias of an integer layer with weights; returns the weights'
// quantization.
Quantization check_integer_weights(const Value& x, const Value& w, const Value& y,
                                   const Value* bias, uint32_t out_channels);

}  // namespace nnlib::importer

#endif
