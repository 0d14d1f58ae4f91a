// SPDX-License-Identifier: MIT
// exp, sigmoid, tanh, cosh and sinh of some hundred thousand floats: the checksum of the results'
// bits is the same on every target. The exit status counts the functions for which it is not.
#include <cstdio>
#include <cstring>

#include "layers/layers_nl_generic_float.h"
#include "test/reference/exact_math.h"

namespace {

struct Function {
  const char* name;
  ai_nl_func kernel;
  uint32_t expected;
};

const Function kFunctions[] = {
    {"exp", nl_func_exp_array_f32, exp_checksum[0]},
    {"sigmoid", nl_func_sigmoid_array_f32, sigmoid_checksum[0]},
    {"tanh", nl_func_tanh_array_f32, tanh_checksum[0]},
    {"cosh", nl_func_cosh_array_f32, cosh_checksum[0]},
    {"sinh", nl_func_sinh_array_f32, sinh_checksum[0]},
};

class Checksum {
 public:
  explicit Checksum(ai_nl_func kernel) : kernel_(kernel) {}

  // Floats with the bits from `first` to less than `last`, and `sign`.
  void add(uint64_t first, uint64_t last, uint32_t step, uint32_t sign) {
    for (uint64_t bits = first; bits < last; bits += step) {
      const uint32_t word = static_cast<uint32_t>(bits) | sign;
      std::memcpy(&values_[count_], &word, sizeof(word));
      if (++count_ == kBlock) {
        take();
      }
    }
  }
  uint32_t sum() {
    take();
    return sum_;
  }

 private:
  static constexpr ai_size kBlock = 100;

  void take() {
    ai_array array = {AI_ARRAY_FORMAT_FLOAT, count_, values_, values_};
    kernel_(&array, &array, count_, nullptr);
    for (ai_size i = 0; i < count_; ++i) {
      uint32_t word = 0x7fc00000u;  // every NaN
      if (values_[i] == values_[i]) {
        std::memcpy(&word, &values_[i], sizeof(word));
      }
      sum_ = sum_ * 31 + word;
    }
    count_ = 0;
  }

  ai_nl_func kernel_;
  float values_[kBlock];
  ai_size count_ = 0;
  uint32_t sum_ = 0;
};

}  // namespace

int main() {
  int differing = 0;
  for (const Function& function : kFunctions) {
    Checksum checksum(function.kernel);
    checksum.add(0x33000000, 0x43000000, 1801, 0);
    checksum.add(0x33000000, 0x43000000, 1801, 0x80000000);
    checksum.add(0, uint64_t{1} << 32, 65521, 0);
    const uint32_t sum = checksum.sum();
    std::printf("%s 0x%08lx, expected 0x%08lx\n", function.name, static_cast<unsigned long>(sum),
                static_cast<unsigned long>(function.expected));
    differing += sum != function.expected;
  }
  return differing;
}
