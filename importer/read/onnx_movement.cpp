// SPDX-License-Identifier: MIT
// ONNX operators that move elements, and those that compute with shapes.
#include <algorithm>
#include <cmath>

#include "importer/read/onnx_context.hpp"
#include "importer/read/onnx_tensor.hpp"

namespace nnlib::importer {
namespace {

void reshape(OnnxContext& c) {
  Shape shape = c.integers_of("shape", 1).value_or(Shape{});
  const Shape& from = c.shape();
  const bool zero_is_zero = c.integer("allowzero", 0) != 0;
  int64_t known = 1;
  int64_t* open = nullptr;
  for (size_t axis = 0; axis < shape.size(); ++axis) {
    if (shape[axis] == 0 && !zero_is_zero) {
      if (axis >= from.size()) {
        throw NotAvailable{"size 0 copies an axis that the input does not have", ""};
      }
      shape[axis] = from[axis];
    }
    if (shape[axis] == -1 && open == nullptr) {
      open = &shape[axis];
    } else if (shape[axis] < 0 || shape[axis] > max_elements) {
      throw NotAvailable{"a size out of range", ""};
    } else {
      known = std::min(known * shape[axis], max_elements + 1);
    }
  }
  if (open != nullptr) {
    *open = known == 0 ? 0 : element_count(from) / known;
  }
  c.output(c.build.reshape(c.input(), shape));
}

void flatten(OnnxContext& c) {
  const Shape& from = c.shape();
  const int64_t axis = c.integer("axis", 1);
  const size_t split = axis == c.rank() ? from.size()
                       : from.empty()   ? 0
                                        : static_cast<size_t>(normal_axis(axis, from.size()));
  const auto middle = from.begin() + static_cast<std::ptrdiff_t>(split);
  c.output(c.build.reshape(
      c.input(), {element_count({from.begin(), middle}), element_count({middle, from.end()})}));
}

void squeeze(OnnxContext& c) {
  const Shape from = c.shape();
  const std::optional<Shape> axes = c.integers_of("axes", 1);
  std::vector<bool> drop(from.size(), false);
  if (axes) {
    for (const int64_t axis : *axes) {
      drop[static_cast<size_t>(normal_axis(axis, from.size()))] = true;
    }
  }
  Shape shape;
  for (size_t axis = 0; axis < from.size(); ++axis) {
    if (!(axes ? drop[axis] : from[axis] == 1)) {
      shape.push_back(from[axis]);
    }
  }
  c.output(c.build.reshape(c.input(), shape));
}

void unsqueeze(OnnxContext& c) {
  const Shape from = c.shape();
  const Shape axes = c.integers_of("axes", 1).value_or(Shape{});
  const size_t rank = from.size() + axes.size();
  std::vector<bool> added(rank, false);
  for (const int64_t axis : axes) {
    added[static_cast<size_t>(normal_axis(axis, rank))] = true;
  }
  if (std::count(added.begin(), added.end(), true) != static_cast<std::ptrdiff_t>(axes.size())) {
    throw NotAvailable{"an axis is added twice", ""};
  }
  Shape shape;
  size_t next = 0;
  for (size_t axis = 0; axis < rank; ++axis) {
    shape.push_back(added[axis] ? 1 : from[next++]);
  }
  c.output(c.build.reshape(c.input(), shape));
}

void transpose(OnnxContext& c) {
  Shape perm = c.integers("perm");
  if (!c.has_attribute("perm")) {
    for (int64_t axis = c.rank(); axis-- > 0;) {
      perm.push_back(axis);
    }
  }
  c.output(c.build.transpose(c.input(), perm));
}

void concat(OnnxContext& c) {
  std::vector<ValueId> parts;
  for (size_t i = 0; i < c.inputs.size(); ++i) {
    if (c.build.value(c.input(i)).elements() != 0) {
      parts.push_back(c.input(i));
    }
  }
  if (parts.empty()) {
    parts.push_back(c.input());
  }
  c.output(c.build.concat(parts, c.integer("axis", 1)));
}

void slice(OnnxContext& c) {
  const Shape from = c.shape();
  const bool old = c.opset < 10;
  const Shape given_starts = old ? c.integers("starts") : c.constant_integers(1, "starts");
  const Shape given_ends = old ? c.integers("ends") : c.constant_integers(2, "ends");
  Shape axes;
  if (const std::optional<Shape> given = c.integers_of("axes", 3)) {
    axes = *given;
  } else {
    for (size_t i = 0; i < given_starts.size(); ++i) {
      axes.push_back(static_cast<int64_t>(i));
    }
  }
  const Shape given_steps =
      c.has_input(4) ? c.constant_integers(4, "steps") : Shape(given_starts.size(), 1);
  if (given_ends.size() != axes.size() || given_starts.size() != axes.size() ||
      given_steps.size() != axes.size()) {
    throw NotAvailable{"starts, ends, axes and steps are not equally many", ""};
  }
  Shape starts(from.size(), 0);
  Shape ends = from;
  Shape steps(from.size(), 1);
  for (size_t i = 0; i < axes.size(); ++i) {
    const auto axis = static_cast<size_t>(normal_axis(axes[i], from.size()));
    const int64_t size = from[axis];
    const int64_t step = std::clamp<int64_t>(given_steps[i], -max_elements, max_elements);
    if (step == 0) {
      throw NotAvailable{"a step of 0", ""};
    }
    // Backwards, the first index is the last one and the end may lie before index 0.
    const int64_t low = step > 0 ? 0 : -1;
    const int64_t high = step > 0 ? size : size - 1;
    const auto clamped = [&](int64_t at) {
      return std::clamp(at < 0 ? std::max(at, -max_elements - size) + size : at, low, high);
    };
    starts[axis] =
        step > 0 ? clamped(given_starts[i])
                 : std::clamp<int64_t>(clamped(given_starts[i]), 0, std::max<int64_t>(high, 0));
    ends[axis] = clamped(given_ends[i]);
    steps[axis] = step;
  }
  c.output(c.build.slice(c.input(), starts, ends, steps));
}

void split(OnnxContext& c) {
  const int64_t axis = c.axis(0);
  const int64_t whole = c.shape()[static_cast<size_t>(axis)];
  const auto parts = static_cast<int64_t>(c.node.outputs.size());
  Shape sizes = c.integers_of("split", 1).value_or(Shape{});
  if (sizes.empty()) {
    const int64_t each = (whole + parts - 1) / parts;
    for (int64_t i = 0; i < parts; ++i) {
      sizes.push_back(std::clamp<int64_t>(whole - i * each, 0, each));
    }
  }
  int64_t sum = 0;
  for (const int64_t size : sizes) {
    sum += size < 0 ? max_elements : size;
  }
  if (static_cast<int64_t>(sizes.size()) != parts || sum != whole) {
    throw NotAvailable{"its parts do not make up the axis", ""};
  }
  int64_t start = 0;
  for (size_t i = 0; i < sizes.size(); ++i) {
    c.outputs[i] = c.build.narrow(c.input(), axis, start, sizes[i]);
    start += sizes[i];
  }
}

void pad(OnnxContext& c) {
  Shape pads = c.opset < 2 ? c.integers("paddings") : c.integers_of("pads", 1).value_or(Shape{});
  const auto rank = static_cast<size_t>(c.rank());
  if (c.has_input(3)) {  // axes
    const Shape axes = c.constant_integers(3, "axes");
    Shape all(2 * rank, 0);
    for (size_t i = 0; i < axes.size() && pads.size() == 2 * axes.size(); ++i) {
      const auto axis = static_cast<size_t>(normal_axis(axes[i], rank));
      all[axis] = pads[i];
      all[rank + axis] = pads[axes.size() + i];
    }
    pads = all;
  }
  if (pads.size() != 2 * rank) {
    throw NotAvailable{"there must be two pads for each axis", ""};
  }
  const double value =
      c.has_input(2) ? c.constant_numbers(2, "constant_value").at(0) : c.number("value", 0);
  const std::string mode = c.text("mode", "constant");
  if (mode != "constant" && mode != "reflect" && mode != "edge") {
    throw NotAvailable{"mode " + mode + " is not available", "constant, reflect and edge are"};
  }
  c.output(c.build.pad(c.input(), pads, mode, value));
}

void tile(OnnxContext& c) {
  if (c.opset < 6) {
    throw NotAvailable{"the operator of this old version is not available",
                       "export with opset 6 or later"};
  }
  const Shape repeats = c.constant_integers(1, "repeats");
  if (repeats.size() != c.shape().size()) {
    throw NotAvailable{"there must be a number of repetitions for each axis", ""};
  }
  c.output(c.build.tile(c.input(), repeats));
}

void expand(OnnxContext& c) {
  const Shape shape = c.constant_integers(1, "shape");
  element_count(shape);
  c.output(c.build.expand(c.input(), broadcast(c.shape(), shape)));
}

void gather(OnnxContext& c) {
  if (!c.value(1).constant()) {
    throw NotAvailable{"its indices must be known at import",
                       "give them with --freeze, or look the rows up in the application"};
  }
  c.output(c.build.gather(c.input(), c.input(1), c.integer("axis", 0)));
}

// The block of every pixel's channels becomes space; both orders are a transposition.
void depth_to_space(OnnxContext& c) {
  const Shape s = c.shape();
  const int64_t b = c.integer("blocksize", 0);
  if (s.size() != 4 || b < 1 || b > s[1] || s[1] % (b * b) != 0) {
    throw NotAvailable{"channels that do not divide into blocks", ""};
  }
  const int64_t depth = s[1] / (b * b);
  const bool crd = c.text("mode", "DCR") == "CRD";
  const ValueId split = c.build.reshape(
      c.input(), crd ? Shape{s[0], depth, b, b, s[2], s[3]} : Shape{s[0], b, b, depth, s[2], s[3]});
  const ValueId moved =
      c.build.transpose(split, crd ? Shape{0, 1, 4, 2, 5, 3} : Shape{0, 3, 4, 1, 5, 2});
  c.output(c.build.reshape(moved, {s[0], depth, s[2] * b, s[3] * b}));
}

void space_to_depth(OnnxContext& c) {
  const Shape s = c.shape();
  const int64_t b = c.integer("blocksize", 0);
  if (s.size() != 4 || b < 1 || b > max_elements || s[2] % b != 0 || s[3] % b != 0) {
    throw NotAvailable{"a map that does not divide into blocks", ""};
  }
  const ValueId split = c.build.reshape(c.input(), {s[0], s[1], s[2] / b, b, s[3] / b, b});
  const ValueId moved = c.build.transpose(split, {0, 3, 5, 1, 2, 4});
  c.output(c.build.reshape(moved, {s[0], s[1] * b * b, s[2] / b, s[3] / b}));
}

void constant(OnnxContext& c) {
  for (const OnnxAttribute& attribute : c.node.attributes) {
    if (const auto* tensor = std::get_if<OnnxTensor>(&attribute.value)) {
      c.output(c.build.graph().add(value_of(*tensor)));
      return;
    }
    if (const auto* reason = std::get_if<OnnxUnreadable>(&attribute.value)) {
      throw NotAvailable{reason->reason, ""};
    }
  }
  if (c.has_attribute("value_int")) {
    c.output(c.build.numbers({}, {static_cast<double>(c.integer("value_int", 0))}, Type::s64));
  } else if (c.has_attribute("value_ints")) {
    c.output(c.build.integers(c.integers("value_ints")));
  } else if (c.has_attribute("value_float")) {
    c.output(c.build.scalar(c.number("value_float", 0)));
  } else if (c.has_attribute("value_floats")) {
    const std::vector<float> given = c.numbers("value_floats");
    c.output(c.build.numbers({static_cast<int64_t>(given.size())}, {given.begin(), given.end()}));
  } else {
    throw NotAvailable{"a constant that is not a tensor of numbers", ""};
  }
}

void constant_of_shape(OnnxContext& c) {
  const Shape shape = c.constant_integers(0, "its shape");
  element_count(shape);
  ValueId element = kAbsent;
  for (const OnnxAttribute& attribute : c.node.attributes) {
    if (const auto* tensor = std::get_if<OnnxTensor>(&attribute.value)) {
      element = c.build.reshape(c.build.graph().add(value_of(*tensor)), {});
    }
  }
  c.output(c.build.expand(element == kAbsent ? c.build.scalar(0) : element, shape));
}

void shape_of(OnnxContext& c) {
  const Shape from = c.shape();
  const int64_t rank = c.rank();
  const auto clamped = [rank](int64_t at) {
    return std::clamp<int64_t>(at < 0 ? std::max(at, -rank) + rank : at, 0, rank);
  };
  const int64_t start = clamped(c.integer("start", 0));
  const int64_t end = clamped(c.integer("end", rank));
  c.output(
      c.build.integers(start < end ? Shape(from.begin() + start, from.begin() + end) : Shape{}));
}

void size_of(OnnxContext& c) {
  c.output(c.build.numbers({}, {static_cast<double>(element_count(c.shape()))}, Type::s64));
}

void range(OnnxContext& c) {
  const double start = c.constant_numbers(0, "start").at(0);
  const double limit = c.constant_numbers(1, "limit").at(0);
  const double delta = c.constant_numbers(2, "delta").at(0);
  const double count = std::ceil((limit - start) / delta);
  if (!(std::fabs(count) < static_cast<double>(max_elements))) {
    throw NotAvailable{"a range without end", ""};
  }
  std::vector<double> elements;
  for (double i = 0; i < count; ++i) {
    elements.push_back(start + i * delta);
  }
  c.output(c.build.numbers({static_cast<int64_t>(elements.size())}, elements, c.value(0).type));
}

constexpr OnnxOperator kMovementOperators[] = {
    {"Concat", concat, ""},
    {"Constant", constant, "tensors of numbers"},
    {"ConstantOfShape", constant_of_shape, "shape known at import"},
    {"DepthToSpace", depth_to_space, ""},
    {"Expand", expand, "shape known at import"},
    {"Flatten", flatten, ""},
    {"Gather", gather, "indices known at import"},
    {"Pad", pad, "pads and value known at import; constant, reflect, edge"},
    {"Range", range, "known at import"},
    {"Reshape", reshape, "shape known at import"},
    {"Shape", shape_of, "folded: shapes are known at import"},
    {"Size", size_of, "folded: shapes are known at import"},
    {"Slice", slice, "bounds known at import"},
    {"SpaceToDepth", space_to_depth, ""},
    {"Split", split, "sizes known at import"},
    {"Squeeze", squeeze, "axes known at import"},
    {"Tile", tile, "repeats known at import"},
    {"Transpose", transpose, ""},
    {"Unsqueeze", unsqueeze, "axes known at import"},
};

}  // namespace

std::span<const OnnxOperator> onnx_movement_operators() {
  return kMovementOperators;
}

}  // namespace nnlib::importer
