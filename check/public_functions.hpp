// SPDX-License-Identifier: MIT
// The public functions that the tables name, as references that do not pull a function into a
// program that does not use it: its address is then null and fits no layer.
#ifndef NNLIB_CHECK_PUBLIC_FUNCTIONS_HPP
#define NNLIB_CHECK_PUBLIC_FUNCTIONS_HPP

#include "core/core_convert.h"
#include "layers/layers_concat_generic_float.h"
#include "layers/layers_conv2d_generic_float.h"
#include "layers/layers_dense_generic_float.h"
#include "layers/layers_eltwise_generic_float.h"
#include "layers/layers_gemm_generic_float.h"
#include "layers/layers_nl_generic_float.h"
#include "layers/layers_norm_generic_float.h"
#include "layers/layers_pad_generic_float.h"
#include "layers/layers_pool_generic_float.h"
#include "layers/layers_rnn_generic_float.h"
#include "layers/layers_routing.h"
#include "layers/layers_slice_generic_float.h"
#include "layers/layers_sm_generic_float.h"
#include "layers/layers_tile_generic_float.h"
#include "layers/layers_time_delay_generic_float.h"
#include "layers/layers_time_distributed_generic_float.h"
#include "layers/layers_topk_generic_float.h"
#include "layers/layers_transpose_generic_float.h"
#include "layers/layers_upsample_generic_float.h"
#include "layers_quantized/layers_conv2d_quarn_fixed.h"
#include "layers_quantized/layers_conv2d_quarn_integer.h"
#include "layers_quantized/layers_dense_quarn_fixed.h"
#include "layers_quantized/layers_nl_quarn_fixed.h"
#include "layers_quantized/layers_nl_quarn_integer.h"
#include "layers_quantized/layers_pool_quarn_fixed.h"
#include "layers_quantized/layers_pool_quarn_integer.h"
#include "layers_quantized/layers_quarn_integer.h"
#include "layers_quantized/layers_sm_quarn_fixed.h"

#if defined(__GNUC__) && defined(__ELF__)
#define NNLIB_WEAK_FUNCTION(name) extern "C" __attribute__((weak)) decltype(name) name;
#else
#define NNLIB_WEAK_FUNCTION(name)
#endif

#define NNLIB_WEAK_NL(op)           \
  NNLIB_WEAK_FUNCTION(forward_##op) \
  NNLIB_WEAK_FUNCTION(nl_func_##op##_array_f32)
AI_NL_ARITHMETIC_OPS(NNLIB_WEAK_NL)
AI_NL_LIBRARY_OPS(NNLIB_WEAK_NL)
AI_NL_EXP_OPS(NNLIB_WEAK_NL)
AI_NL_PARAMETER_OPS(NNLIB_WEAK_NL)
AI_NL_EXP_PARAMETER_OPS(NNLIB_WEAK_NL)
#undef NNLIB_WEAK_NL

NNLIB_WEAK_FUNCTION(_forward_gru_after)
NNLIB_WEAK_FUNCTION(forward_add)
NNLIB_WEAK_FUNCTION(forward_add_integer)
NNLIB_WEAK_FUNCTION(forward_ap)
NNLIB_WEAK_FUNCTION(forward_ap_fixed)
NNLIB_WEAK_FUNCTION(forward_ap_integer)
NNLIB_WEAK_FUNCTION(forward_bn)
NNLIB_WEAK_FUNCTION(forward_clip_integer)
NNLIB_WEAK_FUNCTION(forward_concat)
NNLIB_WEAK_FUNCTION(forward_conv2d)
NNLIB_WEAK_FUNCTION(forward_conv2d_fixed)
NNLIB_WEAK_FUNCTION(forward_conv2d_integer)
NNLIB_WEAK_FUNCTION(forward_conv2d_nl_pool)
NNLIB_WEAK_FUNCTION(forward_conv2d_nl_pool_fixed)
NNLIB_WEAK_FUNCTION(forward_conv2d_nl_pool_integer)
NNLIB_WEAK_FUNCTION(forward_conv2d_transpose)
NNLIB_WEAK_FUNCTION(forward_dense)
NNLIB_WEAK_FUNCTION(forward_dense_fixed)
NNLIB_WEAK_FUNCTION(forward_dense_integer)
NNLIB_WEAK_FUNCTION(forward_eltwise)
NNLIB_WEAK_FUNCTION(forward_gemm)
NNLIB_WEAK_FUNCTION(forward_gru)
NNLIB_WEAK_FUNCTION(forward_hardmax)
NNLIB_WEAK_FUNCTION(forward_instanceNormalization)
NNLIB_WEAK_FUNCTION(forward_lrn)
NNLIB_WEAK_FUNCTION(forward_lstm)
NNLIB_WEAK_FUNCTION(forward_matmul)
NNLIB_WEAK_FUNCTION(forward_mp)
NNLIB_WEAK_FUNCTION(forward_mp_fixed)
NNLIB_WEAK_FUNCTION(forward_mp_integer)
NNLIB_WEAK_FUNCTION(forward_nl_integer)
NNLIB_WEAK_FUNCTION(forward_norm)
NNLIB_WEAK_FUNCTION(forward_pad)
NNLIB_WEAK_FUNCTION(forward_prelu)
NNLIB_WEAK_FUNCTION(forward_reduce)
NNLIB_WEAK_FUNCTION(forward_relu)
NNLIB_WEAK_FUNCTION(forward_relu_fixed)
NNLIB_WEAK_FUNCTION(forward_relu_integer)
NNLIB_WEAK_FUNCTION(forward_relu_max_fixed)
NNLIB_WEAK_FUNCTION(forward_sigmoid_fixed)
NNLIB_WEAK_FUNCTION(forward_slice)
NNLIB_WEAK_FUNCTION(forward_sm)
NNLIB_WEAK_FUNCTION(forward_sm_fixed)
NNLIB_WEAK_FUNCTION(forward_split)
NNLIB_WEAK_FUNCTION(forward_tanh_fixed)
NNLIB_WEAK_FUNCTION(forward_tile)
NNLIB_WEAK_FUNCTION(forward_time_delay)
NNLIB_WEAK_FUNCTION(forward_time_distributed)
NNLIB_WEAK_FUNCTION(forward_topK)
NNLIB_WEAK_FUNCTION(forward_transpose)
NNLIB_WEAK_FUNCTION(forward_upsample)
NNLIB_WEAK_FUNCTION(node_convert)
NNLIB_WEAK_FUNCTION(node_convert_fixed)
NNLIB_WEAK_FUNCTION(node_convert_integer)

NNLIB_WEAK_FUNCTION(nl_func_array_integer)
NNLIB_WEAK_FUNCTION(nl_func_clip_array_integer)
NNLIB_WEAK_FUNCTION(nl_func_prelu_array_f32)
NNLIB_WEAK_FUNCTION(nl_func_relu_array_f32)
NNLIB_WEAK_FUNCTION(nl_func_relu_array_fixed)
NNLIB_WEAK_FUNCTION(nl_func_relu_array_integer)
NNLIB_WEAK_FUNCTION(nl_func_relu_generic_array_f32)
NNLIB_WEAK_FUNCTION(nl_func_relu_max_array_fixed)
NNLIB_WEAK_FUNCTION(nl_func_sigmoid_array_fixed)
NNLIB_WEAK_FUNCTION(nl_func_sm_group_array_f32)
NNLIB_WEAK_FUNCTION(nl_func_tanh_array_fixed)
NNLIB_WEAK_FUNCTION(pool_func_ap_array_f32)
NNLIB_WEAK_FUNCTION(pool_func_ap_array_fixed)
NNLIB_WEAK_FUNCTION(pool_func_ap_array_integer)
NNLIB_WEAK_FUNCTION(pool_func_mp_array_f32)
NNLIB_WEAK_FUNCTION(pool_func_mp_array_fixed)
NNLIB_WEAK_FUNCTION(pool_func_mp_array_integer)
NNLIB_WEAK_FUNCTION(sm_func_sm_array_fixed)

NNLIB_WEAK_FUNCTION(ai_conv2d_fixed_scratch_size)
NNLIB_WEAK_FUNCTION(ai_conv2d_integer_scratch_size)
NNLIB_WEAK_FUNCTION(ai_conv2d_nl_pool_fixed_scratch_size)
NNLIB_WEAK_FUNCTION(ai_conv2d_nl_pool_integer_scratch_size)
NNLIB_WEAK_FUNCTION(ai_conv2d_nl_pool_scratch_size)
NNLIB_WEAK_FUNCTION(ai_dense_fixed_scratch_size)
NNLIB_WEAK_FUNCTION(ai_dense_integer_scratch_size)

#undef NNLIB_WEAK_FUNCTION

#endif
