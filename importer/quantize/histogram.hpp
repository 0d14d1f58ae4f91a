// SPDX-License-Identifier: MIT
// How a tensor's numbers are spread, from two passes over the data: range first, then counts.
#ifndef NNLIB_IMPORTER_QUANTIZE_HISTOGRAM_HPP
#define NNLIB_IMPORTER_QUANTIZE_HISTOGRAM_HPP

#include <cstdint>
#include <span>
#include <vector>

namespace nnlib::importer {

// Numbers that are not finite do not count.
class Histogram {
 public:
  static constexpr size_t kBins = 8192;

  void widen(std::span<const double> numbers);
  void count(std::span<const double> numbers);

  // Least and largest number, 0 always between them.
  double low() const { return low_; }
  double high() const { return high_; }
  // Numbers that are 0, which every format has; they are in no bin.
  uint64_t zeros() const { return zeros_; }
  const std::vector<uint64_t>& bins() const { return bins_; }
  double width() const { return (high_ - low_) / static_cast<double>(kBins); }
  double center(size_t bin) const { return low_ + (static_cast<double>(bin) + 0.5) * width(); }

 private:
  double low_ = 0;
  double high_ = 0;
  uint64_t zeros_ = 0;
  std::vector<uint64_t> bins_ = std::vector<uint64_t>(kBins);
};

}  // namespace nnlib::importer

#endif
