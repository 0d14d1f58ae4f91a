// SPDX-License-Identifier: MIT
// Dense layers, dictionaries and matrix products against loops straight from the formulas, bit by
// bit.
#include <utility>

#include "core/ai_declare.h"
#include "kernels/ai_dictionary.h"
#include "layers/layers_dense_generic_float.h"
#include "layers/layers_gemm_generic_float.h"
#include "test/unit/float_sweep.hpp"

namespace {

uint32_t index_of(const uint8_t* row, uint32_t bits, size_t k) {
  return bits == 8 ? row[k] : row[k / 2] >> (k % 2 == 0 ? 4 : 0) & 15;
}

size_t row_bytes_of(uint32_t bits, size_t length) {
  return bits == 8 ? length : (length + 1) / 2;
}

uint32_t depth_size(Random& random) {
  return random.below(4) == 0 ? random.pick({127, 128, 129, 260}) : boundary_size(random);
}

}  // namespace

TEST(Dictionary, DotsAddTheirSumAtTheEnd) {
  Random random(1);
  for (const uint32_t bits : {4u, 8u}) {
    const auto dot = bits == 4 ? ai_dict4_dot_array_f32 : ai_dict8_dot_array_f32;
    for (size_t n = 0; n < 35; ++n) {
      const std::vector<uint8_t> indices = random.bytes(row_bytes_of(bits, n));
      const std::vector<float> table = random.floats(size_t{1} << bits), x = random.floats(n);
      float sum = 0.0f;
      for (size_t k = 0; k < n; ++k) {
        sum += table[index_of(indices.data(), bits, k)] * x[k];
      }
      float acc = 0.7f;
      dot(&acc, indices.data(), table.data(), x.data(), static_cast<ai_size>(n));
      EXPECT_EQ(acc, 0.7f + sum) << bits << " bits, " << n;
    }
  }
}

TEST(Dictionary, OtherWidthsExpandToNothing) {
  const uint8_t index = 0x12;
  const float table[] = {1.0f, 2.0f, 3.0f};
  float out = -1.0f;
  ai_dict_decompress_f32(&out, &index, table, 2, 1, 1);
  EXPECT_EQ(out, -1.0f);
}

// Rows further apart than they are long, plain and as indices.
TEST(Dense, SameBitsAsTheFormula) {
  Random random(2);
  for (int i = 0; i < 600; ++i) {
    const uint32_t bits = random.pick({4, 8, 32}), positions = random.pick({1, 1, 2, 3, 5, 6});
    const uint32_t n_in = depth_size(random), n_out = boundary_size(random), gap = random.below(3);
    const bool biased = random.below(4) != 0;
    std::vector<float> in = random.floats(n_in * positions), bias = random.floats(n_out);
    std::vector<float> table = random.floats(256), rows = random.floats((n_in + gap) * n_out);
    const size_t row_bytes = row_bytes_of(bits, n_in) + gap;
    const std::vector<uint8_t> indices = random.bytes(row_bytes * n_out);
    std::vector<float> expected;
    for (uint32_t p = 0; p < positions; ++p) {
      for (uint32_t j = 0; j < n_out; ++j) {
        float sum = 0.0f;
        for (uint32_t k = 0; k < n_in; ++k) {
          const float weight = bits == 32 ? rows[j * (n_in + gap) + k]
                                          : table[index_of(&indices[j * row_bytes], bits, k)];
          const float x = in[p * n_in + k];
          sum = bits == 32 ? plus_product(sum, x, weight) : sum + x * weight;
        }
        expected.push_back(sum + (biased ? bias[j] : 0.0f));
      }
    }
    const nnlib::dims dims = {n_in, n_out, 1, 1};
    nnlib::tensor plain(dims, rows.data());
    nnlib::tensor coded(bits == 4 ? AI_ARRAY_FORMAT_LUT4_FLOAT : AI_ARRAY_FORMAT_LUT8_FLOAT, dims,
                        indices.data(), table.data(), nullptr);
    plain.stride.data[AI_SHAPE_C] = static_cast<uint32_t>((n_in + gap) * sizeof(float));
    coded.stride.data[AI_SHAPE_C] = static_cast<uint32_t>(row_bytes);
    with_each_instance([&] {
      std::vector<float> out(expected.size());
      nnlib::tensor x({1, n_in, positions, 1}, in.data()), b({1, n_out, 1, 1}, bias.data());
      nnlib::tensor y({1, n_out, 1, positions}, out.data());
      const nnlib::layer_chain chain(
          nnlib::list(x), nnlib::list(y),
          nnlib::list(bits == 32 ? plain : coded, biased ? &b : nullptr));
      ai_layer layer = nnlib::layer(AI_LAYER_TYPE_DENSE, forward_dense, chain);
      forward_dense(&layer);
      ASSERT_TRUE(same_floats(expected, out)) << bits << " bits, " << n_in << " to " << n_out;
    });
  }
}

namespace {

struct Matrix {
  Matrix(Random& random, uint32_t rows_, uint32_t columns_)
      : rows(rows_), columns(columns_), data(random.floats(rows_ * columns_)) {}
  float at(uint32_t row, uint32_t column, bool transposed = false) const {
    return transposed ? data[column * columns + row] : data[row * columns + column];
  }
  nnlib::tensor tensor() { return nnlib::tensor({1, columns, 1, rows}, data.data()); }

  uint32_t rows, columns;
  std::vector<float> data;
};

void run_gemm(const ai_layer_gemm& options, nnlib::tensor& a, nnlib::tensor& b, nnlib::tensor& c,
              nnlib::tensor& y, uint32_t inputs) {
  ai_tensor* const operands[] = {&a, &b, &c};
  ai_tensor* const outputs[] = {&y};
  const ai_tensor_list lists[] = {{static_cast<uint16_t>(inputs), operands, nullptr},
                                  {1, outputs, nullptr},
                                  {static_cast<uint16_t>(3 - inputs), operands + inputs, nullptr}};
  const ai_tensor_chain chain = {3, lists};
  ai_layer_gemm layer = options;
  layer.base = {AI_LAYER_TYPE_GEMM, 0, nullptr, nullptr, nullptr, forward_gemm, &chain};
  forward_gemm(&layer.base);
}

}  // namespace

// Every transposition, every broadcast of C, every distribution of the operands over the lists.
TEST(Gemm, SameBitsAsTheFormula) {
  Random random(3);
  for (int i = 0; i < 800; ++i) {
    const uint32_t rows = boundary_size(random), columns = boundary_size(random);
    const uint32_t depth = random.below(20) == 0 ? 0 : depth_size(random);
    const bool ta = random.below(2) != 0, tb = random.below(2) != 0;
    Matrix a(random, ta ? depth : rows, ta ? rows : depth);
    Matrix b(random, tb ? columns : depth, tb ? depth : columns);
    Matrix c(random, random.pick({1, rows}), random.pick({1, columns}));
    Matrix y(random, rows, columns);
    std::vector<float> expected;
    for (uint32_t row = 0; row < rows; ++row) {
      for (uint32_t column = 0; column < columns; ++column) {
        float sum = 0.0f;
        for (uint32_t k = 0; k < depth; ++k) {
          sum = plus_product(sum, a.at(row, k, ta), b.at(k, column, tb));
        }
        const float added = c.at(c.rows == 1 ? 0 : row, c.columns == 1 ? 0 : column);
        expected.push_back(added * -0.3f + sum * 1.7f);
      }
    }
    with_each_instance([&] {
      y.data.assign(y.data.size(), -1.0f);
      nnlib::tensor ta_ = a.tensor(), tb_ = b.tensor(), tc = c.tensor(), ty = y.tensor();
      run_gemm({{}, 1.7f, -0.3f, ta, tb}, ta_, tb_, tc, ty, 1 + random.below(3));
      ASSERT_TRUE(same_floats(expected, y.data))
          << rows << 'x' << depth << 'x' << columns << ' ' << ta << tb;
    });
  }
}

// C inside Y: every element reads what the ones before it have left.
TEST(Gemm, AddsWhatLiesInTheOutput) {
  Random random(6);
  for (int i = 0; i < 200; ++i) {
    const uint32_t rows = boundary_size(random), columns = random.pick({1, 3, 8, 33, 64, 65, 150});
    const uint32_t depth = boundary_size(random);
    const uint32_t c_rows = random.pick({1, rows}), c_columns = random.pick({1, columns});
    const size_t offset = random.below(rows * columns - c_rows * c_columns + 1);
    Matrix a(random, rows, depth), b(random, depth, columns), y(random, rows, columns);
    std::vector<float> expected = y.data;
    for (uint32_t element = 0; element < rows * columns; ++element) {
      const uint32_t row = element / columns, column = element % columns;
      float sum = 0.0f;
      for (uint32_t k = 0; k < depth; ++k) {
        sum = plus_product(sum, a.at(row, k), b.at(k, column));
      }
      const size_t added = (c_rows == 1 ? 0 : row) * c_columns + (c_columns == 1 ? 0 : column);
      expected[element] = expected[offset + added] * 0.6f + sum * -1.2f;
    }
    nnlib::tensor ta = a.tensor(), tb = b.tensor(), ty = y.tensor();
    nnlib::tensor tc({1, c_columns, 1, c_rows}, y.data.data() + offset);
    run_gemm({{}, -1.2f, 0.6f, 0, 0}, ta, tb, tc, ty, 3);
    ASSERT_TRUE(same_floats(expected, y.data)) << rows << 'x' << depth << 'x' << columns << ", C "
                                               << c_rows << 'x' << c_columns << " at " << offset;
  }
}

// Matrices that do not fit together: zeros, as many as a counter of 16 bits says.
TEST(Gemm, MismatchFillsWithZeros) {
  Random random(4);
  const std::pair<uint32_t, uint32_t> a_shapes[] = {{3, 4}, {2, 4}, {3, 5}};
  for (const auto& [a_rows, a_columns] : a_shapes) {
    Matrix a(random, a_rows, a_columns), b(random, 4, 5), c(random, 1, 1);
    Matrix y(random, 3, a_rows == 3 && a_columns == 4 ? 6 : 5);
    nnlib::tensor ta = a.tensor(), tb = b.tensor(), tc = c.tensor(), ty = y.tensor();
    run_gemm({{}, 1.0f, 1.0f, 0, 0}, ta, tb, tc, ty, 3);
    EXPECT_TRUE(same_floats(std::vector<float>(y.data.size()), y.data)) << a_rows << a_columns;
  }
  Matrix a(random, 1, 1), y(random, 257, 256);
  nnlib::tensor ta = a.tensor(), tb = a.tensor(), tc = a.tensor(), ty = y.tensor();
  std::vector<float> expected = y.data;
  std::fill_n(expected.begin(), 256, 0.0f);
  run_gemm({{}, 1.0f, 1.0f, 0, 0}, ta, tb, tc, ty, 3);
  EXPECT_TRUE(same_floats(expected, y.data));
}

// Blocks of channels whose innermost dimension is N; A and B have more than is read.
TEST(Matmul, SameBitsAsTheFormula) {
  Random random(5);
  for (int i = 0; i < 400; ++i) {
    const uint32_t channels = 1 + random.below(3), n = random.pick({1, 1, 2, 3});
    const uint32_t height = boundary_size(random), width = boundary_size(random);
    const uint32_t depth = boundary_size(random);
    const nnlib::dims a = {n + random.below(2), channels, depth, height + random.below(2)};
    const nnlib::dims b = {n + random.below(2), channels, width + random.below(2),
                           depth + random.below(2)};
    const nnlib::dims y = {n, channels, width, height};
    const auto block = [](nnlib::dims d) { return size_t{d.n} * d.w * d.h; };
    std::vector<float> a_data = random.floats(a.elements()), b_data = random.floats(b.elements());
    std::vector<float> expected;
    for (uint32_t c = 0; c < channels; ++c) {
      const float* a_block = &a_data[c * block(a)];
      const float* b_block = &b_data[c * block(b)];
      for (uint32_t h = 0; h < height; ++h) {
        for (uint32_t w = 0; w < width; ++w) {
          for (uint32_t at = 0; at < n; ++at) {
            float sum = 0.0f;
            for (uint32_t k = 0; k < depth; ++k) {
              const float left = a_block[(h * depth + k) * a.n + at];
              const float right = b_block[(k * b.w + w) * b.n + at];
              sum = a.n * n * b.n == 1 ? plus_product(sum, left, right) : sum + left * right;
            }
            expected.push_back(sum);
          }
        }
      }
    }
    with_each_instance([&] {
      std::vector<float> out(y.elements());
      nnlib::tensor ta(a, a_data.data()), tb(b, b_data.data()), ty(y, out.data());
      const nnlib::layer_chain inputs(nnlib::list(ta, tb), nnlib::list(ty));
      const nnlib::layer_chain weights(nnlib::list(ta), nnlib::list(ty), nnlib::list(tb));
      ai_layer layer =
          nnlib::layer(AI_LAYER_TYPE_GEMM, forward_matmul,
                       random.below(2) ? static_cast<const ai_tensor_chain&>(inputs) : weights);
      forward_matmul(&layer);
      ASSERT_TRUE(same_floats(expected, out))
          << height << 'x' << depth << 'x' << width << " n " << n;
    });
  }
}
