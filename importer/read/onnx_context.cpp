// SPDX-License-Identifier: MIT
#include "importer/read/onnx_context.hpp"

#include <algorithm>

#include "importer/graph/refusals.hpp"

namespace nnlib::importer {
namespace {

template <class T>
const T* attribute_of(const OnnxNode& node, std::string_view name) {
  for (const OnnxAttribute& attribute : node.attributes) {
    if (attribute.name == name) {
      const T* value = std::get_if<T>(&attribute.value);
      if (value == nullptr) {
        throw NotAvailable{"attribute " + attribute.name + " is of another kind than it should be",
                           ""};
      }
      return value;
    }
  }
  return nullptr;
}

template <class T>
T attribute_or(const OnnxNode& node, std::string_view name, T otherwise) {
  const T* value = attribute_of<T>(node, name);
  return value != nullptr ? *value : otherwise;
}

}  // namespace

ValueId OnnxContext::input(size_t i) const {
  if (!has_input(i)) {
    throw NotAvailable{"input " + std::to_string(i) + " is missing", ""};
  }
  return inputs[i];
}

bool OnnxContext::has_attribute(std::string_view name) const {
  return std::any_of(node.attributes.begin(), node.attributes.end(),
                     [&](const OnnxAttribute& attribute) { return attribute.name == name; });
}

int64_t OnnxContext::integer(std::string_view name, int64_t otherwise) const {
  return attribute_or(node, name, otherwise);
}

double OnnxContext::number(std::string_view name, double otherwise) const {
  return attribute_or(node, name, static_cast<float>(otherwise));
}

std::string OnnxContext::text(std::string_view name, std::string otherwise) const {
  return attribute_or(node, name, std::move(otherwise));
}

Shape OnnxContext::integers(std::string_view name, Shape otherwise) const {
  return attribute_or(node, name, std::move(otherwise));
}

std::vector<std::string> OnnxContext::texts(std::string_view name) const {
  return attribute_or(node, name, std::vector<std::string>{});
}

std::vector<float> OnnxContext::numbers(std::string_view name) const {
  return attribute_or(node, name, std::vector<float>{});
}

std::vector<double> OnnxContext::constant_numbers(size_t i, const char* what) const {
  if (!value(i).constant()) {
    throw NotAvailable{std::string(what) + " must be known at import",
                       "give it with --freeze " + value(i).name + "=..."};
  }
  return to_doubles(value(i));
}

Shape OnnxContext::constant_integers(size_t i, const char* what) const {
  constant_numbers(i, what);
  return to_integers(value(i));
}

std::optional<Shape> OnnxContext::integers_of(std::string_view attribute, size_t i) const {
  if (has_input(i)) {
    return constant_integers(i, std::string(attribute).c_str());
  }
  return has_attribute(attribute) ? std::optional(integers(attribute)) : std::nullopt;
}

void OnnxContext::require_outputs(size_t count) const {
  for (size_t i = count; i < node.outputs.size(); ++i) {
    if (output_used(i)) {
      throw NotAvailable{"its output " + std::to_string(i) + " is not available", ""};
    }
  }
}

void OnnxContext::require_float(size_t i) const {
  const Type type = value(i).type;
  if (type != Type::f32 && !value(i).constant()) {
    throw NotAvailable{std::string(type_name(type)) + " at run time is not available",
                       "float32 is, and quantized integers are"};
  }
}

int64_t OnnxContext::axis(int64_t otherwise, size_t i) const {
  return normal_axis(integer("axis", otherwise), shape(i).size());
}

std::vector<const OnnxOperator*> onnx_operators() {
  std::vector<const OnnxOperator*> all;
  for (const auto family :
       {onnx_elementwise_operators(), onnx_movement_operators(), onnx_reduction_operators(),
        onnx_spatial_operators(), onnx_resize_operators(), onnx_matrix_operators(),
        onnx_quantized_operators(), onnx_recurrent_operators()}) {
    for (const OnnxOperator& row : family) {
      all.push_back(&row);
    }
  }
  std::sort(all.begin(), all.end(),
            [](const OnnxOperator* a, const OnnxOperator* b) { return a->name < b->name; });
  return all;
}

const OnnxOperator* onnx_operator(std::string_view name) {
  static const std::vector<const OnnxOperator*> all = onnx_operators();
  const auto found = std::lower_bound(
      all.begin(), all.end(), name,
      [](const OnnxOperator* row, std::string_view wanted) { return row->name < wanted; });
  return found != all.end() && (*found)->name == name ? *found : nullptr;
}

}  // namespace nnlib::importer
