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

// y = c * beta + y * alpha, c repeated along its dimensions of 1.
void add_scaled(const Matrix& y, const Matrix& c, float alpha, float beta) {
  const size_t row_pitch = c.rows == 1 ? 0 : c.row_pitch;
  const size_t column_pitch = c.columns == 1 ? 0 : c.column_pitch;
  for (size_t i = 0; i < y.rows; ++i) {
    for (size_t j = 0; j < y.columns; ++j) {
      float& element = y.data[i * y.row_pitch + j];
      element = c.data[i * row_pitch + j * column_pitch] * beta + element * alpha;
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
  product_f32(y.data, y.row_pitch, {a.data, a.row_pitch, a.column_pitch},
              {b.data, b.column_pitch, b.row_pitch}, y.rows, y.columns, a.columns);
  add_scaled(y, c, gemm.alpha, gemm.beta);
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
