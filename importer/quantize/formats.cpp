// SPDX-License-Identifier: MIT
#include "importer/quantize/formats.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace nnlib::importer {
namespace {

struct Limits {
  double least, most;
};
Limits limits_of(Type type) {
  switch (type) {
    case Type::u8:
      return {0, UINT8_MAX};
    case Type::s8:
      return {INT8_MIN, INT8_MAX};
    default:
      return {INT16_MIN, INT16_MAX};
  }
}

Type fixed_type(int bits) {
  return bits == 8 ? Type::s8 : Type::s16;
}

// In the innermost loop of the search: rounded by truncation, as halves make no difference here.
double squared_error(const Histogram& histogram, const Quantization& q, Type type) {
  const Limits limits = limits_of(type);
  const double zero = q.zero_points[0];
  const double least = limits.least - zero, most = limits.most - zero;
  const double scale = double{q.scales[0]};
  const double quanta = 1 / scale;
  double sum = 0;
  for (size_t i = 0; i < Histogram::kBins; ++i) {
    if (histogram.bins()[i] != 0) {
      const double x = histogram.center(i);
      const double q_of_x = std::clamp(x * quanta, least, most);
      const double rounded = static_cast<int>(q_of_x + (q_of_x < 0 ? -0.5 : 0.5));
      const double error = x - rounded * scale;
      sum += static_cast<double>(histogram.bins()[i]) * error * error;
    }
  }
  return sum;
}

struct Range {
  double low, high;
};

// The range without the outermost numbers, half of those that are left out at each end.
Range percentile_range(const Histogram& histogram, double percentile) {
  uint64_t all = histogram.zeros();
  for (const uint64_t count : histogram.bins()) {
    all += count;
  }
  const double out = static_cast<double>(all) * (1 - percentile / 100) / 2;
  Range range{histogram.low(), histogram.high()};
  double seen = 0;
  for (size_t i = 0; i < Histogram::kBins; ++i) {
    seen += static_cast<double>(histogram.bins()[i]);
    if (seen > out) {
      range.low = histogram.center(i) - histogram.width() / 2;
      break;
    }
  }
  seen = 0;
  for (size_t i = Histogram::kBins; i-- > 0;) {
    seen += static_cast<double>(histogram.bins()[i]);
    if (seen > out) {
      range.high = histogram.center(i) + histogram.width() / 2;
      break;
    }
  }
  return {std::min(range.low, 0.0), std::max(range.high, 0.0)};
}

// Ends drawn in step by step, each on its own.
Quantization least_error(const Histogram& histogram, Type type) {
  constexpr int kSteps = 24;
  constexpr double kStep = 0.03;
  Quantization best = affine_format(histogram.low(), histogram.high(), type);
  double least = std::numeric_limits<double>::infinity();
  for (int low = 0; low < (histogram.low() < 0 ? kSteps : 1); ++low) {
    for (int high = 0; high < (histogram.high() > 0 ? kSteps : 1); ++high) {
      const Quantization q = affine_format(histogram.low() * (1 - kStep * low),
                                           histogram.high() * (1 - kStep * high), type);
      const double error = squared_error(histogram, q, type);
      if (error < least) {
        least = error;
        best = q;
      }
    }
  }
  return best;
}

}  // namespace

double quantized(double x, const Quantization& q, size_t entry, Type type) {
  const Limits limits = limits_of(type);
  return std::clamp(std::round(x / double{q.scales[entry]}) + q.zero_points[entry], limits.least,
                    limits.most);
}

Quantization affine_format(double low, double high, Type type) {
  const Limits limits = limits_of(type);
  low = std::min(low, 0.0);
  high = std::max(high, 0.0);
  const auto scale = static_cast<float>((high - low) / (limits.most - limits.least));
  if (!(scale >= std::numeric_limits<float>::min())) {
    return {{1.0F}, {static_cast<int32_t>(limits.least)}, 0};
  }
  const double zero = std::round(limits.least - low / double{scale});
  return {{scale}, {static_cast<int32_t>(std::clamp(zero, limits.least, limits.most))}, 0};
}

Quantization affine_format(const Histogram& histogram, Type type, const RangeOptions& options) {
  switch (options.rule) {
    case RangeRule::mse:
      return least_error(histogram, type);
    case RangeRule::percentile: {
      const Range range = percentile_range(histogram, options.percentile);
      return affine_format(range.low, range.high, type);
    }
    default:
      return affine_format(histogram.low(), histogram.high(), type);
  }
}

int fixed_format(double magnitude, int bits) {
  constexpr int kMost = 31;
  const double most = std::ldexp(1.0, bits - 1) - 1;
  int fraction_bits = kMost;
  while (fraction_bits > -kMost && std::round(std::ldexp(magnitude, fraction_bits)) > most) {
    --fraction_bits;
  }
  return fraction_bits;
}

int fixed_format(const Histogram& histogram, int bits, const RangeOptions& options) {
  const auto reaching = [bits](double low, double high) {
    return fixed_format(std::max(-low, high), bits);
  };
  const int all = reaching(histogram.low(), histogram.high());
  if (options.rule == RangeRule::percentile) {
    const Range range = percentile_range(histogram, options.percentile);
    return reaching(range.low, range.high);
  }
  if (options.rule == RangeRule::minmax) {
    return all;
  }
  constexpr int kTried = 6;
  int best = all;
  double least = std::numeric_limits<double>::infinity();
  for (int bits_behind = all; bits_behind < all + kTried; ++bits_behind) {
    const double error = squared_error(histogram, fixed_point(bits_behind), fixed_type(bits));
    if (error < least) {
      least = error;
      best = bits_behind;
    }
  }
  return best;
}

}  // namespace nnlib::importer
