/* SPDX-License-Identifier: MIT */
/* Matrix products of activations, float32: layers of type GEMM. */
#ifndef NNLIB_LAYERS_LAYERS_GEMM_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_GEMM_GENERIC_FLOAT_H

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ai_layer_gemm {
  ai_layer base;
  float alpha;
  float beta;
  uint8_t tA; /* not 0: A is transposed */
  uint8_t tB; /* not 0: B is transposed */
} ai_layer_gemm;

/* Y = alpha * op(A) * op(B) + beta * C, every tensor a matrix of shape[3] (H) rows and shape[1] (C)
 * columns. A, B, C are the inputs, followed by the weights: three inputs; or two inputs and
 * weights 0; or input 0, weights 0 and 1. Y is output 0 and overlaps neither A nor B; C may lie
 * in Y.
 *
 * Y(i, j) = C(i, j) * beta + sum * alpha with sum = op(A)(i, k) * op(B)(k, j) over k, from 0 in
 * order, one element of Y after the other, row by row. A C of one row or one column (or both)
 * repeats along Y.
 *
 * Where op(A), op(B) and Y do not fit together, rows * columns modulo 65536 elements of Y are set
 * to 0: a Y that may meet with this has fewer than 65536 elements. */
void forward_gemm(ai_layer* layer); /* an ai_layer_gemm */

/* Y(c, h, w, n) = A(c, h, k, n) * B(c, k, w, n) summed over k < A.W, from 0 in order, for every
 * index of Y. A is input 0; B is input 1, or weights 0 when there is no second input; Y is output 0
 * and overlaps neither.
 *
 * Every tensor is read as C dense blocks of N * W * H elements, N innermost, then W, then H,
 * whatever its strides are. For N = C = 1 that is the product of matrices of H rows and W columns.
 */
void forward_matmul(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
