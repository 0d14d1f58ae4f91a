// SPDX-License-Identifier: MIT
// Windows by vectors of channels: maxima in lanes of the elements' size, sums of bytes in lanes of
// 16 bits, which are widened before they overflow.

#include "kernels/mve/load_widened.hpp"

// So many bytes have a sum of 16 bits.
constexpr uint32_t kMostBytes = 128;
// Of so many cells means are exact, and by lanes of 16 bits.
constexpr uint32_t kMostCells = 2048;
constexpr uint32_t kMostOf16Bits = 11;

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
  const auto load = [&](const T* from) {
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

// The sums of eight channels over at most kMostBytes cells.
template <bool kAll, class T>
NNLIB_ALWAYS_INLINE int16x8_t sum_of_cells(const PoolCells& cells, const T* in,
                                           mve_pred16_t lanes) {
  int16x8_t sums = vdupq_n_s16(0);
  for (uint32_t row = cells.rows; row > 0; --row, in += cells.pitch) {
    const T* at = in;
    for (uint32_t left = cells.columns; left > 0; --left, at += cells.step) {
      sums = vaddq_s16(sums, load_eight<kAll>(at, lanes));
    }
  }
  return sums;
}

// The sums of the even and of the odd ones over any cells.
template <bool kAll, class T>
NNLIB_ALWAYS_INLINE int32x4x2_t wide_sum_of_cells(PoolCells cells, const T* in,
                                                  mve_pred16_t lanes) {
  int32x4x2_t sums = {{vdupq_n_s32(0), vdupq_n_s32(0)}};
  const uint32_t most = kMostBytes / cells.columns;
  for (uint32_t left = cells.rows; left > 0; left -= cells.rows, in += cells.rows * cells.pitch) {
    cells.rows = std::min(left, most);
    const int16x8_t part = sum_of_cells<kAll>(cells, in, lanes);
    sums.val[0] = vaddq_s32(sums.val[0], vmovlbq_s16(part));
    sums.val[1] = vaddq_s32(sums.val[1], vmovltq_s16(part));
  }
  return sums;
}

// Exact means of lanes of kBits: the sums plus half the count, divided by the count. With r =
// floor(2^(kBits - 1) / count) + 1 the product with n is above n / count by less than
// |n| / 2^(kBits - 1), which is less than 1 / count: up to kMostCells, or kMostOf16Bits.
#define NNLIB_DIVIDE_LANES(kBits, Lanes)                                                    \
  template <class Fold>                                                                     \
  NNLIB_ALWAYS_INLINE Lanes divide_lanes(Lanes sums, uint32_t count) {                      \
    const auto half = static_cast<int##kBits##_t>(count / 2);                               \
    if constexpr (Fold::kHalvesAway) {                                                      \
      const Lanes sign = vshrq_n_s##kBits(sums, kBits - 1);                                 \
      sums = vaddq(sums, vsubq(veorq(vdupq_n_s##kBits(half), sign), sign));                 \
    } else {                                                                                \
      sums = vaddq(sums, half);                                                             \
    }                                                                                       \
    const uint32_t reciprocal = (uint32_t{1} << (kBits - 1)) / count + 1;                   \
    const Lanes floors = vmulhq(vshlq_n_s##kBits(sums, 1),                                  \
                                vdupq_n_s##kBits(static_cast<int##kBits##_t>(reciprocal))); \
    return vsubq(floors, vshrq_n_s##kBits(sums, kBits - 1)); /* toward zero */              \
  }
NNLIB_DIVIDE_LANES(16, int16x8_t)
NNLIB_DIVIDE_LANES(32, int32x4_t)
#undef NNLIB_DIVIDE_LANES

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
    if (NNLIB_FOR_SPEED && cells.count() <= kMostOf16Bits && finish.is_exact()) {
      const int16x8_t sums = sum_of_cells<kAll>(cells, in, lanes);
      vstrbq_p_s16(reinterpret_cast<int8_t*>(out), divide_lanes<Fold>(sums, cells.count()), lanes);
      return;
    }
    const int32x4x2_t sums = wide_sum_of_cells<kAll>(cells, in, lanes);
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
uint32_t pool_narrow(const PoolGeometry& g, const Window& rows, const Window& columns, const T* in,
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
  return g.channels;
}
