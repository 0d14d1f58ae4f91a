// SPDX-License-Identifier: MIT
#include "importer/run/float_twin.hpp"

#include <algorithm>
#include <set>

#include "importer/pass/islands.hpp"
#include "importer/pass/quantization.hpp"

namespace nnlib::importer {
namespace {

struct Range {
  double least, most;
};

// The real numbers that the type's ends stand for.
Range range_of(const Value& v) {
  const double scale = double{v.quantization->scales[0]};
  const int zero = v.quantization->zero_points[0];
  const int least = v.type == Type::s8 ? INT8_MIN : 0;
  return {(least - zero) * scale, (least + 255 - zero) * scale};
}

bool is_convolution_or_dense(Op op) {
  return op == Op::conv2d || op == Op::depthwise_conv2d || op == Op::conv2d_transpose ||
         op == Op::dense;
}

// An int32 bias counts products of the input's and the weights' units.
ValueId float_bias(Graph& twin, const Graph& quantized, const Node& node) {
  const Value& bias = quantized.value(node.input(2));
  const Value& x = quantized.value(node.input(0));
  const Value& w = quantized.value(node.input(1));
  if (bias.type != Type::s32 || !is_quantized_value(x) || !w.quantization) {
    return node.input(2);
  }
  std::vector<float> elements;
  const std::vector<int64_t> units = to_integers(bias);
  const std::vector<float>& scales = w.quantization->scales;
  for (size_t c = 0; c < units.size(); ++c) {
    const double unit = double{x.quantization->scales[0]} *
                        double{scales[w.quantization->per_tensor() ? 0 : c % scales.size()]};
    elements.push_back(static_cast<float>(static_cast<double>(units[c]) * unit));
  }
  return twin.add_constant<float>(bias.name, bias.shape, elements);
}

// The table's results as numbers, and where its entries lie.
void make_lookup(Graph& twin, const Graph& quantized, Node& node) {
  const Value& x = quantized.value(node.input(0));
  const Value& y = quantized.value(node.output());
  ValueId table = node.input(2);
  if (table == kAbsent) {
    Value entries = quantized.value(node.input(1));
    entries.type = y.type;
    entries.quantization = y.quantization;
    table = twin.add(dequantized(entries));
  }
  node.inputs = {node.input(0), table};
  node.attributes["first"] = range_of(x).least;
  node.attributes["step"] = double{x.quantization->scales[0]};
}

// relu, clip and movement do not give numbers beyond those of their input.
bool gives_new_numbers(Op op) {
  return op != Op::relu && op != Op::clip && !moves_bytes(op);
}

// Adds what keeps a result on one side of zero.
void keep_bound(Graph& twin, const Value& quantized, Node& node, std::vector<Node>& after) {
  const Range range = range_of(quantized);
  if (range.least < 0 && range.most > 0) {
    return;
  }
  const ValueId result = node.output();
  const Value like = twin.value(result);
  node.outputs[0] = twin.add({like.name, Type::f32, like.shape, {}, nullptr});
  Node clip{node.name, node.origin, Op::relu, {node.output()}, {result}, {}};
  if (range.most <= 0) {
    clip.op = Op::clip;
    clip.attributes["max"] = 0.0;
  }
  after.push_back(std::move(clip));
}

}  // namespace

Graph float_twin(const Graph& prepared) {
  Graph twin = prepared;
  const size_t count = prepared.values.size();
  for (size_t id = 0; id < count; ++id) {
    Value& v = twin.values[id];
    if (!is_quantized_value(v)) {
      continue;
    }
    if (v.constant()) {
      v.data = dequantized(prepared.values[id]).data;
    }
    v.type = Type::f32;
    v.quantization.reset();
  }
  std::vector<Node> nodes;
  for (Node node : prepared.nodes) {
    if (is_convolution_or_dense(node.op) && node.input(2) != kAbsent) {
      node.inputs[2] = float_bias(twin, prepared, node);
    } else if (node.op == Op::lookup) {
      make_lookup(twin, prepared, node);
    } else if (node.op == Op::quantize || node.op == Op::dequantize || node.op == Op::requantize) {
      node.op = Op::identity;
    }
    std::vector<Node> after;
    const Value* result = prepared.find(node.output());
    if (result != nullptr && node.outputs.size() == 1 && is_quantized_value(*result) &&
        gives_new_numbers(node.op)) {
      keep_bound(twin, *result, node, after);
    }
    nodes.push_back(std::move(node));
    nodes.insert(nodes.end(), after.begin(), after.end());
  }
  twin.nodes = std::move(nodes);
  return twin;
}

std::vector<double> real_elements(const Value& value, const Bytes& elements) {
  Value constant = value;
  constant.data = std::make_shared<const Bytes>(elements);
  if (!is_quantized_value(value)) {
    return to_doubles(constant);
  }
  std::vector<double> numbers;
  const Quantization& q = *value.quantization;
  for (const int64_t element : to_integers(constant)) {
    numbers.push_back(static_cast<double>(element - q.zero_points[0]) * double{q.scales[0]});
  }
  return numbers;
}

}  // namespace nnlib::importer
