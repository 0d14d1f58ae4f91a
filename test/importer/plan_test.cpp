// SPDX-License-Identifier: MIT
// Addresses in the arena.
#include <gtest/gtest.h>

#include "importer/plan/plan.hpp"

namespace nnlib::importer {
namespace {

// No two items that live together share a byte, but where one was laid over the other.
void expect_apart(const std::vector<PlanItem>& items, const Plan& plan, uint32_t alignment) {
  for (size_t i = 0; i < items.size(); ++i) {
    EXPECT_EQ(plan.offsets[i] % alignment, 0u);
    EXPECT_LE(plan.offsets[i] + items[i].bytes, plan.bytes);
    for (size_t j = 0; j < i; ++j) {
      if (items[i].first <= items[j].last && items[j].first <= items[i].last) {
        const bool apart = plan.offsets[i] + items[i].bytes <= plan.offsets[j] ||
                           plan.offsets[j] + items[j].bytes <= plan.offsets[i];
        EXPECT_TRUE(apart) << i << " and " << j;
      }
    }
  }
}

TEST(Plan, ChainNeedsItsTwoLargestNeighbours) {
  const std::vector<PlanItem> items = {{100, -1, 0}, {40, 0, 1}, {300, 1, 2}, {60, 2, 3}};
  const Plan plan = make_plan(items, {}, 4);
  EXPECT_EQ(plan.bound, 360u);
  EXPECT_EQ(plan.bytes, 360u);
  expect_apart(items, plan, 4);
}

TEST(Plan, ScratchCountsApart) {
  const std::vector<PlanItem> items = {{100, 0, 1}, {50, 1, 1, true}, {30, 1, 2}};
  const Plan plan = make_plan(items, {}, 4);
  EXPECT_EQ(plan.bound, 130u);
  EXPECT_EQ(plan.bound_with_scratch, 180u);
  EXPECT_EQ(plan.bytes, 184u);  // 50 bytes take 52
}

TEST(Plan, OverlayOnlyOverWhatIsReadForTheLastTime) {
  const std::vector<PlanItem> items = {{64, -1, 0}, {64, 0, 2}, {64, 2, 3}};
  const std::vector<PlanOverlay> dies = {{1, 0, 0}, {2, 1, 2}};
  const Plan in_place = make_plan(items, dies, 4);
  EXPECT_EQ(in_place.bytes, 64u);
  EXPECT_EQ(in_place.in_place, (std::vector<bool>{true, true}));

  std::vector<PlanItem> read_later = items;
  read_later[0].last = 1;
  const Plan apart = make_plan(read_later, dies, 4);
  EXPECT_EQ(apart.in_place, (std::vector<bool>{false, true}));
  EXPECT_EQ(apart.bytes, 128u);
}

TEST(Plan, OneOperandOfTwoGivesItsPlace) {
  const std::vector<PlanItem> items = {{8, -1, 1}, {8, 0, 1}, {8, 1, 2}};
  const Plan plan = make_plan(items, std::vector<PlanOverlay>{{2, 0, 1}, {2, 1, 1}}, 8);
  EXPECT_EQ(plan.bytes, 16u);
  EXPECT_EQ(plan.offsets[2], plan.offsets[0]);
}

TEST(Plan, ManyItemsNeverMeetAndStayNearTheBound) {
  std::vector<PlanItem> items;
  uint32_t random = 7;
  for (int i = 0; i < 150; ++i) {
    random = random * 1664525u + 1013904223u;
    const int first = static_cast<int>(random >> 26);
    items.push_back({16 + (random >> 8) % 4000, first, first + static_cast<int>(random >> 30) * 2});
  }
  const Plan plan = make_plan(items, {}, 4);
  expect_apart(items, plan, 4);
  EXPECT_LE(plan.bytes, plan.bound * 105 / 100);
  EXPECT_EQ(make_plan(items, {}, 4).offsets, plan.offsets);
}

TEST(Plan, PartsLieInTheirWholeAndTakeWhatTheyAreMadeFrom) {
  // A whole of two parts; an item before each that it may lie over, the first before the whole.
  const std::vector<PlanItem> items = {
      {64, 1, 5}, {32, 1, 5, false, 0, 0}, {32, 3, 5, false, 0, 32}, {32, 0, 1}, {32, 2, 3}};
  const Plan plan = make_plan(items, std::vector<PlanOverlay>{{1, 3, 1}, {2, 4, 3}}, 4);
  EXPECT_EQ(plan.in_place, (std::vector<bool>{false, true}));
  EXPECT_EQ(plan.offsets[2], plan.offsets[0] + 32);
  EXPECT_EQ(plan.offsets[4], plan.offsets[2]);
  EXPECT_EQ(plan.bytes, 96u);
  // Of two operands only one lies in the part's place.
  const std::vector<PlanItem> sum = {
      {64, 0, 5}, {32, 3, 5, false, 0, 0}, {32, 1, 3}, {32, 2, 3}, {32, 4, 5, false, 0, 32}};
  const Plan one = make_plan(sum, std::vector<PlanOverlay>{{1, 2, 3}, {1, 3, 3}}, 4);
  EXPECT_EQ(one.in_place, (std::vector<bool>{true, false}));
  EXPECT_NE(one.offsets[3], one.offsets[1]);
  // Nothing lies over a part, nor over a whole while a part of it is an operand too.
  const std::vector<PlanItem> slices = {{64, -1, 2}, {32, -1, 2, false, 0, 16}, {64, 2, 3}};
  EXPECT_FALSE(make_plan(slices, std::vector<PlanOverlay>{{2, 0, 2}}, 4).in_place[0]);
  EXPECT_FALSE(make_plan(slices, std::vector<PlanOverlay>{{2, 1, 2}}, 4).in_place[0]);
}

}  // namespace
}  // namespace nnlib::importer
