/* The whole public API of the runtime. */
#ifndef NNLIB_H
#define NNLIB_H

#include "core/ai_buffer.h"
#include "core/ai_datatypes_format.h"
#include "core/ai_declare.h"
#include "core/ai_dlist.h"
#include "core/ai_layer.h"
#include "core/ai_network.h"
#include "core/ai_platform_interface.h"
#include "core/ai_tensor.h"
#include "core/core_benchmark.h"
#include "core/core_common.h"
#include "core/core_mem_manager.h"
#include "core/core_ring_buffer.h"
#include "core/core_utils.h"
#include "layers/layers.h"

#endif
