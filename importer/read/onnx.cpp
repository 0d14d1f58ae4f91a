// SPDX-License-Identifier: MIT
#include "importer/read/onnx.hpp"

#include <algorithm>
#include <cstring>
#include <set>
#include <stdexcept>

#include "importer/graph/refusals.hpp"
#include "importer/read/onnx_context.hpp"
#include "importer/read/onnx_tensor.hpp"

namespace nnlib::importer {
namespace {

// Operators that will not come, and what to do instead.
constexpr std::pair<std::string_view, std::string_view> kWaysOut[] = {
    {"ConvInteger", "quantize the result too: QLinearConv, or QDQ"},
    {"DynamicQuantizeLinear", "quantize with static scales"},
    {"If", "export the branch that is taken"},
    {"Loop", "export with the loop unrolled"},
    {"MatMulInteger", "quantize the result too: QLinearMatMul, or QDQ"},
    {"NonMaxSuppression", "end the network before it and select boxes in the application"},
    {"Scan", "export with the loop unrolled"},
    {"ArgMax", "end the network before it; the largest output is the application's to find"},
    {"TopK", "end the network before it; the largest outputs are the application's to find"},
};

bool runs(Type type) {
  return type == Type::f32 || type == Type::u8 || type == Type::s8 || type == Type::boolean;
}

class OnnxReader {
 public:
  OnnxReader(const OnnxModel& file, const ReadOptions& given)
      : model_(file), options_(given), build_(graph_) {}

  Graph read() {
    for (const OnnxTensor& tensor : model_.constants) {
      ids_[tensor.name] = graph_.add(value_of(tensor));
    }
    for (const OnnxPort& input : model_.inputs) {
      add_input(input);
    }
    for (size_t i = 0; i < model_.nodes.size(); ++i) {
      take(model_.nodes[i]);
    }
    for (const OnnxPort& output : model_.outputs) {
      add_output(output);
    }
    refuse_inputs();
    if (refusals_.empty() && graph_.inputs.empty()) {
      refusals_.add(
          {"", "model", "no output depends on an input", "compute it in the application"});
    }
    if (!refusals_.empty()) {
      throw Refused(refusals_);
    }
    graph_.remove_dead();
    return std::move(graph_);
  }

 private:
  void add_input(const OnnxPort& port) {
    if (ids_.contains(port.name)) {
      return;  // a constant that old files list among the inputs
    }
    if (const auto frozen = options_.freeze.find(port.name); frozen != options_.freeze.end()) {
      Value value = frozen->second;
      value.name = port.name;
      ids_[port.name] = graph_.add(std::move(value));
      return;
    }
    const auto text = options_.freeze_text.find(port.name);
    if (text != options_.freeze_text.end() && port.is_tensor) {
      Shape declared;
      for (const OnnxDim& dim : port.shape) {
        declared.push_back(dim.size);
      }
      Value value = frozen_value(text->second, port.type == Type::f64 ? Type::f32 : port.type,
                                 std::move(declared));
      value.name = port.name;
      ids_[port.name] = graph_.add(std::move(value));
      return;
    }
    if (!port.is_tensor || !port.has_shape) {
      refuse_port(port.name, port.is_tensor ? "its shape is not known" : "it is no tensor",
                  "tensors with a shape are taken");
      return;
    }
    Shape shape;
    for (size_t axis = 0; axis < port.shape.size(); ++axis) {
      shape.push_back(size_of(port, axis));
    }
    if (std::find(shape.begin(), shape.end(), -1) != shape.end()) {
      unknown_.insert(port.name);
      return;
    }
    element_count(shape);
    const Type type = port.type == Type::f64 ? Type::f32 : port.type;
    const ValueId id = graph_.add({port.name, type, shape, {}, nullptr});
    ids_[port.name] = id;
    graph_.inputs.push_back(id);
  }

  // -1 after a refusal.
  int64_t size_of(const OnnxPort& port, size_t axis) {
    const OnnxDim& dim = port.shape[axis];
    if (dim.size >= 0) {
      return dim.size;
    }
    if (const auto given = options_.input_dims.find(dim.name); given != options_.input_dims.end()) {
      return given->second;
    }
    if (axis == 0) {
      return 1;  // the batch
    }
    const std::string word = dim.name.empty() ? std::to_string(axis) : dim.name;
    refuse_port(port.name, "its dimension " + word + " is open",
                dim.name.empty() ? "export with a fixed size"
                                 : "give it with --input-dim " + dim.name + "=...");
    return -1;
  }

  void refuse_port(const std::string& name, const std::string& reason, const std::string& way_out) {
    refusals_.add({name, "input", reason, way_out});
    unknown_.insert(name);
  }

  void refuse(const OnnxNode& node, const std::string& reason, const std::string& way_out) {
    const std::string first = node.outputs.empty() ? "" : node.outputs[0];
    refusals_.add({node.name.empty() ? first : node.name, node.op, reason, way_out});
  }

  void take(const OnnxNode& node) {
    const bool known_domain =
        node.domain.empty() || node.domain == "ai.onnx" || node.domain == "com.microsoft";
    const OnnxOperator* row = known_domain ? onnx_operator(node.op) : nullptr;
    bool taken = false;
    if (row == nullptr) {
      const auto* way = std::find_if(std::begin(kWaysOut), std::end(kWaysOut),
                                     [&](const auto& entry) { return entry.first == node.op; });
      refuse(node, "the operator is not available",
             way == std::end(kWaysOut) ? "" : std::string(way->second));
    } else {
      taken = translate(node, *row);
    }
    for (const std::string& output : node.outputs) {
      if (!taken && !output.empty()) {
        unknown_.insert(output);
      }
    }
  }

  // False when the node or one before it is refused.
  bool translate(const OnnxNode& node, const OnnxOperator& row) {
    OnnxContext context{node, model_.opset, build_, {}, {}};
    for (const std::string& input : node.inputs) {
      if (unknown_.contains(input)) {
        return false;
      }
      const auto found = ids_.find(input);
      if (!input.empty() && found == ids_.end()) {
        refuse(node, "nothing before it writes its input '" + input + "'", "");
        return false;
      }
      context.inputs.push_back(input.empty() ? kAbsent : found->second);
    }
    context.outputs.assign(std::max<size_t>(node.outputs.size(), 1), kAbsent);
    const std::string result = node.outputs.empty() ? "" : node.outputs[0];
    build_.set_context(node.name.empty() ? result : node.name, node.op, result);
    const size_t nodes_before = graph_.nodes.size();
    try {
      row.translate(context);
      name_outputs(node, context);
      return true;
    } catch (const NotAvailable& why) {
      refuse(node, why.reason, why.way_out);
    } catch (const std::exception& error) {
      refuse(node, error.what(), "");
    }
    graph_.nodes.resize(nodes_before);
    return false;
  }

  void name_outputs(const OnnxNode& node, const OnnxContext& context) {
    for (size_t i = 0; i < node.outputs.size(); ++i) {
      const std::string& name = node.outputs[i];
      if (name.empty()) {
        continue;
      }
      if (ids_.contains(name)) {
        throw NotAvailable{"its output '" + name + "' is written twice", ""};
      }
      if (context.outputs[i] == kAbsent) {
        throw NotAvailable{"its output " + std::to_string(i) + " is not available", ""};
      }
      ids_[name] = context.outputs[i];
    }
  }

  void add_output(const OnnxPort& port) {
    if (!port.is_tensor) {
      refusals_.add({port.name, "output", "it is no tensor", "tensors are available"});
      return;
    }
    if (unknown_.contains(port.name)) {
      return;
    }
    const auto found = ids_.find(port.name);
    if (found == ids_.end()) {
      refusals_.add({port.name, "output", "nothing writes it", ""});
      return;
    }
    ValueId id = found->second;
    const Value value = graph_.value(id);
    // Something must be done for it: a network does not give out its inputs and constants.
    if (value.constant() || graph_.is_input(id) || graph_.is_output(id)) {
      const ValueId copy =
          graph_.add({port.name, value.type, value.shape, value.quantization, nullptr});
      graph_.nodes.push_back({port.name, "Identity", Op::identity, {id}, {copy}, {}});
      id = copy;
    }
    if (!runs(value.type)) {
      refusals_.add({port.name, "output",
                     std::string(type_name(value.type)) + " at run time is not available",
                     "float32, int8, uint8 and bool are"});
    }
    graph_.rename(id, port.name);
    graph_.outputs.push_back(id);
  }

  void refuse_inputs() {
    std::erase_if(graph_.inputs, [&](ValueId id) {
      const Value& value = graph_.value(id);
      if (runs(value.type)) {
        return false;
      }
      if (!graph_.consumers(id).empty()) {
        refusals_.add({value.name, "input",
                       std::string(type_name(value.type)) + " at run time is not available",
                       "make it a constant: --freeze " + value.name + "=..."});
      }
      return true;
    });
  }

  const OnnxModel& model_;
  const ReadOptions& options_;
  Graph graph_;
  GraphBuilder build_;
  Refusals refusals_;
  std::map<std::string, ValueId, std::less<>> ids_;
  std::set<std::string, std::less<>> unknown_;
};

}  // namespace

Value value_of(const OnnxTensor& tensor) {
  Value value{tensor.name, tensor.type, tensor.shape, {}, nullptr};
  if (tensor.type == Type::f64) {
    std::vector<float> narrowed(tensor.bytes.size() / sizeof(double));
    for (size_t i = 0; i < narrowed.size(); ++i) {
      double wide = 0;
      std::memcpy(&wide, tensor.bytes.data() + i * sizeof(double), sizeof(double));
      narrowed[i] = static_cast<float>(wide);
    }
    value.type = Type::f32;
    value.data = make_bytes(std::span<const float>(narrowed));
  } else {
    value.data = std::make_shared<const Bytes>(tensor.bytes);
  }
  return value;
}

namespace {

// Exporters name all outputs that an operator can have; those that nothing reads count as absent.
void drop_unread_outputs(OnnxModel& model) {
  std::set<std::string> read;
  for (const OnnxPort& output : model.outputs) {
    read.insert(output.name);
  }
  for (const OnnxNode& node : model.nodes) {
    read.insert(node.inputs.begin(), node.inputs.end());
  }
  for (OnnxNode& node : model.nodes) {
    for (std::string& output : node.outputs) {
      output = read.contains(output) ? output : "";
    }
  }
}

}  // namespace

Graph read_onnx(std::span<const uint8_t> file, const ReadOptions& options) {
  try {
    OnnxModel model = parse_onnx_model({reinterpret_cast<const char*>(file.data()), file.size()});
    drop_unread_outputs(model);
    return OnnxReader(model, options).read();
  } catch (const Refused&) {
    throw;
  } catch (const std::runtime_error& error) {
    throw Refused(error.what());
  }
}

}  // namespace nnlib::importer
