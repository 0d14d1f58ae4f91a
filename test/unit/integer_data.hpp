// SPDX-License-Identifier: MIT
// Random integers, and memory of random content that ends where it is said to end.
#ifndef NNLIB_TEST_UNIT_INTEGER_DATA_HPP
#define NNLIB_TEST_UNIT_INTEGER_DATA_HPP

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

inline std::mt19937 random_bits(20240301);

template <class T>
std::vector<T> random_vector(size_t count) {
  std::vector<T> values(count);
  for (T& value : values) {
    value = static_cast<T>(random_bits());
  }
  return values;
}

struct Rubbish {
  explicit Rubbish(size_t bytes, size_t offset = 0)
      : size(bytes), storage(new uint8_t[bytes + offset]), data(storage.get() + offset) {
    for (size_t i = 0; i < bytes; ++i) {
      data[i] = static_cast<uint8_t>(random_bits());
    }
  }
  size_t size;
  std::unique_ptr<uint8_t[]> storage;
  uint8_t* data;
};

#endif
