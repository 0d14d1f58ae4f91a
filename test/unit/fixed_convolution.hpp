// SPDX-License-Identifier: MIT
// Fixed-point convolution by one naive loop, with the calls of the kernels that must equal it.
#ifndef NNLIB_TEST_UNIT_FIXED_CONVOLUTION_HPP
#define NNLIB_TEST_UNIT_FIXED_CONVOLUTION_HPP

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <vector>

#include "kernels/arm_types.h"
#include "kernels/conv_geometry.hpp"
#include "kernels/vector.hpp"

using nnlib::ConvGeometry;
template <class T>
using Values = std::vector<T>;

template <class T>
Values<T> random_values(size_t count, uint32_t seed) {
  std::mt19937 random(seed);
  Values<T> values(count);
  for (T& value : values) {
    value = static_cast<T>(random());
  }
  return values;
}

inline uint16_t u16(uint32_t size) {
  return static_cast<uint16_t>(size);
}

template <class T>
using AnyShape = arm_status(const T*, uint16_t, uint16_t, uint16_t, const T*, uint16_t, uint16_t,
                            uint16_t, uint16_t, uint16_t, uint16_t, uint16_t, const T*, uint16_t,
                            uint16_t, T*, uint16_t, uint16_t, q15_t*, q7_t*);
template <class T>
using Square = arm_status(const T*, uint16_t, uint16_t, const T*, uint16_t, uint16_t, uint16_t,
                          uint16_t, const T*, uint16_t, uint16_t, T*, uint16_t, q15_t*, q7_t*);
template <class T, class W>
using Dense = arm_status(const T*, const W*, uint16_t, uint16_t, uint16_t, uint16_t, const W*, T*,
                         q15_t*);

// A convolution of maps of T with weights of W. A 1x1 map makes it a dense layer.
template <class T, class W = T>
struct Convolution {
  ConvGeometry g;
  uint16_t out_shift = sizeof(T) == 1 ? 9 : 16;
  bool depthwise = false;
  uint16_t bias_shift = 3;
  Values<T> in = random_values<T>(size_t{g.in_width} * g.in_height * g.in_channels, 1);
  Values<W> weights = random_values<W>(
      size_t{g.kernel_width} * g.kernel_height * g.out_channels * (depthwise ? 1 : g.in_channels),
      2);
  Values<W> bias = random_values<W>(g.out_channels, 3);

  int64_t sum(uint32_t y, uint32_t x, uint32_t o) const {
    int64_t total = 0;
    for (uint32_t tap = 0; tap < g.kernel_width * g.kernel_height; ++tap) {
      const uint32_t row = y * g.stride_y + tap / g.kernel_width - g.pad_y;  // above: very large
      const uint32_t column = x * g.stride_x + tap % g.kernel_width - g.pad_x;
      if (row >= g.in_height || column >= g.in_width) {
        continue;
      }
      const T* pixel = &in[(row * g.in_width + column) * g.in_channels];
      if (depthwise) {
        total += pixel[o / (g.out_channels / g.in_channels)] * weights[tap * g.out_channels + o];
        continue;
      }
      const W* filter = &weights[(o * g.kernel_width * g.kernel_height + tap) * g.in_channels];
      for (uint32_t l = 0; l < g.in_channels; ++l) {
        total += int64_t{pixel[l]} * filter[l];
      }
    }
    return total;
  }
  T output(uint32_t y, uint32_t x, uint32_t o) const {
    const int64_t start = (bias.empty() ? 0 : bias[o]) * (int64_t{1} << bias_shift);
    const int64_t total = start + sum(y, x, o) + (out_shift > 0 ? 1 << (out_shift - 1) : 0);
    const int32_t shifted = static_cast<int32_t>(static_cast<uint32_t>(total)) >> out_shift;
    return static_cast<T>(
        std::clamp<int32_t>(shifted, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
  }
  Values<T> naive() const {
    Values<T> out;
    for (uint32_t pixel = 0; pixel < g.pixels(); ++pixel) {
      for (uint32_t o = 0; o < g.out_channels; ++o) {
        out.push_back(output(pixel / g.out_width, pixel % g.out_width, o));
      }
    }
    return out;
  }

  // Of a layer whose input has 8 fractional bits, the weights 4 and the biases 6.
  Values<T> of_layer(int out_bits) const {
    Convolution layer = *this;
    layer.bias_shift = 12 - 6;
    layer.out_shift = u16(static_cast<uint32_t>(std::max(12 - out_bits, 0)));
    Values<T> out = layer.naive();
    for (T& value : out) {
      const int scaled = value * (1 << std::max(out_bits - 12, 0));
      value = static_cast<T>(
          std::clamp<int>(scaled, std::numeric_limits<T>::min(), std::numeric_limits<T>::max()));
    }
    return out;
  }

  const W* bias_data() const { return bias.empty() ? nullptr : bias.data(); }
  arm_status call(AnyShape<T>* kernel, T* out, q15_t* scratch) const {
    return kernel(in.data(), u16(g.in_width), u16(g.in_height), u16(g.in_channels), weights.data(),
                  u16(g.out_channels), u16(g.kernel_width), u16(g.kernel_height), u16(g.pad_x),
                  u16(g.pad_y), u16(g.stride_x), u16(g.stride_y), bias_data(), bias_shift,
                  out_shift, out, u16(g.out_width), u16(g.out_height), scratch, nullptr);
  }
  arm_status call(Square<T>* kernel, T* out, q15_t* scratch) const {
    return kernel(in.data(), u16(g.in_width), u16(g.in_channels), weights.data(),
                  u16(g.out_channels), u16(g.kernel_width), u16(g.pad_x), u16(g.stride_x),
                  bias_data(), bias_shift, out_shift, out, u16(g.out_width), scratch, nullptr);
  }
  arm_status call(Dense<T, W>* kernel, T* out, q15_t* scratch) const {
    return kernel(in.data(), weights.data(), u16(g.in_channels), u16(g.out_channels), bias_shift,
                  out_shift, bias_data(), out, scratch);
  }
  // The kernel's output is the naive loop's, or untouched if the kernel refuses, with and without
  // wide vectors. Its scratch of `columns` columns has just that size, is or is not on the address
  // of a word and holds rubbish.
  template <class Kernel>
  void check(Kernel* kernel, uint32_t columns, bool refused = false) const {
    const Values<T> untouched(size_t{g.pixels()} * g.out_channels, T{77});
    const Values<T> expected = refused ? untouched : naive();
    for (const bool wide : {false, true}) {
      nnlib::vector_allow_wide(wide);
      Values<T> out = untouched;
      const size_t at = wide && columns > 0;
      Values<q15_t> scratch = random_values<q15_t>(at + columns * g.column_length(), 4);
      EXPECT_EQ(call(kernel, out.data(), scratch.data() + at),
                refused ? ARM_MATH_SIZE_MISMATCH : ARM_MATH_SUCCESS);
      EXPECT_EQ(out, expected) << g.in_width << "x" << g.in_height << "x" << g.in_channels;
    }
  }
};

#endif
