/* SPDX-License-Identifier: MIT */
/* Where a network spends its time: runs it layer by layer under a clock of the application.
 *
 *   static ai_profile_entry entries[32];
 *   ai_platform_network_process(handle, inputs, outputs);  // binds the buffers
 *   uint32_t count = ai_profile_run(&net, cycles, 3, entries, 32);
 *   ai_profile_print(entries, count, "cycles", put, NULL);
 *
 * No heap and no output of its own; text goes to the application, piece by piece.
 */
#ifndef NNLIB_PROFILE_AI_PROFILE_H
#define NNLIB_PROFILE_AI_PROFILE_H

#include <stdint.h>

#include "core/ai_network.h"
#include "profile/ai_layer_work.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A counter that runs upwards and wraps at 2^32: cycles, microseconds or the like. No layer may run
 * longer than one turn. */
typedef uint32_t (*ai_profile_clock)(void);

typedef struct ai_profile_entry {
  const ai_layer* layer;
  uint32_t ticks; /* of the fastest run */
} ai_profile_entry;

/* Runs the layers in order, all of them `runs` times (at least once), and keeps of each the fastest
 * run. The inputs and outputs are those that the last process call has bound; one must have been
 * made. Layers that work in place find their own results in the later runs: the values are then not
 * those of an inference, the time is.
 *
 * Returns the number of entries written: the layers, or capacity if they are more (the others run,
 * but are not kept). */
uint32_t ai_profile_run(ai_network* network, ai_profile_clock now, uint32_t runs,
                        ai_profile_entry* entries, uint32_t capacity);

/* Takes a piece of text, which lives as long as the call. */
typedef void (*ai_profile_write)(const char* text, void* context);

/* A table, a line a layer and one for all: place, function, shape of the output (height x width x
 * channels), ticks, share, multiply-accumulates, ticks for each of them. `unit` names the ticks in
 * the head line, "cycles" for example. Lines end in "\n". */
void ai_profile_print(const ai_profile_entry* entries, uint32_t count, const char* unit,
                      ai_profile_write write, void* context);

/* The same as one JSON object:
 *   {"unit": "cycles", "layers": [{"function": "forward_dense", "shape": [1, 10, 1, 1],
 *    "ticks": 1234, "macs": 640}, ...]}
 * shape in the order of the records: N, C, W, H. */
void ai_profile_print_json(const ai_profile_entry* entries, uint32_t count, const char* unit,
                           ai_profile_write write, void* context);

#ifdef __cplusplus
}
#endif

#endif
