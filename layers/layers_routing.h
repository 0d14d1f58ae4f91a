/* SPDX-License-Identifier: MIT */
/* Routing: a split and an add layer take the walk over a network through several branches, one
 * after the other, by changing their own next pointer.
 *
 *   ... -> split -> branch 0: a -> b -> add -> continuation ...
 *                -> branch 1: c ------> add
 *
 * runs split, a, b, add, split, c, add, continuation. Each branch's last layer has the add layer
 * as its next. What a branch reads, and how the branches' results come together, is the business
 * of the two callbacks: with no split callback every branch's layers read the tensors of their own
 * chains; the add callback typically copies the result of the first branch into a sum and adds
 * those of the others to it.
 *
 *   static ai_layer_split split;
 *   static ai_layer* const starts[] = {&a, &c};
 *   static void* const results[] = {&b_out, &c_out};
 *   static ai_layer_add add = {AI_LAYER(AI_LAYER_TYPE_ADD, forward_add, &add_chain, &after),
 *                              2, 0, results, accumulate, &sum_out, &split.base, &after};
 *   static ai_layer_split split = {AI_LAYER(AI_LAYER_TYPE_SPLIT, forward_split, &split_chain, &a),
 *                                  2, 0, starts, NULL, NULL, NULL};
 *
 * Initially each index is 0, the split's next its first branch and the add's next the
 * continuation, so that the walks that only count or mark layers end; those see the layers of one
 * branch. A complete run leaves both layers ready for the next one. */
#ifndef NNLIB_LAYERS_LAYERS_ROUTING_H
#define NNLIB_LAYERS_LAYERS_ROUTING_H

#include "core/ai_layer.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Called before a branch is entered. */
typedef void (*ai_split_callback)(void* branch_context, void* context);
/* Called after a branch has run; branch is that branch's entry in the add layer's table. */
typedef void (*ai_add_callback)(void* context, void* branch);

typedef struct ai_layer_split {
  ai_layer base;
  uint16_t count;               /* branches, at least 1 */
  uint16_t index;               /* the branch that is entered next */
  ai_layer* const* branches;    /* count first layers */
  void* const* branch_contexts; /* count arguments for the callback; unused without one */
  ai_split_callback callback;   /* or null */
  void* context;                /* the callback's */
} ai_layer_split;

typedef struct ai_layer_add {
  ai_layer base;
  uint16_t count;           /* branches, at least 1 */
  uint16_t index;           /* the branch that arrives next */
  void* const* branches;    /* count arguments for the callback, such as the branches' result
                               tensors; unused without one */
  ai_add_callback callback; /* or null */
  void* context;            /* the callback's */
  ai_layer* loop_back;      /* the split layer */
  ai_layer* continuation;   /* the layer after the merge; null, or the add layer itself, when the
                               network ends here */
} ai_layer_add;

/* Calls the callback with (branch_contexts[index], context), makes branches[index] the next layer
 * and moves on to the following branch, after the last to the first. Reads no tensors. */
void forward_split(ai_layer* layer);

/* Calls the callback with (context, branches[index]) and moves on to the following branch: the
 * next layer is loop_back while there is one; else it is continuation and index is 0 again. Reads
 * no tensors. */
void forward_add(ai_layer* layer);

#ifdef __cplusplus
}
#endif

#endif
