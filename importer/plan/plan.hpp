// SPDX-License-Identifier: MIT
// Lifetimes to addresses in one arena.
#ifndef NNLIB_IMPORTER_PLAN_PLAN_HPP
#define NNLIB_IMPORTER_PLAN_PLAN_HPP

#include <cstdint>
#include <span>
#include <vector>

namespace nnlib::importer {

// Something that needs memory from step `first` to step `last`, both included.
struct PlanItem {
  uint32_t bytes;
  int first;
  int last;
  bool scratch = false;
};

// Item `output`, first written at `step`, may lie where item `input` does.
struct PlanOverlay {
  size_t output;
  size_t input;
  int step;
};

struct Plan {
  std::vector<uint32_t> offsets;  // of each item
  std::vector<bool> in_place;     // of each overlay: whether it was used
  uint32_t bytes = 0;             // of the arena
  uint32_t bound = 0;             // most that the items but scratch ever take together
  uint32_t bound_with_scratch = 0;
};

// Offsets are multiples of `alignment`. The same items always give the same plan.
Plan make_plan(std::span<const PlanItem> items, std::span<const PlanOverlay> overlays,
               uint32_t alignment);

}  // namespace nnlib::importer

#endif
