// SPDX-License-Identifier: MIT
// Lifetimes to addresses in one arena.
#ifndef NNLIB_IMPORTER_PLAN_PLAN_HPP
#define NNLIB_IMPORTER_PLAN_PLAN_HPP

#include <cstdint>
#include <span>
#include <vector>

namespace nnlib::importer {

constexpr int kNoItem = -1;

// Something that needs memory from step `first` to step `last`, both included.
struct PlanItem {
  uint32_t bytes;
  int first;
  int last;
  bool scratch = false;
  // The item that this one is a part of, `offset` bytes after its start; it lives whenever a part
  // does. `first` of a part is the step that writes it.
  int whole = kNoItem;
  uint32_t offset = 0;
};

// Item `output`, first written at `step`, may lie where item `input` does. A part's place is given
// to no other item; a part may be the output.
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
