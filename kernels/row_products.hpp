// SPDX-License-Identifier: MIT
// Weight rows times what output pixels see: the products behind all convolutions and dense kernels
// of integers and of fixed point, by the best instruction set that the processor has.
#ifndef NNLIB_KERNELS_ROW_PRODUCTS_HPP
#define NNLIB_KERNELS_ROW_PRODUCTS_HPP

#include "kernels/conv_geometry.hpp"
#include "kernels/fixed_point.hpp"
#include "kernels/ko_types.hpp"

namespace nnlib {

// What makes an output of a channel's sum.
struct RequantizedChannel {
  int32_t start;  // to be added to the sum
  int32_t multiplier;
  int32_t shift;
  int32_t zeropoint;
};
struct ShiftedChannel {
  int32_t start;
  uint32_t shift;
};

inline RequantizedChannel quantized_channel(const KoQuantization& q, int32_t start,
                                            uint32_t channel) {
  const uint32_t entry = q.entry(channel);
  return {start, q.multiplier[entry], q.shift[entry], q.out_zeropoint};
}

// One weight row of `length` for each of `count` outputs of a pixel; integers.
template <class Types>
struct IntegerRows {
  using Input = typename Types::Activation;
  using Weight = typename Types::Weight;
  using Output = typename Types::Activation;
  using Channel = RequantizedChannel;
  static constexpr bool kWeightZeropoint = Types::kWeightZeropoint;

  const Weight* weights;
  const int32_t* bias;  // may be null
  uint32_t count;
  uint32_t length;
  // The zero point that the columns' values still contain and the biases are corrected for.
  int32_t column_zeropoint;
  KoQuantization quantization;
  // All shifts are from 1 to 255, as nearly always.
  bool right_shifts = false;

  int32_t start(uint32_t row) const { return bias != nullptr ? bias[row] : 0; }
  // With columns: corrected biases are never null.
  int32_t column_start(uint32_t row) const { return bias[row]; }
  int32_t zeropoint(uint32_t row) const { return weight_zeropoint<Types>(quantization, row); }
  Channel channel(uint32_t row) const { return quantized_channel(quantization, start(row), row); }
};

// The same in fixed point.
template <class WeightType, class OutputType = WeightType>
struct FixedRows {
  using Input = OutputType;
  using Weight = WeightType;
  using Output = OutputType;
  using Channel = ShiftedChannel;
  static constexpr bool kWeightZeropoint = false;
  static constexpr int32_t column_zeropoint = 0;

  const Weight* weights;
  const Weight* bias;  // may be null
  uint32_t count;
  uint32_t length;
  FixedShifts shifts;

  int32_t start(uint32_t row) const { return static_cast<int32_t>(fixed_start(bias, row, shifts)); }
  int32_t column_start(uint32_t row) const { return start(row); }
  int32_t zeropoint(uint32_t) const { return 0; }
  Channel channel(uint32_t row) const { return {start(row), shifts.out}; }
};

// The outputs of a whole map, by way of one or two columns of rows.length 16-bit values in
// `scratch`. What pads them is their zero point.
template <class Rows>
void convolve_rows(const Rows& rows, const ConvGeometry& geometry, const typename Rows::Input* in,
                   uint32_t columns, int16_t* scratch, typename Rows::Output* out);

// The outputs of one column of values in their natural order.
template <class Rows>
void multiply_vector(const Rows& rows, const int16_t* vector, typename Rows::Output* out);

// Writes input - subtracted as 16-bit values.
template <class Input>
void widen_vector(const Input* in, uint32_t count, int32_t subtracted, int16_t* out);

}  // namespace nnlib

#endif
