// SPDX-License-Identifier: MIT
#include "importer/pass/evaluate.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "importer/pass/host_math.hpp"

namespace nnlib::importer {
namespace {

template <class T>
std::shared_ptr<const Bytes> narrowed(const std::vector<double>& data) {
  std::vector<T> out(data.size());
  std::transform(data.begin(), data.end(), out.begin(), [](double x) {
    if constexpr (std::is_floating_point_v<T>) {
      return static_cast<T>(x);
    } else if (!(x > -0x1p63)) {
      return static_cast<T>(std::isnan(x) ? 0 : std::numeric_limits<int64_t>::min());
    } else if (x >= 0x1p63) {
      return static_cast<T>(std::numeric_limits<int64_t>::max());
    } else {
      return static_cast<T>(static_cast<int64_t>(x));
    }
  });
  return make_bytes(std::span<const T>(out));
}

bool is_integer(Type type) {
  return type != Type::f32 && type != Type::f64 && type != Type::f16;
}

double add(double a, double b) {
  return a + b;
}

struct Evaluation {
  const Graph& graph;
  const Node& node;
  std::vector<HostArray> in;

  const Shape& out_shape() const { return graph.value(node.output()).shape; }
  size_t axis() const {
    return static_cast<size_t>(normal_axis(node.integer("axis"), in[0].shape.size()));
  }
  Shape axes() const { return node.integers("axes"); }

  HostArray reduced(const HostArray& x, double start, double (*function)(double, double)) const {
    HostArray out = reduce_array(x, axes(), true, start, function);
    out.shape = out_shape();
    return out;
  }
  double count() const {
    const auto results = static_cast<double>(element_count(out_shape()));
    return static_cast<double>(in[0].data.size()) / results;
  }

  HostArray unary(UnaryMath function) const {
    std::vector<double> parameters;
    for (const MathParameter& parameter : unary_parameters(node.op)) {
      parameters.push_back(node.number(parameter.name, parameter.otherwise));
    }
    return map_array(in[0], [&](double x) { return function(x, parameters.data()); });
  }

  HostArray binary(BinaryMath function) const {
    HostArray out = zip_arrays(in[0], in[1], function);
    if (node.op == Op::div && is_integer(graph.value(node.output()).type)) {
      std::transform(out.data.begin(), out.data.end(), out.data.begin(),
                     [](double x) { return std::trunc(x); });
    }
    return out;
  }

  HostArray where() const {
    const HostArray condition = expand_array(in[0], out_shape());
    HostArray out = expand_array(in[1], out_shape());
    const HostArray other = expand_array(in[2], out_shape());
    for (size_t i = 0; i < out.data.size(); ++i) {
      out.data[i] = condition.data[i] != 0 ? out.data[i] : other.data[i];
    }
    return out;
  }

  HostArray sliced() const {
    const Shape starts = node.integers("starts");
    const Shape ends = node.integers("ends");
    const Shape steps = node.integers("steps", Shape(starts.size(), 1));
    Shape sizes;
    for (size_t i = 0; i < starts.size(); ++i) {
      const int64_t step = steps.at(i);
      const int64_t span = step > 0 ? ends.at(i) - starts[i] : starts[i] - ends.at(i);
      const int64_t stride = std::abs(step);
      sizes.push_back(span <= 0 ? 0 : (span + stride - 1) / stride);
    }
    return slice_array(in[0], starts, sizes, steps);
  }

  HostArray padded() const {
    const Shape pads = node.integers("pads");
    const auto half = static_cast<std::ptrdiff_t>(pads.size() / 2);
    return pad_array(in[0], {pads.begin(), pads.begin() + half}, {pads.begin() + half, pads.end()},
                     node.number("value"));
  }

  HostArray range() const {
    HostArray out{out_shape(), {}};
    for (int64_t i = 0; i < element_count(out.shape); ++i) {
      out.data.push_back(in[0].data.at(0) + static_cast<double>(i) * in[2].data.at(0));
    }
    return out;
  }

  std::optional<HostArray> result() const;
};

std::optional<HostArray> Evaluation::result() const {
  if (const UnaryMath function = unary_math(node.op)) {
    return unary(function);
  }
  if (const BinaryMath function = binary_math(node.op)) {
    return binary(function);
  }
  const auto absolute = [](double x) { return std::fabs(x); };
  const auto squared = [](double x) { return x * x; };
  switch (node.op) {
    case Op::identity:
    case Op::cast:
      return in[0];
    case Op::where:
      return where();
    case Op::reshape:
      return reshape_array(in[0], out_shape());
    case Op::transpose:
      return transpose_array(in[0], node.integers("perm"));
    case Op::concat: {
      std::vector<const HostArray*> parts;
      for (const HostArray& part : in) {
        parts.push_back(&part);
      }
      return concat_arrays(parts, node.integer("axis"));
    }
    case Op::slice:
      return sliced();
    case Op::pad:
      if (node.text("mode", "constant") == "constant") {
        return padded();
      }
      return std::nullopt;
    case Op::tile:
      return tile_array(in[0], node.integers("repeats"));
    case Op::expand:
      return expand_array(in[0], out_shape());
    case Op::gather:
      return gather_array(in[0], in[1], node.integer("axis"));
    case Op::matmul:
      return matmul_arrays(in[0], in[1]);
    case Op::range:
      return range();
    case Op::reduce_sum:
      return reduced(in[0], 0, add);
    case Op::reduce_mean: {
      const double n = count();
      return map_array(reduced(in[0], 0, add), [n](double x) { return x / n; });
    }
    case Op::reduce_max:
      return reduced(in[0], -INFINITY, binary_math(Op::maximum));
    case Op::reduce_min:
      return reduced(in[0], INFINITY, binary_math(Op::minimum));
    case Op::reduce_prod:
      return reduced(in[0], 1, binary_math(Op::mul));
    case Op::reduce_l1:
      return reduced(map_array(in[0], absolute), 0, add);
    case Op::reduce_sum_square:
      return reduced(map_array(in[0], squared), 0, add);
    case Op::reduce_l2:
      return map_array(reduced(map_array(in[0], squared), 0, add),
                       [](double x) { return std::sqrt(x); });
    default:
      return std::nullopt;
  }
}

}  // namespace

HostArray array_of(const Value& constant) {
  return {constant.shape, to_doubles(constant)};
}

std::shared_ptr<const Bytes> bytes_of(const HostArray& array, Type type) {
  switch (type) {
    case Type::f32:
      return narrowed<float>(array.data);
    case Type::f64:
      return narrowed<double>(array.data);
    case Type::u8:
    case Type::boolean:
      return narrowed<uint8_t>(array.data);
    case Type::s8:
      return narrowed<int8_t>(array.data);
    case Type::u16:
      return narrowed<uint16_t>(array.data);
    case Type::s16:
      return narrowed<int16_t>(array.data);
    case Type::u32:
      return narrowed<uint32_t>(array.data);
    case Type::s32:
      return narrowed<int32_t>(array.data);
    case Type::u64:
      return narrowed<uint64_t>(array.data);
    case Type::s64:
      return narrowed<int64_t>(array.data);
    case Type::f16:
      break;
  }
  throw std::runtime_error("half precision is not computed with");
}

std::optional<HostArray> evaluate(const Graph& graph, const Node& node) {
  Evaluation evaluation{graph, node, {}};
  for (const ValueId id : node.inputs) {
    const Value* value = graph.find(id);
    if (value == nullptr || !value->constant() || value->type == Type::f16) {
      return std::nullopt;
    }
    evaluation.in.push_back(array_of(*value));
  }
  if (evaluation.in.empty()) {
    return std::nullopt;
  }
  return evaluation.result();
}

// Elements that a constant may be expanded to: a few bytes of a file could ask for gigabytes.
constexpr int64_t kMostOutOfNothing = int64_t{1} << 22;

bool fold(Graph& graph, const Node& node) {
  if (node.outputs.size() != 1) {
    return false;
  }
  const auto all_constant = [&](ValueId id) { return id != kAbsent && graph.value(id).constant(); };
  if (!std::all_of(node.inputs.begin(), node.inputs.end(), all_constant)) {
    return false;
  }
  Value& out = graph.value(node.output());
  int64_t most = kMostOutOfNothing;
  for (const ValueId id : node.inputs) {
    most = std::max(most, graph.value(id).elements());
  }
  if (out.elements() > most) {
    throw std::runtime_error("a computed constant of more than " + std::to_string(most) +
                             " elements");
  }
  const std::optional<HostArray> result = evaluate(graph, node);
  if (!result) {
    return false;
  }
  if (result->shape != out.shape) {
    throw std::runtime_error("the operands' shapes do not give the result's");
  }
  // From boolean and to it: any number but 0 is 1.
  const bool truth = out.type == Type::boolean;
  out.data = bytes_of(
      truth ? map_array(*result, [](double x) { return x != 0 ? 1.0 : 0.0; }) : *result, out.type);
  return true;
}

}  // namespace nnlib::importer
