/* SPDX-License-Identifier: MIT */
/* A guarded heap: it releases only the blocks that it handed out. */
#ifndef NNLIB_CORE_CORE_MEM_MANAGER_H
#define NNLIB_CORE_CORE_MEM_MANAGER_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Each block is preceded by one pointer-size header word that holds its own address; blocks are
 * aligned to a pointer. A pointer without a valid header before it is refused and never reaches
 * the system heap; so is a block that was released, as long as its memory is in no other use.
 * Telling so means reading the word before a pointer-aligned p: it must be mapped, as it is before
 * anything but the first word of memory. */

/* A block of size bytes; null for size 0 or when the heap is exhausted. */
void* core_mem_alloc(size_t size);

/* Releases p and returns null; returns p when it was refused. Null is no block and gives null. */
void* core_mem_free(void* p);

/* Resizes p, keeping its contents, and returns the block's new address; null when refused or when
 * the heap is exhausted, p then being left as it is. A null p allocates; size 0 frees as
 * core_mem_free. */
void* core_mem_realloc(void* p, size_t size);

#ifdef __cplusplus
}
#endif

#endif
