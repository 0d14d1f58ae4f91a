// SPDX-License-Identifier: MIT
// Sweeps of float kernels against loops written straight from their formulas: the same bits, with
// every instance of the vector code.
#ifndef TEST_UNIT_FLOAT_SWEEP_HPP
#define TEST_UNIT_FLOAT_SWEEP_HPP

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <random>
#include <vector>

#include "kernels/vector.hpp"
#include "test/unit/float_data.hpp"

// The same numbers on every machine.
class Random {
 public:
  explicit Random(uint32_t seed) : engine_(seed) {}

  uint32_t below(uint32_t bound) { return engine_() % bound; }
  uint32_t pick(std::initializer_list<uint32_t> from) {
    return from.begin()[below(static_cast<uint32_t>(from.size()))];
  }
  std::vector<float> floats(size_t count) {
    std::vector<float> values = irregular_floats(count, static_cast<uint32_t>(engine_()));
    values.reserve(1);  // no null pointer for an empty map
    return values;
  }
  std::vector<uint8_t> bytes(size_t count) {
    std::vector<uint8_t> values(count);
    for (uint8_t& value : values) {
      value = static_cast<uint8_t>(engine_());
    }
    return values;
  }

 private:
  std::mt19937 engine_;
};

// Around the numbers of lanes and the sizes of register blocks.
inline uint32_t boundary_size(Random& random) {
  return random.pick({1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 33});
}

// Runs check() with the wide and with the narrow vector code.
template <class Check>
void with_each_instance(Check check) {
  const bool allowed = nnlib::vector_wide();
  for (const bool wide : {true, false}) {
    nnlib::vector_allow_wide(wide && allowed);
    EXPECT_TRUE(wide || !nnlib::vector_wide());
    SCOPED_TRACE(wide ? "wide" : "narrow");
    check();
  }
  nnlib::vector_allow_wide(allowed);
}

#endif
