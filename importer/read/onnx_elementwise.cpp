// SPDX-License-Identifier: MIT
// ONNX operators that work element by element.
#include <cmath>
#include <limits>

#include "importer/read/onnx_context.hpp"

namespace nnlib::importer {
namespace {

template <Op op>
void unary(OnnxContext& c) {
  c.require_float();
  c.output(c.build.unary(op, c.input()));
}

// One with float attributes: their names here, in ONNX, and their defaults.
struct Renamed {
  const char* name;
  const char* onnx;
  double otherwise;
};

void with_attributes(OnnxContext& c, Op op, std::initializer_list<Renamed> names) {
  c.require_float();
  Attributes attributes;
  for (const Renamed& row : names) {
    attributes[row.name] = c.number(row.onnx, row.otherwise);
  }
  c.output(c.build.unary(op, c.input(), std::move(attributes)));
}

void elu(OnnxContext& c) {
  with_attributes(c, Op::elu, {{"alpha", "alpha", 1}});
}
void celu(OnnxContext& c) {
  with_attributes(c, Op::celu, {{"alpha", "alpha", 1}});
}
void leaky_relu(OnnxContext& c) {
  with_attributes(c, Op::leaky_relu, {{"alpha", "alpha", 0.01}});
}
// The operator lets pass what is above the threshold, ours what is not below it.
void thresholded_relu(OnnxContext& c) {
  c.require_float();
  const double above = std::nextafter(static_cast<float>(c.number("alpha", 1)), HUGE_VALF);
  c.output(c.build.unary(Op::thresholded_relu, c.input(), {{"alpha", above}}));
}
void selu(OnnxContext& c) {
  const bool first = c.opset < 6;
  with_attributes(c, Op::selu,
                  {{"alpha", "alpha", first ? 1.6732 : 1.67326319217681884765625},
                   {"gamma", "gamma", first ? 1.0507 : 1.05070102214813232421875}});
}
void hard_sigmoid(OnnxContext& c) {
  with_attributes(c, Op::hard_sigmoid, {{"alpha", "alpha", 0.2}, {"beta", "beta", 0.5}});
}
void shrink(OnnxContext& c) {
  with_attributes(c, Op::shrink, {{"lambda", "lambd", 0.5}, {"bias", "bias", 0}});
}

void is_inf(OnnxContext& c) {
  c.require_float();
  c.output(c.build.unary(Op::is_inf, c.input(),
                         {{"positive", c.integer("detect_positive", 1)},
                          {"negative", c.integer("detect_negative", 1)}}));
}

void logical_not(OnnxContext& c) {
  c.output(c.build.unary(Op::logical_not, c.input()));
}

void clip(OnnxContext& c) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const auto bound = [&](size_t i, const char* name, double otherwise) {
    if (!c.has_input(i)) {
      return c.number(name, otherwise);
    }
    return c.constant_numbers(i, name).at(0);
  };
  const double lo = bound(1, "min", -kInfinity);
  const double hi = bound(2, "max", kInfinity);
  const Type type = c.value(0).type;
  if (type != Type::s8 && type != Type::u8) {
    c.require_float();
  }
  Attributes attributes;
  if (lo != -kInfinity) {
    attributes["min"] = lo;
  }
  if (hi != kInfinity) {
    attributes["max"] = hi;
  }
  c.output(c.build.emit(Op::clip, {c.input()}, type, Shape(c.shape()), std::move(attributes),
                        c.value(0).quantization));
}

// Operands of old versions: broadcasting asked for, the second one placed at an axis.
ValueId placed(OnnxContext& c, ValueId a, ValueId b) {
  if (c.opset >= 7 || c.integer("broadcast", 0) == 0 || !c.has_attribute("axis")) {
    return b;
  }
  const auto axis = static_cast<size_t>(normal_axis(c.integer("axis", 0), c.build.shape(a).size()));
  Shape shape = c.build.shape(b);
  if (axis + shape.size() > c.build.shape(a).size()) {
    throw NotAvailable{"the second operand does not fit the axis", ""};
  }
  shape.resize(c.build.shape(a).size() - axis, 1);
  return c.build.reshape(b, shape);
}

void binary_of(OnnxContext& c, Op op) {
  const ValueId a = c.input(0);
  const ValueId b = placed(c, a, c.input(1));
  c.output(c.build.binary(op, a, b));
}

template <Op op>
void binary(OnnxContext& c) {
  c.require_float(0);
  c.require_float(1);
  binary_of(c, op);
}

template <Op op>
void logical(OnnxContext& c) {
  binary_of(c, op);
}

void pow(OnnxContext& c) {
  c.require_float(0);
  if (!c.value(1).constant()) {
    c.require_float(1);
  }
  const ValueId exponent = c.build.cast(c.input(1), c.value(0).type);
  c.inputs[1] = exponent;
  binary_of(c, Op::pow);
}

void mod(OnnxContext& c) {
  const bool constants = c.build.constant(c.input(0)) && c.build.constant(c.input(1));
  if (c.integer("fmod", 0) == 0 && !constants) {
    throw NotAvailable{"the remainder with the sign of the divisor is not available",
                       "fmod = 1 is, for float32"};
  }
  if (c.integer("fmod", 0) == 0) {
    throw NotAvailable{"integer remainders are not available", ""};
  }
  binary<Op::mod>(c);
}

// n operands, from left to right.
template <Op op>
void chain(OnnxContext& c) {
  ValueId sum = c.input(0);
  c.require_float(0);
  for (size_t i = 1; i < c.inputs.size(); ++i) {
    c.require_float(i);
    sum = c.build.binary(op, sum, c.input(i));
  }
  c.output(sum);
}

void mean(OnnxContext& c) {
  chain<Op::add>(c);
  if (c.inputs.size() > 1) {
    c.output(c.build.binary(Op::div, c.outputs[0], static_cast<double>(c.inputs.size())));
  }
}

void where(OnnxContext& c) {
  c.require_float(1);
  c.require_float(2);
  c.output(c.build.where(c.input(0), c.input(1), c.input(2)));
}

void prelu(OnnxContext& c) {
  c.require_float();
  ValueId slopes = c.input(1);
  const Shape x = c.shape(0);
  // Before version 7 a vector of slopes is one for each channel.
  if (c.opset < 7 && c.build.shape(slopes).size() == 1 && x.size() > 2) {
    Shape shape(x.size() - 1, 1);
    shape[0] = c.build.shape(slopes)[0];
    slopes = c.build.reshape(slopes, shape);
  }
  broadcast_strides(c.build.shape(slopes), x);
  c.output(c.build.like(Op::prelu, {c.input(0), slopes}));
}

void same(OnnxContext& c) {
  c.output(c.input());
}

void dropout(OnnxContext& c) {
  if (c.has_input(2) && c.constant_numbers(2, "training_mode").at(0) != 0) {
    throw NotAvailable{"training is not available", "export for inference"};
  }
  if (c.output_used(1)) {
    throw NotAvailable{"its mask is not available", "export for inference"};
  }
  c.output(c.input());
}

void cast(OnnxContext& c) {
  const int64_t to = c.integer("to", 0);
  const Type from = c.value(0).type;
  std::optional<Type> type;
  constexpr std::pair<int64_t, Type> numbers[] = {
      {1, Type::f32},  {2, Type::u8},   {3, Type::s8},  {4, Type::u16},
      {5, Type::s16},  {6, Type::s32},  {7, Type::s64}, {9, Type::boolean},
      {11, Type::f32}, {12, Type::u32}, {13, Type::u64}};
  for (const auto& [number, name] : numbers) {
    if (number == to) {
      type = name;
    }
  }
  if (!type) {
    throw NotAvailable{"a cast to this type is not available", ""};
  }
  if (to == 10 ||
      (!c.value(0).constant() && *type != from && !(from == Type::boolean && *type == Type::f32))) {
    throw NotAvailable{"a cast at run time is not available",
                       "quantize and dequantize are, and casts of constants"};
  }
  c.output(c.build.cast(c.input(), *type));
}

constexpr OnnxOperator kElementwiseOperators[] = {
    {"Abs", unary<Op::abs>, ""},
    {"Acos", unary<Op::acos>, ""},
    {"Acosh", unary<Op::acosh>, ""},
    {"Add", binary<Op::add>, ""},
    {"And", logical<Op::logical_and>, ""},
    {"Asin", unary<Op::asin>, ""},
    {"Asinh", unary<Op::asinh>, ""},
    {"Atan", unary<Op::atan>, ""},
    {"Atanh", unary<Op::atanh>, ""},
    {"Cast", cast, "of constants; at run time only to the same type, and bool to float"},
    {"Ceil", unary<Op::ceil>, ""},
    {"Celu", celu, ""},
    {"Clip", clip, "bounds known at import; float, int8, uint8"},
    {"Cos", unary<Op::cos>, ""},
    {"Cosh", unary<Op::cosh>, ""},
    {"Div", binary<Op::div>, ""},
    {"Dropout", dropout, "inference"},
    {"Elu", elu, ""},
    {"Equal", binary<Op::equal>, ""},
    {"Erf", unary<Op::erf>, ""},
    {"Exp", unary<Op::exp>, ""},
    {"Floor", unary<Op::floor>, ""},
    {"Greater", binary<Op::greater>, ""},
    {"GreaterOrEqual", binary<Op::greater_equal>, ""},
    {"HardSigmoid", hard_sigmoid, ""},
    {"HardSwish", unary<Op::hard_swish>, ""},
    {"Identity", same, ""},
    {"IsInf", is_inf, ""},
    {"IsNaN", unary<Op::is_nan>, ""},
    {"LeakyRelu", leaky_relu, ""},
    {"Less", binary<Op::less>, ""},
    {"LessOrEqual", binary<Op::less_equal>, ""},
    {"Log", unary<Op::log>, ""},
    {"Max", chain<Op::maximum>, ""},
    {"Mean", mean, ""},
    {"Min", chain<Op::minimum>, ""},
    {"Mod", mod, "fmod = 1"},
    {"Mul", binary<Op::mul>, ""},
    {"Neg", unary<Op::neg>, ""},
    {"Not", logical_not, ""},
    {"Or", logical<Op::logical_or>, ""},
    {"PRelu", prelu, "slopes known at import"},
    {"Pow", pow, ""},
    {"Reciprocal", unary<Op::reciprocal>, ""},
    {"Relu", unary<Op::relu>, ""},
    {"Round", unary<Op::round_even>, ""},
    {"Selu", selu, ""},
    {"Shrink", shrink, ""},
    {"Sigmoid", unary<Op::sigmoid>, ""},
    {"Sign", unary<Op::sign>, ""},
    {"Sin", unary<Op::sin>, ""},
    {"Sinh", unary<Op::sinh>, ""},
    {"Softplus", unary<Op::soft_plus>, ""},
    {"Softsign", unary<Op::soft_sign>, ""},
    {"Sqrt", unary<Op::sqrt>, ""},
    {"Sub", binary<Op::sub>, ""},
    {"Sum", chain<Op::add>, ""},
    {"Tan", unary<Op::tan>, ""},
    {"Tanh", unary<Op::tanh>, ""},
    {"ThresholdedRelu", thresholded_relu, ""},
    {"Where", where, "branches finite"},
    {"Xor", logical<Op::logical_xor>, ""},
};

}  // namespace

std::span<const OnnxOperator> onnx_elementwise_operators() {
  return kElementwiseOperators;
}

}  // namespace nnlib::importer
