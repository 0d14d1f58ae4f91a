/* SPDX-License-Identifier: MIT */
/* Copies of core records, the checksum and the network signature. */
#ifndef NNLIB_CORE_CORE_UTILS_H
#define NNLIB_CORE_CORE_UTILS_H

#include <stdbool.h>
#include <stdint.h>

#include "core/ai_network.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Shallow copy: the data is shared. */
void core_array_clone(ai_array* dst, const ai_array* src);

/* Copies everything but the array's contents; the dimension values go into the buffers that dst's
 * shape and stride point to, which must be writable and large enough. The type bytes of dst's
 * shape and stride stay. */
void core_tensor_clone(ai_tensor* dst, const ai_tensor* src);

/* Copies the dimension count and the shape's values into the stride as they are. It computes no
 * byte strides. */
void core_shape_to_stride(ai_stride* stride, const ai_shape* shape);

/* Checksum of the length / 2 little-endian 16-bit words of data: Fletcher's two sums, modulo 2^16,
 * the second one in the high half. The name is historical: it is not a CRC. */
uint32_t core_utils_compute_crc32(const void* data, uint32_t length);

/* Writes the checksum of the network's structure: magic, then type, format, shape and stride of
 * each layer's first output, then the number of layers. Addresses of the shape and stride values
 * take part, so the signature holds for one place in memory. Every layer needs its input and
 * output lists; an output without array has format 0. False, with *signature 0, for a null network
 * or when the heap is exhausted; false for a null signature. */
bool core_utils_generate_network_signature(const ai_network* network, uint32_t* signature);

#ifdef __cplusplus
}
#endif

#endif
