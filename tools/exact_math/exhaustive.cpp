// SPDX-License-Identifier: MIT
// exact_math_exhaustive [FUNCTION [FIRST LAST]]
//
// Compares every form of exp, sigmoid, tanh, cosh and sinh with the C library's double functions
// for the floats whose bits are FIRST << 24 to (LAST << 24) - 1, all of them without. Prints how
// many results differ and the first of these, how far the integer forms' first step is off, in
// units of its own last bit, and the inputs whose results lie nearest to the middle between two
// floats. Ends with status 1 when any result differs. NaN count as equal whatever their bits.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tools/exact_math/forms.hpp"

namespace {

using namespace nnlib;

constexpr uint32_t kChunk = 65536;
using Floats = std::array<float, kChunk>;

// What the first step gives less the true result, in units of its last bit; NaN where it does not
// decide.
double exp_first_error(float x, double result) {
  const uint32_t size = bits_of(x) & ~exact::kSign;
  if (size < 0x33000000u || size >= 0x42ae0000u) {
    return NAN;
  }
  const int32_t m = exact::mantissa_q30(size);
  const exact::Power2 y = exact::exp_first(x < 0 ? -m : m, size >> 23);
  const double sum = y.rest + static_cast<double>(y.entry.more >> 20) + 2;
  return (y.entry.bits - 0x3f000000u) * 4096.0 + sum - std::ldexp(result, 35 - y.power);
}
double tanh_first_error(float x, double result) {
  const uint32_t size = bits_of(x) & ~exact::kSign;
  if (size < exact::kTanhLeast || size >= exact::kTanhOne) {
    return NAN;
  }
  const exact::Unrounded y =
      size >= exact::kTanhHalf ? exact::tanh_first_high(size) : exact::tanh_first_low(size);
  return y.y - std::ldexp(std::fabs(result), 127 + 31 - 1 - static_cast<int>(y.base >> 23));
}

using FirstError = double (*)(float x, double result);

FirstError first_error_of(const ExactFunction& f) {
  return std::strcmp(f.name, "exp") == 0    ? exp_first_error
         : std::strcmp(f.name, "tanh") == 0 ? tanh_first_error
                                            : nullptr;
}

// The inputs nearest to a boundary, by the bits of the double result that rounding cuts off.
class Hardest {
 public:
  void see(float x, double result) {
    const auto cut = static_cast<int64_t>(std::bit_cast<uint64_t>(result) & ((1u << 29) - 1));
    const int64_t distance = std::abs(cut - (1 << 28));
    if (distance < worst_[kCount - 1].distance && std::fabs(result) >= 0x1p-126) {
      worst_[kCount - 1] = {distance, bits_of(x)};
      std::sort(worst_.begin(), worst_.end(),
                [](Input a, Input b) { return a.distance < b.distance; });
    }
  }
  void print() const {
    std::printf("  hardest:");
    for (const Input& input : worst_) {
      std::printf(" 0x%08x", static_cast<unsigned>(input.bits));
    }
    std::printf("\n");
  }

 private:
  static constexpr size_t kCount = 8;
  struct Input {
    int64_t distance = INT64_MAX;
    uint32_t bits = 0;
  };
  std::array<Input, kCount> worst_;
};

struct Range {
  double least = 0, most = 0;
};

void compare(ExactForm& form, const Floats& in, const Floats& want) {
  static Floats got;
  form.compute(got.data(), in.data(), kChunk);
  for (size_t i = 0; i < kChunk; ++i) {
    if (same(got[i], want[i])) {
      continue;
    }
    if (++form.differing <= 10) {
      std::printf("  %s of 0x%08x: 0x%08x instead of 0x%08x\n", form.name,
                  static_cast<unsigned>(bits_of(in[i])), static_cast<unsigned>(bits_of(got[i])),
                  static_cast<unsigned>(bits_of(want[i])));
    }
  }
}

// Returns the number of differing results.
uint64_t run(ExactFunction& f, uint64_t first, uint64_t last) {
  static Floats in, want;
  const FirstError first_error = first_error_of(f);
  Hardest hardest;
  Range off;
  for (uint64_t start = first; start < last; start += kChunk) {
    for (uint32_t i = 0; i < kChunk; ++i) {
      const float x = std::bit_cast<float>(static_cast<uint32_t>(start + i));
      const double y = f.in_double(x);
      in[i] = x;
      want[i] = f.result(y);
      hardest.see(x, y);
      if (first_error != nullptr) {
        const double error = first_error(x, y);
        off.least = error < off.least ? error : off.least;
        off.most = error > off.most ? error : off.most;
      }
    }
    for (ExactForm& form : f.forms) {
      compare(form, in, want);
    }
  }
  uint64_t differing = 0;
  for (const ExactForm& form : f.forms) {
    std::printf("%s, %s: %llu of %llu differ\n", f.name, form.name,
                static_cast<unsigned long long>(form.differing),
                static_cast<unsigned long long>(last - first));
    differing += form.differing;
  }
  if (first_error != nullptr) {
    std::printf("  first step off by %.2f to %.2f\n", off.least, off.most);
  }
  hardest.print();
  std::fflush(stdout);
  return differing;
}

}  // namespace

int main(int count, char** arguments) {
  const bool in_part = count >= 4;
  const uint64_t first = in_part ? std::strtoull(arguments[2], nullptr, 0) << 24 : 0;
  const uint64_t last = (in_part ? std::strtoull(arguments[3], nullptr, 0) : 256) << 24;
  uint64_t differing = 0;
  for (ExactFunction& f : exact_functions()) {
    if (count < 2 || std::strcmp(arguments[1], f.name) == 0) {
      differing += run(f, first, last);
    }
  }
  return differing != 0;
}
