// SPDX-License-Identifier: MIT
// Every form of exp, sigmoid, tanh, cosh and sinh beside the C library's double functions.
#ifndef NNLIB_TOOLS_EXACT_MATH_FORMS_HPP
#define NNLIB_TOOLS_EXACT_MATH_FORMS_HPP

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kernels/exact_arrays.hpp"
#include "kernels/exact_math.hpp"

namespace nnlib {

inline uint32_t bits_of(float x) {
  return std::bit_cast<uint32_t>(x);
}

template <float (*Function)(float)>
void each(float* out, const float* in, size_t count) {
  std::transform(in, in + count, out, Function);
}
template <float (*Function)(uint32_t)>
void each_bits(float* out, const float* in, size_t count) {
  std::transform(in, in + count, out, [](float x) { return Function(bits_of(x)); });
}
template <void (*Function)(float*, const float*, size_t), bool Wide>
void vectors(float* out, const float* in, size_t count) {
  vector_allow_wide(Wide);
  Function(out, in, count);
}

struct ExactForm {
  const char* name;
  void (*compute)(float* out, const float* in, size_t count);
  uint64_t differing = 0;
};

struct ExactFunction {
  const char* name;
  double (*library)(double);
  bool is_sigmoid;  // the library's function is exp, of -x
  std::vector<ExactForm> forms;

  double in_double(float x) const { return library(static_cast<double>(is_sigmoid ? -x : x)); }
  float result(double from_library) const {
    const float y = static_cast<float>(from_library);
    return is_sigmoid ? 1.0f / (1.0f + y) : y;
  }
};

inline std::vector<ExactFunction> exact_functions() {
  std::vector<ExactFunction> all = {
      {"exp",
       std::exp,
       false,
       {{"integers", each<exact::exp>}, {"second step", each_bits<exact::exp_second>}}},
      {"sigmoid", std::exp, true, {{"integers", each<exact::sigmoid>}}},
      {"tanh",
       std::tanh,
       false,
       {{"integers", each<exact::tanh>}, {"second step", each_bits<exact::tanh_second>}}},
      {"cosh", std::cosh, false, {{"integers", each<exact::cosh>}}},
      {"sinh", std::sinh, false, {{"integers", each<exact::sinh>}}},
  };
  if constexpr (kHasExactArrays) {
    const ExactForm of_arrays[][2] = {
        {{"4 lanes", vectors<exp_f32, false>}, {"8 lanes", vectors<exp_f32, true>}},
        {{"4 lanes", vectors<sigmoid_f32, false>}, {"8 lanes", vectors<sigmoid_f32, true>}},
        {{"4 lanes", vectors<tanh_f32, false>}, {"8 lanes", vectors<tanh_f32, true>}}};
    for (size_t i = 0; i < 3; ++i) {
      all[i].forms.insert(all[i].forms.end(), std::begin(of_arrays[i]), std::end(of_arrays[i]));
    }
  }
  return all;
}

// NaN count as equal whatever their bits.
inline bool same(float a, float b) {
  return bits_of(a) == bits_of(b) || (std::isnan(a) && std::isnan(b));
}

}  // namespace nnlib

#endif
