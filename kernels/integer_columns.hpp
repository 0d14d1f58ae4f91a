// SPDX-License-Identifier: MIT
// The integer kernels' matrix product: weight rows times columns, the 16-bit copies of what output
// pixels see. Convolutions and fully connected kernels are this with different columns.
//
// Its inner tile, which other kernels with 8-bit weights and 16-bit columns may use, is
// dot_tile_lanes.hpp.
#ifndef NNLIB_KERNELS_INTEGER_COLUMNS_HPP
#define NNLIB_KERNELS_INTEGER_COLUMNS_HPP

#include "kernels/conv_geometry.hpp"
#include "kernels/ko_types.hpp"

namespace nnlib {

// One weight row of `length` for each of `rows` outputs of a pixel.
template <class Types>
struct KoMatrix {
  const typename Types::Weight* weights;
  const int32_t* bias;  // may be null
  uint32_t rows;
  uint32_t length;
  // The zero point that the columns' values still contain and the biases are corrected for.
  int32_t column_zeropoint;
  KoQuantization quantization;
};

// The outputs of one or two pixels, from as many columns, one behind the other. Returns the end of
// the outputs.
template <class Types>
typename Types::Activation* multiply_columns(const KoMatrix<Types>& matrix, const int16_t* columns,
                                             uint32_t pixels, typename Types::Activation* out);

// The outputs of a whole map, by way of two columns. The columns' values are input - subtracted;
// what pads them is the input zero point.
template <class Types>
void convolve_columns(const KoMatrix<Types>& matrix, const ConvGeometry& geometry,
                      const typename Types::Activation* in, int32_t subtracted, int16_t* columns,
                      typename Types::Activation* out);

// Writes input - subtracted as 16-bit values.
template <class Activation>
void widen_vector(const Activation* in, uint32_t count, int32_t subtracted, int16_t* column);

}  // namespace nnlib

#endif
