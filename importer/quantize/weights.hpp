// SPDX-License-Identifier: MIT
// Constant weights and biases in integers and in fixed point.
#ifndef NNLIB_IMPORTER_QUANTIZE_WEIGHTS_HPP
#define NNLIB_IMPORTER_QUANTIZE_WEIGHTS_HPP

#include "importer/graph/graph.hpp"
#include "importer/quantize/formats.hpp"

namespace nnlib::importer {

// Convolutions and dense layers: operators with constant weights.
bool has_weights(Op op);

// The axis of the output channels in an operator's weights.
int output_axis(Op op, const Value& weights);

// The index of the output channel of a weight is i / run % channels.
struct Channels {
  size_t count, run;
  size_t of(size_t i) const { return i / run % count; }
};
Channels output_channels(Op op, const Value& weights);

struct WeightType {
  Type type;         // integers: s8, symmetric, -127 to 127, or u8 with zero points
  bool per_channel;  // a scale for each output channel, or one for all
};

struct WeightsAndBias {
  Value weights;
  Value bias;
};

// Weights, and the bias in units of input scale * weight scale. The scales are such that the bias
// fits and that sums get to the output's scale by a factor that the kernels have.
WeightsAndBias integer_weights(Op op, const Value& weights, std::span<const double> bias,
                               float in_scale, float out_scale, const WeightType& options);

// The place of the point in a value of fixed point, and its width.
struct FixedFormat {
  int fraction_bits, bits;
};

// The format that loses least, but with 32 bits for every sum that inputs of the format can give.
WeightsAndBias fixed_weights(Op op, const Value& weights, std::span<const double> bias,
                             const FixedFormat& in, int out_fraction_bits, int bits,
                             const RangeOptions& options);

// A constant of a type and a format, from its numbers.
Value quantized_constant(const Value& like, std::span<const double> numbers, Type type,
                         const Quantization& q, size_t run);

}  // namespace nnlib::importer

#endif
