// SPDX-License-Identifier: MIT
// The fixed-point kernels against one naive loop.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "kernels/arm_convolve_1x1_HWC_q7_fast_nonsquare.h"
#include "kernels/arm_convolve_HWC_q15.h"
#include "kernels/arm_convolve_HWC_q7_RGB.h"
#include "kernels/arm_convolve_HWC_q7_basic_nonsquare.h"
#include "kernels/arm_depthwise_separable_conv_HWC_q7_nonsquare.h"
#include "kernels/arm_fully_connected.h"
#include "kernels/arm_nn_mat_mult_kernel.h"
#include "kernels/arm_q7_to_q15_reordered_no_shift.h"
#include "kernels/ko_fxp_convolve_HWC_q15_nonsquare.h"
#include "kernels/ko_fxp_convolve_HWC_q7_fast_nonsquare.h"
#include "kernels/ko_fxp_dense.h"
#include "kernels/ko_fxp_depthwise_conv_HWC_q7_nonsquare.h"
#include "test/unit/fixed_convolution.hpp"

namespace {

// (a * i + b) modulo 256 or 4096, centred.
template <class T>
Values<T> anchor_values(size_t count, int a, int b) {
  const int span = sizeof(T) == 1 ? 256 : 4096;
  Values<T> values(count);
  for (size_t i = 0; i < count; ++i) {
    values[i] = static_cast<T>((a * static_cast<int>(i) + b) % span - span / 2);
  }
  return values;
}

// Width, height, channels of the input, channels of the output, kernel, padding, strides, width and
// height of the output: odd pixel and channel counts, windows that hang over on every side, whole
// groups of vector lanes with all kinds of rests; all but pointwise in one respect each.
constexpr ConvGeometry kShapes[] = {
    {1, 1, 1, 1, 1, 1, 0, 0, 1, 1, 1, 1},     {5, 4, 3, 2, 3, 2, 1, 0, 2, 1, 3, 3},
    {6, 5, 4, 2, 3, 3, 1, 1, 1, 1, 6, 5},     {6, 5, 4, 6, 1, 1, 0, 0, 1, 1, 6, 5},
    {3, 3, 16, 8, 1, 1, 0, 0, 1, 1, 3, 3},    {4, 3, 20, 5, 2, 3, 1, 2, 1, 1, 5, 5},
    {9, 2, 7, 9, 5, 1, 4, 0, 3, 1, 5, 2},     {4, 4, 8, 4, 2, 2, 0, 0, 1, 1, 5, 6},
    {3, 2, 13, 17, 2, 2, 5, 4, 2, 3, 7, 3},   {7, 7, 36, 12, 1, 1, 0, 0, 1, 1, 7, 7},
    {130, 1, 4, 2, 3, 1, 1, 0, 1, 1, 130, 1}, {5, 5, 3, 7, 3, 3, 1, 1, 2, 2, 3, 3},
    {4, 4, 3, 4, 4, 4, 2, 2, 1, 1, 5, 5},     {3, 3, 33, 3, 3, 3, 1, 1, 1, 1, 3, 3},
    {7, 5, 5, 35, 1, 3, 0, 1, 1, 1, 7, 5},    {5, 3, 8, 2, 2, 1, 0, 0, 1, 1, 5, 3},
    {5, 3, 8, 2, 1, 2, 0, 0, 1, 1, 5, 3},     {5, 3, 8, 2, 1, 1, 1, 0, 1, 1, 5, 3},
    {5, 3, 8, 2, 1, 1, 0, 1, 1, 1, 5, 3},     {5, 3, 8, 2, 1, 1, 0, 0, 2, 1, 5, 3},
    {5, 3, 8, 2, 1, 1, 0, 0, 1, 2, 5, 3},     {5, 3, 8, 2, 1, 1, 0, 0, 1, 1, 4, 3},
    {5, 3, 8, 2, 1, 1, 0, 0, 1, 1, 5, 4},
};
constexpr uint16_t kOutShifts[] = {0, 1, 9, 15};

bool pointwise(const ConvGeometry& g) {
  return g.kernel_width * g.kernel_height * g.stride_x * g.stride_y == 1 && g.pad_x + g.pad_y == 0;
}

bool square(const ConvGeometry& g) {
  return g.in_width == g.in_height && g.out_width == g.out_height &&
         g.kernel_width == g.kernel_height && g.pad_x == g.pad_y && g.stride_x == g.stride_y;
}

TEST(FixedConvolution, Q7KernelsAreTheNaiveLoop) {
  for (const ConvGeometry& g : kShapes) {
    for (const uint16_t out_shift : kOutShifts) {
      Convolution<q7_t> c{g, out_shift};
      if (out_shift == 1) {
        c.bias = {};  // absent
      }
      const bool fast = g.in_channels % 4 == 0 && g.out_channels % 2 == 0;
      c.check(arm_convolve_HWC_q7_basic_nonsquare, 2);
      c.check(ko_fxp_convolve_HWC_q7_fast_nonsquare, 2, !fast);
      c.check(arm_convolve_1x1_HWC_q7_fast_nonsquare, 2, !fast || !pointwise(g));
      if (square(g)) {
        c.check(arm_convolve_HWC_q7_RGB, 2, g.in_channels != 3);
      }
    }
  }
}

TEST(FixedConvolution, Q15KernelsAreTheNaiveLoopAndWrap) {
  for (const ConvGeometry& g : kShapes) {
    for (const uint16_t out_shift : kOutShifts) {
      Convolution<q15_t> c{g, out_shift};
      if (out_shift == 1) {
        c.bias = {};
      }
      c.check(ko_fxp_convolve_HWC_q15_nonsquare, 2);
      if (square(g)) {
        c.check(arm_convolve_HWC_q15_basic, 1);
        c.check(arm_convolve_HWC_q15_fast, 2, (g.in_channels | g.out_channels) % 2 != 0);
      }
    }
  }
}

TEST(FixedConvolution, DepthwiseKernelsAreTheNaiveLoop) {
  for (ConvGeometry g : kShapes) {
    for (const uint32_t multiplier : {1u, 2u, 3u}) {
      g.out_channels = g.in_channels * multiplier;
      Convolution<q7_t> c{g, 7, true}, unbiased = c;
      unbiased.bias = {};
      for (const auto* layer : {&c, &unbiased}) {
        layer->check(ko_fxp_depthwise_conv_HWC_q7_nonsquare, 0);
        layer->check(arm_depthwise_separable_conv_HWC_q7_nonsquare, 0, multiplier != 1);
      }
    }
  }
  const Convolution<q7_t> none{{3, 2, 0, 0, 2, 2, 0, 0, 1, 1, 2, 1}, 7, true};
  none.check(arm_depthwise_separable_conv_HWC_q7_nonsquare, 0);
}

TEST(FixedProducts, DenseAndMatrixKernelsAreTheNaiveLoop) {
  for (const uint32_t rows : {1u, 2u, 3u, 4u, 5u, 9u}) {
    for (uint32_t length = 1; length < 70; ++length) {
      const ConvGeometry vector = {1, 1, length, rows, 1, 1, 0, 0, 1, 1, 1, 1};
      const auto with_and_without_bias = [](auto dense, auto* kernel, uint32_t columns) {
        dense.check(kernel, columns);
        dense.bias = {};
        dense.check(kernel, columns);
      };
      for (const uint32_t columns : {0u, 1u}) {
        with_and_without_bias(Convolution<q7_t>{vector}, ko_fxp_fully_connected_q7, columns);
      }
      with_and_without_bias(Convolution<q15_t, q7_t>{vector, 10},
                            arm_fully_connected_mat_q7_vec_q15, 0);
      with_and_without_bias(Convolution<q15_t>{vector, 17}, arm_fully_connected_q15, 0);

      const Convolution<q7_t> two{{2, 1, length, rows, 1, 1, 0, 0, 1, 1, 2, 1}};
      const Values<q15_t> columns(two.in.begin(), two.in.end());
      Values<q15_t> reordered(columns.size());
      arm_q7_to_q15_reordered_no_shift(two.in.data(), reordered.data(), length);
      arm_q7_to_q15_reordered_no_shift(&two.in[length], &reordered[length], length);
      Values<q7_t> out(size_t{2} * rows), out_reordered = out;
      const auto run = [&](auto kernel, const Values<q15_t>& pair, Values<q7_t>& to) {
        EXPECT_EQ(kernel(two.weights.data(), pair.data(), u16(rows), u16(length), two.bias_shift,
                         two.out_shift, two.bias.data(), to.data()),
                  to.data() + to.size());
        EXPECT_EQ(to, two.naive());
      };
      run(arm_nn_mat_mult_kernel_q7_q15, columns, out);
      run(arm_nn_mat_mult_kernel_q7_q15_reordered, reordered, out_reordered);
    }
  }
}

// Values computed elsewhere, so that loop and kernels do not share a mistake.
TEST(FixedConvolution, AnchorsHold) {
  Convolution<q7_t> q7{{5, 4, 3, 2, 3, 2, 1, 0, 2, 1, 3, 3}};
  q7.in = anchor_values<q7_t>(q7.in.size(), 37, 11);
  q7.weights = anchor_values<q7_t>(q7.weights.size(), 53, 7);
  q7.bias = anchor_values<q7_t>(2, 29, 3);
  EXPECT_EQ(q7.naive(), (Values<q7_t>{-23, -24, -31, -55, 15, -58, -26, 3, -42, 26, -38, -25, -25,
                                      67, -7, 62, -38, 60}));
  Convolution<q15_t> q15{{3, 3, 2, 2, 2, 2, 0, 0, 1, 1, 2, 2}, 12};
  q15.bias_shift = 4;
  q15.in = anchor_values<q15_t>(q15.in.size(), 1237, 101);
  q15.weights = anchor_values<q15_t>(q15.weights.size(), 797, 55);
  q15.bias = anchor_values<q15_t>(2, 611, 9);
  EXPECT_EQ(q15.naive(), (Values<q15_t>{903, -599, 427, -689, 1244, -913, -538, -492}));
  Values<q15_t> order(10);
  arm_q7_to_q15_reordered_no_shift(Values<q7_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}.data(), order.data(),
                                   10);
  EXPECT_EQ(order, (Values<q15_t>{1, 3, 2, 4, 5, 7, 6, 8, 9, 10}));
}

}  // namespace
