// SPDX-License-Identifier: MIT
// A verified TFLite file while its operators are translated.
#ifndef NNLIB_IMPORTER_READ_TFLITE_FILE_HPP
#define NNLIB_IMPORTER_READ_TFLITE_FILE_HPP

#include "importer/graph/refusals.hpp"
#include "importer/read/tflite.hpp"
#include "tflite_generated.h"

namespace nnlib::importer {

// Thrown while one operator is translated; the operator becomes Op::unknown with these words.
struct Untranslatable : std::runtime_error {
  explicit Untranslatable(const std::string& reason, std::string way = {})
      : std::runtime_error(reason), way_out(std::move(way)) {}
  std::string way_out;
};

// One operator and the graph that it goes into.
class TfliteOperator {
 public:
  Graph& graph;
  const tfl::Operator& op;
  const std::string name;
  const std::string origin;
  const TfliteOptions& options;

  // Value of input or output i; kAbsent where the file says none.
  ValueId input(size_t i) const { return at(op.inputs(), i); }
  ValueId output(size_t i = 0) const { return at(op.outputs(), i); }
  size_t input_count() const { return op.inputs() == nullptr ? 0 : op.inputs()->size(); }
  size_t output_count() const { return op.outputs() == nullptr ? 0 : op.outputs()->size(); }
  const Value& value(ValueId id) const;
  const Value& in(size_t i) const { return value(input(i)); }
  const Value& out(size_t i = 0) const { return value(output(i)); }

  // The elements of input i, which has to be a constant of integers.
  std::vector<int64_t> constant(size_t i) const;
  // An axis of a tensor of that rank, negative ones counted from the end.
  int64_t axis(int64_t given, int64_t rank) const;

  // The operator's options; a wrong kind is refused.
  template <class T, tfl::Options... kinds>
  const T& parameters() const {
    if (op.options() == nullptr || ((op.options_type() != kinds) && ...)) {
      throw Untranslatable("its parameters are missing");
    }
    return *static_cast<const T*>(op.options());
  }

  // Appends a node.
  Node& add(Op canonical, std::vector<ValueId> inputs, std::vector<ValueId> outputs) const;
  // Where the operator writes when the fused activation follows: the output itself for none.
  ValueId before_activation(int activation) const;
  void add_activation(ValueId from, int activation) const;
  // A new value like `like` with another shape.
  ValueId temporary(const Value& like, Shape shape) const;

 private:
  ValueId at(const flatbuffers::Vector<int32_t>* list, size_t i) const;
};

// Translates the operator; throws Untranslatable.
void translate_tflite(const TfliteOperator& op, int32_t code);

}  // namespace nnlib::importer

#endif
