// SPDX-License-Identifier: MIT
#include "core/core_utils.h"

#include <cstring>

#include "core/core_mem_manager.h"

namespace {

// Shape and stride records alike.
template <class Dims>
void copy_dims(Dims& dst, uint32_t src_type_size, const uint32_t* src) {
  const uint32_t count = ai_dims_count(src_type_size);
  dst.type_size = AI_DIMS_WORD(ai_dims_type(dst.type_size), count);
  if (count != 0) {
    std::memmove(dst.data, src, count * sizeof(*src));
  }
}

// Appends little-endian words to a buffer, the same bytes on every host.
class LittleEndianWriter {
 public:
  explicit LittleEndianWriter(uint8_t* out) : out_(out) {}

  void u32(uint32_t value) { put(value, 4); }
  void u64(uint64_t value) { put(value, 8); }
  void u16(uint16_t value) { put(value, 2); }

 private:
  void put(uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
      *out_++ = static_cast<uint8_t>(value >> (8 * i));
    }
  }

  uint8_t* out_;
};

const ai_tensor* first_output(const ai_layer& layer) {
  return ai_tensor_chain_output(layer.tensor_chain, 0);
}

uint32_t dimensions(const ai_tensor& tensor) {
  return ai_dims_count(tensor.shape.type_size);
}

uint32_t signature_bytes(const ai_network& network) {
  uint32_t bytes = 4;
  for (const ai_layer* layer = network.layers; layer != nullptr; layer = ai_layer_next(layer)) {
    const ai_tensor* output = first_output(*layer);
    bytes += output != nullptr ? 40 + 4 * dimensions(*output) : 4;
  }
  return bytes + 4;
}

template <class Dims>
void write_record(LittleEndianWriter& writer, const Dims& dims) {
  writer.u64(dims.type_size);
  writer.u64(reinterpret_cast<uintptr_t>(dims.data));
}

void write_layer(LittleEndianWriter& writer, const ai_layer& layer) {
  writer.u16(layer.type);
  writer.u16(layer.id);
  const ai_tensor* output = first_output(layer);
  if (output == nullptr) {
    return;
  }
  writer.u32(ai_tensor_format(output));
  write_record(writer, output->shape);
  for (uint32_t i = 0; i < dimensions(*output); ++i) {
    writer.u32(output->shape.data[i]);
  }
  write_record(writer, output->stride);
}

}  // namespace

void core_array_clone(ai_array* dst, const ai_array* src) {
  *dst = *src;
}

void core_tensor_clone(ai_tensor* dst, const ai_tensor* src) {
  dst->klass = src->klass;
  dst->flags = src->flags;
  dst->data = src->data;
  copy_dims(dst->shape, src->shape.type_size, src->shape.data);
  copy_dims(dst->stride, src->stride.type_size, src->stride.data);
}

void core_shape_to_stride(ai_stride* stride, const ai_shape* shape) {
  copy_dims(*stride, shape->type_size, shape->data);
}

uint32_t core_utils_compute_crc32(const void* data, uint32_t length) {
  const uint8_t* bytes = static_cast<const uint8_t*>(data);
  uint32_t sum1 = 0;
  uint32_t sum2 = 0;
  for (uint32_t i = 0; i < length / 2; ++i) {
    sum1 += static_cast<uint32_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
    sum2 += sum1;
  }
  return sum2 << 16 | (sum1 & 0xFFFFu);
}

bool core_utils_generate_network_signature(const ai_network* network, uint32_t* signature) {
  if (signature == nullptr) {
    return false;
  }
  *signature = 0;
  if (network == nullptr) {
    return false;
  }
  const uint32_t bytes = signature_bytes(*network);
  uint8_t* buffer = static_cast<uint8_t*>(core_mem_alloc(bytes));
  if (buffer == nullptr) {
    return false;
  }
  LittleEndianWriter writer(buffer);
  writer.u32(network->magic);
  uint32_t layers = 0;
  for (const ai_layer* layer = network->layers; layer != nullptr; layer = ai_layer_next(layer)) {
    write_layer(writer, *layer);
    ++layers;
  }
  writer.u32(layers);
  *signature = core_utils_compute_crc32(buffer, bytes);
  core_mem_free(buffer);
  return true;
}
