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

// The same for positions dilation apart (taps * dilation below 2^32), with 0 all at start.
constexpr Window clip_taps(int64_t start, uint32_t taps, uint32_t extent, uint32_t dilation) {
  if (dilation == 1) {
    return clip_run(start, taps, extent);
  }
  if (dilation == 0) {
    const Window position = clip_run(start, 1, extent);
    return {position.begin, 0, position.empty() ? 0 : taps};
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

// How many positions a window that covers `extent` has on a map of `length`, pads included: one
// where only one fits, whatever the stride. A stride of 0 never leaves the first.
constexpr uint32_t window_positions(uint32_t length, uint32_t extent, uint32_t stride) {
  if (length < extent) {
    return 0;
  }
  return stride == 0 ? 1 : (length - extent) / stride + 1;
}

// The window of one output position: it starts at index * stride - pad. Pads may exceed it.
constexpr Window clip_window(uint32_t index, uint32_t stride, uint32_t pad, uint32_t taps,
                             uint32_t extent) {
  if ((index | stride) < 65536) {  // a window inside, without arithmetic of 64 bits
    const uint32_t start = index * stride - pad;
    if (start <= extent && taps <= extent - start && index * stride >= pad) {
      return {start, 0, taps};
    }
  }
  return clip_run(int64_t{index} * stride - pad, taps, extent);
}

}  // namespace nnlib

#endif
