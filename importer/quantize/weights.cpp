// SPDX-License-Identifier: MIT
#include "importer/quantize/weights.hpp"

#include <algorithm>
#include <cmath>

namespace nnlib::importer {
namespace {

constexpr double kLargestBias = 1 << 30;          // in units; half of what 32 bits hold
constexpr double kLeastFactor = 1.0 / (1 << 20);  // from sums to outputs

struct Ends {
  double low = 0, high = 0;
};

template <class T>
std::shared_ptr<const Bytes> narrowed(std::span<const double> numbers) {
  std::vector<T> elements;
  for (const double x : numbers) {
    elements.push_back(static_cast<T>(x));
  }
  return make_bytes<T>(std::span<const T>(elements));
}

std::shared_ptr<const Bytes> narrowed(std::span<const double> numbers, Type type) {
  switch (type) {
    case Type::u8:
      return narrowed<uint8_t>(numbers);
    case Type::s8:
      return narrowed<int8_t>(numbers);
    case Type::s16:
      return narrowed<int16_t>(numbers);
    default:
      return narrowed<int32_t>(numbers);
  }
}

std::vector<Ends> ends_of(std::span<const double> numbers, const Channels& channels) {
  std::vector<Ends> ends(channels.count);
  for (size_t i = 0; i < numbers.size(); ++i) {
    Ends& e = ends[channels.of(i)];
    e = {std::min(e.low, numbers[i]), std::max(e.high, numbers[i])};
  }
  return ends;
}

// One entry of a weight's quantization, its scale at least `least`.
void append(Quantization& q, const Ends& ends, Type type, double least) {
  if (type == Type::s8) {
    const double scale = std::max(-ends.low, ends.high) / INT8_MAX;
    q.scales.push_back(static_cast<float>(std::max(scale, least)));
    q.zero_points.push_back(0);
    return;
  }
  const double needed = least * UINT8_MAX;
  const Quantization one =
      affine_format(ends.low, std::max(ends.high, ends.low + needed), Type::u8);
  q.scales.push_back(one.scales[0]);
  q.zero_points.push_back(one.zero_points[0]);
}

Histogram histogram_of(std::span<const double> numbers) {
  Histogram histogram;
  histogram.widen(numbers);
  histogram.count(numbers);
  return histogram;
}

}  // namespace

bool has_weights(Op op) {
  return op == Op::conv2d || op == Op::depthwise_conv2d || op == Op::dense;
}

int output_axis(Op op, const Value& weights) {
  return op == Op::depthwise_conv2d ? static_cast<int>(weights.rank()) - 1 : 0;
}

Channels output_channels(Op op, const Value& weights) {
  const auto axis = static_cast<size_t>(output_axis(op, weights));
  const auto count = static_cast<size_t>(weights.shape[axis]);
  return {count, axis == 0 ? static_cast<size_t>(weights.elements()) / count : 1};
}

Value quantized_constant(const Value& like, std::span<const double> numbers, Type type,
                         const Quantization& q, size_t run) {
  std::vector<double> elements;
  for (size_t i = 0; i < numbers.size(); ++i) {
    const size_t entry = q.per_tensor() ? 0 : i / run % q.scales.size();
    const double element = quantized(numbers[i], q, entry, type);
    // Symmetric weights leave out the least number.
    const bool symmetric = type == Type::s8 && !q.fixed;
    elements.push_back(symmetric ? std::max<double>(element, -INT8_MAX) : element);
  }
  return {like.name, type, like.shape, q, narrowed(elements, type)};
}

WeightsAndBias integer_weights(Op op, const Value& weights, std::span<const double> bias,
                               float in_scale, float out_scale, const WeightType& options) {
  const std::vector<double> w = to_doubles(weights);
  const Channels by_channel = output_channels(op, weights);
  const Channels channels = options.per_channel ? by_channel : Channels{1, w.size()};
  std::vector<double> least(channels.count, double{out_scale} / double{in_scale} * kLeastFactor);
  for (size_t c = 0; c < bias.size(); ++c) {
    double& entry = least[options.per_channel ? c : 0];
    entry = std::max(entry, std::fabs(bias[c]) / (double{in_scale} * kLargestBias));
  }
  Quantization q;
  q.axis = output_axis(op, weights);
  const std::vector<Ends> ends = ends_of(w, channels);
  for (size_t c = 0; c < channels.count; ++c) {
    append(q, ends[c], options.type, least[c]);
  }
  std::vector<double> units;
  for (size_t c = 0; c < bias.size(); ++c) {
    const double scale = double{q.scales[options.per_channel ? c : 0]};
    units.push_back(std::round(bias[c] / (double{in_scale} * scale)));
  }
  const Value stored{weights.name + "_bias",
                     Type::s32,
                     {static_cast<int64_t>(bias.size())},
                     {},
                     narrowed(units, Type::s32)};
  return {quantized_constant(weights, w, options.type, q, channels.run), stored};
}

WeightsAndBias fixed_weights(Op op, const Value& weights, std::span<const double> bias,
                             const FixedFormat& in, int out_fraction_bits, int bits,
                             const RangeOptions& options) {
  constexpr double kSums = 2147483648.0;
  constexpr int kMostShift = 30;
  const Type type = bits == 8 ? Type::s8 : Type::s16;
  const std::vector<double> w = to_doubles(weights);
  const Channels channels = output_channels(op, weights);
  std::vector<double> magnitude(channels.count);
  for (size_t i = 0; i < w.size(); ++i) {
    magnitude[channels.of(i)] += std::fabs(w[i]);
  }
  double largest_bias = 0;
  for (const double b : bias) {
    largest_bias = std::max(largest_bias, std::fabs(b));
  }
  // Rounding makes the weights of a channel larger by half a quantum each.
  const double taps = static_cast<double>(w.size() / channels.count);
  const double largest_input = std::ldexp(1.0, in.bits - 1);
  // Weights are few: none is left out.
  const RangeOptions rule{options.rule == RangeRule::mse ? RangeRule::mse : RangeRule::minmax,
                          options.percentile};
  int fraction = std::min(fixed_format(histogram_of(w), bits, rule),
                          kMostShift + out_fraction_bits - in.fraction_bits);
  const auto wraps = [&](int f) {
    const double weight_sum =
        std::ldexp(*std::max_element(magnitude.begin(), magnitude.end()), f) + taps / 2;
    return weight_sum * largest_input + std::ldexp(largest_bias, in.fraction_bits + f) +
               std::ldexp(0.5, in.fraction_bits + f - out_fraction_bits) >=
           kSums;
  };
  while (wraps(fraction)) {
    --fraction;
  }
  const int sum = in.fraction_bits + fraction;
  const int bias_fraction =
      std::max(std::min(fixed_format(largest_bias, bits), sum), sum - kMostShift);
  const Value named{weights.name + "_bias", type, {static_cast<int64_t>(bias.size())}, {}, {}};
  return {quantized_constant(weights, w, type, fixed_point(fraction), 1),
          quantized_constant(named, bias, type, fixed_point(bias_fraction), 1)};
}

}  // namespace nnlib::importer
