// SPDX-License-Identifier: MIT
// A fixed-point convolution by way of columns.
#ifndef NNLIB_KERNELS_FIXED_CONVOLUTION_HPP
#define NNLIB_KERNELS_FIXED_CONVOLUTION_HPP

#include "kernels/row_products.hpp"

namespace nnlib {

template <class T>
struct FixedConv {
  const T* in;
  ConvGeometry geometry;
  const T* weights;
  const T* bias;  // or null
  FixedShifts shifts;
  T* out;
};

// By one or two columns in scratch. T: q7_t, q15_t.
template <class T>
void convolve_fixed(const FixedConv<T>& c, uint32_t columns, q15_t* scratch) {
  const ConvGeometry& g = c.geometry;
  convolve_rows(FixedRows<T>{c.weights, c.bias, g.out_channels, g.column_length(), c.shifts}, g,
                c.in, columns, scratch, c.out);
}

}  // namespace nnlib

#endif
