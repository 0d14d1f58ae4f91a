/* SPDX-License-Identifier: MIT */
/* A ring buffer of elements of one size. */
#ifndef NNLIB_CORE_CORE_RING_BUFFER_H
#define NNLIB_CORE_CORE_RING_BUFFER_H

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Indices run modulo 2 * capacity, which tells full from empty; index i lives in slot i, or
 * i - capacity in the upper half. */
typedef struct ai_ring_buffer {
  void* data;
  uint16_t stride;   /* bytes of an element */
  uint16_t capacity; /* elements, at most AI_RING_BUFFER_MAX_CAPACITY */
  uint16_t read;
  uint16_t write;
} ai_ring_buffer;

/* The largest capacity whose indices fit their 16 bits. */
#define AI_RING_BUFFER_MAX_CAPACITY 32768u

/* Empties rb and gives it storage of capacity * stride bytes, from the memory manager when storage
 * is null. Returns the bytes; 0 for a null rb, zero or too large capacity, zero stride, or when
 * the heap is exhausted. */
uint32_t core_ring_buffer_init(ai_ring_buffer* rb, uint16_t capacity, uint16_t stride,
                               void* storage);

/* Releases storage of the memory manager, clears rb and returns 1; caller storage is kept, rb
 * unchanged, and 0 returned. Whose it is tells the word before the storage, which is read: before
 * pointer-aligned caller storage it must be mapped (core_mem_manager.h). */
uint32_t core_ring_buffer_destroy(ai_ring_buffer* rb);

/* Drops all elements. */
void core_ring_buffer_clear(ai_ring_buffer* rb);

/* Counts; 0 for a null rb. */
uint32_t core_ring_buffer_stride(const ai_ring_buffer* rb);
uint32_t core_ring_buffer_capacity(const ai_ring_buffer* rb);
uint32_t core_ring_buffer_size(const ai_ring_buffer* rb);
uint32_t core_ring_buffer_free_size(const ai_ring_buffer* rb);
bool core_ring_buffer_empty(const ai_ring_buffer* rb); /* true for a null rb */
bool core_ring_buffer_full(const ai_ring_buffer* rb);  /* false for a null rb */

/* Appends a copy of *elem (for a null elem, the slot as it is). Returns 1, or 0 when full. */
uint32_t core_ring_buffer_push(ai_ring_buffer* rb, const void* elem);

/* Appends, dropping the oldest element when full. Returns 1; 0 without storage to write to. */
uint32_t core_ring_buffer_push_force(ai_ring_buffer* rb, const void* elem);

/* Takes the oldest element off and copies it to out unless null. Returns 1, or 0 when empty. */
uint32_t core_ring_buffer_pop(ai_ring_buffer* rb, void* out);

/* Address of the i-th oldest element; null when there is none. */
void* core_ring_buffer_get(const ai_ring_buffer* rb, uint32_t i);

/* The storage and its end; null for a null rb. */
void* core_ring_buffer_get_base_address(const ai_ring_buffer* rb);
void* core_ring_buffer_get_end_address(const ai_ring_buffer* rb);

/* Makes the elements contiguous in memory, in order. tmp: room for one element.
 * Returns null when there is nothing to do it with (tmp null, buffer empty). Otherwise, when the
 * elements were contiguous already, the address of the oldest; when they were moved,
 * data + read * stride, which lies past the storage when read is in the upper half of the index
 * range: reach the elements through core_ring_buffer_get. */
void* core_ring_buffer_linearize(ai_ring_buffer* rb, void* tmp);

/* Makes dst a copy of src, in dst's own storage when it has any (it must be large enough), else in
 * memory of the manager; dst's stride and capacity become src's. Returns 1, or 0 with dst
 * unchanged. */
uint32_t core_ring_buffer_clone(ai_ring_buffer* dst, const ai_ring_buffer* src);

#ifdef __cplusplus
}
#endif

#endif
