// SPDX-License-Identifier: MIT
// Integer dense layers, addition, pooling and functions against their formulas.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "core/ai_declare.h"
#include "kernels/ko_add.h"
#include "kernels/ko_convolve_HWC_reference.h"
#include "kernels/ko_pool.h"
#include "kernels/ko_requantize.h"
#include "layers_quantized/layers_pool_quarn_integer.h"
#include "layers_quantized/layers_quarn_integer.h"
#include "test/unit/integer_data.hpp"

namespace {

// --- dense ----------------------------------------------------------------------------------

// Two positions, of which each is what a layer of one position makes of it, and what the reference
// convolution makes of both.
TEST(IntegerDenseLayer, ComputesEveryPosition) {
  const auto in_data = random_vector<uint8_t>(14);
  const auto weight_data = random_vector<int8_t>(21);
  const int32_t bias_data[] = {100, -900, 4000};
  const float scales[] = {0.01f, 0.03f, 0.02f}, in_scale[] = {0.05f}, out_scale[] = {0.9f};
  const int8_t zeros[] = {0, 0, 0};
  const uint8_t in_zeropoint[] = {130}, out_zeropoint[] = {99};
  nnlib::intq in_q(in_scale, in_zeropoint), out_q(out_scale, out_zeropoint);
  nnlib::intq weights_q(scales, zeros);
  std::vector<uint8_t> out_data(6), want(6);
  nnlib::tensor in({1, 7, 2, 1}, in_data.data(), 0, &in_q),
      out({1, 3, 2, 1}, out_data.data(), 0, &out_q);
  nnlib::tensor weights({7, 3, 1, 1}, weight_data.data(), 0, &weights_q);
  nnlib::tensor bias({1, 3, 1, 1}, bias_data);
  const Rubbish scratch(16 + 18);
  nnlib::tensor scratch_tensor({1, 34, 1, 1}, scratch.data);
  for (const bool biased : {true, false}) {
    nnlib::layer_chain chain(nnlib::list(in), nnlib::list(out),
                             nnlib::list(weights, biased ? &bias : nnlib::absent),
                             nnlib::list(scratch_tensor));
    ai_layer layer = nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense_integer, chain);
    EXPECT_EQ(34u, ai_dense_integer_scratch_size(&layer));
    layer.forward(&layer);
    int32_t multipliers[3];
    int16_t shifts[3];
    align_factor_ch(0.05f, 0.9f, scales, 3, multipliers, shifts);
    ko_int8symwt_convolve_HWC_reference_CH(in_data.data(), 2, 1, 7, weight_data.data(), 3, 1, 1, 0,
                                           0, 1, 1, biased ? bias_data : nullptr, multipliers,
                                           shifts, 130, 99, want.data(), 2, 1);
    EXPECT_EQ(want, out_data);
  }
}

// --- addition -------------------------------------------------------------------------------

// What quantizations have in common.
struct Same {
  bool scales, zeros;
  constexpr bool all() const { return scales && zeros; }
};
constexpr Same kSame[] = {{false, false}, {true, false}, {false, true}, {true, true}};

template <class T>
void check_sum(const nnlib::dims& a_dims, const nnlib::dims& b_dims, Same same) {
  const nnlib::dims loops = {std::max(a_dims.n, b_dims.n), std::max(a_dims.c, b_dims.c),
                             std::max(a_dims.w, b_dims.w), std::max(a_dims.h, b_dims.h)};
  const auto a_data = random_vector<T>(a_dims.elements());
  const auto b_data = random_vector<T>(b_dims.elements());
  std::vector<T> out_data(loops.elements());
  const float scales[3] = {0.05f, same.scales ? 0.05f : 0.031f, same.scales ? 0.05f : 0.077f};
  const T zeros[3] = {10, static_cast<T>(same.zeros ? 10 : 90),
                      static_cast<T>(same.zeros ? 10 : 33)};
  const ai_intq_info infos[3] = {
      {&scales[0], &zeros[0]}, {&scales[1], &zeros[1]}, {&scales[2], &zeros[2]}};
  const ai_intq_info_list q[3] = {
      {1u << 16, &infos[0]}, {1u << 16, &infos[1]}, {1u << 16, &infos[2]}};
  nnlib::tensor a(a_dims, a_data.data(), 0, &q[0]), b(b_dims, b_data.data(), 0, &q[1]);
  nnlib::tensor out(loops, out_data.data(), 0, &q[2]);
  nnlib::layer_chain chain(nnlib::list(a, b), nnlib::list(out));
  ai_layer layer = nnlib::layer(AI_LAYER_TYPE_ELTWISE, forward_add_integer, chain);
  layer.forward(&layer);
  const auto at = [](const nnlib::dims& d, uint32_t n, uint32_t c, uint32_t w, uint32_t h) {
    return (((d.h > 1 ? h : 0) * d.w + (d.w > 1 ? w : 0)) * d.c + (d.c > 1 ? c : 0)) * d.n +
           (d.n > 1 ? n : 0);
  };
  for (uint32_t i = 0; i < loops.elements(); ++i) {
    const uint32_t n = i % loops.n, c = i / loops.n % loops.c, w = i / loops.n / loops.c % loops.w;
    const uint32_t h = i / loops.n / loops.c / loops.w;
    const int x = a_data[at(a_dims, n, c, w, h)] - zeros[0];
    const int y = b_data[at(b_dims, n, c, w, h)] - zeros[1];
    float sum = static_cast<float>(y) * (scales[1] / scales[2]) +
                static_cast<float>(x) * (scales[0] / scales[2]);
    sum += std::is_signed_v<T> ? static_cast<float>(zeros[2]) : static_cast<float>(zeros[2]) + 0.5f;
    if (std::is_signed_v<T>) {
      sum += sum > 0 ? 0.5f : -0.5f;
    }
    const long exact = same.all() ? x + y + zeros[2] : static_cast<long>(sum);
    using Limits = std::numeric_limits<T>;
    ASSERT_EQ(std::clamp<long>(exact, Limits::min(), Limits::max()), out_data[i]) << i;
  }
}

TEST(IntegerAddLayer, BroadcastsEitherInput) {
  const nnlib::dims full = {1, 70, 3, 4};
  const nnlib::dims others[] = {full,         {1, 1, 1, 1},  {1, 70, 1, 1}, {1, 1, 3, 1},
                                {1, 1, 1, 4}, {1, 70, 3, 1}, {1, 70, 1, 4}, {1, 1, 3, 4}};
  for (const nnlib::dims& other : others) {
    for (Same same : kSame) {
      check_sum<uint8_t>(full, other, same);
      check_sum<int8_t>(other, full, same);
    }
  }
  check_sum<int8_t>({1, 5, 1, 2}, {1, 1, 3, 2}, {});  // each stretches the other
  check_sum<uint8_t>({2, 3, 4, 2}, {2, 3, 1, 2}, {});
}

// Any one of the six numbers that differs takes the sum out of the integers.
TEST(IntegerAddLayer, SumsIntegersOnlyOfOneQuantization) {
  const int8_t one = 101, two = 40;
  for (int odd = 0; odd <= 6; ++odd) {
    float scales[] = {0.5f, 0.5f, 0.5f, 0.5f};
    int8_t zeros[] = {20, 20, 20, 20}, sum = 0;
    if (odd < 6) {
      scales[odd < 3 ? odd : 3] = 0.25f;
      zeros[odd < 3 ? 3 : odd % 3] = 30;
    }
    EXPECT_EQ(0, ko_int8_add(&one, &two, &sum, 1, scales[0], zeros[0], scales[1], zeros[1],
                             scales[2], zeros[2]));
    const int wanted[] = {81, 111, 127, 111, 111, 127, 121};
    EXPECT_EQ(wanted[odd], sum) << odd;
  }
}

// Numbers that another order of the operations rounds to another whole number.
TEST(IntegerRounding, KeepsTheOrderOfItsFloats) {
  const uint8_t one = 125, two = 58, cell = 182;
  uint8_t sum = 0, pooled = 0;
  EXPECT_EQ(0, ko_uint8_add(&one, &two, &sum, 1, 0.007f, 100, 0.154f, 100, 0.058f, 207));
  EXPECT_EQ(98, sum);
  EXPECT_EQ(
      0, ko_uint8_maxpool(&cell, &pooled, 1, 1, 1, 1, 1, 0, 0, 1, 1, 1, 1, 0.03f, 0, 0.04f, 118));
  EXPECT_EQ(255, pooled);
}

// --- pooling --------------------------------------------------------------------------------

TEST(IntegerPool, OfTheWholeMap) {
  const int8_t in[] = {-3, 100, -4, 50, -4, -20};  // two channels
  int8_t out[2];
  EXPECT_EQ(0, ko_int8_glomaxpool(in, out, 3, 1, 2, 1.0f, 0, 1.0f, 0));
  EXPECT_EQ((std::vector<int>{-3, 100}), std::vector<int>(out, out + 2));
  EXPECT_EQ(0, ko_int8_gloavepool(in, out, 1, 3, 2, 1.0f, 0, 1.0f, 0));
  EXPECT_EQ((std::vector<int>{-3, 43}), std::vector<int>(out, out + 2));  // toward zero
  const uint8_t bytes[] = {10, 200, 11, 100};
  uint8_t average[2];
  EXPECT_EQ(0, ko_uint8_gloavepool(bytes, average, 2, 1, 2, 0.5f, 10, 1.0f, 7));
  EXPECT_EQ((std::vector<int>{7, 77}), std::vector<int>(average, average + 2));
  uint8_t maximum[2];
  EXPECT_EQ(0, ko_uint8_glomaxpool(bytes, maximum, 2, 1, 2, 1.0f, 0, 0.5f, 0));
  EXPECT_EQ((std::vector<int>{22, 255}), std::vector<int>(maximum, maximum + 2));
}

// Sums that, rounded, are a whole multiple of the count, and those one less.
TEST(IntegerPool, AveragesExactly) {
  constexpr uint16_t kChannels = 255;
  const uint16_t sides[][2] = {{7, 1}, {41, 1}, {7, 7}, {301, 99}, {65535, 1}, {256, 256}};
  for (const auto& [width, height] : sides) {
    const size_t count = size_t{width} * height;
    for (const size_t missing : {0, 1}) {
      std::vector<uint8_t> in, out(kChannels), want;
      for (size_t cell = 0; cell < count; ++cell) {
        for (uint32_t c = 0; c < kChannels; ++c) {
          in.push_back(static_cast<uint8_t>(cell < count - count / 2 - missing ? c + 1 : c));
        }
      }
      for (uint32_t c = 0; c < kChannels; ++c) {
        want.push_back(static_cast<uint8_t>(missing == 0 ? c + 1 : c));
      }
      ko_uint8_gloavepool(in.data(), out.data(), width, height, kChannels, 1.0f, 0, 1.0f, 0);
      ASSERT_EQ(want, out) << count;
    }
  }
}

// Means a few float steps from the zero point, stretched to whole numbers; the sums need more than
// 32 bits, and fall on halves between floats or beside them.
template <class T, class Kernel>
void check_large_sums(Kernel kernel, T cell, int32_t step, float stretch) {
  constexpr uint16_t kSide = 4200;
  constexpr size_t kCount = size_t{kSide} * kSide;
  std::vector<T> in(kCount, cell);
  for (size_t other : {0, 128, 129, 256, 257, 384, 385, 768, 769, 1280}) {
    std::fill_n(in.begin(), other, static_cast<T>(cell + step));
    const int64_t sum = static_cast<int64_t>(kCount) * cell + static_cast<int64_t>(other) * step;
    const float mean = static_cast<float>(sum) / static_cast<float>(kCount);
    T out = 0;
    kernel(in.data(), &out, kSide, kSide, 1, stretch, cell, 1.0f, T{100});
    ASSERT_EQ((mean - static_cast<float>(cell)) * stretch + 100.0f, static_cast<float>(out))
        << other;
    kernel(in.data(), &out, kSide, kSide, 1, 1.0f, cell, 1.0f, cell);
    ASSERT_EQ((sum + static_cast<int64_t>(kCount / 2)) / static_cast<int64_t>(kCount), out);
  }
}

TEST(IntegerPool, RoundsLargeSumsOnce) {
  check_large_sums<uint8_t>(ko_uint8_gloavepool, 255, -1, 65536.0f);
  check_large_sums<int8_t>(ko_int8_gloavepool, -128, 1, 131072.0f);
}

}  // namespace
