// SPDX-License-Identifier: MIT
// What a user says about a model beyond its file.
#ifndef NNLIB_IMPORTER_READ_OPTIONS_HPP
#define NNLIB_IMPORTER_READ_OPTIONS_HPP

#include <functional>
#include <map>
#include <string>

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

struct ReadOptions {
  // Inputs that are really constants.
  std::map<std::string, Value, std::less<>> freeze;
  // The same as a user writes it: numbers with commas between, or a file: .npy, an ONNX tensor
  // (.pb) or raw elements of the input's type. A single number fills the shape.
  std::map<std::string, std::string, std::less<>> freeze_text;
  // Sizes of open dimensions, by the model's name for them.
  std::map<std::string, int64_t, std::less<>> input_dims;
};

// A frozen input of the declared type and shape. An open dimension takes what is given. Throws
// std::runtime_error.
Value frozen_value(const std::string& text, Type type, Shape shape);

}  // namespace nnlib::importer

#endif
