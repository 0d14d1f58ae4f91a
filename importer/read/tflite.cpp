// SPDX-License-Identifier: MIT
#include "importer/read/tflite.hpp"

#include <algorithm>
#include <bit>
#include <cstring>

#include "importer/read/tflite_file.hpp"
#include "importer/read/tflite_names.hpp"

namespace nnlib::importer {
namespace {

// TensorType of the format; nothing for text, resources, 4-bit and complex numbers.
std::optional<Type> type_of_code(int code) {
  switch (code) {
    case 0:
      return Type::f32;
    case 1:
      return Type::f16;
    case 2:
      return Type::s32;
    case 3:
      return Type::u8;
    case 4:
      return Type::s64;
    case 6:
      return Type::boolean;
    case 7:
      return Type::s16;
    case 9:
      return Type::s8;
    case 10:
      return Type::f64;
    case 12:
      return Type::u64;
    case 15:
      return Type::u32;
    case 16:
      return Type::u16;
    default:
      return std::nullopt;
  }
}

float half_to_float(uint16_t half) {
  const uint32_t sign = (half & 0x8000u) << 16;
  const uint32_t exponent = (half >> 10) & 31;
  const uint32_t fraction = half & 1023;
  if (exponent == 0) {
    const float value = static_cast<float>(fraction) / 16777216.0f;  // 2^-24 each
    return sign != 0 ? -value : value;
  }
  const uint32_t bits =
      sign | (exponent == 31 ? 0x7F800000u : (exponent + 112) << 23) | fraction << 13;
  return std::bit_cast<float>(bits);
}

std::shared_ptr<const Bytes> constant_bytes(std::span<const uint8_t> data, Type& type) {
  Bytes bytes(data.begin(), data.end());
  if constexpr (std::endian::native == std::endian::big) {
    for (size_t i = 0; i + type_bytes(type) <= bytes.size(); i += type_bytes(type)) {
      std::reverse(bytes.begin() + static_cast<ptrdiff_t>(i),
                   bytes.begin() + static_cast<ptrdiff_t>(i + type_bytes(type)));
    }
  }
  if (type != Type::f16) {
    return std::make_shared<const Bytes>(std::move(bytes));
  }
  std::vector<float> floats(bytes.size() / 2);
  for (size_t i = 0; i < floats.size(); ++i) {
    uint16_t half;
    std::memcpy(&half, bytes.data() + 2 * i, 2);
    floats[i] = half_to_float(half);
  }
  type = Type::f32;
  return make_bytes<float>(floats);
}

// The verifier looks at the place of a vector's length only: elements of 64 bits may lie on any
// fourth byte.
int32_t zero_point_of(const tfl::Quantization& q, flatbuffers::uoffset_t i) {
  int64_t zero_point;
  std::memcpy(&zero_point, q.zero_point()->Data() + i * sizeof(zero_point), sizeof(zero_point));
  return static_cast<int32_t>(flatbuffers::EndianScalar(zero_point));
}

std::optional<Quantization> quantization_of(const tfl::Tensor& tensor, const Shape& shape) {
  const tfl::Quantization* q = tensor.quantization();
  if (q == nullptr || q->scale() == nullptr || q->scale()->size() == 0) {
    return std::nullopt;
  }
  const auto count = q->scale()->size();
  Quantization result;
  result.scales.assign(q->scale()->begin(), q->scale()->end());
  for (flatbuffers::uoffset_t i = 0; i < count; ++i) {
    const bool given = q->zero_point() != nullptr && i < q->zero_point()->size();
    result.zero_points.push_back(given ? zero_point_of(*q, i) : 0);
  }
  result.axis = q->axis();
  if (count > 1 && (result.axis < 0 || static_cast<size_t>(result.axis) >= shape.size() ||
                    shape[static_cast<size_t>(result.axis)] != count)) {
    throw Refused("a tensor whose scales do not fit its shape");
  }
  return result;
}

constexpr int64_t kMostState = 1 << 20;

class TfliteReader {
 public:
  TfliteReader(const tfl::Model& model, const TfliteOptions& options)
      : model_(model), options_(options) {}

  Graph read() {
    if (model_.subgraphs() == nullptr || model_.subgraphs()->size() == 0) {
      throw Refused("the file has no graph");
    }
    if (model_.subgraphs()->size() > 1) {
      throw Refused("the file has several graphs (control flow); one is available");
    }
    const tfl::SubGraph& subgraph = *model_.subgraphs()->Get(0);
    read_tensors(subgraph);
    graph_.inputs = ids(subgraph.inputs());
    graph_.outputs = ids(subgraph.outputs());
    if (graph_.outputs.empty()) {
      throw Refused("the graph has no outputs");
    }
    if (subgraph.operators() != nullptr) {
      for (flatbuffers::uoffset_t i = 0; i < subgraph.operators()->size(); ++i) {
        read_operator(*subgraph.operators()->Get(i), i);
      }
    }
    try {
      graph_.sort();
    } catch (const std::runtime_error& fault) {
      throw Refused(fault.what());
    }
    return std::move(graph_);
  }

 private:
  void read_tensors(const tfl::SubGraph& subgraph) {
    if (subgraph.tensors() == nullptr) {
      throw Refused("the graph has no tensors");
    }
    for (const tfl::Tensor* tensor : *subgraph.tensors()) {
      Value value;
      value.name = tensor->name() != nullptr ? tensor->name()->str() : "";
      const auto type = type_of_code(tensor->type());
      value.type = type.value_or(Type::s64);
      if (tensor->shape() != nullptr) {
        value.shape.assign(tensor->shape()->begin(), tensor->shape()->end());
      }
      if (std::any_of(value.shape.begin(), value.shape.end(), [](int64_t d) { return d < 0; })) {
        throw Refused("tensor '" + value.name + "' has an unknown dimension");
      }
      value.quantization = quantization_of(*tensor, value.shape);
      if (tensor->sparsity() != nullptr) {
        throw Refused("tensor '" + value.name + "' is sparse; store it densely");
      }
      const auto* buffers = model_.buffers();
      if (buffers != nullptr && tensor->buffer() != 0 && tensor->buffer() < buffers->size()) {
        if (const auto* data = buffers->Get(tensor->buffer())->data()) {
          const auto bytes = static_cast<uint64_t>(value.elements()) * type_bytes(value.type);
          if (value.elements() < 0 || (type && data->size() != bytes)) {
            throw Refused("tensor '" + value.name + "' does not have the bytes of its shape");
          }
          value.data = constant_bytes({data->data(), data->size()}, value.type);
        }
      }
      if (tensor->is_variable() && value.elements() >= 0 && value.elements() < kMostState) {
        // A state at its start. Operators that would change it are not available.
        value.data = std::make_shared<const Bytes>(static_cast<size_t>(value.elements()) *
                                                   type_bytes(value.type));
      }
      graph_.add(std::move(value));
    }
    tensors_ = graph_.values.size();
  }

  std::vector<ValueId> ids(const flatbuffers::Vector<int32_t>* list) const {
    std::vector<ValueId> result;
    if (list != nullptr) {
      for (const int32_t id : *list) {
        if (id < 0 || static_cast<size_t>(id) >= tensors_) {
          throw Refused("a tensor number out of range");
        }
        result.push_back(id);
      }
    }
    return result;
  }

  void read_operator(const tfl::Operator& op, size_t index) {
    const auto* codes = model_.operator_codes();
    if (codes == nullptr || op.opcode_index() >= codes->size()) {
      throw Refused("an operator number out of range");
    }
    for (const auto* list : {op.inputs(), op.outputs()}) {
      for (flatbuffers::uoffset_t i = 0; list != nullptr && i < list->size(); ++i) {
        if (list->Get(i) < -1 || list->Get(i) >= static_cast<int64_t>(tensors_)) {
          throw Refused("a tensor number out of range");
        }
      }
    }
    const tfl::OperatorCode& entry = *codes->Get(op.opcode_index());
    // Files from before there were 128 operators have the short code only.
    const int32_t code = std::max(entry.code(), static_cast<int32_t>(entry.short_code()));
    constexpr int32_t kCustom = 32;
    const std::string origin = code == kCustom && entry.custom_code() != nullptr
                                   ? "custom operator " + entry.custom_code()->str()
                                   : tflite_operator_name(code);
    std::string name = "#" + std::to_string(index);
    const bool named =
        op.outputs() != nullptr && op.outputs()->size() > 0 && op.outputs()->Get(0) >= 0;
    if (named) {
      name = graph_.value(op.outputs()->Get(0)).name;
    }
    const TfliteOperator translated{graph_, op, name, origin, options_};
    const size_t nodes = graph_.nodes.size();
    try {
      translate_tflite(translated, code);
    } catch (const Untranslatable& no) {
      graph_.nodes.resize(nodes);
      std::vector<ValueId> inputs, outputs;
      for (size_t i = 0; i < translated.input_count(); ++i) {
        inputs.push_back(translated.input(i));
      }
      for (size_t i = 0; i < translated.output_count(); ++i) {
        outputs.push_back(translated.output(i));
      }
      Node& node = translated.add(Op::unknown, std::move(inputs), std::move(outputs));
      node.attributes = {{"reason", std::string(no.what())}, {"way_out", no.way_out}};
    }
  }

  const tfl::Model& model_;
  const TfliteOptions& options_;
  Graph graph_;
  size_t tensors_ = 0;
};

}  // namespace

ValueId TfliteOperator::at(const flatbuffers::Vector<int32_t>* list, size_t i) const {
  return list != nullptr && i < list->size() ? list->Get(static_cast<uint32_t>(i)) : kAbsent;
}

const Value& TfliteOperator::value(ValueId id) const {
  if (id == kAbsent) {
    throw Untranslatable("a tensor is missing");
  }
  return graph.value(id);
}

std::vector<int64_t> TfliteOperator::constant(size_t i) const {
  const Value& v = in(i);
  if (!v.constant() || v.type == Type::f32) {
    throw Untranslatable("input " + std::to_string(i + 1) + " has to be a constant of integers",
                         "freeze it");
  }
  return to_integers(v);
}

int64_t TfliteOperator::axis(int64_t given, int64_t rank) const {
  const int64_t counted = given < 0 ? given + rank : given;
  if (counted < 0 || counted >= rank) {
    throw Untranslatable("axis " + std::to_string(given) + " does not exist");
  }
  return counted;
}

Node& TfliteOperator::add(Op canonical, std::vector<ValueId> inputs,
                          std::vector<ValueId> outputs) const {
  graph.nodes.push_back({name, origin, canonical, std::move(inputs), std::move(outputs), {}});
  return graph.nodes.back();
}

ValueId TfliteOperator::temporary(const Value& like, Shape shape) const {
  return graph.add({like.name, like.type, std::move(shape), like.quantization, nullptr});
}

ValueId TfliteOperator::before_activation(int activation) const {
  return activation == 0 ? output() : temporary(Value(out()), out().shape);
}

void TfliteOperator::add_activation(ValueId from, int activation) const {
  switch (activation) {
    case 0:
      return;
    case 1:
      add(Op::relu, {from}, {output()});
      return;
    case 2:
      add(Op::clip, {from}, {output()}).attributes = {{"min", -1.0}, {"max", 1.0}};
      return;
    case 3:
      add(Op::clip, {from}, {output()}).attributes = {{"min", 0.0}, {"max", 6.0}};
      return;
    case 4:
      if (out().type == Type::f32) {
        add(Op::tanh, {from}, {output()});
        return;
      }
      break;
    default:
      break;
  }
  throw Untranslatable("its fused activation is not available");
}

bool is_tflite(std::span<const uint8_t> file) {
  return file.size() >= 8 && tfl::ModelBufferHasIdentifier(file.data());
}

Graph read_tflite(std::span<const uint8_t> file, const TfliteOptions& options) {
  flatbuffers::Verifier verifier(file.data(), file.size(), 64, 10000000);
  if (!is_tflite(file) || !tfl::VerifyModelBuffer(verifier)) {
    throw Refused("the file is damaged or no TFLite file");
  }
  return TfliteReader(*tfl::GetModel(file.data()), options).read();
}

}  // namespace nnlib::importer
