// SPDX-License-Identifier: MIT
#include "test/fuzz/random_network.hpp"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>

#include "check/ai_network_check.h"
#include "check/walk.hpp"
#include "nnlib.h"

using namespace nnlib;

RandomNetwork::RandomNetwork(Choices choices, const LayerRule* wanted)
    : choose_(choices), random_(choose_.word()), tail_(&network_.layers) {
  const LayerRules rules = layer_rules();
  if (wanted == nullptr) {
    wanted = &rules.rows[choose_.below(rules.count)];
  }
  const bool broken = choose_.one_in(2);
  for (uint32_t left = choose_.between(1, 4); left > 0; --left) {
    make_layer(*wanted);
    wanted = &rules.rows[choose_.below(rules.count)];
  }
  finish();
  for (uint32_t left = broken ? choose_.between(1, 3) : 0; left > 0; --left) {
    break_something();
  }
  // The checker says how much scratch memory is needed.
  sound_ = allocate() && (check() || (allocate() && check()));
}

// --- tensors ------------------------------------------------------------------------------------

void RandomNetwork::set_dims(RandomTensor& tensor, const Dims& dims) {
  const ai_array_format format = tensor.memory->array.format;
  uint64_t stride = run_bytes(format, 1);
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    tensor.tensor.shape.data[i] = static_cast<uint32_t>(dims.sizes[i]);
    tensor.tensor.stride.data[i] = static_cast<uint32_t>(stride);
    stride = i == 0 ? run_bytes(format, dims.sizes[0]) : product(stride, dims.sizes[i]);
  }
}

RandomTensor& RandomNetwork::make_tensor(ai_array_format format, const Dims& dims) {
  auto* made = own<RandomTensor>();
  made->memory = own<RandomArray>();
  made->memory->block = own<RandomBlock>();
  made->memory->block->constant = true;
  const uint64_t elements =
      product(product(dims.sizes[0], dims.sizes[1]), product(dims.sizes[2], dims.sizes[3]));
  made->memory->array = {format, static_cast<uint32_t>(elements), nullptr, nullptr};
  made->tensor = {nullptr,
                  AI_TENSOR_FLAGS_OF(format),
                  {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), own<uint32_t>(AI_SHAPE_DIMS)},
                  {AI_DIMS_WORD(AI_STRIDE_TYPE, AI_SHAPE_DIMS), own<uint32_t>(AI_SHAPE_DIMS)},
                  &made->memory->array};
  set_dims(*made, dims);
  tensors_.push_back(made);
  return *made;
}

// Of the network's inputs and outputs some are copied, and some pointed at the caller's memory.
RandomTensor& RandomNetwork::make_port(RandomTensor& tensor) {
  if (choose_.one_in(2)) {
    tensor.memory->block = nullptr;
  } else {
    tensor.memory->array.format |= AI_FORMAT_FLAG_COPY;
  }
  return tensor;
}

ai_tensor_list RandomNetwork::make_list(const std::vector<RandomTensor*>& tensors, bool with_info) {
  const auto count = static_cast<uint16_t>(tensors.size());
  auto** pointers = own<ai_tensor*>(count);
  std::transform(tensors.begin(), tensors.end(), pointers,
                 [](RandomTensor* tensor) { return &tensor->tensor; });
  if (!with_info) {
    return {count, pointers, nullptr};
  }
  auto* info = own<ai_tensor_list_info>();
  *info = {own<ai_buffer_cursor>(count), own<ai_buffer>(count), own<ai_buffer_meta_info>(count)};
  return {count, pointers, info};
}

// --- layers -------------------------------------------------------------------------------------

void RandomNetwork::append(ai_layer& layer) {
  *tail_ = &layer;
  tail_ = &layer.next;
}

void RandomNetwork::make_layer(const LayerRule& rule) {
  if (rule.in_place == InPlace::kNoTensors) {
    make_branches();
    return;
  }
  LayerMaker maker(*this, rule);
  layers_.push_back(maker.layer());
  append(*maker.layer());
  for (RandomTensor* output : maker.list(AI_CHAIN_OUTPUT)) {
    readable_.push_back(output);
  }
}

// A split and an add layer with layers in the branches between them.
void RandomNetwork::make_branches() {
  const auto count = static_cast<uint16_t>(choose_.between(1, 3));
  auto* split = own<ai_layer_split>();
  auto* add = own<ai_layer_add>();
  auto** branches = own<ai_layer*>(count);
  auto** contexts = own<void*>(count);
  auto* no_tensors = own<ai_tensor_chain>();
  const bool calls = choose_.one_in(3);
  *split = {{AI_LAYER_TYPE_SPLIT, 0, nullptr, nullptr, nullptr, forward_split, no_tensors},
            count,
            0,
            branches,
            contexts,
            nullptr,
            nullptr};
  *add = {{AI_LAYER_TYPE_ADD, 0, nullptr, nullptr, nullptr, forward_add, no_tensors},
          count,
          0,
          contexts,
          nullptr,
          nullptr,
          &split->base,
          nullptr};
  if (calls) {
    split->callback = [](void*, void*) {};
    add->callback = [](void*, void*) {};
  }
  for (uint16_t* number : {&split->index, &add->count}) {
    numbers_.push_back({number, sizeof(*number)});
  }
  append(split->base);
  const LayerRules rules = layer_rules();
  for (uint16_t i = 0; i < count; ++i) {
    tail_ = &branches[i];
    for (uint32_t left = choose_.between(1, 2); left > 0;) {
      const LayerRule& rule = rules.rows[choose_.below(rules.count)];
      if (rule.in_place != InPlace::kNoTensors) {
        make_layer(rule);
      }
      left -= choose_.exhausted() || rule.in_place != InPlace::kNoTensors ? 1 : 0;
    }
    *tail_ = &add->base;
  }
  split->base.next = branches[0];
  layers_.push_back(&split->base);
  layers_.push_back(&add->base);
  tail_ = &add->continuation;
}

void RandomNetwork::finish() {
  if (choose_.one_in(2) && !layers_.empty() && tail_ == &layers_.back()->next) {
    *tail_ = layers_.back();
  }
  for (ai_layer* layer : layers_) {
    if (layer->forward == forward_add) {
      layer->next = reinterpret_cast<ai_layer_add*>(layer)->continuation;
    }
  }
  for (RandomTensor* tensor : readable_) {
    const bool is_input = std::find(ports_[0].begin(), ports_[0].end(), tensor) != ports_[0].end();
    if (!tensor->read && !is_input && ai_array_fmt_exported(ai_tensor_format(&tensor->tensor))) {
      ports_[1].push_back(&make_port(*tensor));
    }
  }
  auto* lists = own<ai_tensor_list>(2);
  lists[0] = make_list(ports_[0], true);
  lists[1] = make_list(ports_[1], true);
  network_.io = {2, lists};
}

// --- faults -------------------------------------------------------------------------------------

void RandomNetwork::break_tensor(RandomTensor& tensor) {
  ai_array& array = tensor.memory->array;
  const uint32_t dim = choose_.below(AI_SHAPE_DIMS);
  const uint32_t near = tensor.tensor.shape.data[dim] + choose_.of({1u, 2u, ~0u});
  Dims dims = dims_of(tensor.tensor);
  switch (choose_.below(8)) {
    case 0:
      tensor.tensor.shape.data[dim] = near;
      break;
    case 1:  // with strides and array as they should be
      dims.sizes[dim] = near;
      set_dims(tensor, dims);
      array.size = static_cast<uint32_t>(elements_of(tensor.tensor));
      break;
    case 2:
      tensor.tensor.stride.data[dim] += choose_.of({4u, 1u, 16u});
      break;
    case 3:
      array.size += choose_.of({1u, ~0u, 7u});
      break;
    case 4:
      array.format = ai_fmt_set_fbits(array.format, static_cast<int32_t>(choose_.below(128)) - 64);
      break;
    case 5:
      array.format ^= 1u << choose_.below(30);
      break;
    case 6:
      tensor.memory->lead += choose_.between(1, 4);
      break;
    default:
      tensor.tensor.klass =
          tensors_[choose_.below(static_cast<uint32_t>(tensors_.size()))]->tensor.klass;
  }
}

void RandomNetwork::break_something() {
  const auto one_of = [this](auto& all) -> auto& {
    return all[choose_.below(static_cast<uint32_t>(all.size()))];
  };
  if (choose_.one_in(2) && !numbers_.empty()) {
    const Number& number = one_of(numbers_);
    const uint32_t value = choose_.one_in(8) ? choose_.word() : choose_.below(6);
    if (number.bytes == sizeof(uint32_t)) {
      *static_cast<uint32_t*>(number.place) = value;
    } else if (number.bytes == sizeof(uint16_t)) {
      *static_cast<uint16_t*>(number.place) = static_cast<uint16_t>(value);
    } else {
      *static_cast<uint8_t*>(number.place) = static_cast<uint8_t>(value);
    }
  } else if (!tensors_.empty() && choose_.below(4) != 0) {
    break_tensor(*one_of(tensors_));
  } else if (!tensors_.empty() && !layers_.empty()) {  // another tensor, one less, another memory
    const ai_layer& layer = *one_of(layers_);
    const uint32_t list = choose_.below(layer.tensor_chain->size + 1u);
    auto* tensors = const_cast<ai_tensor_list*>(ai_tensor_chain_list(layer.tensor_chain, list));
    RandomTensor& other = *one_of(tensors_);
    if (tensors == nullptr || tensors->size == 0) {
      other.memory = one_of(tensors_)->memory;
      other.tensor.data = &other.memory->array;
    } else if (choose_.one_in(2)) {
      --tensors->size;
    } else {
      const_cast<ai_tensor**>(tensors->tensors)[choose_.below(tensors->size)] = &other.tensor;
    }
  }
}

// --- memory -------------------------------------------------------------------------------------

void RandomNetwork::fill(uint8_t* data, uint64_t bytes, bool floats) {
  if (!floats) {
    std::generate_n(data, bytes, [this] { return static_cast<uint8_t>(random_() >> 8); });
    return;
  }
  static constexpr float kOdd[] = {0.0f,
                                   -0.0f,
                                   1e30f,
                                   -1e30f,
                                   1e-40f,
                                   127.5f,
                                   std::numeric_limits<float>::quiet_NaN(),
                                   -std::numeric_limits<float>::infinity()};
  const bool odd = random_() % 8 == 0;
  for (uint64_t at = 0; at + sizeof(float) <= bytes; at += sizeof(float)) {
    const float usual = static_cast<float>(random_() % 4001) * 0.002f - 4.0f;
    const float value = odd && random_() % 4 == 0 ? kOdd[random_() % std::size(kOdd)] : usual;
    std::memcpy(data + at, &value, sizeof(value));
  }
}

// Gives every block the bytes that its arrays take; false when they are too many.
bool RandomNetwork::allocate() {
  uint64_t total = 0;
  for (RandomTensor* tensor : tensors_) {
    RandomArray& memory = *tensor->memory;
    if (memory.block == nullptr) {
      continue;
    }
    const uint64_t rows = product(tensor->tensor.shape.data[3], tensor->tensor.stride.data[3]);
    const uint64_t held = ai_array_get_data_byte_size(memory.array.format, memory.array.size);
    const uint64_t bytes = memory.lead + std::max(rows, held);
    memory.block->bytes = std::max(memory.block->bytes, bytes);
    memory.block->floats = ai_fmt_is_float(memory.array.format);
    memory.block->data.reset();
    total += bytes;
    if (bytes > 1u << 18 || total > 1u << 20) {
      return false;
    }
  }
  for (RandomTensor* tensor : tensors_) {
    RandomArray& memory = *tensor->memory;
    RandomBlock* block = memory.block;
    if (block == nullptr) {
      continue;
    }
    if (block->data == nullptr) {
      block->data.reset(new uint8_t[block->bytes]);
      fill(block->data.get(), block->bytes, block->floats);
    }
    memory.array.data = memory.array.data_start = block->data.get() + memory.lead;
    const uint32_t type = ai_fmt_get_type_id(memory.array.format);
    if (type == AI_FORMAT_TYPE_LUT4 || type == AI_FORMAT_TYPE_LUT8) {
      const size_t values = type == AI_FORMAT_TYPE_LUT4 ? 16 : 256;
      auto* table = own<float>(values);
      fill(reinterpret_cast<uint8_t*>(table), values * sizeof(float), true);
      memory.array.data_start = table;
    }
  }
  return true;
}

// Whether nothing is found; scratch tensors get the size that the checker asks for.
bool RandomNetwork::check() {
  const auto grow = [](const ai_check_finding* finding, void* context) {
    auto& self = *static_cast<RandomNetwork*>(context);
    unsigned index = 0, held = 0, bytes = 0;
    if (std::sscanf(finding->sentence, "scratch %u holds %u bytes, %u are needed", &index, &held,
                    &bytes) != 3) {
      return;
    }
    Walk walk(self.network_.layers);
    for (uint32_t place = 0; place < finding->layer; ++place) {
      walk.step();
    }
    const ai_tensor* tensor = ai_tensor_chain_scratch(walk.layer()->tensor_chain, index);
    if (tensor != nullptr) {
      const uint32_t bits = std::max(ai_fmt_get_bits(ai_tensor_format(tensor)), 8u);
      tensor->data->size = (8 * bytes + bits - 1) / bits;
    }
  };
  return ai_network_check(&network_, grow, this) == 0;
}

// --- a run --------------------------------------------------------------------------------------

std::vector<ai_buffer> RandomNetwork::buffers(const std::vector<RandomTensor*>& ports) {
  std::vector<ai_buffer> made;
  for (const RandomTensor* port : ports) {
    const ai_tensor& tensor = port->tensor;
    const auto batches = static_cast<uint16_t>(choose_.between(1, 2));
    const uint32_t bytes = batches * ai_tensor_batch_bytes(&tensor);
    auto* data = own<uint8_t>(bytes);
    fill(data, bytes, ai_fmt_is_float(tensor.data->format));
    made.push_back({ai_array_to_buffer_fmt(tensor.data->format), batches,
                    static_cast<uint16_t>(tensor.shape.data[AI_SHAPE_H]),
                    static_cast<uint16_t>(tensor.shape.data[AI_SHAPE_W]),
                    tensor.shape.data[AI_SHAPE_C], data, nullptr});
  }
  return made;
}

// What a layer writes is no constant, though it may be another's weights.
void RandomNetwork::release_written() {
  for (const ai_layer* layer : layers_) {
    for (const uint32_t list : {AI_CHAIN_OUTPUT, AI_CHAIN_SCRATCH}) {
      const ai_tensor_list* written = ai_tensor_chain_list(layer->tensor_chain, list);
      const uint32_t count = ai_tensor_list_count(written);
      for (const RandomTensor* tensor : tensors_) {
        for (uint32_t i = 0; i < count; ++i) {
          if (tensor->memory->block != nullptr &&
              written->tensors[i]->data == tensor->tensor.data) {
            tensor->memory->block->constant = false;
          }
        }
      }
    }
  }
}

bool RandomNetwork::run() {
  release_written();
  for (RandomTensor* tensor : tensors_) {
    RandomBlock* block = tensor->memory->block;
    if (block != nullptr && block->constant) {
      block->before.assign(block->data.get(), block->data.get() + block->bytes);
    }
  }
  const std::vector<ai_buffer> in = buffers(ports_[0]), out = buffers(ports_[1]);
  ai_handle handle = nullptr;
  const ai_network_params params = {};
  ai_network_report report = {};
  const bool ran =
      ai_platform_network_create(&handle, nullptr, &network_, AI_INTERFACE_API_VERSION) == 0 &&
      ai_platform_network_init(handle, &params) != nullptr &&
      ai_platform_network_process(handle, in.data(), out.data()) != 0 &&
      ai_platform_api_get_network_report(handle, &report) &&
      ai_platform_network_get_error(handle) == 0 && ai_platform_network_destroy(handle) == nullptr;
  return ran && std::all_of(tensors_.begin(), tensors_.end(), [](const RandomTensor* tensor) {
           const RandomBlock* block = tensor->memory->block;
           return block == nullptr || !block->constant ||
                  std::equal(block->before.begin(), block->before.end(), block->data.get());
         });
}
