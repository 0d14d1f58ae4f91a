/* SPDX-License-Identifier: MIT */
/* The platform API: create, initialise, describe and run a network.
 *
 * Failures never abort. They are kept as an error word in the network, where the first one sticks
 * until ai_platform_network_get_error reads it, and the call returns 0, null or false.
 * A network must not be used from two threads at once.
 */
#ifndef NNLIB_CORE_AI_PLATFORM_INTERFACE_H
#define NNLIB_CORE_AI_PLATFORM_INTERFACE_H

#include <stdbool.h>
#include <stdint.h>

#include "core/ai_network.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A live ai_network. */
typedef void* ai_handle;

typedef struct ai_platform_version {
  uint8_t major;
  uint8_t minor;
  uint8_t micro;
  uint8_t reserved;
} ai_platform_version;

typedef struct ai_network_report {
  /* Left to the network's own code. */
  const char* model_name;
  const char* model_signature;
  const char* model_datetime;
  const char* compile_datetime;
  const char* runtime_revision;
  ai_platform_version runtime_version;
  /* Left to the network's own code. */
  const char* tool_revision;
  ai_platform_version tool_version;
  ai_platform_version tool_api_version;
  ai_platform_version api_version;
  ai_platform_version interface_api_version;
  uint16_t n_inputs;
  uint16_t n_outputs;
  ai_buffer* inputs; /* n_inputs descriptors of one batch each, data where the tensor is bound */
  ai_buffer* outputs;
  ai_buffer activations;
  ai_buffer params;
  uint32_t n_nodes; /* layers */
  uint32_t signature;
} ai_network_report;

/* "(rev-", 40 hexadecimal digits, ")". */
const char* ai_platform_runtime_get_revision(void);

/* The version of the interface that these headers describe, three arguments for
 * ai_platform_network_create. */
#define AI_INTERFACE_API_VERSION_MAJOR 1
#define AI_INTERFACE_API_VERSION_MINOR 3
#define AI_INTERFACE_API_VERSION_MICRO 0
#define AI_INTERFACE_API_VERSION \
  AI_INTERFACE_API_VERSION_MAJOR, AI_INTERFACE_API_VERSION_MINOR, AI_INTERFACE_API_VERSION_MICRO

/* Versions, packed: major in bits 0-7, minor in 8-15, micro in 16-23. */
uint32_t ai_platform_runtime_get_version(void);
uint32_t ai_platform_api_get_version(void);
uint32_t ai_platform_interface_api_get_version(void);

/* The network behind a handle; null when the handle is null or not a live network. */
ai_network* ai_platform_context_acquire(ai_handle handle);

/* Marks the network live and returns its handle; null for null. */
ai_handle ai_platform_context_release(ai_network* context);

/* Returns the stored error and clears it; (0x10, 0x10) for an invalid handle. */
ai_error ai_platform_network_get_error(ai_handle handle);

/* Stores an error unless one is stored; returns whether it did. False for a null handle; the
 * handle is not otherwise checked. */
bool ai_platform_network_set_error(ai_handle handle, uint32_t type, uint32_t code);

/* Makes the network live and stores its handle. major, minor and micro: the interface API version
 * that the network was written for, at most this runtime's, which AI_INTERFACE_API_VERSION is.
 * config is not used. Returns 0, or the error, with *handle then null: (0x10, 0x10) for a null
 * handle or network, (0x30, 0x10) core start-up, (0x01, 0x10) newer interface, (0x02, 0x10) custom
 * types. */
ai_error ai_platform_network_create(ai_handle* handle, const ai_buffer* config, ai_network* network,
                                    uint8_t major, uint8_t minor, uint8_t micro);

/* Makes the network ready to run: keeps copies of the two descriptors in its record, for the report
 * and for layers of the application's own, and tells every layer its network. No tensor is pointed
 * into the two buffers: arrays find their memory as they were declared. A network whose arrays all
 * have memory of their own gives empty descriptors (all 0). Returns the handle, or null. Errors:
 * (0x10, 0x11) params is null, (0x10, 0x13) and (0x10, 0x12) no data for non-empty activations or
 * weights, tested in this order. An invalid handle stores no error. */
ai_handle ai_platform_network_init(ai_handle handle, const ai_network_params* params);

/* Runs the network once for each batch. inputs and outputs: one descriptor for each input and
 * output tensor, in list order; height, width, channels and format must be the tensor's, data must
 * hold n_batches items. The number of batches is the largest n_batches; a buffer with fewer is
 * used round and round. Arrays with AI_FORMAT_FLAG_COPY are copied to and from, others are
 * re-pointed into the caller's memory, their data offset kept.
 * Returns the number of batches run, 0 on failure. Errors, in the order of the tests:
 *   (0x11, 0x30) not initialised;
 *   (0x12, 0x17) no inputs, no descriptors or no cursors; then of each input in turn
 *   (0x12, 0x18) size or shape, (0x12, 0x19) format, (0x12, 0x17) null data, (0x12, 0x21) no
 *   batches;
 *   (0x13, 0x18) no outputs; then the same of the outputs, of type 0x13;
 *   (0x12, 0x17), then (0x13, 0x17) a tensor without array, or one to copy with an array without
 *   data.
 * Null outputs run nothing and are no error. Bindings made before a failing test stay. */
uint16_t ai_platform_network_process(ai_handle handle, const ai_buffer* inputs,
                                     const ai_buffer* outputs);

/* Null when the handle is a live network, else the handle. Nothing is released: the record is the
 * caller's. */
ai_handle ai_platform_network_destroy(ai_handle handle);

/* Fills the report from runtime_revision on, but for the tool fields; true on success. Errors:
 * (0x11, 0x18) no layers, (0x12, 0x18) no inputs, (0x13, 0x18) no outputs, (0x12, 0x17) and (0x13,
 * 0x17) an input or output without array; an invalid handle and a null report store none. */
bool ai_platform_api_get_network_report(ai_handle handle, ai_network_report* report);

#ifdef __cplusplus
}
#endif

#endif
