// SPDX-License-Identifier: MIT
// What the rows of the table call: sizes from the record, details, scratch memory.
#ifndef NNLIB_CHECK_DETAILS_HPP
#define NNLIB_CHECK_DETAILS_HPP

#include "check/layer_check.hpp"
#include "check/windows.hpp"

namespace nnlib {

// convolution.cpp
void convolution_sizes(LayerCheck& check);
void check_convolution(LayerCheck& check);
void check_transposed(LayerCheck& check);
void check_fused_convolution(LayerCheck& check);
void check_conv2d_memory(LayerCheck& check);
void check_fused_memory(LayerCheck& check);
void check_conv2d_integer_memory(LayerCheck& check);
void check_conv2d_fixed_memory(LayerCheck& check);
void check_fused_integer_memory(LayerCheck& check);
void check_fused_fixed_memory(LayerCheck& check);

// pooling.cpp
void check_pooling(LayerCheck& check);
void check_pooling_ways(LayerCheck& check, const WindowWay& x, const WindowWay& y, bool usable);

// products.cpp: dense layers and matrix products
void dense_sizes(LayerCheck& check);
void check_dense(LayerCheck& check);
void check_dense_integer_memory(LayerCheck& check);
void check_dense_fixed_memory(LayerCheck& check);
void check_gemm(LayerCheck& check);
void check_matmul(LayerCheck& check);

// elementwise.cpp: nonlinearities, conversions, broadcasting
template <uint32_t Parameters>
void check_nl_params(LayerCheck& check);
void check_relu(LayerCheck& check);
void check_prelu(LayerCheck& check);
void check_relu_integer(LayerCheck& check);
void check_clip_integer(LayerCheck& check);
void check_same_bits(LayerCheck& check);
void check_relu_max_fixed(LayerCheck& check);
void check_full_fraction(LayerCheck& check);
void check_eltwise(LayerCheck& check);
void check_add_integer(LayerCheck& check);
void check_reduce(LayerCheck& check);
void check_convert(LayerCheck& check);
void check_convert_fixed(LayerCheck& check);
void check_convert_integer(LayerCheck& check);
void check_norm(LayerCheck& check);

// sequences.cpp: recurrent and time layers
void lstm_sizes(LayerCheck& check);
void gru_sizes(LayerCheck& check);
void check_lstm(LayerCheck& check);
void check_recurrent(LayerCheck& check);
void refuse_gru_after(LayerCheck& check);
void time_delay_sizes(LayerCheck& check);
void check_time_delay(LayerCheck& check);
void check_time_distributed(LayerCheck& check);

// movement.cpp: layers that move elements
void tile_sizes(LayerCheck& check);
void check_tile(LayerCheck& check);
void check_pad(LayerCheck& check);
void check_upsample(LayerCheck& check);
void check_concat(LayerCheck& check);
void check_transpose(LayerCheck& check);
void check_slice(LayerCheck& check);
void check_topk(LayerCheck& check);

// routing.cpp
void check_split(LayerCheck& check);
void check_add(LayerCheck& check);

}  // namespace nnlib

#endif
