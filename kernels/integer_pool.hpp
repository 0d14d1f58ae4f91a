// Max and average pooling of maps of 8- and 16-bit integers.
#ifndef NNLIB_KERNELS_INTEGER_POOL_HPP
#define NNLIB_KERNELS_INTEGER_POOL_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "kernels/pool_geometry.hpp"

namespace nnlib {

struct IntegerMax {
  static constexpr int32_t start = std::numeric_limits<int32_t>::min();
  static constexpr int32_t fold(int32_t folded, int32_t cell) { return std::max(folded, cell); }
};

// Of at most 65535 cells.
struct IntegerSum {
  static constexpr int32_t start = 0;
  static constexpr int32_t fold(int32_t folded, int32_t cell) { return folded + cell; }
};

// Each output is finish(folded, count) of its window's cells inside the map, count of them; folded
// is Fold::start for a window outside the map. finish gives the element.
template <class Fold, class T, class Finish>
void integer_pool(const PoolGeometry& g, const T* in, T* out, Finish finish) {
  constexpr uint32_t kLanes = 32;
  const size_t row_pitch = size_t{g.in_width} * g.channels;
  for (uint32_t y = 0; y < g.out_height; ++y) {
    const Window rows = g.rows(y);
    for (uint32_t x = 0; x < g.out_width; ++x) {
      const Window columns = g.columns(x);
      for (uint32_t c = 0; c < g.channels; c += kLanes) {
        const uint32_t lanes = std::min(kLanes, g.channels - c);
        int32_t folded[kLanes];
        std::fill_n(folded, kLanes, Fold::start);
        for (uint32_t m = 0; m < rows.count; ++m) {
          const T* cell =
              in + (rows.begin + m) * row_pitch + size_t{columns.begin} * g.channels + c;
          for (uint32_t n = 0; n < columns.count; ++n, cell += g.channels) {
            for (uint32_t i = 0; i < lanes; ++i) {
              folded[i] = Fold::fold(folded[i], cell[i]);
            }
          }
        }
        const uint32_t count = rows.count * columns.count;
        for (uint32_t i = 0; i < lanes; ++i) {
          *out++ = finish(folded[i], count);
        }
      }
    }
  }
}

}  // namespace nnlib

#endif
