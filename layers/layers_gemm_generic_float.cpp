// SPDX-License-Identifier: MIT
#include "layers/layers_gemm_generic_float.h"

#include <algorithm>

#include "kernels/float_product.hpp"
#include "layers/layer_tensors.hpp"

namespace nnlib {
namespace {

struct Matrix {
  float* data;
  size_t rows;
  size_t columns;
  size_t row_pitch;
  size_t column_pitch;
};

Matrix matrix_of(const ai_tensor& tensor, bool transposed = false) {
  const MapDims dims = map_dims(tensor);
  const Matrix m = {tensor_data<float>(tensor), dims.height, dims.channels, dims.channels, 1};
  return transposed ? Matrix{m.data, m.columns, m.rows, m.column_pitch, m.row_pitch} : m;
}

// Operand number index of A, B, C: the inputs, then the weights.
const ai_tensor& gemm_operand(const ai_layer& layer, uint32_t index) {
  const uint32_t inputs = ai_tensor_list_count(&layer_list(layer, AI_CHAIN_INPUT));
  return index < inputs ? layer_input(layer, index) : layer_weights(layer, index - inputs);
}

// Dense matrices.
bool overlap(const Matrix& a, const Matrix& b) {
  const auto at = [](const float* p) { return reinterpret_cast<uintptr_t>(p); };
  return at(a.data) < at(b.data + b.rows * b.columns) &&
         at(b.data) < at(a.data + a.rows * a.columns);
}

// `rows` rows of `columns` columns of a * b.
void multiply(float* out, size_t out_pitch, const Matrix& a, size_t row, size_t rows,
              const Matrix& b, size_t column, size_t columns) {
  product_f32(out, out_pitch, {a.data + row * a.row_pitch, a.row_pitch, a.column_pitch},
              {b.data + column * b.column_pitch, b.column_pitch, b.row_pitch}, rows, columns,
              a.columns);
}

struct Factors {
  float alpha;
  float beta;
};

// A piece of a row: y = c * beta + sums * alpha.
void add_scaled(float* y, const float* c, size_t c_pitch, const float* sums, size_t count,
                Factors factors) {
  for (size_t j = 0; j < count; ++j) {
    y[j] = c[j * c_pitch] * factors.beta + sums[j] * factors.alpha;
  }
}

// Element after element: c may lie in y. Its stack is kept off the other way.
[[gnu::noinline]] void add_product(const Matrix& y, const Matrix& a, const Matrix& b,
                                   const Matrix& c, Factors factors) {
  constexpr size_t kPiece = 16;  // stacks are small
  float sums[kPiece];
  for (size_t i = 0; i < y.rows; ++i) {
    for (size_t j = 0; j < y.columns; j += kPiece) {
      const size_t count = std::min(kPiece, y.columns - j);
      multiply(sums, 0, a, i, 1, b, j, count);
      add_scaled(y.data + i * y.row_pitch + j, c.data + i * c.row_pitch + j * c.column_pitch,
                 c.column_pitch, sums, count, factors);
    }
  }
}

// Element (c, h, w, n) of a matmul operand.
struct Blocks {
  float* data;
  size_t n;
  size_t width;
  size_t height;

  float* block(size_t channel) const { return data + channel * n * width * height; }
};

Blocks blocks_of(const ai_tensor& tensor) {
  const MapDims dims = map_dims(tensor);
  return {tensor_data<float>(tensor), tensor.shape.data[AI_SHAPE_N], dims.width, dims.height};
}

// Block c where some N is not 1, element by element.
void matmul_elements(const Blocks& y, const Blocks& a, const Blocks& b, size_t c) {
  float* out = y.block(c);
  for (size_t h = 0; h < y.height; ++h) {
    const float* row = a.block(c) + h * a.width * a.n;
    for (size_t w = 0; w < y.width; ++w) {
      for (size_t n = 0; n < y.n; ++n) {
        const float* column = b.block(c) + w * b.n + n;
        float sum = 0.0f;
        for (size_t k = 0; k < a.width; ++k) {
          sum += row[k * a.n + n] * column[k * b.width * b.n];
        }
        *out++ = sum;
      }
    }
  }
}

}  // namespace
}  // namespace nnlib

void forward_gemm(ai_layer* layer) {
  using namespace nnlib;
  const ai_layer_gemm& gemm = layer_record<ai_layer_gemm>(layer);
  const Matrix a = matrix_of(gemm_operand(*layer, 0), gemm.tA != 0);
  const Matrix b = matrix_of(gemm_operand(*layer, 1), gemm.tB != 0);
  const Matrix c = matrix_of(gemm_operand(*layer, 2));
  const Matrix y = matrix_of(layer_output(*layer));
  if (a.rows != y.rows || b.columns != y.columns || a.columns != b.rows) {
    std::fill_n(y.data, static_cast<uint16_t>(y.rows * y.columns), 0.0f);
    return;
  }
  // Repeated along its dimensions of 1.
  const Matrix added = {c.data, c.rows, c.columns, c.rows == 1 ? 0 : c.row_pitch,
                        c.columns == 1 ? 0 : c.column_pitch};
  const Factors factors = {gemm.alpha, gemm.beta};
  if (overlap(c, y)) {
    add_product(y, a, b, added, factors);
    return;
  }
  multiply(y.data, y.row_pitch, a, 0, y.rows, b, 0, y.columns);
  for (size_t i = 0; i < y.rows; ++i) {
    float* row = y.data + i * y.row_pitch;
    add_scaled(row, added.data + i * added.row_pitch, added.column_pitch, row, y.columns, factors);
  }
}

void forward_matmul(ai_layer* layer) {
  using namespace nnlib;
  const ai_tensor* second = optional_tensor(*layer, AI_CHAIN_INPUT, 1);
  const Blocks a = blocks_of(layer_input(*layer));
  const Blocks b = blocks_of(second != nullptr ? *second : layer_weights(*layer));
  const ai_tensor& out = layer_output(*layer);
  const Blocks y = blocks_of(out);
  for (size_t c = 0; c < map_dims(out).channels; ++c) {
    if (a.n == 1 && b.n == 1 && y.n == 1) {
      product_f32(y.block(c), y.width, {a.block(c), a.width, 1}, {b.block(c), 1, b.width}, y.height,
                  y.width, a.width);
    } else {
      matmul_elements(y, a, b, c);
    }
  }
}
