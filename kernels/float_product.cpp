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

void vector_product_f32(float* out, const float* a, const float* b, size_t pitch, size_t columns,
                        size_t depth) {
  NNLIB_VECTOR_IF(columns >= kWideLanes, product_vector)
  ({out, columns, {a, depth, 1}, {b, pitch, 1}, 1, columns, depth});
}

}  // namespace nnlib
