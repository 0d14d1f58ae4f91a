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

  // From (row, column) on.
  Matrix part(size_t row, size_t column, size_t part_rows, size_t part_columns) const {
    return {data + row * row_pitch + column * column_pitch, part_rows, part_columns, row_pitch,
            column_pitch};
  }
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

// out = a * b
void multiply(const Matrix& out, const Matrix& a, const Matrix& b) {
  product_f32(out.data, out.row_pitch, {a.data, a.row_pitch, a.column_pitch},
              {b.data, b.column_pitch, b.row_pitch}, out.rows, out.columns, a.columns);
}

// y = c * beta + sums * alpha
void add_scaled(const Matrix& y, const Matrix& c, const Matrix& sums, float alpha, float beta) {
  for (size_t i = 0; i < y.rows; ++i) {
    for (size_t j = 0; j < y.columns; ++j) {
      y.data[i * y.row_pitch + j] = c.data[i * c.row_pitch + j * c.column_pitch] * beta +
                                    sums.data[i * sums.row_pitch + j] * alpha;
    }
  }
}

// Element after element: c may lie in y.
void add_product(const Matrix& y, const Matrix& a, const Matrix& b, const Matrix& c, float alpha,
                 float beta) {
  constexpr size_t kPart = 64;
  float sums[kPart];
  for (size_t i = 0; i < y.rows; ++i) {
    for (size_t j = 0; j < y.columns; j += kPart) {
      const size_t count = std::min(kPart, y.columns - j);
      const Matrix sum = {sums, 1, count, count, 1};
      multiply(sum, a.part(i, 0, 1, a.columns), b.part(0, j, b.rows, count));
      add_scaled(y.part(i, j, 1, count), c.part(i, j, 1, count), sum, alpha, beta);
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
  if (overlap(c, y)) {
    add_product(y, a, b, added, gemm.alpha, gemm.beta);
  } else {
    multiply(y, a, b);
    add_scaled(y, added, y, gemm.alpha, gemm.beta);
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
