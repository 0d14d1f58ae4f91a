// SPDX-License-Identifier: MIT
#include "core/core_ring_buffer.h"

#include <cstring>

#include "core/core_mem_manager.h"

namespace {

uint32_t storage_bytes(const ai_ring_buffer& rb) {
  return static_cast<uint32_t>(rb.capacity) * rb.stride;
}

uint32_t slot_of(const ai_ring_buffer& rb, uint32_t index) {
  return index < rb.capacity ? index : index - rb.capacity;
}

uint8_t* slot_address(const ai_ring_buffer& rb, uint32_t slot) {
  return static_cast<uint8_t*>(rb.data) + slot * rb.stride;
}

uint16_t advanced(const ai_ring_buffer& rb, uint32_t index, uint32_t steps) {
  return static_cast<uint16_t>((index + steps) % (2u * rb.capacity));
}

void append(ai_ring_buffer& rb, const void* elem) {
  if (elem != nullptr) {
    std::memcpy(slot_address(rb, slot_of(rb, rb.write)), elem, rb.stride);
  }
  rb.write = advanced(rb, rb.write, 1);
}

void rotate_left_by_one(const ai_ring_buffer& rb, void* tmp) {
  std::memcpy(tmp, slot_address(rb, 0), rb.stride);
  std::memmove(slot_address(rb, 0), slot_address(rb, 1), storage_bytes(rb) - rb.stride);
  std::memcpy(slot_address(rb, rb.capacity - 1u), tmp, rb.stride);
}

}  // namespace

uint32_t core_ring_buffer_init(ai_ring_buffer* rb, uint16_t capacity, uint16_t stride,
                               void* storage) {
  if (rb == nullptr || capacity == 0 || capacity > AI_RING_BUFFER_MAX_CAPACITY || stride == 0) {
    return 0;
  }
  *rb = {storage, stride, capacity, 0, 0};
  if (storage == nullptr) {
    rb->data = core_mem_alloc(storage_bytes(*rb));
  }
  if (rb->data == nullptr) {
    *rb = {};  // of no capacity: nothing will be written through it
    return 0;
  }
  return storage_bytes(*rb);
}

uint32_t core_ring_buffer_destroy(ai_ring_buffer* rb) {
  if (rb == nullptr || core_mem_free(rb->data) != nullptr) {
    return 0;
  }
  *rb = {};
  return 1;
}

void core_ring_buffer_clear(ai_ring_buffer* rb) {
  if (rb != nullptr) {
    rb->read = 0;
    rb->write = 0;
  }
}

uint32_t core_ring_buffer_stride(const ai_ring_buffer* rb) {
  return rb != nullptr ? rb->stride : 0;
}

uint32_t core_ring_buffer_capacity(const ai_ring_buffer* rb) {
  return rb != nullptr ? rb->capacity : 0;
}

uint32_t core_ring_buffer_size(const ai_ring_buffer* rb) {
  if (rb == nullptr) {
    return 0;
  }
  const uint32_t wrap = rb->write >= rb->read ? 0 : 2u * rb->capacity;
  return wrap + rb->write - rb->read;
}

uint32_t core_ring_buffer_free_size(const ai_ring_buffer* rb) {
  return core_ring_buffer_capacity(rb) - core_ring_buffer_size(rb);
}

bool core_ring_buffer_empty(const ai_ring_buffer* rb) {
  return rb == nullptr || rb->read == rb->write;
}

bool core_ring_buffer_full(const ai_ring_buffer* rb) {
  return rb != nullptr && core_ring_buffer_size(rb) >= rb->capacity;
}

uint32_t core_ring_buffer_push(ai_ring_buffer* rb, const void* elem) {
  if (rb == nullptr || core_ring_buffer_full(rb)) {
    return 0;
  }
  append(*rb, elem);
  return 1;
}

uint32_t core_ring_buffer_push_force(ai_ring_buffer* rb, const void* elem) {
  if (rb == nullptr || rb->capacity == 0) {
    return 0;
  }
  if (core_ring_buffer_full(rb)) {
    rb->read = advanced(*rb, rb->read, 1);
  }
  append(*rb, elem);
  return 1;
}

uint32_t core_ring_buffer_pop(ai_ring_buffer* rb, void* out) {
  if (core_ring_buffer_empty(rb)) {
    return 0;
  }
  if (out != nullptr) {
    std::memcpy(out, slot_address(*rb, slot_of(*rb, rb->read)), rb->stride);
  }
  rb->read = advanced(*rb, rb->read, 1);
  return 1;
}

void* core_ring_buffer_get(const ai_ring_buffer* rb, uint32_t i) {
  if (i >= core_ring_buffer_size(rb)) {
    return nullptr;
  }
  return slot_address(*rb, slot_of(*rb, advanced(*rb, rb->read, i)));
}

void* core_ring_buffer_get_base_address(const ai_ring_buffer* rb) {
  return rb != nullptr ? rb->data : nullptr;
}

void* core_ring_buffer_get_end_address(const ai_ring_buffer* rb) {
  return rb != nullptr ? slot_address(*rb, rb->capacity) : nullptr;
}

void* core_ring_buffer_linearize(ai_ring_buffer* rb, void* tmp) {
  if (tmp == nullptr || core_ring_buffer_stride(rb) == 0 || core_ring_buffer_empty(rb)) {
    return nullptr;
  }
  const uint32_t write_slot = slot_of(*rb, rb->write);
  const uint32_t read_slot = slot_of(*rb, rb->read);
  if (write_slot == 0 || write_slot > read_slot) {
    return slot_address(*rb, read_slot);
  }
  for (uint32_t i = 0; i < write_slot; ++i) {
    rotate_left_by_one(*rb, tmp);
  }
  rb->write = rb->write < rb->capacity ? 0 : rb->capacity;
  rb->read = static_cast<uint16_t>(rb->read - write_slot);
  // In integers, since the result may lie past the storage.
  return reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(rb->data) +
                                 static_cast<uintptr_t>(rb->read) * rb->stride);
}

uint32_t core_ring_buffer_clone(ai_ring_buffer* dst, const ai_ring_buffer* src) {
  if (dst == nullptr || src == nullptr || src->data == nullptr || storage_bytes(*src) == 0) {
    return 0;
  }
  void* storage = dst->data;
  if (storage == nullptr) {
    storage = core_mem_alloc(storage_bytes(*src));
  } else if (storage_bytes(*dst) < storage_bytes(*src)) {
    return 0;
  }
  if (storage == nullptr) {
    return 0;
  }
  std::memmove(storage, src->data, storage_bytes(*src));
  *dst = {storage, src->stride, src->capacity, src->read, src->write};
  return 1;
}
