// SPDX-License-Identifier: MIT
// Where the elements of tensors lie, and which of them are the same memory.
#ifndef NNLIB_CHECK_MEMORY_HPP
#define NNLIB_CHECK_MEMORY_HPP

#include "core/ai_network.h"

namespace nnlib {

// One step of a time-distributed layer's input or output, as its inner layers see it.
struct Step {
  const ai_array* array = nullptr;
  const ai_tensor* sequence = nullptr;
  bool bound = false;  // only a run gives the array's data
};

// Where layers run: in a network, or inside a time-distributed layer of one.
struct Scope {
  const ai_network& network;
  Step steps[2] = {};

  // True for arrays that a run points at memory: of the network's inputs and outputs those that
  // are not copied.
  bool binds(const ai_array& array) const;
};

// The memory of a tensor: an address range, or an array whose address only a run gives.
struct Memory {
  const ai_array* array;
  uintptr_t first;  // 0 when only a run gives it
  uintptr_t bytes;

  bool known() const { return first != 0 && bytes != 0; }
  uintptr_t end() const { return first + bytes; }
  bool overlaps(const Memory& other) const {
    return array == other.array
               ? array != nullptr
               : known() && other.known() && first < other.end() && other.first < end();
  }
  // Whether all of the other lies in this one.
  bool covers(const Memory& other) const {
    return array == other.array
               ? bytes >= other.bytes
               : known() && other.known() && first <= other.first && other.end() <= end();
  }
};

// Of a sound tensor: as many bytes as its shape has elements; of scratch: the whole array.
Memory memory_of(const Scope& scope, const ai_tensor& tensor);
Memory whole_memory_of(const Scope& scope, const ai_tensor& tensor);

// The same, of a step all of its sequence: some step or other is at any place of it.
Memory memory_in_turn(const Scope& scope, const ai_tensor& tensor);

}  // namespace nnlib

#endif
