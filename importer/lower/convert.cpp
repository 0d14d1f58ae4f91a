// SPDX-License-Identifier: MIT
// Between float and quantized values, and between quantizations.
#include "importer/lower/activation.hpp"
#include "importer/lower/quantized.hpp"

namespace nnlib::importer {
namespace {

void quantize(NetworkBuilder& b, const Node& node) {
  const Value& x = b.value(node.input(0));
  const Value& y = b.value(node.output());
  const Value& quantized = x.type == Type::f32 ? y : x;
  require(x.type == Type::f32 || y.type == Type::f32, "one side has to be float");
  check_activation(quantized);
  b.layer<ai_layer>(NNLIB_LAYER_TYPE(NL), NNLIB_FUNCTION(node_convert))
      .input(b.tensor(node.input(0)))
      .output(b.tensor(node.output(), dims_of(b.value(node.input(0)).shape)));
}

void requantize(NetworkBuilder& b, const Node& node) {
  const Value x = b.value(node.input(0));
  const Value y = b.value(node.output());
  check_activation(x);
  check_activation(y);
  if (same_quantization(x, y)) {
    b.alias(node.output(), node.input(0));
    return;
  }
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

constexpr Lowering kRows[] = {
    {Op::quantize, quantize, kAnyType, "one scale; 8 bits"},
    {Op::dequantize, quantize, kAnyType, "one scale; 8 bits"},
    {Op::requantize, requantize, kInteger, "a table of 256 results"},
};

}  // namespace

std::span<const Lowering> convert_lowerings() {
  return kRows;
}

}  // namespace nnlib::importer
