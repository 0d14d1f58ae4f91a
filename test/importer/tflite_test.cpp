// SPDX-License-Identifier: MIT
// TFLite operators, from the file to the numbers.
#include <gtest/gtest.h>

#include "importer/graph/refusals.hpp"
#include "importer/main/import_model.hpp"
#include "test/importer/tflite_model.hpp"
#include "test/reference/importer_tflite.h"

namespace nnlib::importer {
namespace {

const Shape kMap = {1, 6, 5, 4};

template <class T>
Bytes bytes_of(std::span<const T> elements) {
  return *make_bytes(elements);
}

// Runs the model and compares its output.
template <class T>
void expect(const TfliteModel& model, std::vector<Bytes> inputs, std::span<const T> expected,
            double tolerance) {
  Imported imported = import_model(model.bytes(), {});
  const Bytes out = Runner(*imported.network, imported.memory).run(inputs)[0];
  ASSERT_EQ(out.size(), expected.size_bytes());
  const auto* got = reinterpret_cast<const T*>(out.data());
  for (size_t i = 0; i < expected.size(); ++i) {
    ASSERT_NEAR(got[i], expected[i], tolerance) << "element " << i;
  }
}

// --- float
// ----------------------------------------------------------------------------------------

// A model with the map x as its first tensor, one operator, and the output as its last tensor.
class Float : public testing::Test {
 protected:
  TfliteModel m;
  const int in = m.input<float>(kMap);

  int row() { return m.constant<float>({1, 1, 1, 4}, reference_row()); }
  static std::span<const float> reference_row() { return ::row; }

  // Inputs are `in` and the constants given; the operator is checked against `expected`.
  template <class Options = tfl::SoftmaxT>
  void check(int32_t code, std::vector<int32_t> inputs, const Shape& shape,
             std::span<const float> expected, tfl::Options kind = tfl::Options_NONE,
             const Options& options = {}) {
    const int out = m.output<float>(shape);
    m.add(code, std::move(inputs), {out}, kind, options);
    std::vector<Bytes> values = {bytes_of<float>(::x)};
    if (m.graph().inputs.size() > 1) {
      values.push_back(bytes_of<float>(::y));
    }
    expect<float>(m, values, expected, 2e-6);
  }
};

TEST_F(Float, Conv2dWithStridesAndPaddingSame) {
  tfl::Conv2DT p;
  p.stride_h = 2;
  p.stride_w = 1;
  const int w = m.constant<float>({3, 3, 2, 4}, conv_w);
  check(3, {in, w, m.constant<float>({3}, conv_b)}, {1, 3, 5, 3}, conv_strided, tfl::Options_Conv2D,
        p);
}

TEST_F(Float, Conv2dDilatedWithRelu6) {
  tfl::Conv2DT p;
  p.stride_h = p.stride_w = 1;
  p.dilation_h = p.dilation_w = 2;
  p.activation = 3;
  const int w = m.constant<float>({3, 3, 2, 4}, conv_w);
  check(3, {in, w, m.constant<float>({3}, conv_b)}, {1, 6, 5, 3}, conv_dilated_relu6,
        tfl::Options_Conv2D, p);
}

TEST_F(Float, DepthwiseConv2dWithTwoOutputsAChannel) {
  tfl::DepthwiseConv2DT p;
  p.stride_h = 1;
  p.stride_w = 2;
  p.depth_multiplier = 2;
  const int w = m.constant<float>({1, 3, 2, 8}, depthwise_w);
  check(4, {in, w, m.constant<float>({8}, depthwise_b)}, {1, 6, 3, 8}, depthwise,
        tfl::Options_DepthwiseConv2D, p);
}

TEST_F(Float, TransposeConv) {
  tfl::TransposeConvT p;
  p.stride_h = 2;
  p.stride_w = 3;
  const int w = m.constant<float>({3, 3, 2, 4}, transpose_w);
  check(67, {m.integers({1, 12, 15, 3}), w, in}, {1, 12, 15, 3}, transpose_conv,
        tfl::Options_TransposeConv, p);
}

TEST_F(Float, FullyConnectedWithRelu) {
  tfl::FullyConnectedT p;
  p.activation = 1;
  const int w = m.constant<float>({7, 4}, dense_w);
  check(9, {in, w, m.constant<float>({7}, dense_b)}, {30, 7}, dense_relu,
        tfl::Options_FullyConnected, p);
}

TEST_F(Float, TwoOperandsRepeatWhereTheySay) {
  check(0, {in, row()}, kMap, add_row, tfl::Options_Add, tfl::BinaryT());
}
TEST_F(Float, Mul) {
  check(18, {in, m.input<float>(kMap)}, kMap, mul, tfl::Options_Mul, tfl::BinaryT());
}
TEST_F(Float, SubOfAConstant) {
  check(41, {row(), in}, kMap, row_sub, tfl::Options_Sub, tfl::BinaryT());
}
TEST_F(Float, Maximum) {
  check(55, {in, row()}, kMap, maximum_row);
}
TEST_F(Float, Minimum) {
  check(57, {in, m.input<float>(kMap)}, kMap, minimum);
}

tfl::Pool2DT pool_options() {
  tfl::Pool2DT p;
  p.filter_height = 3;
  p.filter_width = p.stride_h = p.stride_w = 2;
  return p;
}
TEST_F(Float, MaxPool) {
  check(17, {in}, {1, 3, 3, 4}, max_pool, tfl::Options_Pool2D, pool_options());
}
TEST_F(Float, AveragePool) {
  check(1, {in}, {1, 3, 3, 4}, average_pool, tfl::Options_Pool2D, pool_options());
}
TEST_F(Float, MeanOfTheMapIsAPool) {
  check(40, {in, m.integers({1, 2})}, {1, 4}, mean_hw);
}
TEST_F(Float, MeanOfTheChannels) {
  check(40, {in, m.integers({-1})}, {1, 6, 5}, mean_c);
}

TEST_F(Float, Softmax) {
  tfl::SoftmaxT p;
  p.beta = 1;
  check(25, {in}, kMap, softmax, tfl::Options_Softmax, p);
}
TEST_F(Float, Logistic) {
  check(14, {in}, kMap, logistic);
}
TEST_F(Float, HardSwish) {
  check(117, {in}, kMap, hard_swish);
}
TEST_F(Float, LeakyRelu) {
  tfl::LeakyReluT p;
  p.alpha = 0.25f;
  check(98, {in}, kMap, leaky_relu, tfl::Options_LeakyRelu, p);
}
TEST_F(Float, Elu) {
  check(111, {in}, kMap, elu);
}
TEST_F(Float, Prelu) {
  check(54, {in, row()}, kMap, prelu);
}

TEST_F(Float, PadOfThreeDimensions) {
  const int pads = m.constant<int32_t>({4, 2}, std::vector<int32_t>{0, 0, 1, 2, 0, 3, 1, 0});
  const int value = m.constant<float>({1}, std::vector<float>{-1.5f});
  check(60, {in, pads, value}, {1, 9, 8, 5}, pad);
}
TEST_F(Float, MirrorPad) {
  const int pads = m.constant<int32_t>({4, 2}, std::vector<int32_t>{0, 0, 2, 1, 1, 2, 0, 0});
  check(100, {in, pads}, {1, 9, 8, 4}, mirror_pad, tfl::Options_MirrorPad, tfl::MirrorPadT());
}
TEST_F(Float, Concatenation) {
  tfl::ConcatenationT p;
  p.axis = -2;
  check(2, {in, m.input<float>(kMap)}, {1, 6, 10, 4}, concat, tfl::Options_Concatenation, p);
}
TEST_F(Float, Slice) {
  check(65, {in, m.integers({0, 1, 2, 1}), m.integers({1, 4, 2, -1})}, {1, 4, 2, 3}, slice);
}
TEST_F(Float, StridedSliceWithMasksAndADroppedAxis) {
  tfl::StridedSliceT p;
  p.begin_mask = 5;
  p.end_mask = 7;
  p.shrink_axis_mask = 8;
  check(45, {in, m.integers({0, 1, 9, 2}), m.integers({0, 0, 0, 3}), m.integers({1, 2, 3, 1})},
        {1, 3, 2}, strided, tfl::Options_StridedSlice, p);
}
TEST_F(Float, Transpose) {
  check(39, {in, m.integers({0, 3, 1, 2})}, {1, 4, 6, 5}, transposed);
}
TEST_F(Float, ResizeNearest) {
  tfl::ResizeNearestT p;
  p.half_pixel_centers = true;
  check(97, {in, m.integers({12, 15})}, {1, 12, 15, 4}, nearest, tfl::Options_ResizeNearest, p);
}
TEST_F(Float, ResizeBilinearByHalfPixels) {
  tfl::ResizeBilinearT p;
  p.half_pixel_centers = true;
  check(23, {in, m.integers({9, 10})}, {1, 9, 10, 4}, linear_half, tfl::Options_ResizeBilinear, p);
}
TEST_F(Float, ResizeBilinearByCorners) {
  tfl::ResizeBilinearT p;
  p.align_corners = true;
  check(23, {in, m.integers({9, 10})}, {1, 9, 10, 4}, linear_corners, tfl::Options_ResizeBilinear,
        p);
}
TEST_F(Float, DepthToSpace) {
  tfl::BlockT p;
  p.block_size = 2;
  check(5, {in}, {1, 12, 10, 1}, depth_to_space, tfl::Options_DepthToSpace, p);
}

TEST(Tflite, SpaceToDepth) {
  TfliteModel m;
  tfl::BlockT p;
  p.block_size = 2;
  const int in = m.input<float>({1, 6, 4, 4});
  m.add(26, {in}, {m.output<float>({1, 3, 2, 16})}, tfl::Options_SpaceToDepth, p);
  expect<float>(m, {bytes_of<float>(narrow_x)}, space_to_depth, 0);
}

TEST(Tflite, SplitGivesEveryPart) {
  TfliteModel m;
  const int in = m.input<float>(kMap);
  tfl::SplitT p;
  p.num_splits = 2;
  const int first = m.output<float>({1, 3, 5, 4});
  const int second = m.output<float>({1, 3, 5, 4});
  m.add(49, {m.integers({1}), in}, {first, second}, tfl::Options_Split, p);
  Imported imported = import_model(m.bytes(), {});
  auto parts = Runner(*imported.network, imported.memory).run({bytes_of<float>(::x)});
  parts[0].insert(parts[0].end(), parts[1].begin(), parts[1].end());
  EXPECT_EQ(parts[0], bytes_of<float>(::x));
}

TEST(Tflite, LstmOfEveryStep) {
  TfliteModel m;
  tfl::LstmT p;
  p.activation = 4;
  std::vector<int32_t> inputs = {m.input<float>({1, 5, 3})};
  for (size_t i = 0; i < 4; ++i) {
    inputs.push_back(m.constant<float>({2, 3}, std::span(lstm_kernels).subspan(6 * i, 6)));
  }
  for (size_t i = 0; i < 4; ++i) {
    inputs.push_back(m.constant<float>({2, 2}, std::span(lstm_recurrents).subspan(4 * i, 4)));
  }
  inputs.insert(inputs.end(), 3, -1);
  for (size_t i = 0; i < 4; ++i) {
    inputs.push_back(m.constant<float>({2}, std::span(lstm_biases).subspan(2 * i, 2)));
  }
  inputs.insert(inputs.end(), {-1, -1, m.tensor<float>({1, 2}), m.tensor<float>({1, 2})});
  m.graph().tensors[m.graph().tensors.size() - 1]->is_variable = true;
  m.graph().tensors[m.graph().tensors.size() - 2]->is_variable = true;
  m.add(44, inputs, {m.output<float>({1, 5, 2})}, tfl::Options_Lstm, p);
  expect<float>(m, {bytes_of<float>(lstm_x)}, lstm, 1e-6);
}

// --- integers: one quantum
// ------------------------------------------------------------------------

class Integer : public testing::Test {
 protected:
  TfliteModel m;
  const int in = m.input<int8_t>(kMap, {1 / 16.0f}, {5});

  int second() { return m.input<int8_t>(kMap, {1 / 32.0f}, {-9}); }

  template <class Options = tfl::SoftmaxT>
  void check(int32_t code, std::vector<int32_t> inputs, int out, std::span<const int8_t> expected,
             tfl::Options kind = tfl::Options_NONE, const Options& options = {},
             double tolerance = 1) {
    m.add(code, std::move(inputs), {out}, kind, options);
    std::vector<Bytes> values = {bytes_of<int8_t>(qx)};
    if (m.graph().inputs.size() > 1) {
      values.push_back(bytes_of<int8_t>(qy));
    }
    expect<int8_t>(m, values, expected, tolerance);
  }
  int out(const Shape& shape, float scale = 0.25f, int zero = 3) {
    return m.output<int8_t>(shape, {scale}, {zero});
  }
};

TEST_F(Integer, Conv2dDilatedWithAScaleAChannel) {
  tfl::Conv2DT p;
  p.stride_h = p.stride_w = 1;
  p.dilation_h = 2;
  const int w = m.constant<int8_t>({3, 3, 2, 4}, qconv_w, {0.03f, 0.05f, 0.02f});
  const int b = m.constant<int32_t>({3}, qconv_b, {0.03f / 16, 0.05f / 16, 0.02f / 16});
  check(3, {in, w, b}, out({1, 6, 5, 3}, 1.0f), qconv_dilated, tfl::Options_Conv2D, p);
}

TEST_F(Integer, DepthwiseConv2dWithTwoOutputsAChannel) {
  tfl::DepthwiseConv2DT p;
  p.stride_h = 1;
  p.stride_w = 2;
  const int w = m.constant<int8_t>({1, 3, 2, 8}, qdepthwise_w, {1 / 32.0f}, 3);
  const int b = m.constant<int32_t>({8}, qdepthwise_b, {1 / 512.0f});
  check(4, {in, w, b}, out({1, 6, 3, 8}, 1.0f), qdepthwise, tfl::Options_DepthwiseConv2D, p);
}

TEST_F(Integer, AddWithReluClipsAtTheZeroPoint) {
  tfl::BinaryT p;
  p.activation = 1;
  check(0, {in, second()}, out(kMap), qadd_relu, tfl::Options_Add, p);
}
TEST_F(Integer, MulThroughFloat) {
  check(18, {in, second()}, out(kMap), qmul, tfl::Options_Mul, tfl::BinaryT());
}
TEST_F(Integer, SubThroughFloat) {
  check(41, {in, second()}, out(kMap), qsub, tfl::Options_Sub, tfl::BinaryT());
}
TEST_F(Integer, LogisticByTable) {
  check(14, {in}, out(kMap, 1 / 256.0f, -128), qlogistic, tfl::Options_NONE, tfl::SoftmaxT(), 0);
}
TEST_F(Integer, ConcatenationOfOtherScales) {
  tfl::ConcatenationT p;
  p.axis = 3;
  check(2, {in, second()}, out({1, 6, 5, 8}), qconcat, tfl::Options_Concatenation, p);
}
TEST_F(Integer, Mean) {
  check(40, {in, m.integers({1, 2})}, out({1, 4}), qmean);
}
TEST_F(Integer, AveragePoolRoundsToNearest) {
  m.add(1, {in}, {out({1, 3, 3, 4}, 1 / 16.0f, 5)}, tfl::Options_Pool2D, pool_options());
  Imported imported = import_model(m.bytes(), {});
  const Bytes got = Runner(*imported.network, imported.memory).run({bytes_of<int8_t>(qx)})[0];
  for (size_t i = 0; i < got.size(); ++i) {
    EXPECT_NEAR(static_cast<int8_t>(got[i]), qaverage[i], 0.50001) << i;
  }
}
TEST_F(Integer, PadWithTheZeroPoint) {
  const int pads = m.constant<int32_t>({4, 2}, std::vector<int32_t>{0, 0, 1, 2, 0, 3, 0, 0});
  check(34, {in, pads}, out({1, 9, 8, 4}, 1 / 16.0f, 5), qpad, tfl::Options_NONE, tfl::SoftmaxT(),
        0);
}
TEST_F(Integer, Dequantize) {
  m.add(6, {in}, {m.output<float>(kMap)});
  expect<float>(m, {bytes_of<int8_t>(qx)}, qdequantized, 0);
}

// --- refusals
// -------------------------------------------------------------------------------------

std::string refusal(const Bytes& file) {
  try {
    import_model(file, {});
  } catch (const Refused& refused) {
    return refused.what();
  }
  return "";
}

TEST(Tflite, RefusalsComeAllAtOnceWithWaysOut) {
  TfliteModel m;
  const int in = m.input<float>({1, 5, 3});
  const int middle = m.tensor<float>({1, 5, 3});
  m.add(27, {in}, {middle});
  m.add(105, {middle}, {m.output<float>({1, 5, 3})});
  EXPECT_EQ(refusal(m.bytes()),
            "SVDF 't1': this operator is not available\n"
            "REVERSE_V2 't2': this operator is not available");
}

TEST(Tflite, AnLstmsClippingIsRefusedUnlessItMayBeLeftOut) {
  TfliteModel m;
  tfl::LstmT p;
  p.cell_clip = 10;
  const int w = m.constant<float>({1, 3}, std::vector<float>{1, 2, 3});
  const int in = m.input<float>({1, 5, 3});
  m.add(44, {in, w, w, w, w, w}, {m.output<float>({1, 5, 1})}, tfl::Options_Lstm, p);
  EXPECT_EQ(refusal(m.bytes()),
            "UNIDIRECTIONAL_SEQUENCE_LSTM 't2': cell_clip is not available; leave it out with "
            "--ignore-cell-clip");
}

Bytes small_file() {
  TfliteModel m;
  tfl::Conv2DT p;
  p.stride_h = p.stride_w = 1;
  const int in = m.input<int8_t>({1, 3, 3, 1}, {0.5f}, {1});
  const int w = m.constant<int8_t>({2, 2, 2, 1}, std::span(qconv_w).first(8), {0.1f, 0.2f});
  const int b = m.constant<int32_t>({2}, std::span(qconv_b).first(2), {0.05f, 0.1f});
  m.add(3, {in, w, b}, {m.output<int8_t>({1, 3, 3, 2}, {0.5f}, {-3})}, tfl::Options_Conv2D, p);
  return m.bytes();
}

// Whatever stands in a file, it is refused or it runs.
void survive(const Bytes& file) {
  try {
    Imported imported = import_model(file, {});
    std::vector<Bytes> inputs;
    for (const Port& port : imported.network->inputs) {
      inputs.emplace_back(port_bytes(port));
    }
    Runner(*imported.network, imported.memory).run(inputs);
  } catch (const Refused&) {
  }
}

TEST(Tflite, FilesCutOffAnywhereAreRefused) {
  const Bytes file = small_file();
  for (size_t length = 0; length < file.size(); ++length) {
    EXPECT_NE(refusal(Bytes(file.begin(), file.begin() + static_cast<ptrdiff_t>(length))), "")
        << length;
  }
  EXPECT_EQ(refusal(file), "");
}

TEST(Tflite, ChangedBytesNeverBringItDown) {
  const Bytes file = small_file();
  for (size_t at = 0; at < file.size(); ++at) {
    for (const uint8_t change : {0x01, 0x40, 0x80, 0xFF}) {
      Bytes changed = file;
      changed[at] ^= change;
      survive(changed);
    }
  }
}

TEST(Tflite, GraphsThatCannotRunAreRefused) {
  const auto changed = [](auto change) {
    TfliteModel m;
    const int in = m.input<float>({1, 4});
    const int a = m.tensor<float>({1, 4});
    m.add(101, {in}, {a});
    m.add(101, {a}, {m.output<float>({1, 4})});
    change(m);
    return refusal(m.bytes());
  };
  EXPECT_EQ(changed([](TfliteModel&) {}), "");
  EXPECT_NE(changed([](TfliteModel& m) { m.graph().operators[0]->inputs = {2}; }), "") << "cycle";
  EXPECT_NE(changed([](TfliteModel& m) { m.graph().operators[0]->inputs = {77}; }), "");
  EXPECT_NE(changed([](TfliteModel& m) { m.graph().operators[0]->inputs = {}; }), "");
  EXPECT_NE(changed([](TfliteModel& m) { m.graph().operators[1]->opcode_index = 9; }), "");
  EXPECT_NE(changed([](TfliteModel& m) { m.graph().tensors[1]->shape = {1, -4}; }), "");
  EXPECT_NE(changed([](TfliteModel& m) { m.graph().tensors[1]->shape = {0, 4}; }), "");
  for (auto& huge : {std::vector<int32_t>{INT32_MAX, INT32_MAX, INT32_MAX}, {1 << 30}}) {
    EXPECT_NE(changed([&](TfliteModel& m) {
                for (auto& tensor : m.graph().tensors) {
                  tensor->shape = huge;
                }
              }),
              "");
  }
}

}  // namespace
}  // namespace nnlib::importer
