/* SPDX-License-Identifier: MIT */
/* Element-wise functions, float32: array kernels and layers of type NL.
 *
 * A kernel writes out->data[i] for i < size from in->data[i], from the last element to the first,
 * so that the output may be the input or overlap it from above. A layer applies its kernel to as
 * many elements as the shape of its input tensor has. Domain errors give the infinities and NaN of
 * IEEE 754 and of the math library; nothing is reported.
 */
#ifndef NNLIB_LAYERS_LAYERS_NL_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_NL_GENERIC_FLOAT_H

#include "core/ai_layer.h"
#include "core/ai_tensor.h"
#include "layers/layers_sm_generic_float.h" /* the nonlinearities that are not element-wise */

#ifdef __cplusplus
extern "C" {
#endif

/* The type of all element-wise kernels. params: the operation's float parameters, if it has any. */
typedef void (*ai_nl_func)(ai_array* out, const ai_array* in, ai_size size, const void* params);

typedef struct ai_layer_nl {
  ai_layer base;
  const ai_array* nl_params; /* the operation's float32 parameters; null when it has none */
} ai_layer_nl;

/* Each operation of these lists has a kernel nl_func_<op>_array_f32 and a layer function
 * forward_<op>. The result of an operation named like a C function is that function's; "in double"
 * means evaluated in double precision and then rounded to single. */

/* Arithmetic: the same results, to the bit, on every machine, but for the sign and payload of a NaN
 * that an operation makes.
 *   abs, neg      x with its sign bit cleared, flipped
 *   ceil, floor   with the sign bit of x: ceil(-0.5) is -0
 *   hard_sigmoid  t = 0.2f * x + 0.5f; t > 1 ? 1 : (0 > t ? 0 : t)
 *   reciprocal    1 / x
 *   round         halves away from zero
 *   rsqrt         1 / sqrt(x)
 *   sign          x > 0 ? 1 : -1, so -1 for zeros and NaN
 *   soft_sign     x / (1 + abs(x)) */
#define AI_NL_ARITHMETIC_OPS(X) \
  X(abs)                        \
  X(ceil)                       \
  X(floor)                      \
  X(hard_sigmoid)               \
  X(neg)                        \
  X(reciprocal)                 \
  X(round)                      \
  X(rsqrt)                      \
  X(sign)                       \
  X(soft_sign)                  \
  X(sqrt)

/* As accurate as the math library. cosh and sinh in double. */
#define AI_NL_LIBRARY_OPS(X) \
  X(acos)                    \
  X(acosh)                   \
  X(asin)                    \
  X(asinh)                   \
  X(atan)                    \
  X(atanh)                   \
  X(cos)                     \
  X(cosh)                    \
  X(erf)                     \
  X(log)                     \
  X(sin)                     \
  X(sinh)                    \
  X(tan)

/* Built on exp and tanh in double.
 *   exp, tanh
 *   sigmoid    1 / (1 + exp(-x))
 *   soft_plus  log(exp(x) + 1) */
#define AI_NL_EXP_OPS(X) \
  X(exp)                 \
  X(sigmoid)             \
  X(soft_plus)           \
  X(tanh)

/* With parameters, which a layer takes from its nl_params.
 *   clip {lo, hi}                 m = x > lo ? x : lo; m < hi ? m : hi. ReLU6 is clip {0, 6}
 *   relu_thresholded {threshold}  threshold > x ? 0 : x */
#define AI_NL_PARAMETER_OPS(X) \
  X(clip)                      \
  X(relu_thresholded)

/* With parameters, and the exponential in double.
 *   elu {alpha}          e = alpha * (exp(x) - 1); (0 > x ? 0 : x) + (e > 0 ? 0 : e)
 *   selu {alpha, gamma}  gamma * elu(x) */
#define AI_NL_EXP_PARAMETER_OPS(X) \
  X(elu)                           \
  X(selu)

#define AI_NL_DECLARE_(op)                                                       \
  void nl_func_##op##_array_f32(ai_array* out, const ai_array* in, ai_size size, \
                                const void* params);                             \
  void forward_##op(ai_layer* layer);
AI_NL_ARITHMETIC_OPS(AI_NL_DECLARE_)
AI_NL_LIBRARY_OPS(AI_NL_DECLARE_)
AI_NL_EXP_OPS(AI_NL_DECLARE_)
AI_NL_PARAMETER_OPS(AI_NL_DECLARE_)
AI_NL_EXP_PARAMETER_OPS(AI_NL_DECLARE_)
#undef AI_NL_DECLARE_

/* 0 > x ? 0 : x. Without parameters. */
void nl_func_relu_array_f32(ai_array* out, const ai_array* in, ai_size size, const void* params);

/* Parameters {threshold, slope, max}. Unless 0 > max, every x not below max gives max. Any other x
 * gives x from the threshold on, and below it (x - threshold) * slope; but with 0 > max and slope 0
 * it gives 0 there. */
void nl_func_relu_generic_array_f32(ai_array* out, const ai_array* in, ai_size size,
                                    const void* params);

/* The kernel follows from nl_params: null relu, one value relu_thresholded, else relu_generic. */
void forward_relu(ai_layer* layer);

/* params: one slope for each element. max(0, x) + x * slope for x <= 0, max(0, x) - slope * 0
 * otherwise: an infinite or NaN slope reaches positive elements as NaN. */
void nl_func_prelu_array_f32(ai_array* out, const ai_array* in, ai_size size, const void* params);

/* The slopes are the first weights tensor and repeat over the input, block by block (for one slope
 * per channel: over the pixels). Input and output data pointers end up at their data_start. */
void forward_prelu(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
