// SPDX-License-Identifier: MIT
// A network run on arbitrary buffers: it refuses them or leaves what the model says in the outputs.
// The memory behind each buffer is just as large as the network's own geometry needs.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstring>
#include <memory>

#include "test/unit/toy_network.hpp"

namespace {

constexpr size_t kBatchBytes[] = {24, 8, 12, 12};
constexpr size_t kOffsetBytes[] = {4, 0, 2, 0};

void require(bool condition) {
  if (!condition) __builtin_trap();
}

// Replaces some fields of a valid buffer; returns whether it still is one.
bool make_hostile(ai_buffer& buffer, FuzzedDataProvider& input) {
  const ai_buffer valid = buffer;
  const uint32_t hostile = input.ConsumeIntegral<uint8_t>() & input.ConsumeIntegral<uint8_t>();
  const bool far = (hostile & 0xC0) == 0xC0;
  const uint16_t most = far ? 65535 : 6;
  buffer.n_batches = input.ConsumeIntegralInRange<uint16_t>(0, far ? 300 : 6);
  if ((hostile & 1) != 0) buffer.format = input.ConsumeIntegral<uint32_t>();
  if ((hostile & 2) != 0) buffer.height = input.ConsumeIntegralInRange<uint16_t>(0, most);
  if ((hostile & 4) != 0) buffer.width = input.ConsumeIntegralInRange<uint16_t>(0, most);
  if ((hostile & 8) != 0) buffer.channels = input.ConsumeIntegralInRange(0u, far ? ~0u : 6u);
  if ((hostile & 16) != 0) buffer.data = nullptr;
  return ((buffer.format ^ valid.format) & AI_FORMAT_CODE_MASK) == 0 &&
         buffer.height == valid.height && buffer.width == valid.width &&
         buffer.channels == valid.channels && buffer.n_batches != 0 && buffer.data != nullptr;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider input(data, size);
  ToyNetwork toy;
  std::unique_ptr<uint8_t[]> memory[4], expected[4];
  bool sides_fit[2] = {true, true};
  for (int k = 0; k < 4; ++k) {
    ai_buffer& buffer = toy.buffers[k];
    sides_fit[k / 2] &= make_hostile(buffer, input);
    const size_t bytes = buffer.n_batches * kBatchBytes[k] + kOffsetBytes[k];
    memory[k] = std::make_unique<uint8_t[]>(bytes);
    expected[k] = std::make_unique<uint8_t[]>(bytes);
    if (buffer.data != nullptr) buffer.data = memory[k].get();
    for (size_t i = 0; k == 0 && i < bytes / sizeof(float); ++i) {
      reinterpret_cast<float*>(memory[0].get())[i] = static_cast<float>(i % 97);
    }
    for (size_t i = 0; k == 1 && i < bytes; ++i) memory[1][i] = static_cast<uint8_t>(i * 7);
  }
  const uint32_t missing = input.ConsumeIntegral<uint8_t>() & input.ConsumeIntegral<uint8_t>();
  if ((missing & 1) != 0) toy.inputs = nullptr;
  if ((missing & 2) != 0) toy.outputs = nullptr;
  if ((missing & 4) != 0) toy.net.flags = input.ConsumeIntegral<uint32_t>();
  const bool lacks_array = (missing & 8) != 0;
  if (lacks_array) {
    static_cast<ai_tensor*>(toy.tensors[input.ConsumeIntegralInRange(0, 3)])->data = nullptr;
  }

  const bool inputs_fit = sides_fit[0] && (toy.net.flags & 3) == 3 && toy.inputs != nullptr;
  const bool runs = inputs_fit && sides_fit[1] && toy.outputs != nullptr && !lacks_array;
  uint16_t batches = 0;
  for (const ai_buffer& buffer : toy.buffers) batches = std::max(batches, buffer.n_batches);
  if (runs) {
    ToyNetwork::model(toy.buffers, expected[2].get(),
                      reinterpret_cast<int16_t*>(expected[3].get()));
  }
  require(toy.process() == (runs ? batches : 0));
  require(lacks_array ||  // whose format, right or wrong, is then not looked at
          (toy.net.error == 0) == (runs || (inputs_fit && toy.outputs == nullptr)));
  require(toy.net.current_layer == nullptr && toy.misled == 0);
  require(toy.runs == (runs ? 2 * batches : 0));
  for (int k = 2; k < 4; ++k) {
    const size_t bytes = toy.buffers[k].n_batches * kBatchBytes[k] + kOffsetBytes[k];
    require(std::memcmp(memory[k].get(), expected[k].get(), bytes) == 0);
  }
  return 0;
}
