// SPDX-License-Identifier: MIT
// Windows by loops, which compilers make vectors of where there are any.

template <class Fold, class T>
NNLIB_ALWAYS_INLINE constexpr bool is_narrow(const Window& rows, const Window& columns) {
  return std::is_same_v<typename Fold::template Narrow<T>, typename Fold::template Wide<T>> ||
         uint64_t{rows.count} * columns.count <= 65535;
}

template <class Fold, class T, class Finish>
NNLIB_ALWAYS_INLINE uint32_t pool_narrow(const PoolGeometry& g, const Window& rows,
                                         const Window& columns, const T* in, T* out,
                                         const Finish& finish) {
  using Folded = typename Fold::template Narrow<T>;
  pool_window<Fold, Folded, kPoolLanes<Folded>>(g, rows, columns, in, out, finish);
  return g.channels;
}
