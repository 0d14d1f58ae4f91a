/* SPDX-License-Identifier: MIT */
/* Recurrent layers over a sequence: LSTM and GRU, in single precision.
 *
 * A sequence tensor holds the features of one time step in dimension C and the steps in dimension
 * H; step t starts at element t * C. Input: F features, T steps. Output: U units and either one
 * step (H below 2: the last state) or T steps (H of 2 or more: every state). W is 1, and so is the
 * batch, which is not iterated. F and U are at most 65535. Output and input do not overlap.
 *
 * Weights, a block of rows for each gate, row u = the weights of unit u:
 *
 *   LSTM  [0] kernel 4 x U x F     [1] recurrent 4 x U x U, gates in the order
 *                                      input i, forget f, candidate c, output o
 *         [2] peepholes 3 x U, blocks of the input, output, forget gate   [3] bias 4 x U
 *   GRU   [0] kernel 3 x U x F     [1] recurrent 3 x U x U, gates in the order
 *                                      update z, reset r, candidate h
 *         [2] bias 3 x U
 *
 * Every product W.x and R.h is a float sum from 0 in index order, so that results are the same
 * bits with and without vectors. All states start at zero on every call.
 *
 * A forward call takes one block from core_mem_alloc and gives it back: 3 U floats, 2 U floats for
 * a GRU with reset_after, whatever the target and the number of steps. Without it the call returns
 * with the output as it was. A missing list or weight tensor faults; nothing else is checked. */
#ifndef NNLIB_LAYERS_LAYERS_RNN_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_RNN_GENERIC_FLOAT_H

#include <stddef.h>
#include <stdint.h>

#include "core/ai_layer.h"
#include "core/ai_math_helpers.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ai_layer_lstm {
  ai_layer base;
  uint32_t n_units;
  ai_activation_fn activation;           /* of the candidate; null: identity */
  ai_activation_fn recurrent_activation; /* of the gates; null: identity */
  ai_activation_fn out_activation;       /* of the cell state; not null */
  uint8_t go_backwards;                  /* walk the input from the last step to the first */
  uint8_t reverse;                       /* fill a sequence output from slot T - 1 downwards */
} ai_layer_lstm;

typedef struct ai_layer_gru {
  ai_layer base;
  uint32_t n_units;
  ai_activation_fn activation;           /* of the candidate; null: identity */
  ai_activation_fn recurrent_activation; /* of the gates; null: identity */
  uint8_t reset_after;                   /* apply the reset gate to the recurrent product */
  uint8_t go_backwards;                  /* as in ai_layer_lstm */
  uint8_t reverse;
} ai_layer_gru;

/* What a cell works on from step to step. No pointer is null but those of the other cells. */
typedef struct ai_rnn_cell_state {
  const float* kernel;
  const float* recurrent;
  const float* bias;
  ai_activation_fn activation;
  ai_activation_fn recurrent_activation;
  float* h_prev; /* U floats: the previous output */
  float* h_next; /* U floats apart from h_prev: where the new output is written */
  uint16_t n_features;
  uint16_t n_units;
  const float* peephole;           /* LSTM */
  float* c;                        /* LSTM: the cell state, U floats, updated in place */
  ai_activation_fn out_activation; /* LSTM */
  float* rh;                       /* GRU, reset before: U floats of work space */
} ai_rnn_cell_state;

/* One time step; x points to its F features. Afterwards h_prev and h_next are swapped, so that
 * h_prev is the new output. Sums of products group as written, from left to right.
 *
 * lstm_cell: i = recurrent_activation((c P_i + B_i) + (R_i.h + W_i.x)), f alike;
 *   g = activation((c P_f + B_c) + (R_c.h + W_c.x)), the forget gate's peephole here too;
 *   c' = i g + f c; o = recurrent_activation((c' P_o + B_o) + (R_o.h + W_o.x));
 *   h' = out_activation(c') o. */
void lstm_cell(const float* x, ai_rnn_cell_state* s);

/* z = recurrent_activation(R_z.h + B_z + W_z.x), r alike;
 * n = activation(R_h.(r h) + B_h + W_h.x); h' = n (1 - z) + h z. */
void gru_cell_before(const float* x, ai_rnn_cell_state* s);

/* The same with n = activation(r (R_h.h) + B_h + W_h.x). */
void gru_cell_after(const float* x, ai_rnn_cell_state* s);

void forward_lstm(ai_layer* layer); /* ai_layer_lstm */
void forward_gru(ai_layer* layer);  /* ai_layer_gru */

/* What forward_gru calls when reset_after is set; not to be installed in a layer. */
void _forward_gru_after(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
