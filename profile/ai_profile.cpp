// SPDX-License-Identifier: MIT
#include "profile/ai_profile.h"

#include <algorithm>

#include "layers/layers.h"

uint32_t ai_profile_run(ai_network* network, ai_profile_clock now, uint32_t runs,
                        ai_profile_entry* entries, uint32_t capacity) {
  uint32_t count = 0;
  for (uint32_t run = 0; run == 0 || run < runs; ++run) {
    count = 0;
    for (ai_layer* layer = network->layers; layer != nullptr;) {
      network->current_layer = layer;
      ai_layer* const timed = layer;
      const uint32_t start = now();
      layer = ai_layers_forward_layer(layer);
      const uint32_t ticks = now() - start;
      if (count < capacity) {
        const uint32_t best = run == 0 ? ticks : std::min(ticks, entries[count].ticks);
        entries[count++] = {timed, best};
      }
    }
    network->current_layer = nullptr;
  }
  return count;
}
