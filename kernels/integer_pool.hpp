// SPDX-License-Identifier: MIT
// Max and average pooling of maps of 8- and 16-bit integers.
#ifndef NNLIB_KERNELS_INTEGER_POOL_HPP
#define NNLIB_KERNELS_INTEGER_POOL_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "kernels/instruction_set.hpp"
#include "kernels/pool_geometry.hpp"
#include "kernels/vector.hpp"

namespace nnlib {

// The cells of type T of a window fold to a Narrow<T> where the instruction set says so
// (is_narrow), and at most where they are 65535, otherwise to a Wide<T>.

struct IntegerMax {
  template <class T>
  using Narrow = T;
  template <class T>
  using Wide = T;
  template <class T>
  static constexpr T start = std::numeric_limits<T>::min();

  template <class T>
  static constexpr T fold(T folded, T cell) {
    return folded < cell ? cell : folded;
  }
  template <class T>
  static constexpr T exact(T maximum, uint32_t /*count*/) {
    return maximum;
  }
};

// halves_away: rounded means are halves away from zero, otherwise plus a half, toward zero.
template <bool halves_away>
struct IntegerSum {
  static constexpr bool kHalvesAway = halves_away;

  template <class T>
  using Narrow = int32_t;
  template <class T>
  using Wide = int64_t;
  template <class Sum>
  static constexpr Sum start = 0;

  template <class Sum, class T>
  static constexpr Sum fold(Sum sum, T cell) {
    return sum + cell;
  }
  template <class T, class Sum>
  static constexpr T exact(Sum sum, uint32_t count) {
    const Sum half = static_cast<Sum>(count / 2);
    return divide<T>(sum + (kHalvesAway && sum < 0 ? -half : half), count);
  }
  // Toward zero; the quotients are Ts.
  template <class T>
  static constexpr T divide(int32_t sum, uint32_t cells) {
    const int32_t divisor = static_cast<int32_t>(cells);
#if NNLIB_VECTOR_LANES > 1
    // There is no vector division of integers. Below 2^24 a float holds both, and a quotient
    // below 2^8 is 1 / cells, more than its rounding, away from the next whole number.
    if constexpr (sizeof(T) == 1) {
      return static_cast<T>(
          static_cast<int32_t>(static_cast<float>(sum) / static_cast<float>(divisor)));
    }
#endif
    return static_cast<T>(sum / divisor);
  }
  // Bit by bit: on a small core the library's division of 64 bits is larger than all of the
  // pooling.
  template <class T>
  static constexpr T divide(int64_t sum, uint32_t cells) {
    uint64_t rest = static_cast<uint64_t>(sum < 0 ? -sum : sum);
    uint64_t part = uint64_t{cells} << 15;
    int32_t quotient = 0;
    for (int bit = 0; bit < 16; ++bit, part >>= 1) {
      quotient *= 2;
      if (rest >= part) {
        rest -= part;
        ++quotient;
      }
    }
    return static_cast<T>(sum < 0 ? -quotient : quotient);
  }

  static constexpr float real(int32_t sum) {
    return static_cast<float>(sum);
  }
  // Rounded to odd until 32 bits hold it, which leaves the float's own rounding what it is.
  static constexpr float real(int64_t sum) {
    float unit = 1.0f;
    for (; sum != static_cast<int32_t>(sum); sum = (sum >> 1) | (sum & 1)) {
      unit *= 2.0f;
    }
    return static_cast<float>(static_cast<int32_t>(sum)) * unit;
  }
};

// Folds as many cells as there are lanes, side by side.
template <class Fold, class Folded, class T, class Lanes>
NNLIB_ALWAYS_INLINE void fold_lanes(Folded* folded, const T* cells, [[maybe_unused]] Lanes lanes) {
#if NNLIB_VECTOR_LANES == 1
  NNLIB_UNROLL
  for (uint32_t i = 0; i < Lanes::value; ++i) {
#else
  for (uint32_t i = 0; i < lanes; ++i) {
#endif
    folded[i] = Fold::fold(folded[i], cells[i]);
  }
}

// Channels side by side; without vectors what stays in registers.
template <class Folded>
constexpr uint32_t kPoolLanes = NNLIB_VECTOR_LANES > 1 ? 64
                                : sizeof(Folded) > 4   ? 1
                                                       : 4;

// One output pixel, from `channel` on, of a window that is not empty.
template <class Fold, class Folded, uint32_t kLanes, class T, class Finish>
void pool_window(const PoolGeometry& g, const Window& rows, const Window& columns, const T* in,
                 T* out, Finish finish, uint32_t channel = 0) {
  constexpr bool kVectors = NNLIB_VECTOR_LANES > 1;
  const uint32_t channels = g.channels;
  const size_t row_pitch = size_t{g.in_width} * channels;
  const uint32_t count = rows.count * columns.count;
  in += rows.begin * row_pitch + size_t{columns.begin} * channels;
  const auto pool_lanes = [&](uint32_t first, auto lanes) {
    Folded folded[kLanes];
    T finished[kLanes];  // not `out` itself, which the compiler must think part of anything
    std::fill_n(folded, uint32_t{lanes}, Fold::template start<Folded>);
    const T* row = in + first;
    for (uint32_t m = 0; m < rows.count; ++m, row += row_pitch) {
      const T* cells = row;
      for (uint32_t n = 0; n < columns.count; ++n, cells += channels) {
        fold_lanes<Fold>(folded, cells, lanes);
      }
    }
    if constexpr (kLanes == 1) {
      out[first] = finish(folded[0], count);
      return;
    }
    for (uint32_t i = 0; i < lanes; ++i) {
      finished[i] = finish(folded[i], count);
    }
    std::copy_n(finished, uint32_t{lanes}, out + first);
  };
  for (; channel + kLanes <= channels; channel += kLanes) {
    pool_lanes(channel, std::integral_constant<uint32_t, kLanes>());
  }
  if constexpr (kVectors) {
    if (channel < channels) {
      pool_lanes(channel, channels - channel);
    }
  } else {
    for (; kLanes > 1 && channel < channels; ++channel) {
      pool_lanes(channel, std::integral_constant<uint32_t, 1>());
    }
  }
}

// Outputs without another quantization.
template <class Fold, class T>
struct ExactPool {
  static constexpr bool is_exact() { return true; }
  template <class Folded>
  T operator()(Folded folded, uint32_t count) const {
    return Fold::template exact<T>(folded, count);
  }
};

// pool_narrow pools a window for which is_narrow holds; returns how many channels that was.
#define NNLIB_SET NNLIB_NARROW_SET
#include NNLIB_PART(pool)
#undef NNLIB_SET

// Each output is finish(folded, count) of its window's cells inside the map, count of them, or
// `outside` where there are none. finish gives the element; finish.is_exact() tells that it is
// Fold::exact's.
template <class Fold, class T, class Finish>
void integer_pool(const PoolGeometry& g, const T* in, T* out, T outside, const Finish& finish) {
  for (uint32_t y = 0; y < g.out_height; ++y) {
    const Window rows = g.rows(y);
    for (uint32_t x = 0; x < g.out_width; ++x, out += g.channels) {
      const Window columns = g.columns(x);
      if (rows.empty() || columns.empty()) {
        std::fill_n(out, g.channels, outside);
        continue;
      }
      uint32_t done = 0;
      if (is_narrow<Fold, T>(rows, columns)) {
        done = pool_narrow<Fold>(g, rows, columns, in, out, finish);
      }
      if (done < g.channels) {
        constexpr uint32_t kLanes = NNLIB_VECTOR_LANES > 1 ? kPoolLanes<T> : 1;
        using Wide = typename Fold::template Wide<T>;
        pool_window<Fold, Wide, kLanes>(g, rows, columns, in, out, finish, done);
      }
    }
  }
}

}  // namespace nnlib

#endif
