/* SPDX-License-Identifier: MIT */
/* Start-up, the error word, and the two ways in which the runtime stops on purpose. */
#ifndef NNLIB_CORE_CORE_COMMON_H
#define NNLIB_CORE_CORE_COMMON_H

#include <stdbool.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Bits 0-7 the error type, bits 8-31 the error code; 0 is no error. */
typedef uint32_t ai_error;

#define AI_ERROR_TYPE_NONE 0x00u
#define AI_ERROR_TYPE_INTERFACE_VERSION 0x01u /* generated for a newer interface API */
#define AI_ERROR_TYPE_CUSTOM_TYPES 0x02u      /* custom type signature mismatch */
#define AI_ERROR_TYPE_INVALID_HANDLE 0x10u    /* or invalid parameters at initialisation */
#define AI_ERROR_TYPE_INVALID_STATE 0x11u     /* not initialised, or no layers */
#define AI_ERROR_TYPE_INVALID_INPUT 0x12u
#define AI_ERROR_TYPE_INVALID_OUTPUT 0x13u
#define AI_ERROR_TYPE_INIT_FAILED 0x30u /* the core could not be initialised */

#define AI_ERROR_CODE_NONE 0x00u
#define AI_ERROR_CODE_NETWORK 0x10u
#define AI_ERROR_CODE_NETWORK_PARAMS 0x11u
#define AI_ERROR_CODE_NETWORK_WEIGHTS 0x12u
#define AI_ERROR_CODE_NETWORK_ACTIVATIONS 0x13u
#define AI_ERROR_CODE_NULL_POINTER 0x17u
#define AI_ERROR_CODE_SIZE 0x18u /* size or shape mismatch, or a missing list */
#define AI_ERROR_CODE_FORMAT 0x19u
#define AI_ERROR_CODE_BATCHES 0x21u /* zero batch count */
#define AI_ERROR_CODE_NOT_INITIALISED 0x30u

#define AI_ERROR_MAKE(type, code) (((uint32_t)(code) << 8) | (uint32_t)(type))

/* The fields of an error word. */
static inline uint32_t ai_error_type(ai_error error) {
  return error & 0xFFu;
}
static inline uint32_t ai_error_code(ai_error error) {
  return error >> 8;
}

/* Prepares the runtime; true on success. */
bool core_init(void);

/* Stores the error unless one is stored already (the first error sticks); returns whether it
 * did. An error of type 0 reads as none. */
bool core_set_error(ai_error* error, uint32_t type, uint32_t code);

/* Returns the stored error and clears it. */
ai_error core_get_error(ai_error* error);

#if defined(__GNUC__)
#define AI_NORETURN __attribute__((noreturn))
#else
#define AI_NORETURN
#endif

/* An application may define these two itself, to log, to reset or to stop a machine safely (the
 * library's are weak, where the compiler has that). They must not return. */

/* Where a violated contract (a missing tensor list, ...) ends: the processor's own trap, on a
 * hosted system a fatal signal. */
AI_NORETURN void core_fault(void);

/* Where an unsupported fixed-point or integer layer configuration ends: an endless loop. */
AI_NORETURN void core_hang(void);

#ifdef __cplusplus
}
#endif

#endif
