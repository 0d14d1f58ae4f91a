// SPDX-License-Identifier: MIT
// Q7 weight rows times columns in another order or of another type than multiply_vector takes.
#ifndef NNLIB_KERNELS_FIXED_MAT_MULT_HPP
#define NNLIB_KERNELS_FIXED_MAT_MULT_HPP

#include <cstddef>

#include "kernels/row_products.hpp"

namespace nnlib {

// The outputs of columns one behind the other; element i of a column belongs to weight position(i)
// of a row.
template <uint32_t Columns, class Column, class Position>
void fixed_mat_mult(const FixedRows<q7_t>& rows, const Column* columns, Position position,
                    q7_t* out) {
  const q7_t* weights = rows.weights;
  for (uint32_t r = 0; r < rows.count; ++r, weights += rows.length) {
    uint32_t sums[Columns];
    for (uint32_t& sum : sums) {
      sum = fixed_start(rows.bias, r, rows.shifts);
    }
    for (uint32_t i = 0; i < rows.length; ++i) {
      const q7_t weight = weights[position(i)];
      for (uint32_t c = 0; c < Columns; ++c) {
        sums[c] += fixed_product(weight, columns[size_t{c} * rows.length + i]);
      }
    }
    for (uint32_t c = 0; c < Columns; ++c) {
      out[size_t{c} * rows.count + r] = fixed_finish<q7_t>(sums[c], rows.shifts);
    }
  }
}

}  // namespace nnlib

#endif
