// SPDX-License-Identifier: MIT
// The C++ run-time support that code without exceptions needs. Where a library has the same, it
// brings its terminate handler and the unwinder with it.
#include <cstddef>
#include <cstdlib>

void* operator new(size_t size) {
  void* block = std::malloc(size != 0 ? size : 1);
  if (block == nullptr) {
    std::abort();
  }
  return block;
}
void* operator new[](size_t size) {
  return operator new(size);
}
void operator delete(void* block) noexcept {
  std::free(block);
}
void operator delete[](void* block) noexcept {
  std::free(block);
}
void operator delete(void* block, size_t) noexcept {
  std::free(block);
}
void operator delete[](void* block, size_t) noexcept {
  std::free(block);
}
