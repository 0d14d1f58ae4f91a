// SPDX-License-Identifier: MIT

// Each element x becomes table[x], counted from the least x on.
template <class T>
void look_up_bytes(const T* in, const T* table, uint32_t count, T* out) {
  table -= std::numeric_limits<T>::min();
  keep(table);
  map_elements(in, out, count, [table](T x) { return table[x]; });
}
