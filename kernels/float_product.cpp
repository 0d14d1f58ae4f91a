// SPDX-License-Identifier: MIT
#include "kernels/float_product.hpp"

#include "kernels/vector.hpp"

namespace nnlib {
namespace {

struct Product {
  float* out;
  size_t out_pitch;
  Rows a;
  Rows b;
  size_t rows;
  size_t columns;
  size_t depth;
};

}  // namespace
}  // namespace nnlib

#define NNLIB_VECTOR_BODY "kernels/float_product_body.hpp"
#include "kernels/vector_bodies.hpp"

namespace nnlib {

void product_f32(float* out, size_t out_pitch, const Rows& a, const Rows& b, size_t rows,
                 size_t columns, size_t depth) {
  NNLIB_VECTOR_IF(columns >= kWideLanes, product)({out, out_pitch, a, b, rows, columns, depth});
}

void transpose_f32(float* out, const float* in, size_t rows, size_t columns) {
  NNLIB_VECTOR(transpose)(out, in, rows, columns);
}

}  // namespace nnlib
