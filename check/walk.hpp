// SPDX-License-Identifier: MIT
// The layers in the order in which a run visits them, without running them.
#ifndef NNLIB_CHECK_WALK_HPP
#define NNLIB_CHECK_WALK_HPP

#include "layers/layers_routing.h"

namespace nnlib {

// Whether the layer has that function, and the type that goes with it.
inline bool is_layer(const ai_layer& layer, ai_layer_forward forward, uint16_t type) {
  return forward != nullptr && layer.forward == forward && layer.type == type;
}

class Walk {
 public:
  explicit Walk(const ai_layer* first) : layer_(first) {}

  // Null at the end.
  const ai_layer* layer() const { return layer_; }
  // To the next layer; through all branches of a split, which itself is visited once.
  void step();

  bool operator==(const Walk& other) const;

 private:
  static constexpr uint32_t kDepth = 8;  // splits inside one another; of deeper ones one branch

  const ai_layer* behind_add(const ai_layer_add& add);

  struct Branch {
    const ai_layer_split* split;
    uint32_t index;
  };
  const ai_layer* layer_;
  uint32_t depth_ = 0;
  Branch branches_[kDepth] = {};
};

// Layers that a walk visits before it ends or comes back to one of them.
struct WalkLength {
  uint32_t layers;
  bool ends;
  uint32_t back_to;  // the place of the layer that follows the last one, of a walk without end
};
WalkLength length_of(Walk walk);

}  // namespace nnlib

#endif
