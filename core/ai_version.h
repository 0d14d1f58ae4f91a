/* SPDX-License-Identifier: MIT */
/* The version of the library: the only place that has it. */
#ifndef NNLIB_CORE_AI_VERSION_H
#define NNLIB_CORE_AI_VERSION_H

#define NNLIB_VERSION_MAJOR 4
#define NNLIB_VERSION_MINOR 1
#define NNLIB_VERSION_MICRO 0

#endif
