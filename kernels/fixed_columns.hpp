// SPDX-License-Identifier: MIT
// Weight rows times 16-bit columns: the products behind the fixed-point kernels, by the widest
// vectors that the processor has.
#ifndef NNLIB_KERNELS_FIXED_COLUMNS_HPP
#define NNLIB_KERNELS_FIXED_COLUMNS_HPP

#include "kernels/conv_geometry.hpp"
#include "kernels/fixed_point.hpp"

namespace nnlib {

template <class Weight>
struct FixedRows {
  const Weight* weights;  // count rows of length elements
  const Weight* bias;     // one for each row, or null
  uint32_t count;
  uint32_t length;
  FixedShifts shifts;
};

// out[c * rows.count + r] = finish(start(bias[r]) + weights[r] . columns[c]) for one or two columns
// of rows.length elements, one after the other. Weight and Out: Q7 and Q7, Q7 and Q15, Q15 and Q15.
template <class Weight, class Out>
void multiply_fixed_columns(const FixedRows<Weight>& rows, const q15_t* columns, uint32_t pixels,
                            Out* out);

template <class T>
struct FixedConv {
  const T* in;
  ConvGeometry geometry;
  const T* weights;
  const T* bias;
  FixedShifts shifts;
  T* out;
};

// A convolution by way of one or two columns of scratch. T: q7_t, q15_t.
template <class T>
void convolve_fixed_columns(const FixedConv<T>& conv, uint32_t columns, q15_t* scratch);

}  // namespace nnlib

#endif
