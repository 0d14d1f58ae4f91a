// SPDX-License-Identifier: MIT
#include "importer/plan/plan.hpp"

#include <algorithm>
#include <functional>
#include <numeric>

namespace nnlib::importer {
namespace {

// Items that share their place: one behind the other in time.
struct Block {
  uint32_t bytes;
  int first;
  int last;
  bool scratch;
};

bool meet(const Block& a, const Block& b) {
  return a.first <= b.last && b.first <= a.last;
}

class Groups {
 public:
  explicit Groups(std::span<const PlanItem> items)
      : items_(items), parent_(items.size()), shift_(items.size()), taken_(items.size()) {
    std::iota(parent_.begin(), parent_.end(), size_t{0});
    for (size_t i = 0; i < items.size(); ++i) {
      const PlanItem& item = items[i];
      blocks_.push_back({item.bytes, item.first, item.last, item.scratch});
      if (is_part(i)) {
        parent_[i] = static_cast<size_t>(item.whole);
        shift_[i] = item.offset;
      }
    }
  }

  size_t root(size_t i) const {
    while (parent_[i] != i) {
      i = parent_[i];
    }
    return i;
  }
  const Block& block(size_t root) const { return blocks_[root]; }
  // Of an item from the start of its block.
  uint32_t shift(size_t i) const { return parent_[i] == i ? 0 : shift_[i] + shift(parent_[i]); }

  // The output begins at the step at which the input is read for the last time.
  bool join(const PlanOverlay& overlay) {
    const size_t in = root(overlay.input);
    const size_t out = root(overlay.output);
    Block& before = blocks_[in];
    const Block& after = blocks_[out];
    if (in == out || before.last != overlay.step || has_parts_in_use(in, overlay)) {
      return false;
    }
    if (is_part(overlay.output)) {
      return join_into_part(in, overlay);
    }
    if (after.first != overlay.step) {
      return false;
    }
    parent_[out] = in;
    before = {std::max(before.bytes, after.bytes), before.first, after.last, false};
    return true;
  }

 private:
  bool is_part(size_t i) const { return items_[i].whole != kNoItem; }

  // Another operand of the step may be a part of the input, or the input lie inside of another.
  bool has_parts_in_use(size_t in, const PlanOverlay& overlay) const {
    if (is_part(overlay.input)) {
      return true;
    }
    for (size_t i = 0; i < items_.size(); ++i) {
      if (is_part(i) && root(i) == in && (items_[i].last >= overlay.step || overlay.input != in)) {
        return true;
      }
    }
    return false;
  }

  // The part is written only now, so that its place serves the input before; the whole must not
  // have to live longer for it.
  bool join_into_part(size_t in, const PlanOverlay& overlay) {
    const PlanItem& part = items_[overlay.output];
    const Block& block = blocks_[in];
    if (taken_[overlay.output] || part.first != overlay.step || block.bytes > part.bytes ||
        block.first < blocks_[root(overlay.output)].first) {
      return false;
    }
    taken_[overlay.output] = true;
    parent_[in] = overlay.output;
    return true;
  }

  std::span<const PlanItem> items_;
  std::vector<size_t> parent_;
  std::vector<uint32_t> shift_;
  std::vector<bool> taken_;  // parts that have another item in their place
  std::vector<Block> blocks_;
};

// The most bytes that live at one step. A block counts with all its bytes throughout.
uint32_t most_at_once(const std::vector<Block>& blocks, bool with_scratch, uint32_t alignment) {
  uint32_t most = 0;
  for (const Block& at : blocks) {
    uint32_t sum = 0;
    for (const Block& other : blocks) {
      if (other.first <= at.first && at.first <= other.last && (with_scratch || !other.scratch)) {
        sum += (other.bytes + alignment - 1) / alignment * alignment;
      }
    }
    most = std::max(most, sum);
  }
  return most;
}

struct Layout {
  std::vector<uint32_t> offsets;
  uint32_t bytes = 0;
};

// Blocks in the given order, each into the smallest gap between those that it meets, or behind
// them.
Layout place(const std::vector<Block>& blocks, const std::vector<size_t>& order,
             uint32_t alignment) {
  const auto aligned = [alignment](uint64_t x) {
    return static_cast<uint32_t>((x + alignment - 1) / alignment * alignment);
  };
  Layout layout;
  layout.offsets.assign(blocks.size(), 0);
  std::vector<size_t> placed;  // by offset
  for (const size_t i : order) {
    uint32_t best = UINT32_MAX;
    uint32_t best_gap = UINT32_MAX;
    uint32_t end = 0;
    for (const size_t other : placed) {
      if (!meet(blocks[i], blocks[other])) {
        continue;
      }
      const uint32_t start = layout.offsets[other];
      if (start >= end && start - end >= blocks[i].bytes && start - end < best_gap) {
        best = end;
        best_gap = start - end;
      }
      end = std::max(end, aligned(uint64_t{start} + blocks[other].bytes));
    }
    layout.offsets[i] = best != UINT32_MAX ? best : end;
    layout.bytes = std::max(layout.bytes, aligned(uint64_t{layout.offsets[i]} + blocks[i].bytes));
    placed.insert(std::upper_bound(placed.begin(), placed.end(), i,
                                   [&layout](size_t a, size_t b) {
                                     return layout.offsets[a] < layout.offsets[b];
                                   }),
                  i);
  }
  return layout;
}

// The best of a few orders, then of small changes to the best, until the bound is reached.
Layout search(const std::vector<Block>& blocks, uint32_t bound, uint32_t alignment) {
  std::vector<size_t> order(blocks.size());
  std::iota(order.begin(), order.end(), size_t{0});
  const auto length = [](const Block& b) { return static_cast<uint64_t>(b.last - b.first + 1); };
  const std::function<uint64_t(const Block&)> keys[] = {
      [](const Block& b) { return b.bytes; }, [&](const Block& b) { return b.bytes * length(b); },
      [&](const Block& b) { return length(b); },
      [](const Block& b) { return UINT32_MAX - static_cast<uint64_t>(b.first + 1); }};
  Layout best;
  std::vector<size_t> best_order;
  for (const auto& key : keys) {
    std::vector<size_t> sorted = order;
    std::stable_sort(sorted.begin(), sorted.end(),
                     [&](size_t a, size_t b) { return key(blocks[a]) > key(blocks[b]); });
    Layout layout = place(blocks, sorted, alignment);
    if (best_order.empty() || layout.bytes < best.bytes) {
      best = std::move(layout);
      best_order = std::move(sorted);
    }
  }
  uint32_t random = 1;
  const auto next = [&random](size_t n) {
    random = random * 1664525u + 1013904223u;
    return static_cast<size_t>((uint64_t{random} * n) >> 32);
  };
  const size_t tries = blocks.size() < 2 ? 0 : std::min<size_t>(2000, 2000000 / blocks.size());
  for (size_t i = 0; i < tries && best.bytes > bound; ++i) {
    std::vector<size_t> changed = best_order;
    const size_t from = next(changed.size());
    const size_t moved = changed[from];
    changed.erase(changed.begin() + static_cast<ptrdiff_t>(from));
    changed.insert(changed.begin() + static_cast<ptrdiff_t>(next(changed.size() + 1)), moved);
    Layout layout = place(blocks, changed, alignment);
    if (layout.bytes <= best.bytes) {
      best = std::move(layout);
      best_order = std::move(changed);
    }
  }
  return best;
}

}  // namespace

Plan make_plan(std::span<const PlanItem> items, std::span<const PlanOverlay> overlays,
               uint32_t alignment) {
  Groups groups(items);
  Plan plan;
  for (const PlanOverlay& overlay : overlays) {
    plan.in_place.push_back(groups.join(overlay));
  }
  std::vector<Block> blocks;
  std::vector<size_t> block_of(items.size());
  for (size_t i = 0; i < items.size(); ++i) {
    if (groups.root(i) == i) {
      block_of[i] = blocks.size();
      blocks.push_back(groups.block(i));
    }
  }
  plan.bound = most_at_once(blocks, false, 1);
  plan.bound_with_scratch = most_at_once(blocks, true, 1);
  const Layout layout = search(blocks, most_at_once(blocks, true, alignment), alignment);
  plan.bytes = layout.bytes;
  for (size_t i = 0; i < items.size(); ++i) {
    plan.offsets.push_back(layout.offsets[block_of[groups.root(i)]] + groups.shift(i));
  }
  return plan;
}

}  // namespace nnlib::importer
