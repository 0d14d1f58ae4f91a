// SPDX-License-Identifier: MIT
#include "importer/quantize/histogram.hpp"

#include <algorithm>
#include <cmath>

namespace nnlib::importer {

void Histogram::widen(std::span<const double> numbers) {
  for (const double x : numbers) {
    if (std::isfinite(x)) {
      low_ = std::min(low_, x);
      high_ = std::max(high_, x);
    }
  }
}

void Histogram::count(std::span<const double> numbers) {
  for (const double x : numbers) {
    if (x == 0) {
      ++zeros_;
    } else if (std::isfinite(x)) {
      const double at = std::clamp((x - low_) / width(), 0.0, static_cast<double>(kBins - 1));
      ++bins_[static_cast<size_t>(at)];
    }
  }
}

}  // namespace nnlib::importer
