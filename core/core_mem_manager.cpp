// SPDX-License-Identifier: MIT
#include "core/core_mem_manager.h"

#include <cstdint>
#include <cstdlib>

namespace {

// Foreign memory is probed through this type whatever object lies there.
typedef uintptr_t __attribute__((__may_alias__)) HeaderWord;

constexpr size_t kHeaderBytes = sizeof(HeaderWord);

HeaderWord* header_of(void* p) {
  return reinterpret_cast<HeaderWord*>(reinterpret_cast<uintptr_t>(p) - kHeaderBytes);
}

// Writes the header and returns the user's address; null stays null.
void* guard(void* block) {
  if (block == nullptr) {
    return nullptr;
  }
  HeaderWord* header = static_cast<HeaderWord*>(block);
  *header = reinterpret_cast<uintptr_t>(header);
  return header + 1;
}

// The block that the system heap knows, its header no longer valid: p is then refused, until
// guard() takes the block again. A plain store before a release would be left out as a dead one.
void* unguard(void* p) {
  volatile HeaderWord* header = header_of(p);
  *header = 0;
  return header_of(p);
}

// The word before a foreign pointer may belong to no object, which the sanitizer would report.
__attribute__((no_sanitize("address"))) bool is_guarded(void* p) {
  if (p == nullptr || reinterpret_cast<uintptr_t>(p) % kHeaderBytes != 0) {
    return false;
  }
  const volatile HeaderWord* header = header_of(p);
  return *header == reinterpret_cast<uintptr_t>(header);
}

bool fits_with_header(size_t size) {
  return size <= SIZE_MAX - kHeaderBytes;
}

}  // namespace

void* core_mem_alloc(size_t size) {
  if (size == 0 || !fits_with_header(size)) {
    return nullptr;
  }
  return guard(std::malloc(size + kHeaderBytes));
}

void* core_mem_free(void* p) {
  if (!is_guarded(p)) {
    return p;
  }
  std::free(unguard(p));
  return nullptr;
}

void* core_mem_realloc(void* p, size_t size) {
  if (p == nullptr) {
    return core_mem_alloc(size);
  }
  if (size == 0) {
    return core_mem_free(p);
  }
  if (!is_guarded(p) || !fits_with_header(size)) {
    return nullptr;
  }
  void* const block = unguard(p);
  void* const resized = std::realloc(block, size + kHeaderBytes);
  if (resized == nullptr) {
    guard(block);
  }
  return guard(resized);
}
