/* SPDX-License-Identifier: MIT */
/* What the runtime and the conformance program need of an operating system or a board. Each port
 * is one directory that implements these functions.
 *
 * On a bare machine (cortex-m, riscv, none) an application may define any of them itself: the
 * library's definitions are weak. */
#ifndef NNLIB_PORTS_PORT_H
#define NNLIB_PORTS_PORT_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Before the definition of a function that an application may define itself. Compilers without weak
 * symbols make the library's definition the only one. */
#if defined(__GNUC__) && !defined(_WIN32)
#define NNLIB_WEAK __attribute__((weak))
#else
#define NNLIB_WEAK
#endif

/* Prepares the process: the console takes the program's bytes as they are. */
void port_init(void);

/* A monotonic clock and its constant rate, at least 1 MHz. Only the benchmark timer
 * (core/core_benchmark.h) reads it. */
int64_t port_ticks(void);
int64_t port_ticks_per_second(void);

/* Keeps the calling thread on the first processor, where the platform can. */
void port_pin_to_first_processor(void);

/* The exit status that tells of count failures, never 0 for a count that is not: a host that keeps
 * only 8 bits of the status gets at most 255. */
int port_exit_status(uint32_t count);

#ifdef __cplusplus
}
#endif

#endif
