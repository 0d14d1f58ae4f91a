// SPDX-License-Identifier: MIT
#include "importer/lower/network_builder.hpp"

#include <algorithm>

#include "importer/graph/refusals.hpp"

namespace nnlib::importer {
namespace {

constexpr uint64_t kMostBytes = uint64_t{1} << 28;  // of one tensor

uint32_t narrow(int64_t dimension) {
  if (dimension < 0 || dimension > INT32_MAX) {
    throw Refused("a tensor with an unknown or impossible dimension");
  }
  return static_cast<uint32_t>(dimension);
}

bool is_quantized(Type type, const std::optional<Quantization>& quantization) {
  return (type == Type::s8 || type == Type::u8) && quantization && !quantization->fixed;
}

ai_array_format format_of(Type type, const std::optional<Quantization>& quantization) {
  const ai_array_format format = nnlib::importer::format_of(type);
  return quantization && quantization->fixed
             ? ai_fmt_set_fbits(format, quantization->fraction_bits())
             : format;
}

bool has_quantization(const Tensor& t, const Value& v) {
  if (t.quantization == nullptr || !is_quantized(v.type, v.quantization)) {
    return t.quantization == nullptr && !is_quantized(v.type, v.quantization);
  }
  Bytes zero_points(v.quantization->zero_points.begin(), v.quantization->zero_points.end());
  return t.quantization->scales == v.quantization->scales &&
         t.quantization->zero_points == zero_points;
}

}  // namespace

Dims dims_of(const Shape& shape) {
  Dims dims;
  const size_t rank = shape.size();
  if (rank > 0) {
    dims.c = narrow(shape[rank - 1]);
  }
  if (rank > 1) {
    dims.w = narrow(shape[rank - 2]);
  }
  if (rank > 2) {
    dims.h = narrow(elements_of({shape.begin(), shape.end() - 2}));
  }
  return dims;
}

Dims flat_dims(uint64_t elements) {
  return {1, narrow(static_cast<int64_t>(elements)), 1, 1};
}

ai_array_format format_of(Type type) {
  switch (type) {
    case Type::f32:
      return AI_ARRAY_FORMAT_FLOAT;
    case Type::u8:
    case Type::boolean:
      return AI_ARRAY_FORMAT_U8;
    case Type::s8:
      return AI_ARRAY_FORMAT_S8;
    case Type::u16:
      return AI_ARRAY_FORMAT_U16;
    case Type::s16:
      return AI_ARRAY_FORMAT_S16;
    case Type::u32:
      return AI_ARRAY_FORMAT_U32;
    case Type::s32:
      return AI_ARRAY_FORMAT_S32;
    default:
      break;
  }
  throw Refused("tensors of type " + std::string(type_name(type)) + " are not available");
}

ai_array_format format_of(const Value& value) {
  return format_of(value.type, value.quantization);
}

NetworkBuilder::NetworkBuilder(Graph graph, const Sharing& sharing)
    : graph_(std::move(graph)),
      sharing_(sharing),
      parts_(parts_of_concatenations(graph_, sharing)),
      network_(std::make_unique<Network>()) {
  network_->name = graph_.name;
  for (size_t i = 0; i < graph_.inputs.size(); ++i) {
    prefix_ = graph_.inputs.size() == 1 ? "model_input" : "model_input_" + std::to_string(i + 1);
    const Value& input = value(graph_.inputs[i]);
    Buffer& buffer = add_buffer(prefix_, dims_of(input.shape).elements() * type_bytes(input.type));
    buffer.first = -1;
    places_[graph_.inputs[i]] = {nullptr, &buffer};
  }
}

std::string NetworkBuilder::unique(const std::string& name) {
  std::string candidate = name;
  for (int i = 2; !names_.insert(candidate).second; ++i) {
    candidate = name + "_" + std::to_string(i);
  }
  return candidate;
}

void NetworkBuilder::begin(const Node& node) {
  node_ = &node;
  const std::string op(op_name(node.op));
  prefix_ = op + "_" + std::to_string(++counts_[op]);
}

// --- memory
// ---------------------------------------------------------------------------------------

Buffer& NetworkBuilder::add_buffer(const std::string& name, uint64_t bytes) {
  if (bytes == 0 || bytes > kMostBytes || (bytes_ += bytes) > 4 * kMostBytes) {
    throw Refused(bytes == 0 ? "a tensor without elements" : "the tensors are too large");
  }
  return network_->buffers.emplace_back(
      Buffer{unique(name + "_memory"), static_cast<uint32_t>(bytes), kUnset, -1, false});
}

Constant& NetworkBuilder::add_constant(const std::string& name, ai_array_format format,
                                       Bytes bytes) {
  for (Constant& known : network_->constants) {
    if (known.format == format && known.bytes == bytes) {
      return known;
    }
  }
  return network_->constants.emplace_back(Constant{unique(name), format, std::move(bytes)});
}

Storage NetworkBuilder::place_of(ValueId id) {
  if (const auto found = places_.find(id); found != places_.end()) {
    return found->second;
  }
  if (const auto part = parts_.find(id); part != parts_.end()) {
    place_inside(id, part->second.whole, part->second.offset);
    return places_.at(id);
  }
  const Value& v = value(id);
  const uint64_t bytes = dims_of(v.shape).elements() * type_bytes(v.type);
  Storage place;
  if (v.constant()) {
    if (v.data->size() != bytes) {
      throw Refused("constant '" + v.name + "' does not have the bytes of its shape");
    }
    place.constant = &add_constant(prefix_ + "_constant", format_of(v.type), *v.data);
  } else {
    place.buffer = &add_buffer(prefix_ + "_out", bytes);
  }
  return places_[id] = place;
}

void NetworkBuilder::alias(ValueId to, ValueId from) {
  if (value(to).elements() != value(from).elements() || value(to).type != value(from).type) {
    throw Refused("tensors '" + value(from).name + "' and '" + value(to).name +
                  "' should have the same elements");
  }
  if (parts_.contains(to)) {
    copy(from, to);
  } else {
    places_[to] = place_of(from);
  }
}

void NetworkBuilder::place_inside(ValueId to, ValueId from, uint64_t offset) {
  Buffer& whole = *place_of(from).buffer;
  const Value& v = value(to);
  const uint64_t bytes = dims_of(v.shape).elements() * type_bytes(v.type);
  if (bytes == 0 || offset + bytes > whole.bytes) {
    throw Refused("tensor '" + v.name + "' does not fit into '" + value(from).name + "'");
  }
  Buffer& part = network_->buffers.emplace_back(
      Buffer{unique(prefix_ + "_part_memory"), static_cast<uint32_t>(bytes)});
  part.whole = &whole;
  part.offset = static_cast<uint32_t>(offset);
  places_[to] = {nullptr, &part};
}

bool NetworkBuilder::lies_inside(ValueId id, ValueId whole, uint64_t offset) {
  const Buffer* part = place_of(id).buffer;
  return part != nullptr && part->whole != nullptr && part->whole == place_of(whole).buffer &&
         part->offset == offset;
}

bool NetworkBuilder::view(ValueId to, ValueId from, uint64_t offset) {
  if (!sharing_.slices || offset % sharing_.alignment != 0 || parts_.contains(to) ||
      place_of(from).buffer == nullptr) {
    return false;
  }
  place_inside(to, from, offset);
  return true;
}

ValueId NetworkBuilder::temporary(Type type, Shape shape,
                                  std::optional<Quantization> quantization) {
  return graph_.add({prefix_, type, std::move(shape), std::move(quantization), nullptr});
}

// --- tensors
// --------------------------------------------------------------------------------------

Intq* NetworkBuilder::intq(const std::string& name, const Quantization& quantization,
                           bool is_signed) {
  Bytes zero_points;
  for (const int32_t z : quantization.zero_points) {
    if (z < (is_signed ? INT8_MIN : 0) || z > (is_signed ? INT8_MAX : UINT8_MAX)) {
      throw Refused("zero point " + std::to_string(z) + " of '" + name + "' is out of range");
    }
    zero_points.push_back(static_cast<uint8_t>(z));
  }
  for (Intq& known : network_->quantizations) {
    if (known.is_signed == is_signed && known.scales == quantization.scales &&
        known.zero_points == zero_points) {
      return &known;
    }
  }
  Intq& q = network_->quantizations.emplace_back();
  q.name = unique(name + "_q");
  q.scales = quantization.scales;
  q.zero_points = std::move(zero_points);
  q.is_signed = is_signed;
  q.info = {q.scales.data(), q.zero_points.data()};
  q.record = {static_cast<uint32_t>(q.scales.size()) << 16, &q.info};
  return &q;
}

Tensor& NetworkBuilder::add_tensor(const std::string& name, ai_array_format format, Dims dims,
                                   const Storage& storage, const Type* type,
                                   const std::optional<Quantization>& quantization) {
  Tensor& t = network_->tensors.emplace_back();
  t.name = unique(name);
  t.dims = dims;
  t.storage = storage;
  if (type != nullptr && is_quantized(*type, quantization)) {
    t.quantization = intq(t.name, *quantization, *type == Type::s8);
  }
  const uint32_t sizes[] = {dims.n, dims.c, dims.w, dims.h};
  uint32_t stride = AI_FORMAT_RUN_BYTES(format, 1);
  for (size_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    t.shape[i] = sizes[i];
    t.stride[i] = stride;
    stride *= sizes[i];
  }
  void* data = storage.constant != nullptr ? storage.constant->bytes.data() : nullptr;
  t.array = {format, static_cast<ai_size>(dims.elements()), data, data};
  t.record = {t.quantization != nullptr ? &t.quantization->record : nullptr,
              AI_TENSOR_FLAGS_OF(format),
              {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), t.shape},
              {AI_DIMS_WORD(AI_STRIDE_TYPE, AI_SHAPE_DIMS), t.stride},
              &t.array};
  return t;
}

Tensor& NetworkBuilder::tensor(ValueId id, Dims dims) {
  const Value v = value(id);
  if (static_cast<int64_t>(dims.elements()) != v.elements()) {
    throw Refused("tensor '" + v.name + "' has another number of elements");
  }
  const Storage place = place_of(id);
  std::string name = prefix_ + "_constant";
  if (place.buffer != nullptr) {
    const std::string& memory = place.buffer->name;
    name = memory.substr(0, memory.rfind("_memory"));
  }
  for (Tensor* known : views_[{place.constant, place.buffer}]) {
    const bool same = known->dims == dims && known->array.format == format_of(v);
    if (same && has_quantization(*known, v)) {
      return *known;
    }
  }
  Tensor& t = add_tensor(name, format_of(v), dims, place, &v.type, v.quantization);
  views_[{place.constant, place.buffer}].push_back(&t);
  return t;
}

Tensor& NetworkBuilder::constant_tensor(const std::string& what, Type type, Dims dims, Bytes bytes,
                                        const std::optional<Quantization>& quantization) {
  const std::string name = prefix_ + "_" + what;
  Constant& constant = add_constant(name + "_data", format_of(type), std::move(bytes));
  return add_tensor(name, format_of(type, quantization), dims, {&constant, nullptr}, &type,
                    quantization);
}

Tensor* NetworkBuilder::scratch(uint32_t bytes, ai_array_format format) {
  return bytes == 0 ? nullptr : scratch(format, flat_dims(bytes / AI_FORMAT_RUN_BYTES(format, 1)));
}

Tensor* NetworkBuilder::scratch(ai_array_format format, Dims dims) {
  const std::string name = prefix_ + "_scratch";
  Buffer& buffer = add_buffer(name, dims.elements() * AI_FORMAT_RUN_BYTES(format, 1));
  buffer.is_scratch = true;
  return &add_tensor(name, format, dims, {nullptr, &buffer}, nullptr, {});
}

const Parameters& NetworkBuilder::parameters(const std::string& what, ai_array_format format,
                                             Bytes bytes) {
  const std::string name = prefix_ + "_" + what;
  Constant& constant = add_constant(name + "_data", format, std::move(bytes));
  Parameters& p = network_->parameters.emplace_back();
  p.name = unique(name);
  p.constant = &constant;
  const auto size = static_cast<ai_size>(constant.bytes.size() / AI_FORMAT_RUN_BYTES(format, 1));
  p.record = {format, size, constant.bytes.data(), constant.bytes.data()};
  return p;
}

// --- layers
// ---------------------------------------------------------------------------------------

LayerBuilder NetworkBuilder::add_layer(size_t bytes, RecordKind kind, LayerType type,
                                       Function forward) {
  const int index = static_cast<int>(network_->layers.size());
  ai_layer* previous = index == 0 ? nullptr : &network_->layers.back().record();
  Layer& layer = network_->layers.emplace_back();
  layer.name = unique(prefix_);
  layer.model_name = node_ != nullptr ? node_->name : "";
  layer.origin = node_ != nullptr ? node_->origin : "";
  layer.record_type = kind.type;
  layer.base = kind.base;
  layer.type_name = type.name;
  layer.forward = forward;
  layer.memory = std::make_unique<uint64_t[]>(bytes / sizeof(uint64_t) + 1);
  layer.chain = {AI_CHAIN_LISTS, layer.list_records};
  layer.record() = {type.id,     0,       nullptr,
                    nullptr,     nullptr, reinterpret_cast<ai_layer_forward>(forward.pointer),
                    &layer.chain};
  if (previous != nullptr) {
    previous->next = &layer.record();
  }
  return {*network_, layer, index};
}

void NetworkBuilder::copy(ValueId from, ValueId to) {
  const Dims dims = dims_of(value(from).shape);
  const int32_t end = static_cast<int32_t>(dims.c);
  const std::vector<int32_t> zero = {0};
  const std::vector<int32_t> all = {end};
  const std::vector<uint32_t> axis = {AI_SHAPE_C};
  layer<ai_layer_slice>(NNLIB_LAYER_TYPE(SLICE), NNLIB_FUNCTION(forward_slice))
      .input(tensor(from))
      .output(tensor(to, dims))
      .set(NNLIB_MEMBER(ai_layer_slice, axes), parameters<uint32_t>("axes", axis))
      .set(NNLIB_MEMBER(ai_layer_slice, starts), parameters<int32_t>("starts", zero))
      .set(NNLIB_MEMBER(ai_layer_slice, ends), parameters<int32_t>("ends", all));
}

void NetworkBuilder::copy_output(ValueId id) {
  const Value original = value(id);
  prefix_ = "copy";
  node_ = nullptr;
  const ValueId copied = temporary(original.type, original.shape, original.quantization);
  copy(id, copied);
  std::replace(graph_.outputs.begin(), graph_.outputs.end(), id, copied);
}

void NetworkBuilder::make_ports() {
  const auto make = [this](const std::vector<ValueId>& ids, const std::string& what,
                           std::vector<Port>& ports) {
    for (size_t i = 0; i < ids.size(); ++i) {
      const Value& v = value(ids[i]);
      Dims dims = dims_of(v.shape);
      if (dims.h > UINT16_MAX || dims.w > UINT16_MAX) {
        dims = flat_dims(dims.elements());
      }
      const std::string name = ids.size() == 1 ? what : what + "_" + std::to_string(i + 1);
      Tensor& t = add_tensor(name + "_port", format_of(v) | AI_FORMAT_FLAG_COPY, dims,
                             places_.at(ids[i]), &v.type, v.quantization);
      ports.push_back({v.name, v.shape, v.type, &t});
    }
  };
  make(graph_.inputs, "input", network_->inputs);
  make(graph_.outputs, "output", network_->outputs);
}

std::unique_ptr<Network> NetworkBuilder::finish() {
  if (graph_.outputs.empty()) {
    throw Refused("the graph has no outputs");
  }
  for (const ValueId id : std::vector<ValueId>(graph_.outputs)) {
    if (place_of(id).constant != nullptr) {
      copy_output(id);
    }
  }
  if (network_->layers.empty() && !graph_.outputs.empty()) {
    copy_output(graph_.outputs[0]);
  }
  for (const ValueId id : graph_.outputs) {
    places_.at(id).buffer->read(static_cast<int>(network_->layers.size()));
  }
  make_ports();
  return std::move(network_);
}

}  // namespace nnlib::importer
