// SPDX-License-Identifier: MIT
#include "kernels/ko_widen.h"

#include <algorithm>

#include "kernels/reorder.hpp"
#include "kernels/row_products.hpp"

namespace {

template <class T>
void widen_reordered(const T* source, int16_t* destination, uint32_t count, int32_t zeropoint) {
  nnlib::copy_reordered(source, destination, count, [zeropoint](T element) {
    return static_cast<int16_t>(element - zeropoint);
  });
}

}  // namespace

extern "C" {

void ko_uint8_to16_no_shift(const uint8_t* source, int16_t* destination, uint32_t count) {
  nnlib::widen_vector(source, count, 0, destination);
}

void ko_uint8_reordered_no_shift(const uint8_t* source, int16_t* destination, uint32_t count) {
  widen_reordered(source, destination, count, 0);
}

void ko_int8_reordered_no_shift(const int8_t* source, int16_t* destination, uint32_t count) {
  widen_reordered(source, destination, count, 0);
}

void ko_uint8_reordered_no_shift_zero(const uint8_t* source, int16_t* destination, uint32_t count,
                                      uint32_t /*packed_zeropoint*/, uint8_t zeropoint) {
  widen_reordered(source, destination, count, zeropoint);
}

void ko_int8_reordered_no_shift_zero(const int8_t* source, int16_t* destination, uint32_t count,
                                     uint32_t /*packed_zeropoint*/, int8_t zeropoint) {
  widen_reordered(source, destination, count, zeropoint);
}

void ko_uint8_fill(uint8_t value, uint8_t* destination, uint32_t count) {
  std::fill_n(destination, count, value);
}

}  // extern "C"
