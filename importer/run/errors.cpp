// SPDX-License-Identifier: MIT
#include "importer/run/errors.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "importer/pass/quantization.hpp"
#include "importer/run/float_twin.hpp"

namespace nnlib::importer {
namespace {

// Steps between representable numbers from one to the other.
double ulps_between(float a, float b) {
  const auto place = [](float x) {
    const auto bits = std::bit_cast<int32_t>(x);
    return bits < 0 ? -static_cast<int64_t>(bits & INT32_MAX) : int64_t{bits};
  };
  return static_cast<double>(std::llabs(place(a) - place(b)));
}

bool is_compared(const Graph& g, const Node& node) {
  return !moves_bytes(node.op) && node.outputs.size() == 1 &&
         (is_quantized_value(g.value(node.output())) || g.value(node.output()).type == Type::f32);
}

Bytes float_bytes(const Value& value, const Bytes& elements) {
  if (!is_quantized_value(value)) {
    return elements;
  }
  const std::vector<double> real = real_elements(value, elements);
  const std::vector<float> floats(real.begin(), real.end());
  return *make_bytes<float>(floats);
}

std::vector<double> floats_of(const Bytes& elements) {
  return real_elements({"", Type::f32, {}, {}, nullptr}, elements);
}

size_t count_clipped(const Value& value, const std::vector<double>& numbers) {
  if (!is_quantized_value(value)) {
    return 0;
  }
  const int least = value.type == Type::s8 ? INT8_MIN : 0;
  const double zero = value.quantization->zero_points[0];
  const double quantum = quantum_of(value);
  return static_cast<size_t>(std::count_if(numbers.begin(), numbers.end(), [&](double x) {
    return x < (least - 1 - zero) * quantum || x > (least + 256 - zero) * quantum;
  }));
}

}  // namespace

void Error::add(double should, double is) {
  // A number that is none differs infinitely from one that is.
  const bool alike = should == is || (std::isnan(should) && std::isnan(is));
  double difference = alike ? 0 : std::abs(should - is);
  if (std::isnan(difference)) {
    difference = std::numeric_limits<double>::infinity();
  }
  largest = std::max(largest, difference);
  largest_ulp = std::max(
      largest_ulp, alike ? 0 : ulps_between(static_cast<float>(should), static_cast<float>(is)));
  signal += std::isfinite(should) ? should * should : 0;
  noise += difference * difference;
}

double Error::decibels() const {
  return noise == 0 ? std::numeric_limits<double>::infinity() : 10 * std::log10(signal / noise);
}

double quantum_of(const Value& value) {
  return is_quantized_value(value) ? double{value.quantization->scales[0]} : 0;
}

LossMeter::LossMeter(const Graph& prepared) : quantized_(prepared), floats_(float_twin(prepared)) {
  for (size_t i = 0; i < prepared.nodes.size(); ++i) {
    if (is_compared(prepared, prepared.nodes[i])) {
      losses_.push_back({prepared.nodes[i].output(), i, {}, {}});
    }
  }
}

Interpreter::Values LossMeter::add(const std::vector<Bytes>& inputs) {
  const Graph& graph = quantized_.graph();
  Interpreter::Values is = quantized_.run(inputs);
  std::vector<Bytes> float_inputs;
  for (size_t i = 0; i < inputs.size(); ++i) {
    float_inputs.push_back(float_bytes(graph.value(graph.inputs[i]), inputs[i]));
  }
  const Interpreter::Values should = floats_.run(float_inputs);

  // Each node on what the quantized network has before it. What only the float graph has is read
  // where it was computed.
  const Graph& twin = floats_.graph();
  Interpreter::Values given(twin.values.size());
  for (size_t id = 0; id < is.size(); ++id) {
    given[id] = float_bytes(graph.values[id], is[id]);
  }
  Interpreter::Values own(twin.values.size());
  for (size_t i = 0; i < twin.nodes.size(); ++i) {
    const std::vector<ValueId>& outputs = twin.nodes[i].outputs;
    std::vector<Bytes> results = floats_.step(i, given);
    for (size_t o = 0; o < outputs.size() && o < results.size(); ++o) {
      const auto id = static_cast<size_t>(outputs[o]);
      (id < is.size() ? own : given)[id] = std::move(results[o]);
    }
  }
  for (Loss& loss : losses_) {
    const auto id = static_cast<size_t>(loss.value);
    const std::vector<double> got = floats_of(given[id]);
    const std::vector<double> alone = floats_of(own[id]);
    const std::vector<double> whole = floats_of(should[id]);
    for (size_t i = 0; i < got.size(); ++i) {
      loss.own.add(alone[i], got[i]);
      loss.all.add(whole[i], got[i]);
    }
    loss.clipped += count_clipped(graph.value(loss.value), alone);
    loss.elements += got.size();
  }
  return is;
}

}  // namespace nnlib::importer
