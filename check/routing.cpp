// SPDX-License-Identifier: MIT
// Layers that lead through several branches.
#include "check/details.hpp"
#include "check/public_functions.hpp"
#include "check/walk.hpp"

namespace nnlib {

void check_split(LayerCheck& check) {
  const auto& split = check.record<ai_layer_split>();
  if (split.count == 0 || split.branches == nullptr) {
    Finding(check.report()) << "the split has "
                            << (split.branches != nullptr ? uint32_t{split.count} : 0u)
                            << " branches, at least 1 is needed";
    return;
  }
  for (uint32_t i = 0; i < split.count; ++i) {
    if (split.branches[i] == nullptr) {
      Finding(check.report()) << "branch " << i << " of " << uint32_t{split.count} << " is null";
    }
  }
  if (split.index >= split.count) {
    Finding(check.report()) << "the split begins with branch " << uint32_t{split.index} << " of "
                            << uint32_t{split.count};
  }
  if (split.callback != nullptr && split.branch_contexts == nullptr) {
    Finding(check.report()) << "the callback needs " << uint32_t{split.count}
                            << " branch contexts, there are none";
  }
}

void check_add(LayerCheck& check) {
  const auto& add = check.record<ai_layer_add>();
  if (add.count == 0) {
    Finding(check.report()) << "the add has 0 branches, at least 1 is needed";
  }
  if (add.callback != nullptr && add.branches == nullptr) {
    Finding(check.report()) << "the callback needs " << uint32_t{add.count}
                            << " entries for branches, there are none";
  }
  const ai_layer* back = add.loop_back;
  if (back == nullptr || !is_layer(*back, forward_split, AI_LAYER_TYPE_SPLIT)) {
    Finding(check.report()) << "loop_back points to no split layer";
    return;
  }
  const auto& split = *reinterpret_cast<const ai_layer_split*>(back);
  if (split.count != add.count) {
    Finding(check.report()) << "the add has " << uint32_t{add.count} << " branches, its split has "
                            << uint32_t{split.count};
  }
}

}  // namespace nnlib
