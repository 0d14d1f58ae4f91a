// SPDX-License-Identifier: MIT
#include "kernels/vector.hpp"

namespace nnlib {

#if NNLIB_VECTOR_WIDE

namespace {

bool processor_has_wide() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2") != 0 &&
         (NNLIB_FUSED_MULTIPLY_ADD == 0 || __builtin_cpu_supports("fma") != 0);
}

bool use_wide = processor_has_wide();

}  // namespace

bool vector_wide() {
  return use_wide;
}

void vector_allow_wide(bool allow) {
  use_wide = allow && processor_has_wide();
}

#else

bool vector_wide() {
  return false;
}

void vector_allow_wide(bool) {}

#endif

}  // namespace nnlib
