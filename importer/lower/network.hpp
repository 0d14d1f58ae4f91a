// SPDX-License-Identifier: MIT
// The network that is built: the runtime's own records in memory, each with what is needed to print
// it as C again.
#ifndef NNLIB_IMPORTER_LOWER_NETWORK_HPP
#define NNLIB_IMPORTER_LOWER_NETWORK_HPP

#include <algorithm>
#include <array>
#include <cstddef>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "importer/graph/value.hpp"
#include "nnlib.h"

namespace nnlib::importer {

// The runtime's dimensions; an activation has n = 1.
struct Dims {
  uint32_t n = 1, c = 1, w = 1, h = 1;
  uint64_t elements() const { return uint64_t{n} * c * w * h; }
  auto operator<=>(const Dims&) const = default;
};

// A function of the runtime, or one that the generated source defines.
struct Function {
  std::string name;
  void (*pointer)() = nullptr;
  std::string definition;  // C source; empty for the runtime's own
};

#define NNLIB_FUNCTION(f)                      \
  ::nnlib::importer::Function {                \
#f, reinterpret_cast < void (*)()>(&f), {} \
  }

// Bytes in flash.
struct Constant {
  std::string name;  // of the C array
  ai_array_format format;
  Bytes bytes;
};

constexpr int kUnset = -2;

// Bytes of the arena that hold one activation or one layer's scratch. Layers are numbered from 0;
// a network input is there from -1 on, an output until the number of layers.
struct Buffer {
  std::string name;
  uint32_t bytes = 0;
  int first = kUnset;
  int last = -1;
  bool is_scratch = false;
  // The buffer that this one is a part of, `offset` bytes after its start, and that lives whenever
  // a part does.
  Buffer* whole = nullptr;
  uint32_t offset = 0;

  void written(int layer) {
    first = first == kUnset ? layer : std::min(first, layer);
    read(layer);
    if (whole != nullptr) {
      whole->written(layer);
    }
  }
  void read(int layer) {
    last = std::max(last, layer);
    if (whole != nullptr) {
      whole->read(layer);
    }
  }
};

// Where a tensor's elements are: exactly one of the two.
struct Storage {
  Constant* constant = nullptr;
  Buffer* buffer = nullptr;
};

// A quantization record.
struct Intq {
  std::string name;
  std::vector<float> scales;
  Bytes zero_points;  // int8 or uint8
  bool is_signed = false;
  ai_intq_info info{};
  ai_intq_info_list record{};
};

struct Tensor {
  std::string name;
  Dims dims;
  Intq* quantization = nullptr;
  Storage storage;
  uint32_t shape[AI_SHAPE_DIMS]{};
  uint32_t stride[AI_SHAPE_DIMS]{};
  ai_array array{};
  ai_tensor record{};
};

// An array that a layer's record points to: parameters of a function, starts of a slice.
struct Parameters {
  std::string name;
  Constant* constant = nullptr;
  ai_array record{};
};

// A member of a layer's record that is not the zero it starts as.
struct Field {
  std::string name;  // "filter_stride", "base.groups"
  std::string text;  // its initialiser in C
};

// The output of a layer may lie exactly where the input is, when nothing reads that afterwards.
struct Overlay {
  Buffer* output;
  Buffer* input;
  int layer;
};

struct Layer {
  std::string name;         // of the C record
  std::string model_name;   // of the node
  std::string origin;       // the model's word for the operator
  std::string record_type;  // "ai_layer_conv2d"
  std::string base;         // path of the ai_layer in it: "", "base", "base.base"
  std::string type_name;    // "AI_LAYER_TYPE_CONV2D"
  Function forward;
  std::array<std::vector<Tensor*>, AI_CHAIN_LISTS> lists;
  std::vector<Field> fields;
  uint64_t macs = 0;
  uint32_t heap_bytes = 0;  // that a call takes

  ai_layer& record() { return *reinterpret_cast<ai_layer*>(memory.get()); }
  const ai_layer& record() const { return *reinterpret_cast<const ai_layer*>(memory.get()); }
  template <class T>
  const T& as() const {
    return *reinterpret_cast<const T*>(memory.get());
  }

  std::unique_ptr<uint64_t[]> memory;
  std::array<std::vector<ai_tensor*>, AI_CHAIN_LISTS> list_entries;
  ai_tensor_list list_records[AI_CHAIN_LISTS]{};
  ai_tensor_chain chain{};
  std::deque<std::vector<uint32_t>> words;  // that fields point to
};

// An input or output of the network.
struct Port {
  std::string model_name;
  Shape shape;  // in the model
  Type type;
  Tensor* tensor;
};

// Owns everything; addresses are stable.
struct Network {
  std::string name;
  std::deque<Constant> constants;
  std::deque<Buffer> buffers;
  std::deque<Intq> quantizations;
  std::deque<Tensor> tensors;
  std::deque<Parameters> parameters;
  std::deque<Layer> layers;
  std::vector<Function> definitions;  // functions that the source has to define
  std::vector<Overlay> overlays;
  std::vector<Port> inputs;
  std::vector<Port> outputs;

  Network() = default;
  Network(const Network&) = delete;
  Network& operator=(const Network&) = delete;
};

}  // namespace nnlib::importer

#endif
