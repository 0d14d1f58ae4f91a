// SPDX-License-Identifier: MIT
#include "kernels/exact_arrays.hpp"

#if NNLIB_EXACT_ARRAYS

#include <math.h>

#include "kernels/exact_math.hpp"

namespace nnlib {
namespace {

using LibraryFunction = double (*)(double);

// The definition itself, for vectors with an element in doubt.
[[gnu::noinline, gnu::cold]] void by_library(float* out, const float* in, size_t count,
                                             LibraryFunction function) {
  for (size_t i = 0; i < count; ++i) {
    out[i] = static_cast<float>(function(static_cast<double>(in[i])));
  }
}

}  // namespace
}  // namespace nnlib

#define NNLIB_VECTOR_BODY "kernels/exact_arrays_body.hpp"
#include "kernels/vector_bodies.hpp"

namespace nnlib {

void exp_f32(float* out, const float* in, size_t count) {
  NNLIB_VECTOR(exp_array)(out, in, count);
}
void sigmoid_f32(float* out, const float* in, size_t count) {
  NNLIB_VECTOR(sigmoid_array)(out, in, count);
}
void tanh_f32(float* out, const float* in, size_t count) {
  NNLIB_VECTOR(tanh_array)(out, in, count);
}

}  // namespace nnlib

#endif
