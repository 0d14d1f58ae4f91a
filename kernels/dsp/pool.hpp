// SPDX-License-Identifier: MIT
// Windows by words of channels: maxima of four bytes or two 16-bit values side by side, sums of
// bytes as pairs of 16 bits, which are widened before they overflow.

// So many bytes have a sum of 16 bits.
constexpr uint32_t kMostBytes = 255;

template <class Fold>
constexpr bool kIsMax = std::is_base_of_v<IntegerMax, Fold>;

// Sums of bytes are widened after some rows; where size counts, only at the end.
template <class Fold, class T>
constexpr bool is_narrow(const Window& rows, const Window& columns) {
  const uint64_t cells = uint64_t{rows.count} * columns.count;
  return kIsMax<Fold> ||
         (cells <= 65535 &&
          (sizeof(T) != 1 || (NNLIB_FOR_SPEED ? columns.count : cells) <= kMostBytes));
}

// The cells of a window that is not empty: how far it is from column to column and from row to row.
struct PoolCells {
  size_t step, pitch;
  uint32_t rows, columns;
  uint32_t rows_at_once;  // of at most kMostBytes cells; for speed
};

// A word's channels, or the first of them.
template <bool kWhole, class T>
NNLIB_ALWAYS_INLINE uint32_t load_channels(const T* from, uint32_t channels) {
  if (kWhole || channels == 4 / sizeof(T)) {
    return dsp::load_word(from);
  }
  uint32_t word = 0;
  for (uint32_t i = channels; i-- > 0;) {
    word = word << (8 * sizeof(T)) | static_cast<std::make_unsigned_t<T>>(from[i]);
  }
  return word;
}

template <bool kWhole, class T>
NNLIB_ALWAYS_INLINE void store_channels(T* to, uint32_t channels, uint32_t word) {
  if (kWhole || channels == 4 / sizeof(T)) {
    dsp::store_word(to, word);
  } else {
    std::memcpy(to, &word, channels * sizeof(T));
  }
}

// kColumns: how many columns there are; 0: as many as the cells say. Returns where the next row is.
template <uint32_t kColumns, class T, class Visit>
NNLIB_ALWAYS_INLINE const T* for_cells(const PoolCells& cells, const T* in, uint32_t rows,
                                       const Visit& visit) {
  do {
    if constexpr (kColumns == 0) {
      const T* at = in;
      uint32_t left = cells.columns;
      do {
        visit(at);
        at += cells.step;
      } while (--left > 0);
    } else {
      NNLIB_UNROLL
      for (uint32_t column = 0; column < kColumns; ++column) {
        visit(in + column * cells.step);
      }
    }
    in += cells.pitch;
  } while (--rows > 0);
  return in;
}

// The maxima of some words of channels, not yet finished.
template <bool kWhole, uint32_t kColumns, uint32_t kWords, class T, class Load>
NNLIB_ALWAYS_INLINE void pool_maxima(const PoolCells& cells, const T* in, uint32_t channels, T* out,
                                     const Load& load) {
  constexpr T kLeast = std::numeric_limits<T>::min();
  uint32_t most[kWords];
  std::fill_n(most, kWords, sizeof(T) == 1 ? dsp::four_times(kLeast) : dsp::twice(kLeast));
  for_cells<kColumns>(
      cells, in, cells.rows, [&](const T* at) __attribute__((always_inline)) {
        NNLIB_UNROLL
        for (uint32_t word = 0; word < kWords; ++word) {
          most[word] = dsp::greater_lanes<T>(most[word], load(at + word * (4 / sizeof(T))));
        }
      });
  NNLIB_UNROLL
  for (uint32_t word = 0; word < kWords; ++word) {
    store_channels<kWhole>(out + word * (4 / sizeof(T)), channels, most[word]);
  }
}

struct FourSums {
  int32_t sums[4];
};
template <class T, class Finish>
__attribute__((noinline)) void finish_each(FourSums of, uint32_t channels, uint32_t count, T* out,
                                           const Finish& finish) {
  for (uint32_t i = 0; i < channels; ++i) {
    out[i] = finish(of.sums[i], count);
  }
}

// The means of four channels of bytes.
template <class Fold, uint32_t kColumns, class T, class Finish, class Load>
NNLIB_ALWAYS_INLINE void pool_means(PoolCells& cells, const T* in, uint32_t channels, T* out,
                                    const Finish& finish, const Load& load) {
  using Half = std::conditional_t<std::is_signed_v<T>, int16_t, uint16_t>;
  using Word = std::conditional_t<std::is_signed_v<T>, int32_t, uint32_t>;
  const uint32_t count = cells.rows * cells.columns;
  int32_t sums[4] = {};
  uint32_t left = cells.rows;
  do {
    const uint32_t rows = NNLIB_FOR_SPEED ? std::min(left, cells.rows_at_once) : left;
    uint32_t even = 0, odd = 0;
    in = for_cells<kColumns>(
        cells, in, rows, [&](const T* at) __attribute__((always_inline)) {
          const uint32_t bytes = load(at);
          even = dsp::even_bytes<T>(even, bytes);
          odd = dsp::odd_bytes<T>(odd, bytes);
          if constexpr (!NNLIB_FOR_SPEED) {
            // (What seems to change stays in a register. GCC would load it in each round.)
            __asm__("" : "+r"(cells.step));
          }
        });
    sums[0] += static_cast<Half>(even);
    sums[1] += static_cast<Half>(odd);
    sums[2] += static_cast<int32_t>(static_cast<Word>(even) >> 16);
    sums[3] += static_cast<int32_t>(static_cast<Word>(odd) >> 16);
    left -= rows;
  } while (left > 0);
  if (!finish.is_exact()) {
    finish_each({{sums[0], sums[1], sums[2], sums[3]}}, channels, count, out, finish);
    return;
  }
  NNLIB_UNROLL
  for (uint32_t i = 0; i < 4; ++i) {
    if (i < channels) {
      out[i] = Fold::template exact<T>(sums[i], count);
    }
  }
}

// Words of a round: where size counts, a loop over the columns is shared by two.
template <class Fold>
constexpr uint32_t kPoolWords = kIsMax<Fold> && !NNLIB_FOR_SPEED ? 2 : 1;

template <class Fold, bool kWhole, uint32_t kColumns, class T, class Finish>
NNLIB_ALWAYS_INLINE void pool_word(PoolCells& cells, const T* in, uint32_t channels, T* out,
                                   const Finish& finish) {
  const auto load = [channels](const T* at) __attribute__((always_inline)) {
    return load_channels<kWhole>(at, channels);
  };
  if constexpr (kIsMax<Fold>) {
    pool_maxima<kWhole, kColumns, kWhole ? kPoolWords<Fold> : 1>(cells, in, channels, out, load);
  } else {
    pool_means<Fold, kColumns>(cells, in, channels, out, finish, load);
  }
}

// Whole words of channels; returns how many channels these are.
template <class Fold, uint32_t kColumns, class T, class Finish>
__attribute__((noinline)) uint32_t pool_words(const PoolCells& of, const T* in, T* out,
                                              const Finish& finish) {
  constexpr uint32_t kLanes = kPoolWords<Fold> * 4 / sizeof(T);
  PoolCells cells = of;
  const uint32_t channels = static_cast<uint32_t>(cells.step) & ~(kLanes - 1);
  for (T* stop = out + channels; out != stop; in += kLanes, out += kLanes) {
    pool_word<Fold, true, kColumns>(cells, in, kLanes, out, finish);
  }
  return channels;
}

template <class Fold, class T, class Finish>
uint32_t pool_narrow(const PoolGeometry& g, const Window& rows, const Window& columns, const T* in,
                     T* out, const Finish& finish) {
  if constexpr (!kIsMax<Fold> && sizeof(T) != 1) {
    using Folded = typename Fold::template Narrow<T>;
    pool_window<Fold, Folded, kPoolLanes<Folded>>(g, rows, columns, in, out, finish);
    return g.channels;
  } else {
    const size_t step = g.channels;
    const uint32_t count = rows.count * columns.count;
    PoolCells cells = {step, step * g.in_width, rows.count, columns.count, rows.count};
    if (NNLIB_FOR_SPEED && count > kMostBytes) {
      cells.rows_at_once = kMostBytes / columns.count;
    }
    in += rows.begin * cells.pitch + columns.begin * step;
    uint32_t channel;
    if constexpr (!NNLIB_FOR_SPEED) {
      channel = pool_words<Fold, 0>(cells, in, out, finish);
    } else {
      channel = columns.count == 2   ? pool_words<Fold, 2>(cells, in, out, finish)
                : columns.count == 3 ? pool_words<Fold, 3>(cells, in, out, finish)
                                     : pool_words<Fold, 0>(cells, in, out, finish);
      if (channel < g.channels) {
        pool_word<Fold, false, 0>(cells, in + channel, g.channels - channel, out + channel, finish);
        channel = g.channels;
      }
    }
    if constexpr (kIsMax<Fold>) {
      if (!finish.is_exact()) {
        std::transform(out, out + channel, out, [&](T most) { return finish(most, count); });
      }
    }
    return channel;
  }
}
