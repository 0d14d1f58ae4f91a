// SPDX-License-Identifier: MIT
// Functions of one tensor, element by element.
#include <algorithm>
#include <cmath>

#include "importer/lower/activation.hpp"
#include "importer/lower/quantized.hpp"
#include "importer/lower/scalar_functions.hpp"

namespace nnlib::importer {
namespace {

void connect_in_place(NetworkBuilder& b, const Node& node, LayerBuilder layer) {
  Tensor& in = b.tensor(node.input(0));
  Tensor& out = b.tensor(node.output(), in.dims);
  layer.input(in).output(out).in_place(out, in);
}

void table_layer(NetworkBuilder& b, const Node& node, Bytes table) {
  const ai_array_format format = format_of(b.value(node.output()).type);
  LayerBuilder layer =
      b.layer<ai_layer_nl>(NNLIB_LAYER_TYPE(NL), NNLIB_FUNCTION(forward_nl_integer));
  connect_in_place(b, node, layer);
  layer.set(NNLIB_MEMBER(ai_layer_nl, nl_params), b.parameters("table", format, std::move(table)));
}

// Bounds of relu and clip in quanta; the function changes nothing where they are those of the type.
struct Bounds {
  int low, high;
};
Bounds bounds_of(const Node& node, const Value& v) {
  const double scale = static_cast<double>(v.quantization->scales[0]);
  const int zero = v.quantization->zero_points[0];
  const int least = v.type == Type::s8 ? INT8_MIN : 0;
  const auto quanta = [&](double x) {
    return static_cast<int>(std::clamp(std::round(x / scale) + zero, double(least), least + 255.0));
  };
  constexpr double kUnbounded = HUGE_VAL;
  const double low = node.op == Op::relu ? 0 : node.number("min", -kUnbounded);
  const double high = node.op == Op::relu ? kUnbounded : node.number("max", kUnbounded);
  return {quanta(low), quanta(high)};
}

void clip_integer(NetworkBuilder& b, const Node& node) {
  const Value& v = b.value(node.output());
  const Bounds bounds = bounds_of(node, v);
  const int least = v.type == Type::s8 ? INT8_MIN : 0;
  if (bounds.low == least && bounds.high == least + 255) {
    b.alias(node.output(), node.input(0));
    return;
  }
  const Bytes limits = {static_cast<uint8_t>(bounds.low), static_cast<uint8_t>(bounds.high)};
  LayerBuilder layer =
      b.layer<ai_layer_nl>(NNLIB_LAYER_TYPE(NL), NNLIB_FUNCTION(forward_clip_integer));
  connect_in_place(b, node, layer);
  layer.set(NNLIB_MEMBER(ai_layer_nl, nl_params),
            b.parameters("limits", format_of(v.type), limits));
}

void lower_integer(NetworkBuilder& b, const Node& node) {
  const Value x = b.value(node.input(0));
  const Value y = b.value(node.output());
  check_activation(x);
  check_activation(y);
  if (same_quantization(x, y) && (node.op == Op::relu || node.op == Op::clip)) {
    clip_integer(b, node);
    return;
  }
  require(x.type == y.type, "input and output have to have the same type");
  table_layer(b, node, unary_table(node, x, y));
}

// The functions that keep the format; tanh and sigmoid give numbers below 1, all bits behind the
// point.
void lower_fixed(NetworkBuilder& b, const Node& node) {
  const Value x = b.value(node.input(0));
  const Value y = b.value(node.output());
  require(is_fixed(y) && x.type == y.type, "fixed point keeps its width");
  const bool below_one = node.op == Op::tanh || node.op == Op::sigmoid;
  require(below_one ? ai_fmt_get_ibits(format_of(y)) == 0 : same_quantization(x, y),
          "the function cannot give this format");
  const bool clip = node.op == Op::clip && node.number("min", -1) == 0 && node.has("max");
  require(below_one || clip || node.op == Op::relu, "this function is not available in fixed point",
          "relu, clip from 0, tanh and sigmoid are");
  const Function forward = clip                  ? NNLIB_FUNCTION(forward_relu_max_fixed)
                           : node.op == Op::relu ? NNLIB_FUNCTION(forward_relu_fixed)
                           : node.op == Op::tanh ? NNLIB_FUNCTION(forward_tanh_fixed)
                                                 : NNLIB_FUNCTION(forward_sigmoid_fixed);
  LayerBuilder layer = b.layer<ai_layer_nl>(NNLIB_LAYER_TYPE(NL), forward);
  connect_in_place(b, node, layer);
  if (clip) {
    const double most = x.type == Type::s8 ? INT8_MAX : INT16_MAX;
    const double limit = std::clamp(
        std::round(std::ldexp(node.number("max"), x.quantization->fraction_bits())), 0.0, most);
    const auto quanta = static_cast<int16_t>(limit);
    const auto byte = static_cast<int8_t>(quanta);
    layer.set(NNLIB_MEMBER(ai_layer_nl, nl_params),
              x.type == Type::s8
                  ? b.parameters<int8_t>("maximum", std::span<const int8_t>(&byte, 1))
                  : b.parameters<int16_t>("maximum", std::span<const int16_t>(&quanta, 1)));
  }
}

void unary(NetworkBuilder& b, const Node& node) {
  if (is_fixed(b.value(node.input(0)))) {
    lower_fixed(b, node);
    return;
  }
  if (b.value(node.input(0)).type != Type::f32) {
    lower_integer(b, node);
    return;
  }
  if (const auto function = scalar_function(node.op)) {
    lower_scalar(b, node, *function);
    return;
  }
  const auto activation = activation_of(node);
  require(activation.has_value(), "these parameters are not available");
  LayerBuilder layer = b.layer<ai_layer_nl>(NNLIB_LAYER_TYPE(NL), activation->forward);
  connect_in_place(b, node, layer);
  if (!activation->parameters.empty()) {
    layer.set(NNLIB_MEMBER(ai_layer_nl, nl_params),
              b.parameters<float>("parameters", activation->parameters));
  }
}

void lookup(NetworkBuilder& b, const Node& node) {
  const Value table = b.value(node.input(1));
  require(table.constant() && table.data->size() == 256, "the table is no constant of 256 bytes");
  require(b.value(node.input(0)).type == b.value(node.output()).type,
          "input and output have to have the same type");
  table_layer(b, node, *table.data);
}

void prelu(NetworkBuilder& b, const Node& node) {
  const Value x = b.value(node.input(0));
  const Value slopes = b.value(node.input(1));
  require(slopes.constant(), "slopes that are computed at run time are not available",
          "freeze them with --freeze");
  // The slopes repeat block by block: they are as large as the input's last dimensions.
  Shape shape = slopes.shape;
  while (!shape.empty() && shape.front() == 1) {
    shape.erase(shape.begin());
  }
  const bool fits =
      shape.size() <= x.shape.size() && std::equal(shape.rbegin(), shape.rend(), x.shape.rbegin());
  require(fits, "the slopes have to have the sizes of the input's last dimensions");
  const Dims dims = flat_dims(static_cast<uint64_t>(slopes.elements()));
  LayerBuilder layer = b.layer<ai_layer>(NNLIB_LAYER_TYPE(NL), NNLIB_FUNCTION(forward_prelu));
  connect_in_place(b, node, layer);
  layer.weights(&b.constant_tensor("slopes", slopes.type, dims, *slopes.data, {}));
}

constexpr Lowering row(Op op, const char* restrictions = "") {
  return {op, unary, kFloat | kInteger, restrictions};
}
constexpr Lowering table_row(Op op) {
  return {op, unary, kInteger, "a table of 256 results"};
}

constexpr Lowering kFunctionsRows[] = {
    row(Op::abs),
    row(Op::neg),
    row(Op::ceil),
    row(Op::floor),
    row(Op::round, "halves away from zero"),
    row(Op::reciprocal),
    row(Op::sqrt),
    row(Op::rsqrt),
    row(Op::exp),
    row(Op::log),
    row(Op::sin),
    row(Op::cos),
    row(Op::tan),
    row(Op::asin),
    row(Op::acos),
    row(Op::atan),
    row(Op::sinh),
    row(Op::cosh),
    {Op::tanh, unary, kFloat | kInteger | kFixed, ""},
    row(Op::asinh),
    row(Op::acosh),
    row(Op::atanh),
    row(Op::erf),
    {Op::sigmoid, unary, kFloat | kInteger | kFixed, ""},
    row(Op::soft_plus),
    row(Op::soft_sign),
    {Op::relu, unary, kFloat | kInteger | kFixed, ""},
    {Op::clip, unary, kFloat | kInteger | kFixed, "fixed point: from 0 on"},
    row(Op::leaky_relu),
    row(Op::elu),
    row(Op::selu),
    row(Op::thresholded_relu, "an input equal to the threshold passes"),
    row(Op::hard_sigmoid, "float: alpha 0.2 and beta 0.5"),
    table_row(Op::hard_swish),
    table_row(Op::celu),
    table_row(Op::square),
    row(Op::sign, "float: a generated function"),
    row(Op::round_even, "float: a generated function"),
    {Op::lookup, lookup, kInteger, ""},
    {Op::prelu, prelu, kFloat, "constant slopes as large as the input's last dimensions"},
};

}  // namespace

std::span<const Lowering> function_lowerings() {
  return kFunctionsRows;
}

}  // namespace nnlib::importer
