// SPDX-License-Identifier: MIT
#include "importer/pass/graph_builder.hpp"

#include <algorithm>
#include <stdexcept>

#include "importer/pass/evaluate.hpp"
#include "importer/pass/host_math.hpp"

namespace nnlib::importer {
namespace {

// Where an axis is after a reshape that splits or joins others only, or -1.
int64_t axis_after_reshape(const Shape& from, int64_t axis, const Shape& to) {
  const auto middle = from.begin() + axis;
  const int64_t before = element_count({from.begin(), middle});
  int64_t product = 1;
  for (size_t i = 0; i < to.size(); ++i) {
    if (product == before && to[i] == *middle) {
      return static_cast<int64_t>(i);
    }
    product *= to[i];
  }
  return -1;
}

bool is_identity(const Shape& perm) {
  for (size_t i = 0; i < perm.size(); ++i) {
    if (perm[i] != static_cast<int64_t>(i)) {
      return false;
    }
  }
  return true;
}

}  // namespace

void GraphBuilder::set_context(const Node& node) {
  set_context(node.name, node.origin,
              node.outputs.empty() ? node.name : graph_.value(node.outputs[0]).name);
}

ValueId GraphBuilder::name_after(const Node& node, ValueId result) {
  if (const int at = graph_.producer(result); at >= 0) {
    Node& made = graph_.nodes[static_cast<size_t>(at)];
    made.name = node.name;
    made.origin = node.origin;
  }
  return result;
}

ValueId GraphBuilder::numbers(Shape shape, const std::vector<double>& elements, Type type) {
  const HostArray array{shape, elements};
  return graph_.add({result_ + "_constant", type, std::move(shape), {}, bytes_of(array, type)});
}

ValueId GraphBuilder::integers(const std::vector<int64_t>& elements) {
  return graph_.add_constant(result_ + "_constant", {static_cast<int64_t>(elements.size())},
                             std::span<const int64_t>(elements));
}

ValueId GraphBuilder::emit(Op op, std::vector<ValueId> inputs, Type type, Shape shape,
                           Attributes attributes, std::optional<Quantization> quantization) {
  element_count(shape);
  const ValueId out =
      graph_.add({result_, type, std::move(shape), std::move(quantization), nullptr});
  Node node{node_, origin_, op, std::move(inputs), {out}, std::move(attributes)};
  if (!fold(graph_, node)) {
    graph_.nodes.push_back(std::move(node));
  }
  return out;
}

ValueId GraphBuilder::like(Op op, std::vector<ValueId> inputs, Attributes attributes) {
  const Value first = value(inputs.at(0));
  return emit(op, std::move(inputs), first.type, first.shape, std::move(attributes));
}

ValueId GraphBuilder::unary(Op op, ValueId x, Attributes attributes) {
  const Type type = gives_truth(op) ? Type::boolean : value(x).type;
  return emit(op, {x}, type, Shape(shape(x)), std::move(attributes));
}

ValueId GraphBuilder::binary(Op op, ValueId a, ValueId b) {
  const Type type = gives_truth(op) ? Type::boolean : value(a).type;
  return emit(op, {a, b}, type, broadcast(shape(a), shape(b)));
}

ValueId GraphBuilder::where(ValueId condition, ValueId a, ValueId b) {
  return emit(Op::where, {condition, a, b}, value(a).type,
              broadcast(shape(condition), broadcast(shape(a), shape(b))));
}

ValueId GraphBuilder::reduce(Op op, ValueId x, Shape axes, bool keepdims) {
  const size_t rank = shape(x).size();
  if (axes.empty()) {
    for (size_t axis = 0; axis < rank; ++axis) {
      axes.push_back(static_cast<int64_t>(axis));
    }
  }
  for (int64_t& axis : axes) {
    axis = normal_axis(axis, rank);
  }
  std::sort(axes.begin(), axes.end());
  axes.erase(std::unique(axes.begin(), axes.end()), axes.end());
  Shape out;
  for (size_t axis = 0; axis < rank; ++axis) {
    if (!std::binary_search(axes.begin(), axes.end(), static_cast<int64_t>(axis))) {
      out.push_back(shape(x)[axis]);
    } else if (keepdims) {
      out.push_back(1);
    }
  }
  return emit(op, {x}, value(x).type, out, {{"axes", axes}});
}

ValueId GraphBuilder::quantized_constant(ValueId id) const {
  const int from = constant(id) ? -1 : graph_.producer(id);
  if (from < 0 || graph_.nodes[static_cast<size_t>(from)].op != Op::dequantize) {
    return kAbsent;
  }
  const ValueId bytes = graph_.nodes[static_cast<size_t>(from)].input(0);
  return constant(bytes) ? bytes : kAbsent;
}

ValueId GraphBuilder::dequantize(ValueId bytes) {
  return emit(Op::dequantize, {bytes}, Type::f32, Shape(shape(bytes)));
}

void GraphBuilder::replace(ValueId from, ValueId to) {
  const bool named = graph_.is_output(from) && !graph_.is_input(to);
  graph_.replace_uses(from, to);
  if (named) {
    graph_.rename(to, std::string(value(from).name));
  }
}

std::optional<Quantization> GraphBuilder::moved_quantization(ValueId x,
                                                             const Shape& new_axis_of_old) const {
  std::optional<Quantization> moved = value(x).quantization;
  if (moved && !moved->per_tensor()) {
    moved->axis = static_cast<int>(new_axis_of_old.at(static_cast<size_t>(moved->axis)));
  }
  return moved;
}

ValueId GraphBuilder::reshape(ValueId x, Shape new_shape) {
  const Value from = value(x);
  if (from.shape == new_shape) {
    return x;
  }
  if (const ValueId bytes = quantized_constant(x); bytes != kAbsent) {
    return dequantize(reshape(bytes, std::move(new_shape)));
  }
  if (element_count(from.shape) != element_count(new_shape)) {
    throw NotAvailable{"the new shape has another number of elements", ""};
  }
  std::optional<Quantization> quantization = from.quantization;
  if (quantization && !quantization->per_tensor()) {
    quantization->axis =
        static_cast<int>(axis_after_reshape(from.shape, quantization->axis, new_shape));
    if (quantization->axis < 0) {
      throw NotAvailable{"it mixes an axis that has a scale for each index with others",
                         "quantize per tensor"};
    }
  }
  return emit(Op::reshape, {x}, from.type, std::move(new_shape), {}, quantization);
}

ValueId GraphBuilder::transpose(ValueId x, const Shape& perm) {
  require_permutation(perm, shape(x).size());
  if (is_identity(perm)) {
    return x;
  }
  if (const ValueId bytes = quantized_constant(x); bytes != kAbsent) {
    return dequantize(transpose(bytes, perm));
  }
  const std::optional<Quantization> quantization = moved_quantization(x, inverse_permutation(perm));
  return emit(Op::transpose, {x}, value(x).type, permuted(shape(x), perm), {{"perm", perm}},
              quantization);
}

ValueId GraphBuilder::expand(ValueId x, const Shape& new_shape) {
  if (shape(x) == new_shape) {
    return x;
  }
  broadcast_strides(shape(x), new_shape);
  return emit(Op::expand, {x}, value(x).type, new_shape, {}, value(x).quantization);
}

ValueId GraphBuilder::tile(ValueId x, const Shape& repeats) {
  Shape out = shape(x);
  for (size_t axis = 0; axis < out.size(); ++axis) {
    if (repeats.at(axis) < 0 || repeats[axis] > max_elements) {
      throw NotAvailable{"a number of repetitions out of range", ""};
    }
    out[axis] *= repeats[axis];
  }
  return out == shape(x) ? x
                         : emit(Op::tile, {x}, value(x).type, out, {{"repeats", repeats}},
                                value(x).quantization);
}

ValueId GraphBuilder::slice(ValueId x, const Shape& starts, const Shape& ends, const Shape& steps) {
  Shape out;
  for (size_t axis = 0; axis < starts.size(); ++axis) {
    const int64_t span = steps[axis] > 0 ? ends[axis] - starts[axis] : starts[axis] - ends[axis];
    const int64_t stride = std::abs(steps[axis]);
    out.push_back(span <= 0 ? 0 : (span + stride - 1) / stride);
  }
  const bool forwards = std::all_of(steps.begin(), steps.end(), [](int64_t s) { return s > 0; });
  if (out == shape(x) && forwards) {
    return x;
  }
  return emit(Op::slice, {x}, value(x).type, out,
              {{"starts", starts}, {"ends", ends}, {"steps", steps}}, value(x).quantization);
}

ValueId GraphBuilder::narrow(ValueId x, int64_t axis, int64_t start, int64_t size) {
  const Shape& whole = shape(x);
  Shape starts(whole.size(), 0);
  Shape ends = whole;
  starts[static_cast<size_t>(axis)] = start;
  ends[static_cast<size_t>(axis)] = start + size;
  return slice(x, starts, ends, Shape(whole.size(), 1));
}

ValueId GraphBuilder::pad(ValueId x, const Shape& pads, const std::string& mode, double number) {
  Shape out = shape(x);
  const size_t rank = out.size();
  bool any = false;
  for (size_t axis = 0; axis < rank; ++axis) {
    const int64_t before = pads.at(axis);
    const int64_t after = pads.at(rank + axis);
    if (std::max(std::abs(before), std::abs(after)) > max_elements) {
      throw NotAvailable{"a padding out of range", ""};
    }
    any = any || before != 0 || after != 0;
    out[axis] += before + after;
  }
  return any ? emit(Op::pad, {x}, value(x).type, out,
                    {{"pads", pads}, {"mode", mode}, {"value", number}}, value(x).quantization)
             : x;
}

ValueId GraphBuilder::concat(const std::vector<ValueId>& parts, int64_t axis) {
  if (parts.size() == 1) {
    return parts[0];
  }
  Shape out = shape(parts.at(0));
  axis = normal_axis(axis, out.size());
  const auto a = static_cast<size_t>(axis);
  for (size_t i = 1; i < parts.size(); ++i) {
    Shape part = shape(parts[i]);
    if (part.size() != out.size()) {
      throw NotAvailable{"its inputs have different ranks", ""};
    }
    out[a] += part[a];
    part[a] = out[a];
    if (part != out) {
      throw NotAvailable{"its inputs differ in another axis than the one they are joined along",
                         ""};
    }
  }
  return emit(Op::concat, parts, value(parts[0]).type, out, {{"axis", axis}},
              value(parts[0]).quantization);
}

ValueId GraphBuilder::gather(ValueId x, ValueId indices, int64_t axis) {
  const Shape& from = shape(x);
  axis = normal_axis(axis, from.size());
  Shape out(from.begin(), from.begin() + axis);
  out.insert(out.end(), shape(indices).begin(), shape(indices).end());
  out.insert(out.end(), from.begin() + axis + 1, from.end());
  return emit(Op::gather, {x, indices}, value(x).type, out, {{"axis", axis}},
              value(x).quantization);
}

ValueId GraphBuilder::cast(ValueId x, Type type) {
  return value(x).type == type ? x : emit(Op::cast, {x}, type, Shape(shape(x)));
}

ValueId GraphBuilder::matmul(ValueId a, ValueId b) {
  Shape left = shape(a);
  Shape right = shape(b);
  if (left.size() < 2 || right.size() < 2 || left.back() != right.end()[-2]) {
    throw NotAvailable{"matrices that cannot be multiplied", ""};
  }
  const int64_t rows = left.end()[-2];
  const int64_t columns = right.back();
  left.resize(left.size() - 2);
  right.resize(right.size() - 2);
  Shape out = broadcast(left, right);
  out.insert(out.end(), {rows, columns});
  return emit(Op::matmul, {a, b}, value(a).type, out);
}

ValueId GraphBuilder::dense(ValueId x, ValueId weights, ValueId bias) {
  Shape out = shape(x);
  if (out.empty() || shape(weights).size() != 2 || out.back() != shape(weights)[1]) {
    throw NotAvailable{"weights that do not fit the input", ""};
  }
  out.back() = shape(weights)[0];
  return emit(Op::dense, {x, weights, bias}, value(x).type, out);
}

}  // namespace nnlib::importer
