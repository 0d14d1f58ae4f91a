// SPDX-License-Identifier: MIT
#include "importer/run/memory.hpp"

#include <algorithm>

namespace nnlib::importer {

MemoryMap plan_memory(const Network& network, uint32_t alignment) {
  std::vector<PlanItem> items;
  std::map<const Buffer*, size_t> index;
  for (const Buffer& buffer : network.buffers) {
    index[&buffer] = items.size();
    const int first = std::max(buffer.first, -1);
    items.push_back({buffer.bytes, first, std::max(buffer.last, first), buffer.is_scratch});
  }
  for (const auto& [buffer, i] : index) {
    if (buffer->whole != nullptr) {
      items[i].whole = static_cast<int>(index.at(buffer->whole));
      items[i].offset = buffer->offset;
    }
  }
  std::vector<PlanOverlay> overlays;
  for (const Overlay& overlay : network.overlays) {
    overlays.push_back({index.at(overlay.output), index.at(overlay.input), overlay.layer});
  }
  constexpr uint32_t kLeastAlignment = 8;
  MemoryMap map;
  map.alignment = std::max(alignment, kLeastAlignment);
  map.plan = make_plan(items, overlays, alignment);
  for (const auto& [buffer, i] : index) {
    map.offsets[buffer] = map.plan.offsets[i];
  }
  return map;
}

}  // namespace nnlib::importer
