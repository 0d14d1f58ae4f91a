// SPDX-License-Identifier: MIT
// Builds a network's records while the graph's nodes are lowered one by one.
#ifndef NNLIB_IMPORTER_LOWER_NETWORK_BUILDER_HPP
#define NNLIB_IMPORTER_LOWER_NETWORK_BUILDER_HPP

#include <map>
#include <memory>
#include <set>

#include "importer/graph/graph.hpp"
#include "importer/lower/layer_builder.hpp"
#include "importer/lower/parts.hpp"

namespace nnlib::importer {

// The C names of the layer records and the way to the ai_layer in them.
struct RecordKind {
  const char* type;
  const char* base;
};
template <class Record>
extern const RecordKind kRecordKind;
#define NNLIB_IMPORTER_RECORDS(X)         \
  X(ai_layer, "")                         \
  X(ai_layer_concat, "base")              \
  X(ai_layer_conv2d, "base")              \
  X(ai_layer_conv2d_nl_pool, "base.base") \
  X(ai_layer_eltwise, "base")             \
  X(ai_layer_gemm, "base")                \
  X(ai_layer_gru, "base")                 \
  X(ai_layer_instance_norm, "base")       \
  X(ai_layer_lrn, "base")                 \
  X(ai_layer_lstm, "base")                \
  X(ai_layer_nl, "base")                  \
  X(ai_layer_norm, "base")                \
  X(ai_layer_pad, "base")                 \
  X(ai_layer_pool, "base")                \
  X(ai_layer_reduce, "base")              \
  X(ai_layer_slice, "base")               \
  X(ai_layer_tile, "base")                \
  X(ai_layer_transpose, "base")           \
  X(ai_layer_upsample, "base")
#define NNLIB_IMPORTER_RECORD_(Record, base) \
  template <>                                \
  inline constexpr RecordKind kRecordKind<Record> = {#Record, base};
NNLIB_IMPORTER_RECORDS(NNLIB_IMPORTER_RECORD_)
#undef NNLIB_IMPORTER_RECORD_

// A layer type and its C name: NNLIB_LAYER_TYPE(CONV2D).
struct LayerType {
  uint16_t id;
  const char* name;
};
#define NNLIB_LAYER_TYPE(type)                   \
  ::nnlib::importer::LayerType {                 \
    AI_LAYER_TYPE_##type, "AI_LAYER_TYPE_" #type \
  }

// The last dimension is the channels, the one before it the width, all others together the height.
Dims dims_of(const Shape& shape);
// All elements as channels.
Dims flat_dims(uint64_t elements);

ai_array_format format_of(Type type);
// With the fraction bits of fixed point.
ai_array_format format_of(const Value& value);

class NetworkBuilder {
 public:
  // The graph is taken over: lowerings may add values to it.
  explicit NetworkBuilder(Graph graph, const Sharing& sharing = {});

  Graph& graph() { return graph_; }
  const Value& value(ValueId id) const { return graph_.value(id); }

  // --- tensors; a value has one place in memory and any number of tensors over it --------------

  Tensor& tensor(ValueId id) { return tensor(id, dims_of(value(id).shape)); }
  Tensor& tensor(ValueId id, Dims dims);
  // `to` has the elements of `from` in the same place: a reshape.
  void alias(ValueId to, ValueId from);
  // `to` lies in the place of `from`, `offset` bytes after its start.
  void place_inside(ValueId to, ValueId from, uint64_t offset);
  bool lies_inside(ValueId id, ValueId whole, uint64_t offset);
  // `to` becomes a run of the elements of `from` where they are; false where it cannot.
  bool view(ValueId to, ValueId from, uint64_t offset);
  // A layer that does nothing but copy.
  void copy(ValueId from, ValueId to);
  // A value that lowering needs between two layers of one node.
  ValueId temporary(Type type, Shape shape, std::optional<Quantization> quantization = {});
  // A value with the elements of constant `id` in another order or number.
  template <class T>
  Tensor& weights(const std::string& what, Dims dims, std::span<const T> elements,
                  const std::optional<Quantization>& quantization = {}) {
    return constant_tensor(what, type_of<T>(), dims, *make_bytes(elements), quantization);
  }
  Tensor& constant_tensor(const std::string& what, Type type, Dims dims, Bytes bytes,
                          const std::optional<Quantization>& quantization);
  // A constant's elements in other dimensions.
  Tensor& constant_tensor(const std::string& what, const Value& constant, Dims dims) {
    return constant_tensor(what, constant.type, dims, *constant.data, constant.quantization);
  }
  // Null for 0 bytes. Aligned to 4.
  Tensor* scratch(uint32_t bytes, ai_array_format format = AI_ARRAY_FORMAT_U8);
  Tensor* scratch(ai_array_format format, Dims dims);

  template <class T>
  const Parameters& parameters(const std::string& what, std::span<const T> elements) {
    return parameters(what, format_of(type_of<T>()), *make_bytes(elements));
  }
  const Parameters& parameters(const std::string& what, ai_array_format format, Bytes bytes);

  // --- layers ------------------------------------------------------------------------------------

  // Names of what follows are formed from the node's operator.
  void begin(const Node& node);

  template <class Record>
  LayerBuilder layer(LayerType type, Function forward) {
    return add_layer(sizeof(Record), kRecordKind<Record>, type, std::move(forward));
  }

  // Adds what no layer computes (outputs that are constants, networks without layers) and hands
  // over the network.
  std::unique_ptr<Network> finish();

 private:
  LayerBuilder add_layer(size_t bytes, RecordKind kind, LayerType type, Function forward);
  Tensor& add_tensor(const std::string& name, ai_array_format format, Dims dims,
                     const Storage& storage, const Type* type,
                     const std::optional<Quantization>& quantization);
  Storage place_of(ValueId id);
  Buffer& add_buffer(const std::string& name, uint64_t bytes);
  Constant& add_constant(const std::string& name, ai_array_format format, Bytes bytes);
  Intq* intq(const std::string& name, const Quantization& quantization, bool is_signed);
  std::string unique(const std::string& name);
  void copy_output(ValueId id);
  void make_ports();

  Graph graph_;
  Sharing sharing_;
  std::map<ValueId, Part> parts_;
  std::unique_ptr<Network> network_;
  std::map<ValueId, Storage> places_;
  std::map<std::pair<const Constant*, const Buffer*>, std::vector<Tensor*>> views_;
  std::set<std::string> names_;
  std::map<std::string, int> counts_;
  std::string prefix_;
  const Node* node_ = nullptr;
  uint64_t bytes_ = 0;
};

}  // namespace nnlib::importer

#endif
