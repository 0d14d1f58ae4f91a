/* SPDX-License-Identifier: MIT */
/* Single-precision scalar functions: activations, dot product and binary operations.
 *
 * "In double" means that the library's double-precision function is evaluated and its result
 * rounded to single precision. Comparisons go the way they are written, which decides what happens
 * to NaN and to the sign of zero.
 */
#ifndef NNLIB_CORE_AI_MATH_HELPERS_H
#define NNLIB_CORE_AI_MATH_HELPERS_H

#include "core/ai_tensor.h"

#ifdef __cplusplus
extern "C" {
#endif

/* An activation of a recurrent cell: any ai_math function of one argument, or the user's own. */
typedef float (*ai_activation_fn)(float x);

/* An operation of an element-wise or reduce layer: ai_sum, ..., or the user's own. */
typedef float (*ai_binary_fn)(float a, float b);

/* x itself: stands in for a null activation. */
float func_dummy(float x);

/* Adds a[0] * b[0] + a[1] * b[1] + ... to *out. The sum of the n products is formed first, from 0
 * in index order, and then added. Returns a + n. */
const float* ai_math_dot_array(float* out, const float* a, const float* b, ai_size n);

float ai_math_sqrt(float x);         /* NaN, through the library's domain error, for x < 0 */
float ai_math_exp(float x);          /* in double */
float ai_math_pow(float x, float y); /* in double */
float ai_math_tanh(float x);         /* in double */
float ai_math_cosh(float x);         /* in double */

float ai_math_relu(float x);               /* 0 > x ? 0 : x */
float ai_math_prelu(float x, float slope); /* 0 > x ? x * slope : x */
float ai_math_sigmoid(float x);            /* 1 / (1 + exp(-x)), the exponential in double */
float ai_math_hard_sigmoid(float x);       /* t = 0.2f * x + 0.5f; t > 1 ? 1 : (0 > t ? 0 : t) */
float ai_math_sign(float x);               /* x > 0 ? 1 : -1, so -1 for zeros and NaN */

float ai_sum(float a, float b); /* a + b */
float ai_sub(float a, float b); /* a - b */
float ai_mul(float a, float b); /* a * b */
float ai_div(float a, float b); /* a / b */
float ai_max(float a, float b); /* a > b ? a : b, so b when either is NaN */
float ai_min(float a, float b); /* a < b ? a : b, so b when either is NaN */

/* The quotient a / b rounded down; a zero keeps the quotient's sign. */
float ai_floor_div(float a, float b);

/* fmodf(a, b): the remainder of the division that truncates, with the sign of a, in spite of the
 * name. ai_floor_mod(-7, 2) is -1. */
float ai_floor_mod(float a, float b);

#ifdef __cplusplus
}
#endif

#endif
