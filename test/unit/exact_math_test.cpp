// SPDX-License-Identifier: MIT
// Every form of exp, sigmoid, tanh, cosh and sinh gives the bits of the C library's double
// function, rounded: on a stripe of all inputs, at borders and at those that lie nearest between
// two results. All inputs: tools/exact_math.
#include <gtest/gtest.h>

#include "tools/exact_math/forms.hpp"

namespace {

using namespace nnlib;

std::vector<float> stripe() {
  std::vector<float> inputs;
  for (uint64_t bits = 0; bits < (uint64_t{1} << 32); bits += 16381) {
    inputs.push_back(std::bit_cast<float>(static_cast<uint32_t>(bits)));
  }
  for (uint32_t bits = 0x33000000; bits < 0x43000000; bits += 3571) {
    inputs.push_back(std::bit_cast<float>(bits));
    inputs.push_back(-inputs.back());
  }
  return inputs;
}

// Three floats on either side of each power of two and of where a function changes its form.
std::vector<float> borders() {
  std::vector<uint32_t> middles = {0x42ae0000, 0x42b17218, 0x42b2d4fd, 0x42d00000, 0x42cff1b5,
                                   0x3f0c9f54, 0x41102cb4, 0x41200000, 0x42c80000};
  for (uint32_t exponent = 0; exponent < 256; ++exponent) {
    middles.push_back(exponent << 23);
  }
  std::vector<float> inputs;
  for (const uint32_t middle : middles) {
    for (uint32_t bits = middle - 3; bits != middle + 4; ++bits) {
      inputs.push_back(std::bit_cast<float>(bits));
      inputs.push_back(std::bit_cast<float>(bits ^ 0x80000000u));
    }
  }
  return inputs;
}

// As tools/exact_math found them: of exp, tanh, cosh, sinh. Each stands alone in every lane of a
// vector, since one of them sends the whole vector another way.
std::vector<float> hardest() {
  constexpr size_t kMostLanes = 8;
  std::vector<float> inputs;
  constexpr uint32_t kHardest[] = {
      0xc16912cd, 0xbbf0edf1, 0x377eff81, 0x38e69cc1, 0x39c6be5b, 0xb3000000, 0xbae0e25c,
      0x383a3ef1, 0x3ac37de2, 0x3eee0566, 0x3cd41b91, 0x40acb4d0, 0x3a6f7750, 0x3d609528,
      0x3a87c3b6, 0x3b43f588, 0x3a1285ff, 0x39e89768, 0x3aed56e9, 0x3a9dd66b,
  };
  for (const uint32_t bits : kHardest) {
    for (const uint32_t sign : {0u, 0x80000000u}) {
      for (size_t lane = 0; lane < kMostLanes; ++lane) {
        inputs.resize(inputs.size() + kMostLanes, 0.75f);
        inputs.end()[-1 - static_cast<ptrdiff_t>(lane)] = std::bit_cast<float>(bits ^ sign);
      }
    }
  }
  return inputs;
}

void expect_bits_of_the_library(const std::vector<float>& inputs) {
  std::vector<float> got(inputs.size());
  for (const ExactFunction& f : exact_functions()) {
    for (const ExactForm& form : f.forms) {
      form.compute(got.data(), inputs.data(), inputs.size());
      size_t differing = 0;
      for (size_t i = 0; i < inputs.size(); ++i) {
        const float want = f.result(f.in_double(inputs[i]));
        if (!same(want, got[i]) && ++differing <= 3) {
          ADD_FAILURE() << f.name << ", " << form.name << ": " << std::hexfloat << inputs[i]
                        << " gives " << got[i] << " instead of " << want;
        }
      }
      EXPECT_EQ(differing, 0u) << f.name << ", " << form.name;
    }
  }
}

TEST(ExactMath, StripeOfAllInputs) {
  expect_bits_of_the_library(stripe());
}
TEST(ExactMath, Borders) {
  expect_bits_of_the_library(borders());
}
TEST(ExactMath, HardestInputs) {
  expect_bits_of_the_library(hardest());
}

// The last elements of an array are not a whole vector, and nothing behind them is written.
TEST(ExactMath, AnyLengthInPlace) {
  for (const ExactFunction& f : exact_functions()) {
    for (const ExactForm& form : f.forms) {
      for (size_t count = 0; count < 20; ++count) {
        std::vector<float> values = {0.5f, -3.0f, 88.0f, -1e-5f};
        values.resize(20, 0.75f);
        std::vector<float> expected = values;
        for (size_t i = 0; i < count; ++i) {
          expected[i] = f.result(f.in_double(values[i]));
        }
        form.compute(values.data(), values.data(), count);
        EXPECT_EQ(values, expected) << f.name << ", " << form.name << " of " << count;
      }
    }
  }
}

}  // namespace
