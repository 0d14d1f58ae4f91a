// SPDX-License-Identifier: MIT
#include "importer/report/graph_layout.hpp"

#include <algorithm>
#include <numeric>

namespace nnlib::importer {
namespace {

// A box, or the point where a line passes a rank.
struct Item {
  int rank;
  bool is_box;
  double x = 0;
  std::vector<size_t> above, below;
};

class Layouter {
 public:
  Layouter(const std::vector<std::vector<size_t>>& after, const LayoutSizes& sizes)
      : sizes_(sizes), boxes_(after.size()) {
    for (size_t i = 0; i < after.size(); ++i) {
      int rank = 0;
      for (const size_t from : after[i]) {
        rank = std::max(rank, items_[from].rank + 1);
      }
      items_.push_back({rank, true, 0, {}, {}});
    }
    for (size_t i = 0; i < after.size(); ++i) {
      for (const size_t from : after[i]) {
        connect(from, i);
      }
    }
  }

  GraphLayout run() {
    for (size_t i = 0; i < items_.size(); ++i) {
      const auto rank = static_cast<size_t>(items_[i].rank);
      ranks_.resize(std::max(ranks_.size(), rank + 1));
      ranks_[rank].push_back(i);
    }
    for (auto& rank : ranks_) {
      for (size_t i = 0; i < rank.size(); ++i) {
        items_[rank[i]].x = static_cast<double>(i);
      }
    }
    constexpr int kSweeps = 6;
    for (int sweep = 0; sweep < kSweeps; ++sweep) {
      for_ranks(sweep % 2 == 0, [&](size_t rank, bool down) { order(rank, down); });
    }
    for (auto& rank : ranks_) {
      settle(rank, std::vector<double>(rank.size(), 0));
    }
    constexpr int kShifts = 12;
    for (int sweep = 0; sweep < kShifts; ++sweep) {
      for_ranks(sweep % 2 == 0, [&](size_t rank, bool down) { shift(rank, down); });
    }
    return result();
  }

 private:
  void connect(size_t from, size_t to) {
    GraphLayout::Line line{from, to, {}};
    std::vector<size_t>& way = ways_.emplace_back();
    size_t last = from;
    for (int rank = items_[from].rank + 1; rank < items_[to].rank; ++rank) {
      items_.push_back({rank, false, 0, {}, {}});
      way.push_back(items_.size() - 1);
      link(last, items_.size() - 1);
      last = items_.size() - 1;
    }
    link(last, to);
    lines_.push_back(std::move(line));
  }
  void link(size_t upper, size_t lower) {
    items_[upper].below.push_back(lower);
    items_[lower].above.push_back(upper);
  }

  template <class Visit>
  void for_ranks(bool down, Visit visit) {
    for (size_t i = 0; i < ranks_.size(); ++i) {
      visit(down ? i : ranks_.size() - 1 - i, down);
    }
  }

  // The mean place of the neighbours on one side; its own without any.
  double wish(size_t item, bool from_above) const {
    const auto& neighbours = from_above ? items_[item].above : items_[item].below;
    double sum = 0;
    for (const size_t n : neighbours) {
      sum += items_[n].x;
    }
    return neighbours.empty() ? items_[item].x : sum / static_cast<double>(neighbours.size());
  }

  void order(size_t rank, bool down) {
    std::vector<std::pair<double, size_t>> wishes;
    for (const size_t item : ranks_[rank]) {
      wishes.emplace_back(wish(item, down), item);
    }
    std::stable_sort(wishes.begin(), wishes.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (size_t i = 0; i < wishes.size(); ++i) {
      ranks_[rank][i] = wishes[i].second;
      items_[wishes[i].second].x = static_cast<double>(i);
    }
  }

  double between(size_t a, size_t b) const {
    const auto half = [&](size_t i) {
      return items_[i].is_box ? (sizes_.box_width + sizes_.gap) / 2 : sizes_.line_gap;
    };
    return half(a) + half(b);
  }

  // As near to the wishes as the distances in the given order allow: half way between the two
  // solutions that push to the right and to the left.
  void settle(const std::vector<size_t>& rank, const std::vector<double>& wishes) {
    std::vector<double> right = wishes, left = wishes;
    for (size_t i = 1; i < rank.size(); ++i) {
      right[i] = std::max(right[i], right[i - 1] + between(rank[i - 1], rank[i]));
      const size_t j = rank.size() - 1 - i;
      left[j] = std::min(left[j], left[j + 1] - between(rank[j], rank[j + 1]));
    }
    for (size_t i = 0; i < rank.size(); ++i) {
      items_[rank[i]].x = (right[i] + left[i]) / 2;
    }
  }
  void shift(size_t rank, bool down) {
    std::vector<double> wishes;
    for (const size_t item : ranks_[rank]) {
      wishes.push_back(wish(item, down));
    }
    settle(ranks_[rank], wishes);
  }

  GraphLayout result() {
    GraphLayout layout;
    double least = 0, most = 0;
    for (const Item& item : items_) {
      const double half = item.is_box ? sizes_.box_width / 2 : sizes_.line_gap;
      least = std::min(least, item.x - half);
      most = std::max(most, item.x + half);
    }
    const auto place = [&](size_t i) {
      return GraphLayout::Place{items_[i].x - least, items_[i].rank};
    };
    for (size_t i = 0; i < boxes_; ++i) {
      layout.boxes.push_back(place(i));
    }
    for (size_t i = 0; i < lines_.size(); ++i) {
      for (const size_t point : ways_[i]) {
        lines_[i].way.push_back(place(point));
      }
    }
    layout.lines = std::move(lines_);
    layout.width = most - least;
    layout.ranks = static_cast<int>(ranks_.size());
    return layout;
  }

  LayoutSizes sizes_;
  size_t boxes_;
  std::vector<Item> items_;
  std::vector<std::vector<size_t>> ranks_;
  std::vector<GraphLayout::Line> lines_;
  std::vector<std::vector<size_t>> ways_;  // of each line
};

}  // namespace

GraphLayout lay_out(const std::vector<std::vector<size_t>>& after, const LayoutSizes& sizes) {
  return Layouter(after, sizes).run();
}

}  // namespace nnlib::importer
