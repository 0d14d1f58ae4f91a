// SPDX-License-Identifier: MIT
// Tensors of one layer that share memory.
#include <initializer_list>

#include "check/layer_check.hpp"
#include "check/memory.hpp"

namespace nnlib {
namespace {

Memory memory_of(const LayerCheck& check, TensorName name) {
  const ai_tensor& tensor = *check.tensor(name.list, name.index);
  return name.list == AI_CHAIN_SCRATCH ? whole_memory_of(check.scope(), tensor)
                                       : memory_in_turn(check.scope(), tensor);
}

// Whether the function may write `written` while it reads `other`.
bool allowed(const LayerCheck& check, TensorName written, TensorName other, const Memory& to,
             const Memory& from) {
  if (written.list != AI_CHAIN_OUTPUT) {
    return false;
  }
  const bool input = other.list == AI_CHAIN_INPUT;
  const uint32_t place = other.index + (input ? 0 : check.list_size(AI_CHAIN_INPUT));
  switch (check.rule()->in_place) {
    case InPlace::kSame:
      return input && to.first == from.first;
    case InPlace::kAbove:
      return input && to.first >= from.first;
    case InPlace::kThird:
      return place == 2 && to.first == from.first;
    default:
      return false;
  }
}

void check_pair(LayerCheck& check, TensorName written, TensorName other) {
  const Memory to = memory_of(check, written);
  const Memory from = memory_of(check, other);
  if (!to.overlaps(from) || allowed(check, written, other, to, from)) {
    return;
  }
  const bool behind = to.first >= from.first;
  Finding(check.report()) << written << " begins "
                          << uint64_t{behind ? to.first - from.first : from.first - to.first}
                          << " bytes " << (behind ? "behind" : "before") << " the start of "
                          << other
                          << " and shares memory with it, which the function does not allow";
}

}  // namespace

// Every tensor that is written against all others: outputs against inputs, weights and later
// outputs, scratch against everything before it and later scratch.
void check_overlaps(LayerCheck& check) {
  for (const uint32_t written : {AI_CHAIN_OUTPUT, AI_CHAIN_SCRATCH}) {
    const uint32_t count = check.list_size(written);
    for (uint32_t i = 0; i < count; ++i) {
      for (uint32_t other = 0; other < AI_CHAIN_LISTS; ++other) {
        if (written == AI_CHAIN_OUTPUT && other == AI_CHAIN_SCRATCH) {
          continue;  // said once, of the scratch
        }
        const uint32_t others = check.list_size(other);
        for (uint32_t k = written == other ? i + 1 : 0; k < others; ++k) {
          if (check.sound(written, i) != nullptr && check.sound(other, k) != nullptr) {
            check_pair(check, {written, i}, {other, k});
          }
        }
      }
    }
  }
}

}  // namespace nnlib
