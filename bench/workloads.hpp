// SPDX-License-Identifier: MIT
// What is measured: one list of shapes for all number formats, the naive loops and the peers.
#ifndef BENCH_WORKLOADS_HPP
#define BENCH_WORKLOADS_HPP

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace bench {

// Square map, kernel, stride and padding. Depthwise when the filters are 0.
struct ConvShape {
  const char* name;
  uint32_t size, channels, filters, taps, stride, pad;

  constexpr bool depthwise() const { return filters == 0; }
  constexpr uint32_t out_channels() const { return depthwise() ? channels : filters; }
  constexpr uint32_t out_size() const { return (size + 2 * pad - taps) / stride + 1; }
  constexpr size_t in_count() const { return size_t{size} * size * channels; }
  constexpr size_t weight_count() const {
    return size_t{taps} * taps * channels * (depthwise() ? 1 : filters);
  }
  constexpr size_t out_count() const { return size_t{out_size()} * out_size() * out_channels(); }
  constexpr double operations() const {
    return 2.0 * static_cast<double>(out_count()) * taps * taps * (depthwise() ? 1 : channels);
  }
};

struct DenseShape {
  const char* name;
  uint32_t inputs, outputs;

  constexpr double operations() const { return 2.0 * inputs * outputs; }
};

struct RecurrentShape {
  uint32_t steps, features, units;
};

inline constexpr ConvShape kConvShapes[] = {
    {"conv 3x3, 32x32x32 to 64", 32, 32, 64, 3, 1, 1},
    {"conv 3x3 stride 2, 96x96x3 to 16", 96, 3, 16, 3, 2, 1},
    {"conv 1x1, 28x28x64 to 128", 28, 64, 128, 1, 1, 0},
    {"depthwise 3x3, 56x56x64", 56, 64, 0, 3, 1, 1},
};
inline constexpr DenseShape kDenseShapes[] = {{"dense 1024 to 1024", 1024, 1024},
                                              {"dense 640 to 128", 640, 128}};
inline constexpr RecurrentShape kRecurrentShape = {50, 32, 64};

// Registers "<workload>/<contestant>", measured with gated batches; operations counts the
// multiplications and additions of a call, 0 where they are not the point. wide: with the wide
// vector instances.
void add_benchmark(const std::string& workload, const std::string& contestant, double operations,
                   std::function<void()> call, bool wide = true);

void add_peaks();
void add_products();      // convolutions and dense layers of the runtime, in every number format
void add_float_layers();  // its other layers
void add_integer_layers();
void add_conversions();
void add_naive_loops();
void add_peers();

}  // namespace bench

#endif
