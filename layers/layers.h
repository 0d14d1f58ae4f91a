/* SPDX-License-Identifier: MIT */
/* Layer dispatch and layer types. */
#ifndef NNLIB_LAYERS_LAYERS_H
#define NNLIB_LAYERS_LAYERS_H

#include <stdbool.h>
#include <stdint.h>

#include "core/ai_network.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Runs the layer; returns the one after it, or null. */
ai_layer* ai_layers_forward_layer(ai_layer* layer);

/* Runs every layer once, in list order. current_layer is the layer being run, and null at the end;
 * a network without layers is left untouched. */
void ai_layers_forward_all(ai_network* network);

/* "CONV2D", ...; "" for any value that is not a layer type. */
const char* ai_layer_type_name(uint32_t type);

/* True for the AI_LAYER_TYPE_* values. */
bool ai_layer_type_is_valid(uint32_t type);

/* True when *signature is the signature of this runtime's custom types. */
bool ai_check_custom_types(const uint32_t* signature);

/* The low byte is the number of custom types. */
#define AI_CUSTOM_TYPES_SIGNATURE UINT32_C(0x84048403)

#ifdef __cplusplus
}
#endif

#endif
