// SPDX-License-Identifier: MIT
// Which part of a kernel or pooling window lies inside the map.
#ifndef NNLIB_KERNELS_WINDOW_HPP
#define NNLIB_KERNELS_WINDOW_HPP

#include <algorithm>
#include <cstdint>

namespace nnlib {

// One axis of a window, cut down to the map: window positions tap .. tap + count - 1 lie on the map
// positions begin, begin + dilation, ... With count 0 the other fields mean nothing.
struct Window {
  uint32_t begin;  // map position of the first tap inside
  uint32_t tap;    // number of taps cut off before it
  uint32_t count;  // taps inside the map

  constexpr bool empty() const { return count == 0; }
  constexpr uint32_t end() const { return begin + count; }  // of a window without dilation
};

// A window of taps neighbouring positions from start on, on a map of extent positions. It may begin
// before the map or lie wholly outside.
constexpr Window clip_run(int64_t start, uint32_t taps, uint32_t extent) {
  const int64_t first = std::max(-start, int64_t{0});
  const int64_t last = std::min(extent - start, int64_t{taps});
  if (first >= last) {
    return {0, 0, 0};
  }
  return {static_cast<uint32_t>(start + first), static_cast<uint32_t>(first),
          static_cast<uint32_t>(last - first)};
}

// The same for positions dilation apart (at least 1; taps * dilation below 2^32).
constexpr Window clip_taps(int64_t start, uint32_t taps, uint32_t extent, uint32_t dilation) {
  if (dilation == 1) {
    return clip_run(start, taps, extent);
  }
  const auto taps_before = [dilation](int64_t distance) -> uint32_t {
    if (distance <= 0) {
      return 0;
    }
    return static_cast<uint32_t>(std::min<int64_t>(distance - 1, UINT32_MAX)) / dilation + 1;
  };
  const uint32_t first = taps_before(-start);
  const uint32_t last = std::min(taps_before(extent - start), taps);
  if (first >= last) {
    return {0, 0, 0};
  }
  return {static_cast<uint32_t>(start + int64_t{first} * dilation), first, last - first};
}

// The window of one output position: it starts at index * stride - pad. Pads may exceed it.
constexpr Window clip_window(uint32_t index, uint32_t stride, uint32_t pad, uint32_t taps,
                             uint32_t extent) {
  return clip_run(int64_t{index} * stride - pad, taps, extent);
}

}  // namespace nnlib

#endif
