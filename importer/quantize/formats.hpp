// SPDX-License-Identifier: MIT
// The integers and fixed-point numbers that stand best for given numbers.
#ifndef NNLIB_IMPORTER_QUANTIZE_FORMATS_HPP
#define NNLIB_IMPORTER_QUANTIZE_FORMATS_HPP

#include "importer/graph/value.hpp"
#include "importer/quantize/histogram.hpp"

namespace nnlib::importer {

// Which numbers a format has to reach: all; all but a part at each end; those that make the sum of
// squared errors of rounding and of saturation least.
enum class RangeRule { minmax, percentile, mse };

struct RangeOptions {
  RangeRule rule = RangeRule::mse;
  double percentile = 99.99;  // of the numbers lie within the range
};

// One scale and zero point for s8 or u8. 0 is exact.
Quantization affine_format(const Histogram& histogram, Type type, const RangeOptions& options);
Quantization affine_format(double low, double high, Type type);

// The fraction bits of fixed point of 8 or 16 bits.
int fixed_format(const Histogram& histogram, int bits, const RangeOptions& options);
// The most that reach a magnitude.
int fixed_format(double magnitude, int bits);

// Rounded half away from zero and saturated to the type.
double quantized(double x, const Quantization& q, size_t entry, Type type);

}  // namespace nnlib::importer

#endif
