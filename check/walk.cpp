// SPDX-License-Identifier: MIT
#include "check/walk.hpp"

#include "check/public_functions.hpp"

namespace nnlib {
namespace {

template <class Record>
const Record& record_of(const ai_layer& layer) {
  return reinterpret_cast<const Record&>(layer);
}

}  // namespace

const ai_layer* Walk::behind_add(const ai_layer_add& add) {
  if (depth_ != 0 && add.loop_back == &branches_[depth_ - 1].split->base) {
    Branch& branch = branches_[depth_ - 1];
    if (branch.index + 1 < branch.split->count && branch.index + 1 < add.count) {
      return branch.split->branches[++branch.index];
    }
    --depth_;
  }
  return add.continuation != &add.base ? add.continuation : nullptr;
}

void Walk::step() {
  const ai_layer& layer = *layer_;
  if (is_layer(layer, forward_add, AI_LAYER_TYPE_ADD)) {
    layer_ = behind_add(record_of<ai_layer_add>(layer));
    return;
  }
  if (is_layer(layer, forward_split, AI_LAYER_TYPE_SPLIT)) {
    const auto& split = record_of<ai_layer_split>(layer);
    if (split.count != 0 && split.branches != nullptr && depth_ < kDepth) {
      branches_[depth_++] = {&split, 0};
      layer_ = split.branches[0];
      return;
    }
  }
  layer_ = ai_layer_next(&layer);
}

bool Walk::operator==(const Walk& other) const {
  bool same = layer_ == other.layer_ && depth_ == other.depth_;
  for (uint32_t i = 0; same && i < depth_; ++i) {
    same = branches_[i].split == other.branches_[i].split &&
           branches_[i].index == other.branches_[i].index;
  }
  return same;
}

// Brent's way to find a cycle: a marker that moves on after twice as many steps each time.
WalkLength length_of(Walk walk) {
  const Walk first = walk;
  Walk marker = walk;
  uint32_t steps = 0;
  uint32_t since_marker = 0;
  uint32_t limit = 1;
  while (walk.layer() != nullptr) {
    walk.step();
    ++steps;
    ++since_marker;
    if (walk.layer() != nullptr && walk == marker) {
      break;
    }
    if (since_marker == limit) {
      marker = walk;
      since_marker = 0;
      limit *= 2;
    }
  }
  if (walk.layer() == nullptr) {
    return {steps, true, 0};
  }
  const uint32_t cycle = since_marker;
  Walk ahead = first;
  for (uint32_t i = 0; i < cycle; ++i) {
    ahead.step();
  }
  uint32_t before = 0;
  for (Walk behind = first; !(behind == ahead); ++before) {
    behind.step();
    ahead.step();
  }
  return {before + cycle, false, before};
}

}  // namespace nnlib
