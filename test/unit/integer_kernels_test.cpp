// SPDX-License-Identifier: MIT
// The integer kernels: requantization against wide arithmetic, the reference convolution against
// the formula, and every other kernel against the reference, over shapes at the edges of their
// blocks, on exactly sized scratch full of rubbish.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "kernels/ko_convolve_HWC.h"
#include "kernels/ko_convolve_HWC_reference.h"
#include "kernels/ko_depthwise_separable_conv_HWC.h"
#include "kernels/ko_fully_connected.h"
#include "kernels/ko_nn_mat_mult_kernel.h"
#include "kernels/ko_requantize.h"
#include "kernels/ko_requantize.hpp"
#include "kernels/ko_widen.h"
#include "kernels/vector.hpp"

namespace {

std::mt19937 random_bits(20240229);

int32_t random_between(int32_t low, int32_t high) {
  return std::uniform_int_distribution<int32_t>(low, high)(random_bits);
}

// --- requantization -------------------------------------------------------------------------

#if defined(__SIZEOF_INT128__)
__extension__ typedef __int128 Wide;
#else
typedef int64_t Wide;  // just enough
#endif

Wide floor_shift(Wide value, int bits) {
  const Wide unit = Wide{1} << bits;
  return (value - ((value % unit + unit) % unit)) / unit;
}

// The statement of ko_requantize.h. Beyond 60 bits a shift leaves nothing either way.
int64_t requantize_model(int32_t acc, int32_t multiplier, int32_t shift, int32_t zeropoint) {
  const int left = shift > 0 ? 1 : static_cast<int>(std::min(1 - shift, int32_t{32}));
  const auto t =
      static_cast<int32_t>(static_cast<uint32_t>(uint64_t{static_cast<uint32_t>(acc)} << left));
  const Wide product = Wide{t} * multiplier;
  if (shift <= 0) {
    return static_cast<int64_t>(floor_shift(product + (Wide{1} << 31), 32) + zeropoint);
  }
  const int right = static_cast<int>(std::min(shift, int32_t{60}));
  return static_cast<int64_t>(
      floor_shift(floor_shift(product, 32) + (Wide{1} << (right - 1)), right) + zeropoint);
}

TEST(Requantize, IsTheStatedArithmetic) {
  std::vector<int32_t> accumulators = {INT32_MIN, INT32_MIN + 1, INT32_MAX, 1 << 30, -(1 << 30)};
  for (int32_t i = -40; i <= 40; ++i) {
    accumulators.push_back(i);
    accumulators.push_back(random_between(INT32_MIN, INT32_MAX));
    accumulators.push_back(random_between(-100000, 100000));
  }
  std::vector<int32_t> shifts = {-32768, -33, -32, 32, 33, 64, 149, 32767};
  for (int32_t s = -31; s <= 31; ++s) {
    shifts.push_back(s);
  }
  const int32_t multipliers[] = {0,        1, 1 << 30, (1 << 30) + 1, 1518500250, INT32_MAX - 1,
                                 INT32_MAX};
  for (int32_t multiplier : multipliers) {
    for (int32_t shift : shifts) {
      for (int32_t acc : accumulators) {
        for (int32_t zeropoint : {-128, 0, 3, 255}) {
          ASSERT_EQ(requantize_model(acc, multiplier, shift, zeropoint),
                    nnlib::requantize(acc, multiplier, shift, zeropoint))
              << acc << " * " << multiplier << " >> " << shift << " + " << zeropoint;
        }
      }
    }
  }
}

TEST(AlignFactor, NormalisesToOneHalfUpToOne) {
  struct {
    float scale;
    int32_t multiplier;
    int shift;
  } const rows[] = {
      {0.5f, 1 << 30, 0},
      {std::nextafter(0.5f, 1.0f), (1 << 30) + 128, 0},
      {std::nextafter(0.5f, 0.0f), INT32_MAX - 127, 1},
      {1.0f, INT32_MAX, 0},
      {std::nextafter(1.0f, 0.0f), INT32_MAX - 127, 0},
      {std::nextafter(1.0f, 2.0f), (1 << 30) + 128, -1},
      {2.0f, INT32_MAX, -1},
      {0.25f, 1 << 30, 1},
      {0.001f, 1099511680, 9},
      {3.0f, 1610612736, -2},
      {std::numeric_limits<float>::max(), INT32_MAX - 127, -128},
      {std::numeric_limits<float>::denorm_min(), 1 << 30, 148},
      {0.0f, 0, 0},
      {-0.25f, 0, 0},
      {INFINITY, 0, 0},
      {NAN, 0, 0},
  };
  for (const auto& row : rows) {
    uint16_t shift = 0x5A5A;
    EXPECT_EQ(row.multiplier, align_factor(row.scale, &shift)) << row.scale;
    EXPECT_EQ(static_cast<uint16_t>(row.shift), shift) << row.scale;
  }
}

TEST(AlignFactor, OfChannelsMultipliesBeforeItDivides) {
  using limits = std::numeric_limits<float>;
  for (const float one : {0.5f, limits::min(), limits::denorm_min(), limits::max(), 0.0f, -0.25f,
                          static_cast<float>(INFINITY), static_cast<float>(NAN)}) {
    const float scales[] = {0.1f, 3.3e-3f, 7.0f, 0.0123f, 0.3f / 0.7f, one, 1.5e-4f, 4.0f, 1.7f};
    int32_t multipliers[9];
    int16_t shifts[9];
    align_factor_ch(0.7f, 0.3f, scales, 9, multipliers, shifts);
    for (int i = 0; i < 9; ++i) {
      uint16_t shift = 0;
      EXPECT_EQ(align_factor((scales[i] * 0.7f) / 0.3f, &shift), multipliers[i]) << i << " " << one;
      EXPECT_EQ(static_cast<int16_t>(shift), shifts[i]) << i << " " << one;
    }
  }
}

// --- convolutions ---------------------------------------------------------------------------

struct Shape {
  uint16_t in_width, in_height, in_channels, out_channels, kernel_width, kernel_height;
  uint16_t pad_x, pad_y, stride_x, stride_y, out_width, out_height;

  uint32_t column() const { return uint32_t{kernel_width} * kernel_height * in_channels; }
  size_t inputs() const { return size_t{in_width} * in_height * in_channels; }
  size_t outputs() const { return size_t{out_width} * out_height * out_channels; }
};

// Values of the whole range, of its ends only, or so near the zero points that sums are small and
// the last bits of their requantization count; without biases, these come from the products alone.
enum class Values { kAny, kEnds, kNear, kNearWithoutBias };
constexpr Values kAllValues[] = {Values::kAny, Values::kEnds, Values::kNear,
                                 Values::kNearWithoutBias};

// The data of a call; vectors have no spare element, so that a sanitizer sees a step outside.
template <class Form>
struct Problem {
  using Activation = typename Form::Activation;
  using Weight = typename Form::Weight;

  Problem(const Shape& s, Values kind) : shape(s) {
    const bool near = kind == Values::kNear || kind == Values::kNearWithoutBias;
    const auto fill = [kind, near](auto& values, size_t count) {
      using T = typename std::remove_reference_t<decltype(values)>::value_type;
      using Limits = std::numeric_limits<T>;
      values.resize(count);
      for (T& value : values) {
        const int32_t any = random_between(Limits::min(), Limits::max());
        const int32_t end = any & 1 ? Limits::min() : Limits::max();
        const int32_t middle = (Limits::min() + Limits::max() + 1) / 2 + any % 2;
        value = static_cast<T>(near ? middle : kind == Values::kEnds ? end : any);
      }
    };
    fill(in, s.inputs());
    fill(weights, size_t{s.column()} * s.out_channels);
    std::vector<Activation> zeropoints;
    fill(zeropoints, 2);
    in_zeropoint = zeropoints[0];
    out_zeropoint = zeropoints[1];
    fill(weight_zeropoints, Form::kChannels ? s.out_channels : 1);
    const auto spread = std::sqrt(static_cast<double>(s.column())) * 128 * 100;
    const int32_t most = near ? 9 : 3 * static_cast<int32_t>(spread);
    for (uint32_t i = 0; i < s.out_channels; ++i) {
      if (kind != Values::kNearWithoutBias) {
        bias.push_back(random_between(-most, most));
      }
      // Some outputs saturate; now and then a pair far off what networks have, even of more than
      // eight bits, but not with all values: kernels may have a way of their own for the usual
      // shifts.
      const auto usual = static_cast<int32_t>(std::lround(std::log2(spread / 100)));
      const int32_t other = random_between(-40, 40);
      shift.push_back(static_cast<int16_t>(near ? (other + 40) % 8 - 4
                                           : kind == Values::kEnds
                                               ? usual + static_cast<int32_t>(i % 3)
                                           : i % 5 == 4 ? other + other % 2 * 256
                                                        : usual));
      multiplier.push_back(random_between(1 << 30, INT32_MAX));
    }
    if (!Form::kChannels) {
      multiplier.resize(1);
      shift.resize(1);
    }
  }

  const int32_t* biases() const { return bias.empty() ? nullptr : bias.data(); }
  int32_t weight_zeropoint(uint32_t channel) const {
    return Form::kAsymmetric ? weight_zeropoints[Form::kChannels ? channel : 0] : 0;
  }

  Shape shape;
  std::vector<Activation> in;
  std::vector<Weight> weights;
  std::vector<Weight> weight_zeropoints;
  std::vector<int32_t> bias, multiplier;
  std::vector<int16_t> shift;
  Activation in_zeropoint, out_zeropoint;
};

using Scratch = std::unique_ptr<uint8_t[]>;

Scratch rubbish(size_t bytes) {
  Scratch scratch(new uint8_t[bytes]);
  for (size_t i = 0; i < bytes; ++i) {
    scratch[i] = static_cast<uint8_t>(random_bits());
  }
  return scratch;
}

#define ZEROPOINTS_uint8(p) p.in_zeropoint, p.weight_zeropoints.data(), p.out_zeropoint
#define ZEROPOINTS_int8symwt(p) p.in_zeropoint, p.out_zeropoint
#define ZEROPOINTS_int8_int8symwt(p) p.in_zeropoint, p.out_zeropoint
#define WEIGHT_ZEROPOINT_uint8(p) p.weight_zeropoints.data(),
#define WEIGHT_ZEROPOINT_int8symwt(p)
#define WEIGHT_ZEROPOINT_int8_int8symwt(p)

#define CONVOLUTION(types, p)                                                              \
  p.in.data(), p.shape.in_width, p.shape.in_height, p.shape.in_channels, p.weights.data(), \
      p.shape.out_channels, p.shape.kernel_width, p.shape.kernel_height, p.shape.pad_x,    \
      p.shape.pad_y, p.shape.stride_x, p.shape.stride_y, p.biases(), p.multiplier.data(),  \
      p.shift.data(), ZEROPOINTS_##types(p), out, p.shape.out_width, p.shape.out_height

// Of kernels that have nothing to refuse.
void succeeds(int32_t status) {
  EXPECT_EQ(status, 0);
}

// The kernels of one form under names that a test can use for all of them.
#define FORM(types, suffix)                                                                        \
  struct Form_##types##suffix {                                                                    \
    using Activation = KO_ACTIVATION(types);                                                       \
    using Weight = KO_WEIGHT(types);                                                               \
    using Data = Problem<Form_##types##suffix>;                                                    \
    static constexpr bool kChannels = sizeof(#suffix) > 1;                                         \
    static constexpr bool kAsymmetric = std::is_unsigned_v<Weight>;                                \
    static void reference(const Data& p, Activation* out) {                                        \
      succeeds(ko_##types##_convolve_HWC_reference##suffix(CONVOLUTION(types, p)));                \
    }                                                                                              \
    static void rank1upd(const Data& p, void* scratch) {                                           \
      succeeds(ko_##types##_convolve_HWC_basic_rank1upd##suffix(                                   \
          p.shape.in_channels, p.weights.data(), p.shape.out_channels, p.shape.kernel_width,       \
          p.shape.kernel_height, p.biases(), p.in_zeropoint, scratch));                            \
    }                                                                                              \
    static void basic(const Data& p, Activation* out, void* scratch) {                             \
      rank1upd(p, scratch);                                                                        \
      succeeds(ko_##types##_convolve_HWC_basic_nonsquare##suffix(CONVOLUTION(types, p), scratch)); \
    }                                                                                              \
    static void rgb(const Data& p, Activation* out, void* scratch) {                               \
      rank1upd(p, scratch);                                                                        \
      succeeds(ko_##types##_convolve_HWC_RGB##suffix(                                              \
          p.in.data(), p.shape.in_width, p.shape.in_channels, p.weights.data(),                    \
          p.shape.out_channels, p.shape.kernel_width, p.shape.pad_x, p.shape.stride_x, p.biases(), \
          p.multiplier.data(), p.shift.data(), ZEROPOINTS_##types(p), out, p.shape.out_width,      \
          scratch));                                                                               \
    }                                                                                              \
    static void fast_1x1(const Data& p, Activation* out, void* scratch) {                          \
      succeeds(                                                                                    \
          ko_##types##_convolve_1x1_HWC_fast_nonsquare##suffix(CONVOLUTION(types, p), scratch));   \
    }                                                                                              \
    static Activation* mat_mult(const Data& p, Activation* out, int16_t* columns) {                \
      return ko_##types##_nn_mat_mult_kernel##suffix(                                              \
          p.weights.data(), columns, p.shape.out_channels,                                         \
          static_cast<uint16_t>(p.shape.column()), p.shift.data(), p.multiplier.data(),            \
          ZEROPOINTS_##types(p), out);                                                             \
    }                                                                                              \
    static Activation* mat_mult_reordered(const Data& p, Activation* out, int16_t* columns) {      \
      return ko_##types##_nn_mat_mult_kernel_reordered##suffix(                                    \
          p.weights.data(), columns, p.shape.out_channels,                                         \
          static_cast<uint16_t>(p.shape.column()), p.shift.data(), p.multiplier.data(),            \
          ZEROPOINTS_##types(p), out);                                                             \
    }                                                                                              \
    static void depthwise(const Data& p, Activation* out, void* scratch) {                         \
      succeeds(ko_##types##_DW_HWC_Wadapt##suffix(p.weights.data(), p.shape.in_channels,           \
                                                  p.shape.kernel_width, p.shape.kernel_height,     \
                                                  WEIGHT_ZEROPOINT_##types(p) scratch));           \
      succeeds(ko_##types##_depthwise_separable_conv_HWC_nonsquare##suffix(CONVOLUTION(types, p),  \
                                                                           scratch));              \
    }                                                                                              \
    static void dense(const Data& p, Activation* out, void* scratch) {                             \
      succeeds(ko_##types##_fully_connected##suffix(                                               \
          p.in.data(), p.weights.data(), static_cast<uint16_t>(p.shape.column()),                  \
          p.shape.out_channels, p.multiplier.data(), p.shift.data(), ZEROPOINTS_##types(p),        \
          p.biases(), out, scratch));                                                              \
    }                                                                                              \
  };
KO_FORMS(FORM)

template <class Form>
using Output = std::vector<typename Form::Activation>;

// The formula. depthwise: one input channel for each output channel, weights [tap][channel].
template <class Form>
Output<Form> expected(const Problem<Form>& p, bool depthwise = false) {
  const Shape& s = p.shape;
  Output<Form> out;
  for (int y = 0; y < s.out_height; ++y) {
    for (int x = 0; x < s.out_width; ++x) {
      for (uint32_t o = 0; o < s.out_channels; ++o) {
        int64_t acc = p.bias.empty() ? 0 : p.bias[o];
        for (int tap = 0; tap < s.kernel_width * s.kernel_height; ++tap) {
          const int row = s.stride_y * y + tap / s.kernel_width - s.pad_y;
          const int column = s.stride_x * x + tap % s.kernel_width - s.pad_x;
          if (row < 0 || row >= s.in_height || column < 0 || column >= s.in_width) {
            continue;
          }
          const auto* pixel = &p.in[static_cast<size_t>(row * s.in_width + column) * s.in_channels];
          const auto t = static_cast<size_t>(tap);
          const size_t taps = size_t{s.kernel_width} * s.kernel_height;
          for (uint32_t c = depthwise ? o : 0; c < (depthwise ? o + 1 : s.in_channels); ++c) {
            const size_t w = depthwise ? t * s.in_channels + c : (o * taps + t) * s.in_channels + c;
            acc += (p.weights[w] - p.weight_zeropoint(o)) * (pixel[c] - p.in_zeropoint);
          }
        }
        const size_t pair = Form::kChannels ? o : 0;
        const int64_t value = requantize_model(static_cast<int32_t>(acc), p.multiplier[pair],
                                               p.shift[pair], p.out_zeropoint);
        using Limits = std::numeric_limits<typename Form::Activation>;
        out.push_back(static_cast<typename Form::Activation>(
            std::min<int64_t>(std::max<int64_t>(value, Limits::min()), Limits::max())));
      }
    }
  }
  return out;
}

// Elements behind an output that must stay as they are, where no sanitizer watches over them.
#if defined(__linux__)
constexpr size_t kGuard = 0;
#else
constexpr size_t kGuard = 16;
#endif

template <class Form>
class IntegerKernels : public testing::Test {
 protected:
  // Runs a kernel on the narrow and on the wide instance and compares.
  template <class Kernel>
  void check(const Output<Form>& want, size_t scratch_bytes, Kernel kernel) {
    for (bool wide : {false, true}) {
      nnlib::vector_allow_wide(wide);
      Output<Form> got(want.size() + kGuard, typename Form::Activation{77});
      const Scratch scratch = rubbish(scratch_bytes);
      kernel(got.data(), scratch.get());
      Output<Form> guarded = want;
      guarded.resize(got.size(), typename Form::Activation{77});
      ASSERT_EQ(guarded, got) << (wide ? "wide" : "narrow");
    }
  }

  void check_columns(const Problem<Form>& p, bool rgb) {
    SCOPED_TRACE(testing::Message() << "K " << p.shape.column() << ", out " << p.shape.out_width
                                    << "x" << p.shape.out_height << "x" << p.shape.out_channels);
    const Output<Form> want = expected(p);
    check(want, 0, [&](auto* out, void*) { Form::reference(p, out); });
    const uint32_t bytes = ko_convolve_HWC_scratch_size(
        p.shape.in_channels, p.shape.out_channels, p.shape.kernel_width, p.shape.kernel_height);
    check(want, bytes, [&](auto* out, void* scratch) { Form::basic(p, out, scratch); });
    if (rgb) {
      check(want, bytes, [&](auto* out, void* scratch) { Form::rgb(p, out, scratch); });
    }
  }
};

using Forms = testing::Types<Form_uint8, Form_uint8_CH, Form_int8symwt, Form_int8symwt_CH,
                             Form_int8_int8symwt, Form_int8_int8symwt_CH>;
TYPED_TEST_SUITE(IntegerKernels, Forms);

TYPED_TEST(IntegerKernels, ConvolutionsEqualTheFormula) {
  // in W H C, out C, kernel x y, pad x y, stride x y, out W H
  const Shape shapes[] = {
      {5, 4, 3, 5, 3, 2, 1, 0, 2, 1, 3, 3},   {7, 5, 16, 4, 3, 3, 1, 1, 1, 1, 7, 5},
      {4, 6, 1, 7, 3, 3, 0, 0, 1, 1, 2, 4},   {9, 3, 2, 1, 5, 1, 2, 0, 3, 1, 3, 3},
      {3, 3, 5, 9, 2, 3, 1, 2, 1, 2, 4, 3},   {6, 5, 4, 3, 3, 3, 0, 0, 2, 2, 3, 3},  // hanging over
      {3, 2, 8, 2, 5, 5, 2, 2, 1, 1, 3, 2},   {4, 3, 1, 8, 1, 2, 3, 3, 2, 2, 5, 4},  // outside
      {5, 5, 64, 9, 2, 2, 0, 0, 1, 1, 4, 4},  {3, 2, 257, 3, 3, 3, 1, 1, 2, 1, 2, 2},
      {5, 4, 29, 18, 3, 3, 1, 1, 1, 1, 5, 4}, {1, 1, 15, 6, 1, 1, 0, 0, 1, 1, 1, 1},
      {7, 5, 5, 35, 1, 3, 0, 1, 1, 1, 7, 5},  {6, 5, 40, 18, 3, 3, 1, 1, 1, 1, 6, 5},
  };
  for (Values values : kAllValues) {
    for (const Shape& shape : shapes) {
      this->check_columns(Problem<TypeParam>(shape, values), false);
    }
    for (uint16_t channels : {1, 2, 3, 4, 5, 8, 9, 17}) {
      this->check_columns(Problem<TypeParam>({7, 7, 3, channels, 3, 3, 1, 1, 2, 2, 4, 4}, values),
                          true);
    }
  }
}

TYPED_TEST(IntegerKernels, PointwiseEqualsTheFormula) {
  for (uint16_t in : {1, 3, 4, 7, 8, 9, 15, 16, 17, 31, 33, 64}) {
    for (uint16_t out : {1, 2, 3, 4, 5, 8, 9}) {
      const uint16_t height = in % 2 == 0 ? 2 : 3;
      for (Values values : kAllValues) {
        const Problem<TypeParam> p({9, height, in, out, 1, 1, 0, 0, 1, 1, 9, height}, values);
        this->check(expected(p), ko_convolve_HWC_scratch_size(in, out, 1, 1),
                    [&](auto* to, void* scratch) { TypeParam::fast_1x1(p, to, scratch); });
      }
    }
  }
}

TYPED_TEST(IntegerKernels, DepthwiseEqualsTheFormula) {
  const Shape shapes[] = {
      {6, 5, 0, 0, 3, 3, 1, 1, 1, 1, 6, 5},   {5, 7, 0, 0, 2, 3, 0, 2, 2, 1, 2, 6},
      {4, 4, 0, 0, 1, 1, 0, 0, 1, 1, 4, 4},   {3, 5, 0, 0, 5, 4, 3, 3, 3, 2, 3, 3},
      {9, 4, 0, 0, 3, 3, 0, 0, 1, 1, 7, 2},   {11, 3, 0, 0, 3, 3, 1, 1, 1, 1, 11, 3},
      {12, 6, 0, 0, 10, 5, 1, 1, 1, 1, 3, 2},  // as many taps as blocks of four channels take
      {13, 5, 0, 0, 13, 5, 6, 2, 7, 3, 2, 2},  // one tap more than the wide instance takes
  };
  for (Shape shape : shapes) {
    for (uint16_t channels : {1, 2, 3, 4, 5, 7, 8, 9, 12, 17, 23}) {
      shape.in_channels = shape.out_channels = channels;
      for (Values values : kAllValues) {
        Problem<TypeParam> p(shape, values);
        p.weights.resize(size_t{shape.kernel_width} * shape.kernel_height * channels);
        this->check(expected(p, true),
                    ko_depthwise_separable_conv_HWC_scratch_size(channels, shape.kernel_width,
                                                                 shape.kernel_height),
                    [&](auto* out, void* scratch) { TypeParam::depthwise(p, out, scratch); });
      }
    }
  }
}

TYPED_TEST(IntegerKernels, WithoutOutputsNothingIsWritten) {
  const Shape whole = {4, 3, 5, 5, 1, 1, 0, 0, 1, 1, 4, 3};
  for (uint16_t Shape::*none : {&Shape::out_width, &Shape::out_height, &Shape::out_channels}) {
    Problem<TypeParam> p(whole, Values::kAny);
    p.shape.*none = 0;
    const Output<TypeParam> untouched(whole.outputs(), typename TypeParam::Activation{77});
    for (const auto kernel : {TypeParam::basic, TypeParam::fast_1x1, TypeParam::depthwise}) {
      this->check(untouched, 1000, [&](auto* out, void* scratch) { kernel(p, out, scratch); });
    }
  }
}

TYPED_TEST(IntegerKernels, FullyConnectedEqualsTheFormula) {
  for (uint16_t length : {1, 2, 5, 8, 15, 16, 17, 40, 1027}) {
    for (uint16_t rows : {1, 2, 3, 7, 8, 9, 17}) {
      for (Values values : kAllValues) {
        const Problem<TypeParam> p({1, 1, length, rows, 1, 1, 0, 0, 1, 1, 1, 1}, values);
        const Output<TypeParam> want = expected(p);
        this->check(want, 0, [&](auto* out, void*) { TypeParam::dense(p, out, nullptr); });
        this->check(want, ko_fully_connected_scratch_size(length),
                    [&](auto* out, void* scratch) { TypeParam::dense(p, out, scratch); });
      }
    }
  }
}

// Two columns and corrected biases through the public matrix kernels; and interleaved columns
// without the zero point, with biases as they are.
TYPED_TEST(IntegerKernels, MatrixKernelsReadTheBiasesBehindTheColumns) {
  for (uint16_t length : {1, 4, 6, 11, 18, 36}) {
    Problem<TypeParam> p({2, 1, length, 5, 1, 1, 0, 0, 1, 1, 2, 1}, Values::kAny);
    const Output<TypeParam> want = expected(p);
    const size_t bytes = ko_convolve_HWC_scratch_size(length, 5, 1, 1);
    this->check(want, bytes, [&](auto* out, void* scratch) {
      auto* columns = static_cast<int16_t*>(scratch);
      std::copy(p.in.begin(), p.in.end(), columns);
      TypeParam::rank1upd(p, scratch);
      EXPECT_EQ(out + want.size(), TypeParam::mat_mult(p, out, columns));
    });
    Problem<TypeParam> zero = p;
    zero.in_zeropoint = 0;
    this->check(want, bytes, [&](auto* out, void* scratch) {
      auto* columns = static_cast<int16_t*>(scratch);
      for (size_t pixel = 0; pixel < 2; ++pixel) {
        const auto* in = p.in.data() + pixel * length;
        if constexpr (std::is_signed_v<typename TypeParam::Activation>) {
          ko_int8_reordered_no_shift_zero(in, columns + pixel * length, length, 0, p.in_zeropoint);
        } else {
          ko_uint8_reordered_no_shift_zero(in, columns + pixel * length, length, 0, p.in_zeropoint);
        }
      }
      std::memcpy(columns + size_t{length} * 2, p.bias.data(), 5 * sizeof(int32_t));
      EXPECT_EQ(out + want.size(), TypeParam::mat_mult_reordered(zero, out, columns));
    });
  }
}

TEST(IntegerHelpers, WidenAndInterleave) {
  const uint8_t bytes[] = {200, 1, 255, 3, 128, 5, 6, 7, 8, 9};
  const int8_t small[] = {-128, 1, 127, -3, 4, 5, -6, 7, 8, -9};
  int16_t wide[10];
  const auto expect = [&wide](std::vector<int16_t> want) {
    EXPECT_EQ(want, std::vector<int16_t>(wide, wide + 10));
  };
  ko_uint8_to16_no_shift(bytes, wide, 10);
  expect({200, 1, 255, 3, 128, 5, 6, 7, 8, 9});
  ko_uint8_reordered_no_shift(bytes, wide, 10);
  expect({200, 255, 1, 3, 128, 6, 5, 7, 8, 9});
  ko_int8_reordered_no_shift(small, wide, 10);
  expect({-128, 127, 1, -3, 4, -6, 5, 7, 8, -9});
  ko_uint8_reordered_no_shift_zero(bytes, wide, 10, 0x00FF00FF, 255);
  expect({-55, 0, -254, -252, -127, -249, -250, -248, -247, -246});
  uint8_t filled[3] = {1, 2, 3};
  ko_uint8_fill(200, filled, 2);
  EXPECT_EQ(200, filled[0]);
  EXPECT_EQ(200, filled[1]);
  EXPECT_EQ(3, filled[2]);
}

}  // namespace
