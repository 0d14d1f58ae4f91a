/* SPDX-License-Identifier: MIT */
/* Fully connected layer, float32: type DENSE. */
#ifndef NNLIB_LAYERS_LAYERS_DENSE_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_DENSE_GENERIC_FLOAT_H

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Input 0 (1, n_in, W, H), output 0 (1, n_out, W, H), weights 0 (n_in, n_out, 1, 1): one row of
 * n_in weights for each output, rows stride[1] bytes apart; weights 1 the optional bias of n_out
 * values. Every one of the output's W * H positions is computed from the input's same position.
 *
 * Each output is one sum from 0 in index order, to which the bias (or 0) is added at the end.
 *
 * Weights may be indices into a table of floats (AI_ARRAY_FORMAT_LUT4_FLOAT, LUT8_FLOAT), read in
 * place: the array's data the indices, its data_start the table of 16 or 256 values. stride[1] is
 * then the bytes of a row of indices: n_in of 8 bits, (n_in + 1) / 2 of 4 bits. */
void forward_dense(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
