// SPDX-License-Identifier: MIT
// Networks of random layers with random records, most of them without a fault and some slightly
// broken. Every record and every tensor lies in a block of the heap of exactly its size, so that
// AddressSanitizer sees an access outside.
#ifndef TEST_FUZZ_RANDOM_NETWORK_HPP
#define TEST_FUZZ_RANDOM_NETWORK_HPP

#include <memory>
#include <random>
#include <vector>

#include "check/layer_check.hpp"
#include "test/fuzz/choices.hpp"

// Memory that arrays lie in.
struct RandomBlock {
  std::unique_ptr<uint8_t[]> data;
  uint64_t bytes;
  bool floats, constant;
  std::vector<uint8_t> before;  // the contents of a constant before a run
};

struct RandomArray {
  ai_array array;
  RandomBlock* block;  // null: a run points the array at the caller's memory
  uint32_t lead;       // bytes of the block before the data
};

struct RandomTensor {
  ai_tensor tensor;
  RandomArray* memory;
  bool read;
};

class RandomNetwork {
 public:
  // Of one to four layers, the first of them with the function of `wanted` if it is not null.
  RandomNetwork(Choices choices, const nnlib::LayerRule* wanted);

  // Whether the checker finds nothing.
  bool sound() const { return sound_; }
  // Runs the network through the platform API; false when that reports an error or when a constant
  // has changed.
  bool run();

  const ai_network& network() const { return network_; }

 private:
  friend class LayerMaker;

  using Dims = nnlib::Dims;
  struct Number {
    void* place;
    uint32_t bytes;
  };

  // count zeroed objects that live as long as the network
  template <class T>
  T* own(size_t count = 1) {
    T* objects = new T[count]();
    owned_.emplace_back(objects, std::default_delete<T[]>());
    return objects;
  }
  RandomTensor& make_tensor(ai_array_format format, const Dims& dims);
  void set_dims(RandomTensor& tensor, const Dims& dims);
  RandomTensor& make_port(RandomTensor& tensor);
  ai_tensor_list make_list(const std::vector<RandomTensor*>& tensors, bool with_info);

  void make_layer(const nnlib::LayerRule& rule);
  void make_branches();
  void append(ai_layer& layer);

  void break_tensor(RandomTensor& tensor);
  void break_something();

  void finish();
  bool allocate();
  void fill(uint8_t* data, uint64_t bytes, bool floats);
  bool check();
  void release_written();
  std::vector<ai_buffer> buffers(const std::vector<RandomTensor*>& ports);

  Choices choose_;
  std::minstd_rand random_;
  std::vector<std::shared_ptr<void>> owned_;
  std::vector<RandomTensor*> tensors_;
  std::vector<RandomTensor*> readable_;  // what a layer may read, the last written last
  std::vector<RandomTensor*> ports_[2];  // inputs and outputs of the network
  std::vector<Number> numbers_;          // of records of layers
  std::vector<ai_layer*> layers_;
  ai_layer** tail_;
  ai_network network_ = {};
  bool sound_ = false;
};

// Makes one layer of a random network, list by list.
class LayerMaker {
 public:
  // given: what the first input is, or null; else the maker finds or makes one.
  LayerMaker(RandomNetwork& network, const nnlib::LayerRule& rule, RandomTensor* given = nullptr);

  // Whether there is a maker for the rule's record.
  static bool knows(const nnlib::LayerRule& rule);

  ai_layer* layer() { return layer_; }
  RandomTensor& output() { return *lists_[AI_CHAIN_OUTPUT][0]; }
  const std::vector<RandomTensor*>& list(uint32_t list) const { return lists_[list]; }

  // --- for the makers of the records
  // --------------------------------------------------------------

  using Dims = nnlib::Dims;
  Choices& choose;
  nnlib::Symbols sizes;
  const nnlib::LayerRule& rule;

  template <class Record>
  Record& record() {
    Record* made = network_.own<Record>();
    layer_ = reinterpret_cast<ai_layer*>(made);
    return *made;
  }
  template <class T>
  T* own(size_t count = 1) {
    return network_.own<T>(count);
  }
  // A number of a record that may later be made a wrong one.
  template <class T>
  T& number(T& place, uint32_t value) {
    place = static_cast<T>(value);
    network_.numbers_.push_back({&place, sizeof(T)});
    return place;
  }
  template <class T>
  T& number(T& place, std::initializer_list<uint32_t> values) {
    return number(place, choose.of(values));
  }
  char kind() const { return rule.inputs[0]; }
  uint32_t size();  // small, seldom larger than a vector
  uint32_t set(char symbol, uint64_t value) {
    sizes.set(symbol, static_cast<uint32_t>(value));
    return static_cast<uint32_t>(value);
  }

  // Makes a list as the text has it, or the rule; a list that is not empty stays.
  void make(uint32_t list, const char* text = nullptr);
  // Adds one tensor.
  RandomTensor& add(uint32_t list, char kind, const Dims& dims);
  Dims dims(uint32_t list, uint32_t index = 0) const;
  ai_array_format input_format() const;
  // An array with random elements.
  ai_array* array(ai_array_format format, uint32_t count);
  // Layers inside this one over tensors of one time step; returns the last one's output.
  RandomTensor& inner_layers(ai_layer*& first);

 private:
  static const struct RecordMaker* find(const nnlib::LayerRule& rule);
  Dims dims_of(const nnlib::TensorRule& tensor, uint32_t list);
  ai_array_format format(uint32_t list, char kind);
  bool takes(char kind, const RandomTensor& tensor) const;
  bool binds(const char* terms, const Dims& dims);
  bool reuse(const nnlib::TensorRule& tensor);
  void quantize(RandomTensor& tensor, uint32_t list, char kind);
  void share(RandomTensor& output);
  void finish();

  RandomNetwork& network_;
  RandomTensor* given_;
  ai_layer* layer_ = nullptr;
  std::vector<RandomTensor*> lists_[AI_CHAIN_LISTS];
};

// Makes the record of a layer, and those lists of tensors that its rule alone does not describe.
struct RecordMaker {
  const char* record;
  void (*make)(LayerMaker& maker);
};
extern const std::vector<RecordMaker> kRecordMakers;

#endif
