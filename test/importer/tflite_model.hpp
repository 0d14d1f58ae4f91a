// SPDX-License-Identifier: MIT
// Writes TFLite files of one operator.
#ifndef TEST_IMPORTER_TFLITE_MODEL_HPP
#define TEST_IMPORTER_TFLITE_MODEL_HPP

#include <cstring>
#include <utility>

#include "importer/graph/value.hpp"
#include "tflite_generated.h"

namespace nnlib::importer {

class TfliteModel {
 public:
  TfliteModel() {
    model_.version = 3;
    model_.subgraphs.push_back(std::make_unique<tfl::SubGraphT>());
    model_.buffers.push_back(std::make_unique<tfl::BufferT>());
  }

  tfl::SubGraphT& graph() { return *model_.subgraphs[0]; }
  tfl::ModelT& model() { return model_; }

  // An activation of type T.
  template <class T>
  int tensor(const Shape& shape, std::vector<float> scales = {}, std::vector<int64_t> zeros = {},
             int axis = 0) {
    auto t = std::make_unique<tfl::TensorT>();
    t->shape.assign(shape.begin(), shape.end());
    t->type = code<T>();
    t->name = "t" + std::to_string(graph().tensors.size());
    if (!scales.empty()) {
      t->quantization = std::make_unique<tfl::QuantizationT>();
      t->quantization->scale = std::move(scales);
      t->quantization->zero_point = std::move(zeros);
      t->quantization->axis = axis;
    }
    graph().tensors.push_back(std::move(t));
    return static_cast<int>(graph().tensors.size()) - 1;
  }
  template <class T>
  int input(const Shape& shape, std::vector<float> scales = {}, std::vector<int64_t> zeros = {}) {
    graph().inputs.push_back(tensor<T>(shape, std::move(scales), std::move(zeros)));
    return graph().inputs.back();
  }
  template <class T>
  int output(const Shape& shape, std::vector<float> scales = {}, std::vector<int64_t> zeros = {}) {
    graph().outputs.push_back(tensor<T>(shape, std::move(scales), std::move(zeros)));
    return graph().outputs.back();
  }
  template <class T>
  int constant(const Shape& shape, std::span<const T> elements, std::vector<float> scales = {},
               int axis = 0) {
    std::vector<int64_t> zeros(scales.size(), 0);
    const int id = tensor<T>(shape, std::move(scales), std::move(zeros), axis);
    auto buffer = std::make_unique<tfl::BufferT>();
    buffer->data.resize(elements.size_bytes());
    std::memcpy(buffer->data.data(), elements.data(), elements.size_bytes());
    graph().tensors.back()->buffer = static_cast<uint32_t>(model_.buffers.size());
    model_.buffers.push_back(std::move(buffer));
    return id;
  }
  int integers(std::vector<int32_t> elements) {
    return constant<int32_t>({static_cast<int64_t>(elements.size())},
                             std::span<const int32_t>(elements));
  }

  template <class Options = tfl::SoftmaxT>
  void add(int32_t code, std::vector<int32_t> inputs, std::vector<int32_t> outputs,
           tfl::Options kind = tfl::Options_NONE, const Options& options = {}) {
    auto entry = std::make_unique<tfl::OperatorCodeT>();
    entry->short_code = static_cast<int8_t>(code);
    entry->code = code;
    model_.operator_codes.push_back(std::move(entry));
    auto op = std::make_unique<tfl::OperatorT>();
    op->opcode_index = static_cast<uint32_t>(model_.operator_codes.size() - 1);
    op->inputs = std::move(inputs);
    op->outputs = std::move(outputs);
    op->options.type = kind;
    if (kind != tfl::Options_NONE) {
      op->options.value = new Options(options);
    }
    graph().operators.push_back(std::move(op));
  }

  Bytes bytes() const {
    flatbuffers::FlatBufferBuilder builder;
    builder.Finish(tfl::Model::Pack(builder, &model_), tfl::ModelIdentifier());
    return Bytes(builder.GetBufferPointer(), builder.GetBufferPointer() + builder.GetSize());
  }

 private:
  template <class T>
  static int8_t code() {
    switch (type_of<T>()) {
      case Type::f32:
        return 0;
      case Type::s32:
        return 2;
      case Type::u8:
        return 3;
      default:
        return 9;
    }
  }

  tfl::ModelT model_;
};

}  // namespace nnlib::importer

#endif
