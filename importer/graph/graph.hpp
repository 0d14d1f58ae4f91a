// SPDX-License-Identifier: MIT
// A model as values and nodes, whatever file it came from.
#ifndef NNLIB_IMPORTER_GRAPH_GRAPH_HPP
#define NNLIB_IMPORTER_GRAPH_GRAPH_HPP

#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "importer/graph/operators.hpp"
#include "importer/graph/value.hpp"

namespace nnlib::importer {

using ValueId = int32_t;
constexpr ValueId kAbsent = -1;

using Attribute =
    std::variant<int64_t, std::vector<int64_t>, double, std::vector<double>, std::string>;

struct Node {
  std::string name;    // in the model; for messages and reports
  std::string origin;  // the model's own word for the operator: "Conv", "CONV_2D"
  Op op = Op::identity;
  std::vector<ValueId> inputs;
  std::vector<ValueId> outputs;
  std::map<std::string, Attribute, std::less<>> attributes;

  ValueId input(size_t i) const { return i < inputs.size() ? inputs[i] : kAbsent; }
  ValueId output(size_t i = 0) const { return i < outputs.size() ? outputs[i] : kAbsent; }

  bool has(std::string_view attribute) const { return attributes.contains(attribute); }
  // An attribute, or the default when it is absent. A number may be stored as an integer.
  int64_t integer(std::string_view attribute, int64_t otherwise = 0) const;
  double number(std::string_view attribute, double otherwise = 0) const;
  std::vector<int64_t> integers(std::string_view attribute,
                                std::vector<int64_t> otherwise = {}) const;
  std::vector<double> numbers(std::string_view attribute, std::vector<double> otherwise = {}) const;
  std::string text(std::string_view attribute, std::string otherwise = {}) const;
  // The node that was fused into this one as `part`: its operator is the attribute of that name,
  // its attributes follow with "part_" before theirs.
  std::optional<Node> fused(const std::string& part) const;
};

class Graph {
 public:
  std::string name;
  std::vector<Value> values;
  std::vector<Node> nodes;  // in an order in which they can run
  std::vector<ValueId> inputs;
  std::vector<ValueId> outputs;

  Value& value(ValueId id) { return values.at(static_cast<size_t>(id)); }
  const Value& value(ValueId id) const { return values.at(static_cast<size_t>(id)); }
  // Null where the id is kAbsent.
  const Value* find(ValueId id) const { return id == kAbsent ? nullptr : &value(id); }

  // Adds a value; its name is made unique ("x", "x#2", ...; "value" when empty).
  ValueId add(Value value);
  template <class T>
  ValueId add_constant(std::string value_name, Shape shape, std::span<const T> elements) {
    return add({std::move(value_name), type_of<T>(), std::move(shape), {}, make_bytes(elements)});
  }

  // Gives a value a name; another value that has it gets a new one.
  void rename(ValueId id, std::string wanted);

  bool is_input(ValueId id) const;
  bool is_output(ValueId id) const;
  // Index of the node that gives a value, or -1.
  int producer(ValueId id) const;
  // Indices of the nodes that read a value, each once.
  std::vector<int> consumers(ValueId id) const;
  // Every reader of `from`, the graph's outputs included, reads `to`.
  void replace_uses(ValueId from, ValueId to);

  // Drops nodes whose results nobody reads; then values that nobody names. Ids change.
  void remove_dead();

  // Puts the nodes into an order in which they can run, keeping theirs where it is one. Throws
  // std::runtime_error on a cycle, an id out of range, a value given twice or by nobody.
  void sort();

 private:
  std::string unique_name(std::string wanted);

  std::map<std::string, int, std::less<>> names_;
};

}  // namespace nnlib::importer

#endif
