/* SPDX-License-Identifier: MIT */
/* The float layers that move, route and combine tensors, and the dense and matrix products. */
#ifndef NNLIB_LAYERS_LAYERS_GENERIC_FLOAT_H
#define NNLIB_LAYERS_LAYERS_GENERIC_FLOAT_H

#include "layers/layers_concat_generic_float.h"
#include "layers/layers_dense_generic_float.h"
#include "layers/layers_eltwise_generic_float.h"
#include "layers/layers_gemm_generic_float.h"
#include "layers/layers_pad_generic_float.h"
#include "layers/layers_routing.h"
#include "layers/layers_slice_generic_float.h"
#include "layers/layers_tile_generic_float.h"
#include "layers/layers_time_delay_generic_float.h"
#include "layers/layers_time_distributed_generic_float.h"
#include "layers/layers_topk_generic_float.h"
#include "layers/layers_transpose_generic_float.h"
#include "layers/layers_upsample_generic_float.h"

#endif
