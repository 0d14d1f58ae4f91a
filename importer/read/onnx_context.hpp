// SPDX-License-Identifier: MIT
// What the translation of one ONNX node works with.
#ifndef NNLIB_IMPORTER_READ_ONNX_CONTEXT_HPP
#define NNLIB_IMPORTER_READ_ONNX_CONTEXT_HPP

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "importer/pass/graph_builder.hpp"
#include "importer/read/onnx_file.hpp"

namespace nnlib::importer {

struct OnnxContext {
  const OnnxNode& node;
  int64_t opset;
  GraphBuilder& build;
  std::vector<ValueId> inputs;   // kAbsent for an absent one
  std::vector<ValueId> outputs;  // to be filled, as many as the node has

  bool has_input(size_t i) const { return i < inputs.size() && inputs[i] != kAbsent; }
  // The input, which must be there.
  ValueId input(size_t i = 0) const;
  // kAbsent when it is not there.
  ValueId optional_input(size_t i) const { return has_input(i) ? inputs[i] : kAbsent; }
  const Value& value(size_t i) const { return build.value(input(i)); }
  const Shape& shape(size_t i = 0) const { return value(i).shape; }
  int64_t rank(size_t i = 0) const { return value(i).rank(); }

  bool has_attribute(std::string_view name) const;
  int64_t integer(std::string_view name, int64_t otherwise) const;
  double number(std::string_view name, double otherwise) const;
  std::string text(std::string_view name, std::string otherwise) const;
  Shape integers(std::string_view name, Shape otherwise = {}) const;
  std::vector<std::string> texts(std::string_view name) const;
  std::vector<float> numbers(std::string_view name) const;

  // An input that must be known now; `what` names it in the refusal.
  Shape constant_integers(size_t i, const char* what) const;
  std::vector<double> constant_numbers(size_t i, const char* what) const;
  // From an attribute in old versions, from an input since; nothing when neither is there.
  std::optional<Shape> integers_of(std::string_view attribute, size_t i) const;

  void output(ValueId id) { outputs.at(0) = id; }
  bool output_used(size_t i) const { return i < node.outputs.size() && !node.outputs[i].empty(); }
  // Refuses outputs beyond the first `count`.
  void require_outputs(size_t count) const;
  void require_float(size_t i = 0) const;
  // Axis attribute, made 0 or greater for the rank.
  int64_t axis(int64_t otherwise, size_t i = 0) const;
};

struct OnnxOperator {
  std::string_view name;
  void (*translate)(OnnxContext&);
  std::string_view restrictions;  // for the table of operators; empty: none worth a word
};

// The families, each in the file of its name.
std::span<const OnnxOperator> onnx_elementwise_operators();
std::span<const OnnxOperator> onnx_movement_operators();
std::span<const OnnxOperator> onnx_reduction_operators();
std::span<const OnnxOperator> onnx_spatial_operators();
std::span<const OnnxOperator> onnx_resize_operators();
std::span<const OnnxOperator> onnx_matrix_operators();
std::span<const OnnxOperator> onnx_quantized_operators();
std::span<const OnnxOperator> onnx_recurrent_operators();

// Null for an operator that is not known.
const OnnxOperator* onnx_operator(std::string_view name);
// All of them, by name.
std::vector<const OnnxOperator*> onnx_operators();

}  // namespace nnlib::importer

#endif
