// SPDX-License-Identifier: MIT
// Windows by loops, which compilers make vectors of where there are any.

template <class Fold, class T>
NNLIB_ALWAYS_INLINE constexpr bool is_narrow(const Window& rows, const Window& columns) {
  return std::is_same_v<typename Fold::template Narrow<T>, typename Fold::template Wide<T>> ||
         uint64_t{rows.count} * columns.count <= 65535;
}

template <class Fold, class T, class Finish>
NNLIB_ALWAYS_INLINE void pool_narrow(const PoolGeometry& g, const Window& rows,
                                     const Window& columns, const T* in, T* out,
                                     const Finish& finish) {
  pool_window<Fold, typename Fold::template Narrow<T>>(g, rows, columns, in, out, finish);
}
