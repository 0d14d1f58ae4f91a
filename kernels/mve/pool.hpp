// SPDX-License-Identifier: MIT
// Windows by vectors of channels: maxima in lanes of the elements' size, sums of bytes in lanes of
// 16 bits, which are widened before they overflow.

#include "kernels/mve/load_widened.hpp"

// So many bytes have a sum of 16 bits.
constexpr uint32_t kMostBytes = 128;
// Of so many cells the means below are exact.
constexpr uint32_t kMostCells = 2048;

template <class Fold, class T>
constexpr bool is_narrow(const Window& rows, const Window& columns) {
  const uint32_t count = rows.count * columns.count;
  return std::is_base_of_v<IntegerMax, Fold> ||
         (sizeof(T) == 1 && columns.count <= kMostBytes && rows.count <= kMostCells && count > 1 &&
          count <= kMostCells);
}

// The cells of a window: how far it is from column to column and from row to row.
struct PoolCells {
  size_t step, pitch;
  uint32_t rows, columns;
  uint32_t count() const { return rows * columns; }
};

// The maxima of the channels in `lanes`. kAll: these are all.
template <bool kAll, class T>
NNLIB_ALWAYS_INLINE auto max_of_cells(const PoolCells& cells, const T* in, mve_pred16_t lanes) {
  const auto load = [lanes](const T* from) {
    if constexpr (kAll) {
      return vld1q(from);
    } else {
      return vld1q_z(from, lanes);
    }
  };
  auto most = load(in);
  for (uint32_t row = cells.rows; row > 0; --row, in += cells.pitch) {
    const T* at = in;
    for (uint32_t left = cells.columns; left > 0; --left, at += cells.step) {
      most = vmaxq(most, load(at));
    }
  }
  return most;
}

// The sums of the even and of the odd ones of eight channels.
template <bool kAll, class T>
NNLIB_ALWAYS_INLINE int32x4x2_t sum_of_cells(const PoolCells& cells, const T* in,
                                             mve_pred16_t lanes) {
  int32x4x2_t sums = {{vdupq_n_s32(0), vdupq_n_s32(0)}};
  int16x8_t part = vdupq_n_s16(0);
  uint32_t room = kMostBytes;
  const auto add_part = [&] {
    sums.val[0] = vaddq_s32(sums.val[0], vmovlbq_s16(part));
    sums.val[1] = vaddq_s32(sums.val[1], vmovltq_s16(part));
  };
  for (uint32_t row = cells.rows; row > 0; --row, in += cells.pitch) {
    if (room < cells.columns) {
      add_part();
      part = vdupq_n_s16(0);
      room = kMostBytes;
    }
    room -= cells.columns;
    const T* at = in;
    for (uint32_t left = cells.columns; left > 0; --left, at += cells.step) {
      part = vaddq_s16(part, load_eight<kAll>(at, lanes));
    }
  }
  add_part();
  return sums;
}

// The exact means: the sums plus half the count, divided by the count. With r = floor(2^31 / count)
// + 1 the product with n is above n / count by less than |n| / 2^31, which is less than 1 / count.
template <class Fold>
NNLIB_ALWAYS_INLINE int32x4_t divide_lanes(int32x4_t sums, uint32_t count) {
  const auto half = static_cast<int32_t>(count / 2);
  if constexpr (Fold::kHalvesAway) {
    const int32x4_t sign = vshrq_n_s32(sums, 31);
    sums = vaddq_s32(sums, vsubq_s32(veorq_s32(vdupq_n_s32(half), sign), sign));
  } else {
    sums = vaddq_n_s32(sums, half);
  }
  const auto reciprocal = static_cast<int32_t>((uint32_t{1} << 31) / count + 1);
  const int32x4_t floors = vmulhq_s32(vshlq_n_s32(sums, 1), vdupq_n_s32(reciprocal));
  return vsubq_s32(floors, vshrq_n_s32(sums, 31));  // toward zero
}

template <bool kAll, class Fold, class T, class Finish>
NNLIB_ALWAYS_INLINE void pool_block(const PoolCells& cells, const T* in, uint32_t channels, T* out,
                                    const Finish& finish) {
  const auto finish_each = [&](const auto& folded) {
    for (uint32_t i = 0; i < channels; ++i) {
      out[i] = finish(folded[i], cells.count());
    }
  };
  if constexpr (std::is_base_of_v<IntegerMax, Fold>) {
    const mve_pred16_t lanes = sizeof(T) == 1 ? vctp8q(channels) : vctp16q(channels);
    const auto most = max_of_cells<kAll>(cells, in, lanes);
    if (finish.is_exact()) {
      vst1q_p(out, most, lanes);
    } else {
      T folded[16 / sizeof(T)];
      vst1q(folded, most);
      finish_each(folded);
    }
  } else {
    const mve_pred16_t lanes = vctp16q(channels);
    const int32x4x2_t sums = sum_of_cells<kAll>(cells, in, lanes);
    if (finish.is_exact()) {
      const int32x4_t even = divide_lanes<Fold>(sums.val[0], cells.count());
      const int32x4_t odd = divide_lanes<Fold>(sums.val[1], cells.count());
      const int16x8_t means = vmovntq_s32(vmovnbq_s32(vreinterpretq_s16_s32(even), even), odd);
      vstrbq_p_s16(reinterpret_cast<int8_t*>(out), means, lanes);
    } else {
      int32_t folded[8];
      vst2q_s32(folded, sums);
      finish_each(folded);
    }
  }
}

template <class Fold, class T, class Finish>
void pool_narrow(const PoolGeometry& g, const Window& rows, const Window& columns, const T* in,
                 T* out, const Finish& finish) {
  constexpr uint32_t kLanes = std::is_base_of_v<IntegerMax, Fold> ? 16 / sizeof(T) : 8;
  const size_t step = g.channels;
  const PoolCells cells = {step, step * g.in_width, rows.count, columns.count};
  in += rows.begin * cells.pitch + columns.begin * step;
  uint32_t left = g.channels;
  for (; NNLIB_FOR_SPEED && left >= kLanes; left -= kLanes, in += kLanes, out += kLanes) {
    pool_block<NNLIB_FOR_SPEED, Fold>(cells, in, kLanes, out, finish);
  }
  for (; left > 0; left -= std::min(left, kLanes), in += kLanes, out += kLanes) {
    pool_block<false, Fold>(cells, in, std::min(left, kLanes), out, finish);
  }
}
