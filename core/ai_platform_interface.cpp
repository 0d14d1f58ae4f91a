// SPDX-License-Identifier: MIT
#include "core/ai_platform_interface.h"

#include <cstring>

#include "core/ai_version.h"
#include "layers/layers.h"

namespace {

#ifndef NNLIB_REVISION
#define NNLIB_REVISION "0000000000000000000000000000000000000000"
#endif
constexpr char kRuntimeRevision[] = "(rev-" NNLIB_REVISION ")";
constexpr ai_platform_version kRuntimeVersion = {NNLIB_VERSION_MAJOR, NNLIB_VERSION_MINOR,
                                                 NNLIB_VERSION_MICRO, 0};
constexpr ai_platform_version kApiVersion = {1, 1, 0, 0};
constexpr ai_platform_version kInterfaceApiVersion = {AI_INTERFACE_API_VERSION, 0};

constexpr uint32_t pack_version(const ai_platform_version& version) {
  return version.major | static_cast<uint32_t>(version.minor) << 8 |
         static_cast<uint32_t>(version.micro) << 16;
}

// The order in which versions compare: major, minor, micro from the top byte down.
constexpr uint32_t comparable_version(uint32_t major, uint32_t minor, uint32_t micro) {
  return major << 24 | minor << 16 | micro << 8;
}

constexpr uint32_t kFirstUnsupportedVersion =
    comparable_version(kInterfaceApiVersion.major, kInterfaceApiVersion.minor,
                       kInterfaceApiVersion.micro) +
    1;

uint32_t create_error_type(uint32_t interface_version) {
  if (!core_init()) {
    return AI_ERROR_TYPE_INIT_FAILED;
  }
  if (interface_version >= kFirstUnsupportedVersion) {
    return AI_ERROR_TYPE_INTERFACE_VERSION;
  }
  const uint32_t signature = AI_CUSTOM_TYPES_SIGNATURE;
  return ai_check_custom_types(&signature) ? AI_ERROR_TYPE_NONE : AI_ERROR_TYPE_CUSTOM_TYPES;
}

uint64_t buffer_elements(const ai_buffer& buffer) {
  return static_cast<uint64_t>(buffer.height) * buffer.width * buffer.channels;
}

bool lacks_data(const ai_buffer& buffer) {
  return buffer.data == nullptr && buffer.height != 0 && buffer.width != 0 && buffer.channels != 0;
}

// One side of the network's I/O: its list and the type of the errors that it raises.
struct IoSide {
  const ai_tensor_list* list;
  uint32_t error_type;

  uint32_t count() const { return ai_tensor_list_count(list); }
  ai_tensor& tensor(uint32_t i) const { return *list->tensors[i]; }
  ai_array* array(uint32_t i) const { return tensor(i).data; }
  ai_buffer_cursor& cursor(uint32_t i) const { return list->info->cursors[i]; }
  bool has_cursors() const { return list->info != nullptr && list->info->cursors != nullptr; }
  bool has_buffers() const {
    return list != nullptr && list->info != nullptr && list->info->buffers != nullptr;
  }
};

IoSide input_side(const ai_network& network) {
  return {ai_tensor_chain_list(&network.io, AI_CHAIN_INPUT), AI_ERROR_TYPE_INVALID_INPUT};
}

IoSide output_side(const ai_network& network) {
  return {ai_tensor_chain_list(&network.io, AI_CHAIN_OUTPUT), AI_ERROR_TYPE_INVALID_OUTPUT};
}

// Points the array at new memory and keeps the offset of data in it.
void bind_array(ai_array& array, void* memory) {
  const ptrdiff_t offset =
      static_cast<uint8_t*>(array.data) - static_cast<uint8_t*>(array.data_start);
  array.data = static_cast<uint8_t*>(memory) + offset;
  array.data_start = memory;
}

bool is_copied(const ai_array& array) {
  return (array.format & AI_FORMAT_FLAG_COPY) != 0;
}

// Whether the buffer's and the tensor's items of one batch fit into the array.
bool fits(const ai_tensor& tensor, const ai_array& array, const ai_buffer& buffer) {
  return array.size >= buffer_elements(buffer) &&
         ai_array_get_byte_size(array.format, array.size) >= ai_tensor_batch_bytes(&tensor);
}

bool formats_agree(const ai_array& array, const ai_buffer& buffer) {
  return ai_fmt_get_code(ai_array_to_buffer_fmt(array.format)) == ai_fmt_get_code(buffer.format);
}

// The error code of the first test that the caller's buffer fails, or 0. A tensor without an array
// passes those that need it: it is found when all else is right.
uint32_t check_buffer(const ai_tensor& tensor, const ai_buffer& buffer) {
  const ai_array* array = tensor.data;
  if (ai_tensor_dim(&tensor, AI_SHAPE_H) != buffer.height ||
      ai_tensor_dim(&tensor, AI_SHAPE_W) != buffer.width ||
      ai_tensor_dim(&tensor, AI_SHAPE_C) != buffer.channels ||
      (array != nullptr && !fits(tensor, *array, buffer))) {
    return AI_ERROR_CODE_SIZE;
  }
  if (array != nullptr && !formats_agree(*array, buffer)) {
    return AI_ERROR_CODE_FORMAT;
  }
  if (buffer.data == nullptr) {
    return AI_ERROR_CODE_NULL_POINTER;
  }
  return buffer.n_batches == 0 ? AI_ERROR_CODE_BATCHES : AI_ERROR_CODE_NONE;
}

// Checks and binds the caller's buffer of every tensor of one side; raises batch_count to their
// largest n_batches. Returns an error code.
uint32_t bind_buffers(const IoSide& side, const ai_buffer* buffers, uint16_t& batch_count) {
  if (!side.has_cursors()) {
    return AI_ERROR_CODE_NULL_POINTER;
  }
  for (uint32_t i = 0, n = side.count(); i < n; ++i) {
    const ai_buffer& buffer = buffers[i];
    const uint32_t code = check_buffer(side.tensor(i), buffer);
    if (code != AI_ERROR_CODE_NONE) {
      return code;
    }
    if (batch_count < buffer.n_batches) {
      batch_count = buffer.n_batches;
    }
    const uint32_t batch_bytes = ai_tensor_batch_bytes(&side.tensor(i));
    const uint32_t total_bytes = buffer.n_batches * batch_bytes;
    side.cursor(i) = {static_cast<uint8_t*>(buffer.data) + total_bytes, buffer.data, batch_bytes,
                      total_bytes};
    ai_array* array = side.array(i);
    if (array != nullptr && !is_copied(*array)) {
      bind_array(*array, buffer.data);
    }
  }
  return AI_ERROR_CODE_NONE;
}

bool has_array(const ai_array* array) {
  return array != nullptr;
}
// Or has data to copy to and from.
bool has_memory(const ai_array* array) {
  return array != nullptr && (array->data != nullptr || !is_copied(*array));
}

// The error code where a tensor of the side has not what it needs, or 0.
uint32_t require(bool (*met)(const ai_array*), const IoSide& side) {
  for (uint32_t i = 0, n = side.count(); i < n; ++i) {
    if (!met(side.array(i))) {
      return AI_ERROR_CODE_NULL_POINTER;
    }
  }
  return AI_ERROR_CODE_NONE;
}

// Steps to the next batch; after the last one the first follows.
void advance(ai_buffer_cursor& position) {
  uint8_t* next = static_cast<uint8_t*>(position.cursor) + position.batch_bytes;
  position.cursor = next != position.end ? next : next - position.total_bytes;
}

void load_inputs(const IoSide& inputs) {
  for (uint32_t i = 0, n = inputs.count(); i < n; ++i) {
    ai_array& array = *inputs.array(i);
    ai_buffer_cursor& position = inputs.cursor(i);
    if (is_copied(array)) {
      std::memmove(array.data, position.cursor, position.batch_bytes);
    } else {
      bind_array(array, position.cursor);
    }
    advance(position);
  }
}

void store_outputs(const IoSide& outputs) {
  for (uint32_t i = 0, n = outputs.count(); i < n; ++i) {
    ai_array& array = *outputs.array(i);
    ai_buffer_cursor& position = outputs.cursor(i);
    if (is_copied(array)) {
      std::memmove(position.cursor, array.data, position.batch_bytes);
      advance(position);
    } else {
      advance(position);
      bind_array(array, position.cursor);
    }
  }
}

// Checks and binds all buffers. Returns the first error; 0 without outputs, too, and no batch then.
ai_error bind_all(const ai_network& network, const IoSide& input, const IoSide& output,
                  const ai_buffer* inputs, const ai_buffer* outputs, uint16_t& batch_count) {
  const bool initialised = (network.flags & AI_NETWORK_INITIALISED) == AI_NETWORK_INITIALISED;
  if (!initialised) {
    return AI_ERROR_MAKE(AI_ERROR_TYPE_INVALID_STATE, AI_ERROR_CODE_NOT_INITIALISED);
  }
  uint16_t batches = 0;
  uint32_t code = input.count() == 0 || inputs == nullptr ? AI_ERROR_CODE_NULL_POINTER
                                                          : bind_buffers(input, inputs, batches);
  if (code != AI_ERROR_CODE_NONE) {
    return AI_ERROR_MAKE(input.error_type, code);
  }
  if (outputs == nullptr) {
    return 0;
  }
  code = output.count() == 0 ? AI_ERROR_CODE_SIZE : bind_buffers(output, outputs, batches);
  if (code == AI_ERROR_CODE_NONE) {
    code = require(has_memory, input);
    if (code != AI_ERROR_CODE_NONE) {
      return AI_ERROR_MAKE(input.error_type, code);
    }
    code = require(has_memory, output);
  }
  if (code != AI_ERROR_CODE_NONE) {
    return AI_ERROR_MAKE(output.error_type, code);
  }
  batch_count = batches;
  return 0;
}

// Describes one tensor as a buffer of one batch; quantized tensors get their meta info.
ai_buffer describe(const ai_tensor& tensor, ai_buffer_meta_info* meta_info) {
  const bool quantized = ai_tensor_intq(&tensor) != nullptr;
  if (meta_info != nullptr) {
    meta_info->flags = quantized ? AI_BUFFER_META_HAS_INTQ : 0;
    if (quantized) {
      meta_info->intq_info = tensor.klass;
    }
  }
  return {ai_array_to_buffer_fmt(ai_tensor_format(&tensor)),
          1,
          static_cast<uint16_t>(ai_tensor_dim(&tensor, AI_SHAPE_H)),
          static_cast<uint16_t>(ai_tensor_dim(&tensor, AI_SHAPE_W)),
          ai_tensor_dim(&tensor, AI_SHAPE_C),
          ai_tensor_data(&tensor),
          quantized ? meta_info : nullptr};
}

// Describes every tensor of one side; returns their number, or 0, the error stored, without any.
uint16_t describe_side(ai_network& network, const IoSide& side) {
  const uint32_t count = side.has_buffers() ? side.count() : 0;
  if (count == 0) {
    core_set_error(&network.error, side.error_type, AI_ERROR_CODE_SIZE);
    return 0;
  }
  const ai_tensor_list_info& info = *side.list->info;
  for (uint32_t i = 0; i < count; ++i) {
    ai_buffer_meta_info* meta_info = info.meta_infos != nullptr ? &info.meta_infos[i] : nullptr;
    info.buffers[i] = describe(side.tensor(i), meta_info);
  }
  return static_cast<uint16_t>(count);
}

// Whether every tensor of the side has an array; if not, stores the error.
bool require_arrays(ai_network& network, const IoSide& side) {
  const uint32_t code = require(has_array, side);
  if (code != AI_ERROR_CODE_NONE) {
    core_set_error(&network.error, side.error_type, code);
  }
  return code == AI_ERROR_CODE_NONE;
}

uint32_t count_layers(const ai_network& network) {
  uint32_t count = 0;
  for (const ai_layer* layer = network.layers; layer != nullptr; layer = ai_layer_next(layer)) {
    ++count;
  }
  return count;
}

}  // namespace

const char* ai_platform_runtime_get_revision(void) {
  return kRuntimeRevision;
}

uint32_t ai_platform_runtime_get_version(void) {
  return pack_version(kRuntimeVersion);
}

uint32_t ai_platform_api_get_version(void) {
  return pack_version(kApiVersion);
}

uint32_t ai_platform_interface_api_get_version(void) {
  return pack_version(kInterfaceApiVersion);
}

ai_network* ai_platform_context_acquire(ai_handle handle) {
  ai_network* network = static_cast<ai_network*>(handle);
  return network != nullptr && network->magic == AI_NETWORK_MAGIC ? network : nullptr;
}

ai_handle ai_platform_context_release(ai_network* context) {
  if (context != nullptr) {
    context->magic = AI_NETWORK_MAGIC;
  }
  return context;
}

ai_error ai_platform_network_get_error(ai_handle handle) {
  ai_network* network = ai_platform_context_acquire(handle);
  return network != nullptr ? core_get_error(&network->error)
                            : AI_ERROR_MAKE(AI_ERROR_TYPE_INVALID_HANDLE, AI_ERROR_CODE_NETWORK);
}

bool ai_platform_network_set_error(ai_handle handle, uint32_t type, uint32_t code) {
  return handle != nullptr && core_set_error(&static_cast<ai_network*>(handle)->error, type, code);
}

ai_error ai_platform_network_create(ai_handle* handle, const ai_buffer* /*config*/,
                                    ai_network* network, uint8_t major, uint8_t minor,
                                    uint8_t micro) {
  if (handle == nullptr) {
    return AI_ERROR_MAKE(AI_ERROR_TYPE_INVALID_HANDLE, AI_ERROR_CODE_NETWORK);
  }
  *handle = ai_platform_context_release(network);
  const uint32_t type = network != nullptr
                            ? create_error_type(comparable_version(major, minor, micro))
                            : AI_ERROR_TYPE_INVALID_HANDLE;
  if (type == AI_ERROR_TYPE_NONE) {
    return 0;
  }
  *handle = nullptr;
  return AI_ERROR_MAKE(type, AI_ERROR_CODE_NETWORK);
}

ai_handle ai_platform_network_init(ai_handle handle, const ai_network_params* params) {
  ai_network* network = ai_platform_context_acquire(handle);
  if (network == nullptr) {
    return nullptr;
  }
  uint32_t code = AI_ERROR_CODE_NONE;
  if (params == nullptr) {
    code = AI_ERROR_CODE_NETWORK_PARAMS;
  } else if (lacks_data(params->activations)) {
    code = AI_ERROR_CODE_NETWORK_ACTIVATIONS;
  } else if (lacks_data(params->params)) {
    code = AI_ERROR_CODE_NETWORK_WEIGHTS;
  }
  if (code != AI_ERROR_CODE_NONE) {
    core_set_error(&network->error, AI_ERROR_TYPE_INVALID_HANDLE, code);
    return nullptr;
  }
  network->params = params->params;
  network->activations = params->activations;
  network->flags |= AI_NETWORK_INITIALISED;
  for (ai_layer* layer = network->layers; layer != nullptr; layer = ai_layer_next(layer)) {
    layer->network = network;
  }
  return handle;
}

uint16_t ai_platform_network_process(ai_handle handle, const ai_buffer* inputs,
                                     const ai_buffer* outputs) {
  ai_network* network = ai_platform_context_acquire(handle);
  if (network == nullptr) {
    return 0;
  }
  network->batch_count = 0;
  network->batch_index = 0;
  const IoSide input = input_side(*network);
  const IoSide output = output_side(*network);
  const ai_error error = bind_all(*network, input, output, inputs, outputs, network->batch_count);
  if (error != 0) {
    core_set_error(&network->error, ai_error_type(error), ai_error_code(error));
    return 0;
  }
  for (; network->batch_index < network->batch_count; ++network->batch_index) {
    load_inputs(input);
    ai_layers_forward_all(network);
    store_outputs(output);
  }
  return network->batch_index;
}

ai_handle ai_platform_network_destroy(ai_handle handle) {
  return ai_platform_context_acquire(handle) != nullptr ? nullptr : handle;
}

bool ai_platform_api_get_network_report(ai_handle handle, ai_network_report* report) {
  ai_network* network = ai_platform_context_acquire(handle);
  if (network == nullptr || report == nullptr) {
    return false;
  }
  report->n_nodes = count_layers(*network);
  if (report->n_nodes == 0) {
    core_set_error(&network->error, AI_ERROR_TYPE_INVALID_STATE, AI_ERROR_CODE_SIZE);
    return false;
  }
  const IoSide input = input_side(*network);
  const IoSide output = output_side(*network);
  const uint16_t n_inputs = describe_side(*network, input);
  const uint16_t n_outputs = n_inputs != 0 ? describe_side(*network, output) : 0;
  if (n_inputs == 0 || (n_outputs != 0 && !require_arrays(*network, input))) {
    report->n_inputs = 0;
    return false;
  }
  if (n_outputs == 0 || !require_arrays(*network, output)) {
    report->n_outputs = 0;
    return false;
  }
  report->n_inputs = n_inputs;
  report->n_outputs = n_outputs;
  report->inputs = input.list->info->buffers;
  report->outputs = output.list->info->buffers;
  report->signature = network->signature;
  report->activations = network->activations;
  report->params = network->params;
  report->runtime_revision = ai_platform_runtime_get_revision();
  report->runtime_version = kRuntimeVersion;
  report->api_version = kApiVersion;
  report->interface_api_version = kInterfaceApiVersion;
  return true;
}
