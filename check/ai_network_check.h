/* SPDX-License-Identifier: MIT */
/* Looks at the records of a network, without running it, and says what is wrong with them.
 *
 * Layer functions validate nothing: a wrong record gives wrong numbers, a trap or an endless loop.
 * A program links this library (nnlib::check) while a network is being brought up, or calls it from
 * a unit test. It uses no heap and does not write to the network; of the layer functions only those
 * are looked at that the program holds anyway.
 */
#ifndef NNLIB_CHECK_AI_NETWORK_CHECK_H
#define NNLIB_CHECK_AI_NETWORK_CHECK_H

#include "core/ai_network.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The place of a finding that is about no single layer. */
#define AI_CHECK_NO_LAYER UINT32_C(0xFFFFFFFF)

/* The texts live as long as the call of the report function. A text too long for the checker's
 * buffer is cut off. */
typedef struct ai_check_finding {
  uint32_t layer;       /* the layer's place in the network, from 0; or AI_CHECK_NO_LAYER */
  const char* function; /* "forward_conv2d_integer"; "" for one that the library does not know */
  const char* sentence; /* "scratch 0 holds 64 bytes, 116 are needed" */
  const char* text;     /* "layer 3, forward_conv2d_integer: scratch 0 holds 64 bytes, ..." */
} ai_check_finding;

/* Called once for each finding; context is the caller's own. */
typedef void (*ai_check_report)(const ai_check_finding* finding, void* context);

/* Checks every layer that a run of the network visits, those of all branches and inside
 * time-distributed layers too, and what the layers hand to each other. Reports every finding;
 * report may be null. Returns the number of findings; a null network is one.
 *
 * Of layers with a function of the application's own only what all layers share is checked: lists,
 * arrays, shapes and strides, and who writes what. Memory that the records name but do not describe
 * is taken to be there. Layers are counted in the order in which they run. */
uint32_t ai_network_check(const ai_network* network, ai_check_report report, void* context);

/* The name of a layer function of the library, "forward_dense"; "" for any other and for one that
 * the program does not hold. */
const char* ai_layer_function_name(ai_layer_forward forward);

/* An error word in words, type and code: "invalid input: a null pointer where data was required".
 * "no error" for type 0; "unknown error" for a type or a code that the runtime does not use. */
const char* ai_error_text(ai_error error);

#ifdef __cplusplus
}
#endif

#endif
