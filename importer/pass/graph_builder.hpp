// SPDX-License-Identifier: MIT
// Adds nodes to a graph: shapes and types of results follow from the operands, and what can be
// computed at once becomes a constant instead of a node.
#ifndef NNLIB_IMPORTER_PASS_GRAPH_BUILDER_HPP
#define NNLIB_IMPORTER_PASS_GRAPH_BUILDER_HPP

#include <initializer_list>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "importer/graph/graph.hpp"
#include "importer/pass/shapes.hpp"

namespace nnlib::importer {

// Why a node cannot be taken.
struct NotAvailable {
  std::string reason;
  std::string way_out;
};

using Attributes = std::map<std::string, Attribute, std::less<>>;

class GraphBuilder {
 public:
  explicit GraphBuilder(Graph& graph) : graph_(graph) {}

  // What new nodes are called, and whose words their results take their names from.
  void set_context(std::string node, std::string origin, std::string result) {
    node_ = std::move(node);
    origin_ = std::move(origin);
    result_ = std::move(result);
  }
  // As a pass does it: on behalf of a node.
  void set_context(const Node& node);
  // The result is an operator's of the model, whose place it takes. Its own name stays.
  ValueId name_after(const Node& node, ValueId result);

  Graph& graph() { return graph_; }
  const Value& value(ValueId id) const { return graph_.value(id); }
  const Shape& shape(ValueId id) const { return graph_.value(id).shape; }
  bool constant(ValueId id) const { return id != kAbsent && graph_.value(id).constant(); }
  // The node that gives a value, or null. Not to be kept while nodes are added.
  const Node* producer(ValueId id) const {
    const int at = graph_.producer(id);
    return at < 0 ? nullptr : &graph_.nodes[static_cast<size_t>(at)];
  }

  ValueId scalar(double number) { return numbers({}, {number}); }
  ValueId numbers(Shape shape, const std::vector<double>& elements, Type type = Type::f32);
  ValueId integers(const std::vector<int64_t>& elements);

  // Any operator with one result of the given type and shape.
  ValueId emit(Op op, std::vector<ValueId> inputs, Type type, Shape shape,
               Attributes attributes = {}, std::optional<Quantization> quantization = {});
  // The shape and type of the first operand.
  ValueId like(Op op, std::vector<ValueId> inputs, Attributes attributes = {});

  ValueId unary(Op op, ValueId x, Attributes attributes = {});
  ValueId binary(Op op, ValueId a, ValueId b);
  ValueId binary(Op op, ValueId a, double b) { return binary(op, a, scalar(b)); }
  ValueId where(ValueId condition, ValueId a, ValueId b);
  // Axes may be negative and in any order; none: all.
  ValueId reduce(Op op, ValueId x, Shape axes, bool keepdims);

  // These keep a tensor's quantization. Without effect they return their operand. Of a dequantized
  // constant the first two move the constant, so that it stays one.
  ValueId reshape(ValueId x, Shape shape);
  ValueId transpose(ValueId x, const Shape& perm);
  ValueId expand(ValueId x, const Shape& shape);
  ValueId tile(ValueId x, const Shape& repeats);
  ValueId slice(ValueId x, const Shape& starts, const Shape& ends, const Shape& steps);
  // `size` indices of one axis from `start` on.
  ValueId narrow(ValueId x, int64_t axis, int64_t start, int64_t size);
  ValueId pad(ValueId x, const Shape& pads, const std::string& mode, double value);
  ValueId concat(const std::vector<ValueId>& parts, int64_t axis);
  ValueId gather(ValueId x, ValueId indices, int64_t axis);

  // Everybody who reads `from` reads `to`, which takes over the name of an output.
  void replace(ValueId from, ValueId to);

  ValueId cast(ValueId x, Type type);
  ValueId matmul(ValueId a, ValueId b);
  ValueId dense(ValueId x, ValueId weights, ValueId bias);

 private:
  // The constant behind a dequantization, or kAbsent.
  ValueId quantized_constant(ValueId id) const;
  ValueId dequantize(ValueId constant);
  std::optional<Quantization> moved_quantization(ValueId x, const Shape& new_axis_of_old) const;

  Graph& graph_;
  std::string node_;
  std::string origin_;
  std::string result_;
};

}  // namespace nnlib::importer

#endif
