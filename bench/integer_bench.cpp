// Times of the integer kernels, per channel, in microseconds a call and multiply-accumulates a
// second; 3x3 convolutions also as a multiple of the reference variant's speed.
#include <cstdio>
#include <functional>
#include <vector>

#include "bench/gated_timer.hpp"
#include "kernels/ko_add.h"
#include "kernels/ko_convolve_HWC.h"
#include "kernels/ko_convolve_HWC_reference.h"
#include "kernels/ko_depthwise_separable_conv_HWC.h"
#include "kernels/ko_fully_connected.h"
#include "kernels/ko_pool.h"
#include "layers_quantized/layers_nl_quarn_integer.h"

namespace {

enum class Kind { kBasic, kPointwise, kDepthwise, kDense };

struct Workload {
  const char* name;
  Kind kind;
  uint16_t in_width, in_channels, out_width, out_channels, kernel, pad, stride;

  double products() const {
    const double taps = double{1} * kernel * kernel;
    return double{1} * out_width * out_width * out_channels * taps *
           (kind == Kind::kDepthwise ? 1 : in_channels);
  }
};

constexpr Workload kWorkloads[] = {
    {"conv 3x3 32x32x32 to 64", Kind::kBasic, 32, 32, 32, 64, 3, 1, 1},
    {"conv 3x3 96x96x3 to 16, stride 2", Kind::kBasic, 96, 3, 48, 16, 3, 1, 2},
    {"conv 1x1 28x28x64 to 128", Kind::kPointwise, 28, 64, 28, 128, 1, 0, 1},
    {"depthwise 3x3 56x56x64", Kind::kDepthwise, 56, 64, 56, 64, 3, 1, 1},
    {"dense 1024 to 1024", Kind::kDense, 1, 1024, 1, 1024, 1, 0, 1},
    {"dense 640 to 128", Kind::kDense, 1, 640, 1, 128, 1, 0, 1},
};

// Bytes of no pattern.
template <class T>
std::vector<T> bytes(size_t count) {
  std::vector<T> values(count);
  uint32_t state = 1;
  for (T& value : values) {
    state = state * 1664525u + 1013904223u;
    value = static_cast<T>(state >> 24);
  }
  return values;
}

void print(const char* name, const char* types, const bench::Timing& timing, double products) {
  std::printf("%-34s %-15s %9.2f us  %6.2f G/s  (%u kept, %u dropped)", name, types,
              timing.seconds * 1e6, products / timing.seconds * 1e-9, timing.kept, timing.dropped);
}

#define ZEROPOINTS_uint8 128, weight_zeropoints.data(), 3
#define ZEROPOINTS_int8symwt 128, 3
#define ZEROPOINTS_int8_int8symwt -3, 5
#define WEIGHT_ZEROPOINTS_uint8 weight_zeropoints.data(),
#define WEIGHT_ZEROPOINTS_int8symwt
#define WEIGHT_ZEROPOINTS_int8_int8symwt
#define CONVOLUTION(types)                                                                      \
  in.data(), w.in_width, w.in_width, w.in_channels, weights.data(), w.out_channels, w.kernel,   \
      w.kernel, w.pad, w.pad, w.stride, w.stride, bias.data(), multiplier.data(), shift.data(), \
      ZEROPOINTS_##types, out.data(), w.out_width, w.out_width

#define DEFINE(types)                                                                              \
  void time_##types(const Workload& w) {                                                           \
    const auto in = bytes<KO_ACTIVATION(types)>(size_t{w.in_width} * w.in_width * w.in_channels);  \
    const auto weights =                                                                           \
        bytes<KO_WEIGHT(types)>(size_t{w.kernel} * w.kernel * w.in_channels * w.out_channels);     \
    std::vector<KO_ACTIVATION(types)> out(size_t{w.out_width} * w.out_width * w.out_channels);     \
    const std::vector<int32_t> bias(w.out_channels, 1000), multiplier(w.out_channels, 1500000000); \
    const std::vector<int16_t> shift(w.out_channels, 8);                                           \
    const std::vector<uint8_t> weight_zeropoints(w.out_channels, 120);                             \
    std::vector<int32_t> scratch(100000);                                                          \
    const std::function<void()> calls[] = {                                                        \
        [&] {                                                                                      \
          ko_##types##_convolve_HWC_basic_rank1upd_CH(w.in_channels, weights.data(),               \
                                                      w.out_channels, w.kernel, w.kernel,          \
                                                      bias.data(), 3, scratch.data());             \
          ko_##types##_convolve_HWC_basic_nonsquare_CH(CONVOLUTION(types), scratch.data());        \
        },                                                                                         \
        [&] {                                                                                      \
          ko_##types##_convolve_1x1_HWC_fast_nonsquare_CH(CONVOLUTION(types), scratch.data());     \
        },                                                                                         \
        [&] {                                                                                      \
          ko_##types##_DW_HWC_Wadapt_CH(weights.data(), w.in_channels, w.kernel, w.kernel,         \
                                        WEIGHT_ZEROPOINTS_##types scratch.data());                 \
          ko_##types##_depthwise_separable_conv_HWC_nonsquare_CH(CONVOLUTION(types),               \
                                                                 scratch.data());                  \
        },                                                                                         \
        [&] {                                                                                      \
          ko_##types##_fully_connected_CH(                                                         \
              in.data(), weights.data(), w.in_channels, w.out_channels, multiplier.data(),         \
              shift.data(), ZEROPOINTS_##types, bias.data(), out.data(), scratch.data());          \
        },                                                                                         \
    };                                                                                             \
    const bench::Timing timing = bench::time_gated(calls[static_cast<int>(w.kind)]);               \
    print(w.name, #types, timing, w.products());                                                   \
    if (w.kind == Kind::kBasic) {                                                                  \
      const bench::Timing reference =                                                              \
          bench::time_gated([&] { ko_##types##_convolve_HWC_reference_CH(CONVOLUTION(types)); });  \
      std::printf("  %.1f times the reference", reference.seconds / timing.seconds);               \
    }                                                                                              \
    std::printf("\n");                                                                             \
  }
DEFINE(uint8)
DEFINE(int8symwt)
DEFINE(int8_int8symwt)

// Functions without weights, by the elements they write.
void time_plain() {
  const auto a = bytes<uint8_t>(65536);
  const auto b = bytes<uint8_t>(65536);
  std::vector<uint8_t> out(65536);
  const ai_array in = {AI_ARRAY_FORMAT_U8, 65536, const_cast<uint8_t*>(a.data()), nullptr};
  ai_array result = {AI_ARRAY_FORMAT_U8, 65536, out.data(), nullptr};
  const auto pool = [&](auto kernel, float out_scale) {
    return [&, kernel, out_scale] {
      kernel(a.data(), out.data(), 32, 32, 64, 2, 2, 0, 0, 2, 2, 16, 16, 0.5f, 3, out_scale, 3);
    };
  };
  const struct {
    const char* name;
    std::function<void()> call;
    double elements;
  } rows[] = {
      {"max pool 2x2 32x32x64", pool(ko_uint8_maxpool, 0.5f), 16384},
      {"average pool 2x2 32x32x64", pool(ko_uint8_avepool, 0.5f), 16384},
      {"average pool, other scale", pool(ko_uint8_avepool, 0.7f), 16384},
      {"add 65536, equal scales",
       [&] { ko_uint8_add(a.data(), b.data(), out.data(), 65536, 1, 7, 1, 7, 1, 7); }, 65536},
      {"add 65536, other scales",
       [&] { ko_uint8_add(a.data(), b.data(), out.data(), 65536, 1, 7, 2, 3, 3, 9); }, 65536},
      {"table 65536", [&] { nl_func_array_integer(&result, &in, 65536, b.data()); }, 65536},
  };
  for (const auto& row : rows) {
    print(row.name, "uint8", bench::time_gated(row.call), row.elements);
    std::printf("\n");
  }
}

}  // namespace

int main() {
  for (const Workload& workload : kWorkloads) {
    time_uint8(workload);
    time_int8symwt(workload);
    time_int8_int8symwt(workload);
  }
  time_plain();
}
