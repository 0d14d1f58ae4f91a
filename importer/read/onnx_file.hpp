// SPDX-License-Identifier: MIT
// What an ONNX file holds, as plain data: the only door to the protobuf classes.
//
// Files of newer versions are read as far as their messages are known; nothing is checked but what
// this representation needs: sizes, data of the declared length, no external data.
#ifndef NNLIB_IMPORTER_READ_ONNX_FILE_HPP
#define NNLIB_IMPORTER_READ_ONNX_FILE_HPP

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "importer/graph/value.hpp"

namespace nnlib::importer {

struct OnnxTensor {
  std::string name;
  Type type = Type::f32;
  Shape shape;
  Bytes bytes;  // elements in the byte order of this machine
};

struct OnnxUnreadable {
  std::string reason;  // "a graph", "strings", ...
};

struct OnnxAttribute {
  std::string name;
  std::variant<int64_t, float, std::string, std::vector<int64_t>, std::vector<float>,
               std::vector<std::string>, OnnxTensor, OnnxUnreadable>
      value;
};

struct OnnxNode {
  std::string name;
  std::string op;
  std::string domain;
  std::vector<std::string> inputs;  // "" for an absent one
  std::vector<std::string> outputs;
  std::vector<OnnxAttribute> attributes;
};

struct OnnxDim {
  int64_t size = -1;  // -1: open
  std::string name;   // of an open one, or ""
};

struct OnnxPort {
  std::string name;
  bool is_tensor = true;
  bool has_shape = false;
  Type type = Type::f32;
  std::vector<OnnxDim> shape;
};

struct OnnxModel {
  int64_t opset = 1;  // of the default domain
  std::vector<OnnxNode> nodes;
  std::vector<OnnxTensor> constants;
  std::vector<OnnxPort> inputs;
  std::vector<OnnxPort> outputs;
};

// Throws std::runtime_error with a reason that a user understands.
OnnxModel parse_onnx_model(std::string_view bytes);

// A file with a single tensor, as test data come.
OnnxTensor parse_onnx_tensor(std::string_view bytes);

}  // namespace nnlib::importer

#endif
