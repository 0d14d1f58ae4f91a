// SPDX-License-Identifier: MIT
// Fills one layer's record and remembers the C text of every member.
#ifndef NNLIB_IMPORTER_LOWER_LAYER_BUILDER_HPP
#define NNLIB_IMPORTER_LOWER_LAYER_BUILDER_HPP

#include <cstring>
#include <type_traits>

#include "importer/lower/network.hpp"

namespace nnlib::importer {

// A member of type M of a layer's record.
template <class M>
struct Member {
  std::string name;
  size_t offset;
};

#define NNLIB_MEMBER(Record, member)                                                             \
  ::nnlib::importer::Member<std::remove_reference_t<decltype(std::declval<Record&>().member)>> { \
#member, offsetof(Record, member)                                                            \
  }

// Exactly, as a C constant: hexadecimal; a macro of math.h for infinities and NaN.
std::string c_float(float value);
std::string c_words(std::span<const uint32_t> words);

class LayerBuilder {
 public:
  LayerBuilder(Network& network, Layer& layer, int index)
      : network_(network), layer_(layer), index_(index) {}

  LayerBuilder& input(Tensor& tensor) { return append(AI_CHAIN_INPUT, &tensor); }
  LayerBuilder& output(Tensor& tensor) { return append(AI_CHAIN_OUTPUT, &tensor); }
  // Null: an absent optional tensor.
  LayerBuilder& weights(Tensor* tensor) { return append(AI_CHAIN_WEIGHTS, tensor); }
  LayerBuilder& scratch(Tensor* tensor) { return append(AI_CHAIN_SCRATCH, tensor); }

  LayerBuilder& set(const Member<uint32_t>& m, uint32_t value) {
    return number(m, value, std::to_string(value));
  }
  LayerBuilder& set(const Member<uint8_t>& m, uint8_t value) {
    return number(m, value, std::to_string(value));
  }
  LayerBuilder& set(const Member<bool>& m, bool value) {
    return number(m, value, value ? "true" : "false");
  }
  LayerBuilder& set(const Member<float>& m, float value) {
    return number(m, value, c_float(value));
  }
  LayerBuilder& set(const Member<uint32_t[2]>& m, uint32_t x, uint32_t y) {
    return number(m, std::array{x, y}, "{" + std::to_string(x) + ", " + std::to_string(y) + "}");
  }
  LayerBuilder& set(const Member<ai_shape>& m, std::vector<uint32_t> values);
  LayerBuilder& set(const Member<const uint32_t*>& m, std::vector<uint32_t> values);
  LayerBuilder& set(const Member<const uint16_t*>& m, const std::vector<uint16_t>& values);
  LayerBuilder& set(const Member<const ai_array*>& m, const Parameters& parameters);
  // A function pointer.
  template <class M>
  requires std::is_pointer_v<M> && std::is_function_v<std::remove_pointer_t<M>> LayerBuilder& set(
      const Member<M>& m, const Function& function) {
    functions_used(function);
    return number(m, reinterpret_cast<M>(function.pointer), function.name);
  }

  // What is set next are members of the record's first member, which has this name; "" ends it.
  LayerBuilder& inside(const std::string& member) {
    path_ = member.empty() ? "" : member + ".";
    return *this;
  }
  LayerBuilder& macs(uint64_t count) {
    layer_.macs = count;
    return *this;
  }
  LayerBuilder& heap(size_t bytes) {
    layer_.heap_bytes = static_cast<uint32_t>(bytes);
    return *this;
  }
  // The output may lie over the input.
  LayerBuilder& in_place(const Tensor& output, const Tensor& input) {
    if (output.storage.buffer != nullptr && input.storage.buffer != nullptr) {
      network_.overlays.push_back({output.storage.buffer, input.storage.buffer, index_});
    }
    return *this;
  }

  Layer& layer() { return layer_; }
  int index() const { return index_; }
  // The record as its kind.
  template <class T>
  const T& as() const {
    return layer_.as<T>();
  }

 private:
  template <class M, class T>
  LayerBuilder& number(const Member<M>& m, T value, std::string text) {
    static_assert(sizeof(M) == sizeof(T));
    std::memcpy(reinterpret_cast<char*>(layer_.memory.get()) + m.offset, &value, sizeof(T));
    layer_.fields.push_back({path_ + m.name, std::move(text)});
    return *this;
  }
  LayerBuilder& append(uint32_t list, Tensor* tensor);
  void functions_used(const Function& function);

  Network& network_;
  Layer& layer_;
  int index_;
  std::string path_;
};

}  // namespace nnlib::importer

#endif
