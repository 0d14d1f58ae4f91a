// SPDX-License-Identifier: MIT
#include "importer/read/onnx_file.hpp"

#include <onnx/onnx_pb.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "importer/pass/shapes.hpp"

namespace nnlib::importer {
namespace {

using onnx::AttributeProto;
using onnx::TensorProto;

float float_of_half(uint16_t bits) {
  const int exponent = bits >> 10 & 31;
  const float mantissa = static_cast<float>(bits & 1023);
  const float magnitude = exponent == 31  ? (mantissa == 0 ? INFINITY : NAN)
                          : exponent == 0 ? std::ldexp(mantissa, -24)
                                          : std::ldexp(1024 + mantissa, exponent - 25);
  return (bits & 0x8000) != 0 ? -magnitude : magnitude;
}

// The types that a tensor may have; half precision is widened when its data are read.
Type type_of_number(int number, const std::string& what) {
  switch (number) {
    case TensorProto::FLOAT:
      return Type::f32;
    case TensorProto::UINT8:
      return Type::u8;
    case TensorProto::INT8:
      return Type::s8;
    case TensorProto::UINT16:
      return Type::u16;
    case TensorProto::INT16:
      return Type::s16;
    case TensorProto::INT32:
      return Type::s32;
    case TensorProto::INT64:
      return Type::s64;
    case TensorProto::BOOL:
      return Type::boolean;
    case TensorProto::FLOAT16:
      return Type::f16;
    case TensorProto::DOUBLE:
      return Type::f64;
    case TensorProto::UINT32:
      return Type::u32;
    case TensorProto::UINT64:
      return Type::u64;
    case TensorProto::STRING:
      throw std::runtime_error(what + ": strings are not available");
    default:
      throw std::runtime_error(what + ": element type " + std::to_string(number) +
                               " is not available");
  }
}

template <class To, class Field>
Bytes narrowed(const Field& field) {
  Bytes bytes(static_cast<size_t>(field.size()) * sizeof(To));
  size_t at = 0;
  for (const auto element : field) {
    const To value = static_cast<To>(element);
    std::memcpy(bytes.data() + at, &value, sizeof(To));
    at += sizeof(To);
  }
  return bytes;
}

// Raw data are little-endian.
Bytes host_order(const std::string& raw, size_t width) {
  Bytes bytes(raw.begin(), raw.end());
  if constexpr (std::endian::native == std::endian::big) {
    for (size_t at = 0; at + width <= bytes.size(); at += width) {
      std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(at),
                   bytes.begin() + static_cast<std::ptrdiff_t>(at + width));
    }
  }
  return bytes;
}

Bytes typed_data(const TensorProto& proto, Type type) {
  switch (type) {
    case Type::f32:
      return narrowed<float>(proto.float_data());
    case Type::f64:
      return narrowed<double>(proto.double_data());
    case Type::u8:
    case Type::boolean:
      return narrowed<uint8_t>(proto.int32_data());
    case Type::s8:
      return narrowed<int8_t>(proto.int32_data());
    case Type::u16:
    case Type::f16:
      return narrowed<uint16_t>(proto.int32_data());
    case Type::s16:
      return narrowed<int16_t>(proto.int32_data());
    case Type::s32:
      return narrowed<int32_t>(proto.int32_data());
    case Type::s64:
      return narrowed<int64_t>(proto.int64_data());
    case Type::u32:
      return narrowed<uint32_t>(proto.uint64_data());
    case Type::u64:
      return narrowed<uint64_t>(proto.uint64_data());
  }
  return {};
}

OnnxTensor tensor_of(const TensorProto& proto) {
  const std::string what = "tensor '" + proto.name() + "'";
  OnnxTensor tensor{proto.name(), type_of_number(proto.data_type(), what), {}, {}};
  tensor.shape.assign(proto.dims().begin(), proto.dims().end());
  if (proto.data_location() == TensorProto::EXTERNAL) {
    throw std::runtime_error(what + ": its data are in another file; save the model in one file");
  }
  const auto count = static_cast<size_t>(element_count(tensor.shape));
  tensor.bytes = proto.has_raw_data() ? host_order(proto.raw_data(), type_bytes(tensor.type))
                                      : typed_data(proto, tensor.type);
  if (tensor.bytes.size() != count * type_bytes(tensor.type)) {
    throw std::runtime_error(what + ": " + std::to_string(tensor.bytes.size()) +
                             " bytes of data for " + std::to_string(count) + " elements");
  }
  if (tensor.type == Type::f16) {
    std::vector<float> widened(count);
    for (size_t i = 0; i < count; ++i) {
      uint16_t bits = 0;
      std::memcpy(&bits, tensor.bytes.data() + 2 * i, 2);
      widened[i] = float_of_half(bits);
    }
    tensor.type = Type::f32;
    tensor.bytes.resize(4 * count);
    std::memcpy(tensor.bytes.data(), widened.data(), tensor.bytes.size());
  }
  return tensor;
}

OnnxAttribute attribute_of(const AttributeProto& proto) {
  OnnxAttribute out{proto.name(), OnnxUnreadable{"of an unknown kind"}};
  switch (proto.type()) {
    case AttributeProto::FLOAT:
      out.value = proto.f();
      break;
    case AttributeProto::INT:
      out.value = proto.i();
      break;
    case AttributeProto::STRING:
      out.value = proto.s();
      break;
    case AttributeProto::FLOATS:
      out.value = std::vector<float>(proto.floats().begin(), proto.floats().end());
      break;
    case AttributeProto::INTS:
      out.value = std::vector<int64_t>(proto.ints().begin(), proto.ints().end());
      break;
    case AttributeProto::STRINGS:
      out.value = std::vector<std::string>(proto.strings().begin(), proto.strings().end());
      break;
    case AttributeProto::TENSOR:
      try {
        out.value = tensor_of(proto.t());
      } catch (const std::runtime_error& error) {
        out.value = OnnxUnreadable{error.what()};
      }
      break;
    case AttributeProto::GRAPH:
    case AttributeProto::GRAPHS:
      out.value = OnnxUnreadable{"a graph"};
      break;
    default:
      break;
  }
  return out;
}

OnnxPort port_of(const onnx::ValueInfoProto& proto) {
  OnnxPort port{proto.name(), proto.type().has_tensor_type(), false, Type::f32, {}};
  if (!port.is_tensor) {
    return port;
  }
  const auto& tensor = proto.type().tensor_type();
  port.type = type_of_number(tensor.elem_type(), "'" + proto.name() + "'");
  port.has_shape = tensor.has_shape();
  for (const auto& dim : tensor.shape().dim()) {
    port.shape.push_back(dim.has_dim_value() ? OnnxDim{dim.dim_value(), ""}
                                             : OnnxDim{-1, dim.dim_param()});
  }
  return port;
}

template <class Message>
Message parsed(std::string_view bytes, const char* what) {
  Message message;
  if (bytes.size() > INT32_MAX ||
      !message.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()))) {
    throw std::runtime_error(std::string("not an ONNX ") + what + ", or a damaged one");
  }
  return message;
}

OnnxNode node_of(const onnx::NodeProto& proto) {
  OnnxNode node{proto.name(), proto.op_type(), proto.domain(), {}, {}, {}};
  node.inputs.assign(proto.input().begin(), proto.input().end());
  node.outputs.assign(proto.output().begin(), proto.output().end());
  for (const AttributeProto& attribute : proto.attribute()) {
    node.attributes.push_back(attribute_of(attribute));
  }
  return node;
}

}  // namespace

OnnxModel parse_onnx_model(std::string_view bytes) {
  const auto proto = parsed<onnx::ModelProto>(bytes, "model");
  if (!proto.has_graph() || proto.graph().node_size() == 0) {
    throw std::runtime_error("an ONNX model without nodes");
  }
  OnnxModel model;
  for (const auto& set : proto.opset_import()) {
    if (set.domain().empty() || set.domain() == "ai.onnx") {
      model.opset = set.version();
    }
  }
  constexpr int kFirstWithOpset = 3;
  if (proto.opset_import_size() == 0 && proto.ir_version() >= kFirstWithOpset) {
    throw std::runtime_error("an ONNX model that does not say its operators' version: cut off?");
  }
  const onnx::GraphProto& graph = proto.graph();
  if (graph.sparse_initializer_size() != 0) {
    throw std::runtime_error("sparse constants are not available; store them dense");
  }
  for (const onnx::NodeProto& node : graph.node()) {
    model.nodes.push_back(node_of(node));
  }
  for (const TensorProto& tensor : graph.initializer()) {
    model.constants.push_back(tensor_of(tensor));
  }
  for (const auto& input : graph.input()) {
    model.inputs.push_back(port_of(input));
  }
  for (const auto& output : graph.output()) {
    model.outputs.push_back(port_of(output));
  }
  return model;
}

OnnxTensor parse_onnx_tensor(std::string_view bytes) {
  return tensor_of(parsed<TensorProto>(bytes, "tensor"));
}

}  // namespace nnlib::importer
