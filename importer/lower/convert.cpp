// SPDX-License-Identifier: MIT
// Between float and quantized values, and between quantizations.
#include "importer/lower/activation.hpp"
#include "importer/lower/quantized.hpp"
#include "importer/pass/quantization.hpp"

namespace nnlib::importer {
namespace {

// Whether anything else may look at the memory of the node's input: another reader, or one of a
// value that it shares its place with.
bool read_elsewhere(const Graph& graph, const Node& node) {
  const ValueId x = node.input(0);
  const int from = graph.producer(x);
  const bool shares = from >= 0 && moves_bytes(graph.nodes[static_cast<size_t>(from)].op);
  return shares || graph.consumers(x).size() > 1 || graph.is_output(x);
}

ValueId copied(NetworkBuilder& b, ValueId x) {
  const Value original = b.value(x);
  const ValueId copy = b.temporary(original.type, original.shape);
  b.copy(x, copy);
  return copy;
}

void requantize_fixed(NetworkBuilder& b, const Node& node) {
  Tensor& in = b.tensor(node.input(0));
  Tensor& out = b.tensor(node.output(), in.dims);
  b.layer<ai_layer>(NNLIB_LAYER_TYPE(NL), NNLIB_FUNCTION(node_convert_fixed)).input(in).output(out);
}

// Fixed point with integer bits is made of floats that the layer first scales where they are.
void quantize(NetworkBuilder& b, const Node& node) {
  const Value& x = b.value(node.input(0));
  const Value& y = b.value(node.output());
  const Value& quantized = x.type == Type::f32 ? y : x;
  require(x.type == Type::f32 || y.type == Type::f32, "one side has to be float");
  if (!is_fixed(quantized)) {
    check_activation(quantized);
  }
  const bool scales_input =
      is_fixed(y) && ai_fmt_get_ibits(format_of(y)) != 0 && read_elsewhere(b.graph(), node);
  const ValueId from = scales_input ? copied(b, node.input(0)) : node.input(0);
  b.layer<ai_layer>(NNLIB_LAYER_TYPE(NL), NNLIB_FUNCTION(node_convert))
      .input(b.tensor(from))
      .output(b.tensor(node.output(), dims_of(b.value(node.input(0)).shape)));
}

void requantize(NetworkBuilder& b, const Node& node) {
  const Value x = b.value(node.input(0));
  const Value y = b.value(node.output());
  if (same_quantization(x, y)) {
    b.alias(node.output(), node.input(0));
    return;
  }
  if (is_fixed(x)) {
    require(is_fixed(y) && x.type == y.type, "fixed point keeps its width");
    requantize_fixed(b, node);
    return;
  }
  check_activation(x);
  check_activation(y);
  // A table keeps the sign; another layer inverts the top bit.
  ValueId from = node.input(0);
  const Dims dims = dims_of(x.shape);
  Quantization shifted = *y.quantization;
  if (x.type != y.type) {
    shifted.zero_points[0] += y.type == Type::u8 ? -128 : 128;
  }
  const ValueId middle = x.type == y.type ? node.output() : b.temporary(x.type, x.shape, shifted);
  if (x.quantization != shifted) {
    LayerBuilder layer =
        b.layer<ai_layer_nl>(NNLIB_LAYER_TYPE(NL), NNLIB_FUNCTION(forward_nl_integer));
    Tensor& in = b.tensor(from, dims);
    Tensor& out = b.tensor(middle, dims);
    layer.input(in).output(out).in_place(out, in).set(
        NNLIB_MEMBER(ai_layer_nl, nl_params),
        b.parameters("table", format_of(x.type), unary_table(node, x, b.value(middle))));
    from = middle;
  }
  if (x.type != y.type) {
    Tensor& in = b.tensor(from, dims);
    Tensor& out = b.tensor(node.output(), dims);
    b.layer<ai_layer>(NNLIB_LAYER_TYPE(NL), NNLIB_FUNCTION(node_convert_integer))
        .input(in)
        .output(out);
  }
}

constexpr Lowering kConvertRows[] = {
    {Op::quantize, quantize, kAnyType, "one scale; integers have 8 bits"},
    {Op::dequantize, quantize, kAnyType, "one scale; integers have 8 bits"},
    {Op::requantize, requantize, kInteger | kFixed, "integers: a table of 256 results"},
};

}  // namespace

std::span<const Lowering> convert_lowerings() {
  return kConvertRows;
}

}  // namespace nnlib::importer
