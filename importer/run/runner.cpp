// SPDX-License-Identifier: MIT
#include "importer/run/runner.hpp"

#include <cstring>
#include <stdexcept>

#include "check/ai_network_check.h"

namespace nnlib::importer {
namespace {

// The network record over a network's ports and layers.
struct Handle {
  explicit Handle(Network& network) {
    fill(network.inputs, 0);
    fill(network.outputs, 1);
    record.io = {2, lists};
    // A damaged model may leave no layer, which the checker then says.
    record.layers = network.layers.empty() ? nullptr : &network.layers.front().record();
  }

  void fill(const std::vector<Port>& ports, size_t side) {
    for (const Port& port : ports) {
      tensors[side].push_back(&port.tensor->record);
    }
    cursors[side].resize(ports.size());
    buffers[side].resize(ports.size());
    metas[side].resize(ports.size());
    infos[side] = {cursors[side].data(), buffers[side].data(), metas[side].data()};
    lists[side] = {static_cast<uint16_t>(ports.size()), tensors[side].data(), &infos[side]};
  }

  std::vector<ai_tensor*> tensors[2];
  std::vector<ai_buffer_cursor> cursors[2];
  std::vector<ai_buffer> buffers[2];
  std::vector<ai_buffer_meta_info> metas[2];
  ai_tensor_list_info infos[2]{};
  ai_tensor_list lists[2]{};
  ai_network record{};
};

ai_buffer buffer_of(const Port& port, void* data) {
  const Dims& d = port.tensor->dims;
  return {port.tensor->array.format & ~AI_FORMAT_FLAG_COPY,
          1,
          static_cast<uint16_t>(d.h),
          static_cast<uint16_t>(d.w),
          d.c,
          data,
          nullptr};
}

}  // namespace

size_t port_bytes(const Port& port) {
  return ai_array_get_byte_size(port.tensor->array.format, port.tensor->array.size);
}

Runner::Runner(Network& network, const MemoryMap& memory)
    : network_(network), arena_(memory.plan.bytes / sizeof(uint64_t) + 1) {
  auto* const arena = reinterpret_cast<uint8_t*>(arena_.data());
  for (Tensor& tensor : network.tensors) {
    if (tensor.storage.buffer != nullptr) {
      tensor.array.data = tensor.array.data_start = arena + memory.offset(tensor);
    }
  }
}

std::vector<std::string> Runner::findings() {
  Handle network(network_);
  std::vector<std::string> texts;
  const auto report = [](const ai_check_finding* finding, void* context) {
    static_cast<std::vector<std::string>*>(context)->emplace_back(finding->text);
  };
  ai_network_check(&network.record, report, &texts);
  return texts;
}

std::vector<Bytes> Runner::run_layers(const std::vector<Bytes>& inputs, const Observer& observer) {
  for (size_t i = 0; i < inputs.size(); ++i) {
    std::memcpy(network_.inputs[i].tensor->array.data, inputs[i].data(), inputs[i].size());
  }
  for (Layer& layer : network_.layers) {
    layer.record().forward(&layer.record());
    observer(layer);
  }
  std::vector<Bytes> outputs;
  for (const Port& port : network_.outputs) {
    const auto* data = static_cast<const uint8_t*>(port.tensor->array.data);
    outputs.emplace_back(data, data + port_bytes(port));
  }
  return outputs;
}

std::vector<Bytes> Runner::run(const std::vector<Bytes>& inputs, const Observer& observer) {
  if (inputs.size() != network_.inputs.size()) {
    throw std::runtime_error("the network has " + std::to_string(network_.inputs.size()) +
                             " inputs");
  }
  for (size_t i = 0; i < inputs.size(); ++i) {
    if (const size_t bytes = port_bytes(network_.inputs[i]); inputs[i].size() != bytes) {
      throw std::runtime_error("input " + std::to_string(i + 1) + " has " +
                               std::to_string(inputs[i].size()) + " bytes instead of " +
                               std::to_string(bytes));
    }
  }
  if (observer) {
    return run_layers(inputs, observer);
  }
  Handle network(network_);
  std::vector<Bytes> in = inputs;
  std::vector<Bytes> out;
  std::vector<ai_buffer> in_buffers, out_buffers;
  for (size_t i = 0; i < in.size(); ++i) {
    in_buffers.push_back(buffer_of(network_.inputs[i], in[i].data()));
  }
  for (const Port& port : network_.outputs) {
    out.emplace_back(port_bytes(port));
    out_buffers.push_back(buffer_of(port, out.back().data()));
  }
  ai_handle handle = nullptr;
  const ai_network_params params{};
  if (ai_platform_network_create(&handle, nullptr, &network.record, 1, 3, 0) != 0 ||
      ai_platform_network_init(handle, &params) == nullptr ||
      ai_platform_network_process(handle, in_buffers.data(), out_buffers.data()) != 1) {
    const ai_error error = ai_platform_network_get_error(handle);
    throw std::runtime_error("the runtime reports error type " +
                             std::to_string(ai_error_type(error)) + " code " +
                             std::to_string(ai_error_code(error)));
  }
  return out;
}

}  // namespace nnlib::importer
