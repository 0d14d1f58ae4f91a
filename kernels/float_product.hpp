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
// Fast where b's row_pitch or k_pitch is 1. A single row (a matrix times a vector) is fastest with
// b's row_pitch 1: transpose_f32 pays when the same matrix is used again.
void product_f32(float* out, size_t out_pitch, const Rows& a, const Rows& b, size_t rows,
                 size_t columns, size_t depth);

// out[column * rows + row] = in[row * columns + column].
void transpose_f32(float* out, const float* in, size_t rows, size_t columns);

}  // namespace nnlib

#endif
