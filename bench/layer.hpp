// SPDX-License-Identifier: MIT
// Layers with tensors of their own, to be run again and again.
#ifndef BENCH_LAYER_HPP
#define BENCH_LAYER_HPP

#include <algorithm>
#include <deque>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "bench/workloads.hpp"
#include "core/ai_declare.h"
#include "kernels/vector.hpp"

namespace bench {

// Elements from a cache line's start on, for every contestant alike, filled with numbers of no
// pattern: floats within 0.5 of zero, 32-bit integers (biases) small ones, others of all values.
template <class T>
class Buffer {
 public:
  explicit Buffer(size_t count)
      : data_(static_cast<T*>(::operator new[](count * sizeof(T), kCacheLine))) {
    uint32_t bits = 1;
    for (size_t i = 0; i < count; ++i) {
      bits = bits * 1664525u + 1013904223u;
      const auto number = static_cast<int32_t>(bits);
      if constexpr (std::is_same_v<T, float>) {
        data_[i] = static_cast<float>(number) * 0x1p-32f;
      } else {
        data_[i] = static_cast<T>(number >> (sizeof(T) == 4 ? 21 : 32 - 8 * sizeof(T)));
      }
    }
  }

  T* data() { return data_.get(); }
  const T* data() const { return data_.get(); }

 private:
  static constexpr std::align_val_t kCacheLine{64};
  struct Free {
    void operator()(T* data) const { ::operator delete[](data, kCacheLine); }
  };
  std::unique_ptr<T[], Free> data_;
};
using Floats = Buffer<float>;

// A tensor with storage of its own; one with a scale is quantized, with as many entries as asked.
class Tensor {
 public:
  Tensor(ai_array_format format, nnlib::dims dims, float scale = 0.0f, uint32_t entries = 1)
      : scales_(entries, scale),
        zeropoints_(entries, format == AI_ARRAY_FORMAT_U8 ? 131 : 0),
        storage_(new_storage(format, dims.elements())),
        tensor_(format, dims, storage_.get(), scale != 0.0f ? &quantization_ : nullptr) {}
  Tensor(const Tensor&) = delete;

  ai_tensor* get() { return &tensor_; }
  template <class T>
  T* data() {
    return static_cast<T*>(storage_.get());
  }

 private:
  static std::shared_ptr<void> new_storage(ai_array_format format, size_t count) {
    switch (AI_FORMAT_RUN_BYTES(format, 1)) {
      case 1:
        return filled<int8_t>(count);
      case 2:
        return filled<int16_t>(count);
      default:
        return ai_fmt_is_float(format) ? filled<float>(count) : filled<int32_t>(count);
    }
  }
  template <class T>
  static std::shared_ptr<void> filled(size_t count) {
    auto buffer = std::make_shared<Buffer<T>>(count);
    return {buffer, buffer->data()};
  }

  std::vector<float> scales_;
  std::vector<uint8_t> zeropoints_;
  ai_intq_info info_ = {scales_.data(), zeropoints_.data()};
  ai_intq_info_list quantization_ = {static_cast<uint32_t>(scales_.size()) << 16, &info_};
  std::shared_ptr<void> storage_;
  nnlib::tensor tensor_;
};

// A layer of one record type, with the tensors that are added to the lists of its chain.
template <class Record>
class Layer {
 public:
  explicit Layer(ai_layer_forward forward) {
    base() = nnlib::layer(AI_LAYER_TYPE_GENERIC, forward, chain_);
  }
  Layer(const Layer&) = delete;

  template <class... Arguments>
  Tensor& add(uint32_t list, Arguments... arguments) {
    Tensor& tensor = tensors_.emplace_back(arguments...);
    entries_[list][lists_[list].size++] = tensor.get();
    return tensor;
  }
  ai_layer& base() { return reinterpret_cast<ai_layer&>(record); }
  ai_shape square_pads(uint32_t pad) {
    std::fill_n(pads_, 4, pad);
    return {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), pads_};
  }
  void run() { base().forward(&base()); }

  Record record = {};

 private:
  std::deque<Tensor> tensors_;
  ai_tensor* entries_[AI_CHAIN_LISTS][4] = {};
  ai_tensor_list lists_[AI_CHAIN_LISTS] = {{0, entries_[0], nullptr},
                                           {0, entries_[1], nullptr},
                                           {0, entries_[2], nullptr},
                                           {0, entries_[3], nullptr}};
  ai_tensor_chain chain_ = {AI_CHAIN_LISTS, lists_};
  uint32_t pads_[4] = {};
};

// Measures a layer, with narrow vectors as well where the processor has wide ones.
template <class Record>
void add_layer(const std::string& workload, const std::string& contestant,
               std::shared_ptr<Layer<Record>> layer, double operations = 0) {
  add_benchmark(workload, contestant, operations, [layer] { layer->run(); });
  if (nnlib::vector_wide()) {
    add_benchmark(
        workload, contestant + " narrow", operations, [layer] { layer->run(); }, false);
  }
}

}  // namespace bench

#endif
