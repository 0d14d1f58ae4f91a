// SPDX-License-Identifier: MIT
// ONNX quantization. Integer operators become their float operator between a dequantization of its
// inputs and a quantization of its result: what exporters write as separate nodes, and what the
// quantization pass turns into integer layers.
#include <algorithm>
#include <cmath>

#include "importer/pass/evaluate.hpp"
#include "importer/pass/quantization.hpp"
#include "importer/read/onnx_context.hpp"

namespace nnlib::importer {
namespace {

bool is_byte(Type type) {
  return type == Type::u8 || type == Type::s8;
}

// Scales and zero points from two inputs; the zero point may be absent.
Quantization quantization_of(const OnnxContext& c, size_t scale, size_t zero_point, int axis) {
  Quantization q;
  for (const double s : c.constant_numbers(scale, "its scale")) {
    q.scales.push_back(static_cast<float>(s));
  }
  q.zero_points.assign(q.scales.size(), 0);
  if (c.has_input(zero_point)) {
    const Shape given = c.constant_integers(zero_point, "its zero point");
    if (given.size() != 1 && given.size() != q.scales.size()) {
      throw NotAvailable{"not one zero point for each scale", ""};
    }
    for (size_t i = 0; i < q.scales.size(); ++i) {
      q.zero_points[i] = static_cast<int32_t>(given.size() == 1 ? given[0] : given[i]);
    }
  }
  if (q.scales.empty() || !std::all_of(q.scales.begin(), q.scales.end(),
                                       [](float s) { return std::isfinite(s) && s > 0; })) {
    throw NotAvailable{"a scale that is not above 0", ""};
  }
  q.axis = q.per_tensor() ? 0 : axis;
  return q;
}

void require_entries(const Quantization& q, const Shape& shape) {
  if (!q.per_tensor() &&
      (static_cast<size_t>(q.axis) >= shape.size() ||
       shape[static_cast<size_t>(q.axis)] != static_cast<int64_t>(q.scales.size()))) {
    throw NotAvailable{"not one scale for each index of the axis", ""};
  }
}

// One number for each index of the axis, so that it broadcasts over the tensor.
ValueId along(GraphBuilder& b, const std::vector<double>& numbers, size_t axis, size_t rank) {
  Shape shape(rank - axis, 1);
  shape[0] = static_cast<int64_t>(numbers.size());
  return b.numbers(shape, numbers);
}

ValueId dequantized(OnnxContext& c, ValueId x, const Quantization& q) {
  GraphBuilder& b = c.build;
  const Value value = b.value(x);
  require_entries(q, value.shape);
  if (b.constant(x)) {
    Value constant = value;
    constant.quantization = q;
    return b.emit(Op::dequantize, {b.graph().add(constant)}, Type::f32, value.shape);
  }
  if (!is_byte(value.type)) {
    throw NotAvailable{std::string(type_name(value.type)) + " at run time is not available",
                       "int8 and uint8 are"};
  }
  if (q.per_tensor()) {
    if (!give_quantization(b.graph(), x, q)) {
      throw NotAvailable{"its input is read with another scale than it was written with", ""};
    }
    return b.emit(Op::dequantize, {x}, Type::f32, value.shape);
  }
  // A scale for each index of an activation: integers as floats, then arithmetic.
  const auto axis = static_cast<size_t>(q.axis);
  give_quantization(b.graph(), x, unit_quantization());
  const ValueId number = b.emit(Op::dequantize, {x}, Type::f32, value.shape);
  const ValueId centred =
      b.binary(Op::sub, number,
               along(b, {q.zero_points.begin(), q.zero_points.end()}, axis, value.shape.size()));
  return b.binary(Op::mul, centred,
                  along(b, {q.scales.begin(), q.scales.end()}, axis, value.shape.size()));
}

ValueId quantized_constant(GraphBuilder& b, ValueId x, const Quantization& q, Type type) {
  const Value value = b.value(x);
  Quantization entries = q;
  HostArray array = array_of(value);
  const auto [low, high] = type == Type::u8 ? std::pair{0.0, 255.0} : std::pair{-128.0, 127.0};
  const int64_t inner =
      q.per_tensor() ? 1 : row_major_strides(value.shape)[static_cast<size_t>(q.axis)];
  const auto count = static_cast<int64_t>(q.scales.size());
  for (size_t i = 0; i < array.data.size(); ++i) {
    const auto entry = static_cast<size_t>(static_cast<int64_t>(i) / inner % count);
    const float scaled = static_cast<float>(array.data[i]) / q.scales[entry];
    array.data[i] =
        std::clamp(std::nearbyint(static_cast<double>(scaled)) + q.zero_points[entry], low, high);
  }
  return b.graph().add(
      {value.name + "_quantized", type, value.shape, std::move(entries), bytes_of(array, type)});
}

ValueId quantized(OnnxContext& c, ValueId x, const Quantization& q, Type type) {
  GraphBuilder& b = c.build;
  const Shape shape = b.shape(x);
  require_entries(q, shape);
  if (!is_byte(type)) {
    throw NotAvailable{"quantization to " + std::string(type_name(type)) + " is not available",
                       "int8 and uint8 are"};
  }
  if (b.constant(x)) {
    return quantized_constant(b, x, q, type);
  }
  if (q.per_tensor()) {
    return b.emit(Op::quantize, {x}, type, shape, {}, q);
  }
  const auto axis = static_cast<size_t>(q.axis);
  const ValueId scaled =
      b.binary(Op::div, x, along(b, {q.scales.begin(), q.scales.end()}, axis, shape.size()));
  const ValueId moved =
      b.binary(Op::add, b.unary(Op::round_even, scaled),
               along(b, {q.zero_points.begin(), q.zero_points.end()}, axis, shape.size()));
  return b.emit(Op::quantize, {moved}, type, shape, {}, unit_quantization());
}

int axis_of(const OnnxContext& c) {
  const bool many = c.value(1).elements() > 1;
  return many ? static_cast<int>(c.axis(1)) : 0;
}

void dequantize_linear(OnnxContext& c) {
  c.output(dequantized(c, c.input(), quantization_of(c, 1, 2, axis_of(c))));
}

void quantize_linear(OnnxContext& c) {
  c.require_float();
  const Type type = c.has_input(2) ? c.value(2).type : Type::u8;
  c.output(quantized(c, c.input(), quantization_of(c, 1, 2, axis_of(c)), type));
}

// Runs the float operator of the name on other inputs.
ValueId through(OnnxContext& c, const char* name, std::vector<ValueId> inputs) {
  OnnxContext inner{c.node, c.opset, c.build, std::move(inputs), {kAbsent}};
  onnx_operator(name)->translate(inner);
  return inner.outputs[0];
}

ValueId operand(OnnxContext& c, size_t first, int axis = 0) {
  return dequantized(c, c.input(first), quantization_of(c, first + 1, first + 2, axis));
}

void finish(OnnxContext& c, ValueId y, size_t scale) {
  const Type type = c.has_input(scale + 1) ? c.value(scale + 1).type : c.value(0).type;
  c.output(quantized(c, y, quantization_of(c, scale, scale + 1, 0), type));
}

void qlinear_conv(OnnxContext& c) {
  std::vector<ValueId> inputs{operand(c, 0), operand(c, 3, 0)};
  if (c.has_input(8)) {
    const Quantization x = quantization_of(c, 1, 2, 0);
    Quantization bias = quantization_of(c, 4, 5, 0);
    for (float& scale : bias.scales) {
      scale *= x.scales[0];
    }
    std::fill(bias.zero_points.begin(), bias.zero_points.end(), 0);
    inputs.push_back(dequantized(c, c.input(8), bias));
  }
  finish(c, through(c, "Conv", inputs), 6);
}

void qlinear_matmul(OnnxContext& c) {
  const int columns = static_cast<int>(c.rank(3)) - 1;
  finish(c, through(c, "MatMul", {operand(c, 0), operand(c, 3, columns)}), 6);
}

template <Op op>
void qlinear_binary(OnnxContext& c) {
  const char* name = op == Op::add ? "Add" : "Mul";
  finish(c, through(c, name, {operand(c, 0), operand(c, 3)}), 6);
}

void qlinear_unary(OnnxContext& c) {
  // QLinearSigmoid, ...: the float operator's name without the prefix.
  finish(c, through(c, c.node.op.c_str() + 7, {operand(c, 0)}), 3);
}

void qlinear_pool(OnnxContext& c) {
  if (c.integer("channels_last", 0) != 0) {
    throw NotAvailable{"channels_last is not available", "channels second are"};
  }
  qlinear_unary(c);
}

void qlinear_concat(OnnxContext& c) {
  std::vector<ValueId> parts;
  for (size_t i = 2; i + 2 < c.inputs.size(); i += 3) {
    parts.push_back(operand(c, i));
  }
  const Type type = c.value(1).type;
  c.output(quantized(c, through(c, "Concat", parts), quantization_of(c, 0, 1, 0), type));
}

constexpr OnnxOperator kQuantizedOperators[] = {
    {"DequantizeLinear", dequantize_linear, "int8, uint8; scales known at import"},
    {"QLinearAdd", qlinear_binary<Op::add>, "scales known at import"},
    {"QLinearAveragePool", qlinear_pool, "scales known at import"},
    {"QLinearConcat", qlinear_concat, "scales known at import"},
    {"QLinearConv", qlinear_conv, "weights and scales known at import"},
    {"QLinearGlobalAveragePool", qlinear_pool, "scales known at import"},
    {"QLinearLeakyRelu", qlinear_unary, "scales known at import"},
    {"QLinearMatMul", qlinear_matmul, "scales known at import"},
    {"QLinearMul", qlinear_binary<Op::mul>, "scales known at import"},
    {"QLinearSigmoid", qlinear_unary, "scales known at import"},
    {"QuantizeLinear", quantize_linear, "to int8, uint8; scales known at import"},
};

}  // namespace

std::span<const OnnxOperator> onnx_quantized_operators() {
  return kQuantizedOperators;
}

}  // namespace nnlib::importer
