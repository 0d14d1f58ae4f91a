/* SPDX-License-Identifier: MIT */
/* Element types and status codes of the fixed-point kernels.
 *
 * A Q number of b fractional bits stands for q / 2^b; the kernels know only the raw integers. */
#ifndef NNLIB_KERNELS_ARM_TYPES_H
#define NNLIB_KERNELS_ARM_TYPES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef int8_t q7_t;
typedef int16_t q15_t;
typedef int32_t q31_t;
typedef float float32_t;

typedef enum {
  ARM_MATH_SUCCESS = 0,
  ARM_MATH_ARGUMENT_ERROR = -1,
  ARM_MATH_LENGTH_ERROR = -2,
  ARM_MATH_SIZE_MISMATCH = -3, /* a size that the kernel does not take; nothing was written */
  ARM_MATH_NANINF = -4,
  ARM_MATH_SINGULAR = -5,
  ARM_MATH_TEST_FAILURE = -6
} arm_status;

#ifdef __cplusplus
}
#endif

#endif
