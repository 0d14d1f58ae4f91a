// SPDX-License-Identifier: MIT
// Products of float32 matrices, every element one sequential sum.
#ifndef NNLIB_KERNELS_FLOAT_PRODUCT_HPP
#define NNLIB_KERNELS_FLOAT_PRODUCT_HPP

#include <cstddef>

namespace nnlib {

// Element (row, k) of the matrix is data[row * row_pitch + k * k_pitch].
struct Rows {
  const float* data;
  size_t row_pitch;
  size_t k_pitch;
};

// out[i * out_pitch + j] = a(i, 0) * b(j, 0) + a(i, 1) * b(j, 1) + ..., from 0 in order of k <
// depth, for i < rows and j < columns. out overlaps neither operand.
//
// Fast where b's row_pitch or k_pitch is 1.
void product_f32(float* out, size_t out_pitch, const Rows& a, const Rows& b, size_t rows,
                 size_t columns, size_t depth);

// A vector times rows of weights, which are read where they lie: out[j] = a[0] * b[j * pitch] +
// a[1] * b[j * pitch + 1] + ..., from 0 in order, of `depth` products, for j < columns. out
// overlaps neither operand.
void vector_product_f32(float* out, const float* a, const float* b, size_t pitch, size_t columns,
                        size_t depth);

}  // namespace nnlib

#endif
