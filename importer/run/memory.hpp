// SPDX-License-Identifier: MIT
// A network's buffers in the arena.
#ifndef NNLIB_IMPORTER_RUN_MEMORY_HPP
#define NNLIB_IMPORTER_RUN_MEMORY_HPP

#include <map>

#include "importer/lower/network.hpp"
#include "importer/plan/plan.hpp"

namespace nnlib::importer {

struct MemoryMap {
  Plan plan;
  uint32_t alignment;  // of the arena
  std::map<const Buffer*, uint32_t> offsets;

  uint32_t offset(const Tensor& tensor) const { return offsets.at(tensor.storage.buffer); }
};

MemoryMap plan_memory(const Network& network, uint32_t alignment = 4);

}  // namespace nnlib::importer

#endif
