// SPDX-License-Identifier: MIT
// The table of layer functions. The texts are explained in layer_rule.hpp.
#include "check/details.hpp"
#include "check/public_functions.hpp"

#define FUNCTION(function) .forward = function, .name = #function

// What the rows of a family share.
#define SAME_F .inputs = "f(N,C,W,H)", .outputs = "f(N,C,W,H)"
#define MAP_F .inputs = "f(1,C,W,H)", .outputs = "f(1,C,w,h)"
#define SEQUENCE .inputs = "f(1,F,1,T)", .outputs = "f(1,U,1,S)"
#define ELEMENTS_F .inputs = "f(N,C,W,H)", .outputs = "f#NCWH", .in_place = InPlace::kAbove
#define ELEMENTS_I .inputs = "e(N,C,W,H)", .outputs = "k#NCWH", .in_place = InPlace::kSame
#define ELEMENTS_Q .inputs = "q(N,C,W,H)", .outputs = "p#NCWH", .in_place = InPlace::kSame
#define CONV_F                                                                        \
  .inputs = "f(1,C,W,H)", .outputs = "f(1,D,w,h)", .weights = "d(C/G,x,y,D) ?f#D ?f", \
  .depthwise = "d(C,x,y,1) ?f#D ?f"
#define CONV_I                                                                      \
  .inputs = "i(1,C,W,H)", .outputs = "t(1,D,w,h)", .weights = "w(C,x,y,D) ?b#D ?a", \
  .depthwise = "w(C,x,y,1) ?b#D ?a"
#define CONV_Q                                                                      \
  .inputs = "q(1,C,W,H)", .outputs = "p(1,D,w,h)", .weights = "p(C,x,y,D) ?p#D ?a", \
  .depthwise = "p(D,x,y,1) ?p#D ?a"
#define NL_ROW(op) \
  {FUNCTION(forward_##op), .record = "ai_layer_nl", .types = {AI_LAYER_TYPE_NL}, ELEMENTS_F},

namespace nnlib {
namespace {

const LayerRule kRules[] = {
    // convolution, dense layers and products of floats
    {FUNCTION(forward_conv2d), .record = "ai_layer_conv2d",
     .types = {AI_LAYER_TYPE_CONV2D, AI_LAYER_TYPE_OPTIMIZED_CONV2D}, CONV_F, .scratch = "?f",
     .side_effects = kResetsOutput, .record_sizes = convolution_sizes, .details = check_convolution,
     .memory = check_conv2d_memory},
    {FUNCTION(forward_conv2d_transpose), .record = "ai_layer_conv2d",
     .types = {AI_LAYER_TYPE_CONV2D, AI_LAYER_TYPE_OPTIMIZED_CONV2D}, CONV_F, .scratch = "?f",
     .side_effects = kResetsOutput, .record_sizes = convolution_sizes, .details = check_transposed,
     .memory = check_conv2d_memory},
    {FUNCTION(forward_conv2d_nl_pool), .record = "ai_layer_conv2d_nl_pool",
     .types = {AI_LAYER_TYPE_CONV2D, AI_LAYER_TYPE_OPTIMIZED_CONV2D}, CONV_F,
     .scratch = "f(1,D,v,.) ?f", .side_effects = kResetsOutput | kResetsScratch,
     .record_sizes = convolution_sizes, .details = check_fused_convolution,
     .memory = check_fused_memory},
    {FUNCTION(forward_dense), .types = {AI_LAYER_TYPE_DENSE}, .inputs = "f(1,n,W,H)",
     .outputs = "f(1,m,W,H)", .weights = "r(n,m,1,1) ?f#m", .record_sizes = dense_sizes,
     .details = check_dense},
    {FUNCTION(forward_gemm), .record = "ai_layer_gemm", .types = {AI_LAYER_TYPE_GEMM},
     .inputs = "f ?f ?f", .outputs = "f", .weights = "?f ?f", .in_place = InPlace::kThird,
     .details = check_gemm},
    {FUNCTION(forward_matmul), .types = {AI_LAYER_TYPE_GEMM}, .inputs = "f(N,C,K,H) ?f(N,C,W,K)",
     .outputs = "f(N,C,W,H)", .weights = "?f(N,C,W,K)", .details = check_matmul},
    // nonlinearities of floats
    AI_NL_ARITHMETIC_OPS(NL_ROW) AI_NL_LIBRARY_OPS(NL_ROW) AI_NL_EXP_OPS(NL_ROW){
        FUNCTION(forward_clip), .record = "ai_layer_nl", .types = {AI_LAYER_TYPE_NL}, ELEMENTS_F,
        .details = check_nl_params<2>},
    {FUNCTION(forward_elu), .record = "ai_layer_nl", .types = {AI_LAYER_TYPE_NL}, ELEMENTS_F,
     .details = check_nl_params<1>},
    {FUNCTION(forward_relu_thresholded), .record = "ai_layer_nl", .types = {AI_LAYER_TYPE_NL},
     ELEMENTS_F, .details = check_nl_params<1>},
    {FUNCTION(forward_selu), .record = "ai_layer_nl", .types = {AI_LAYER_TYPE_NL}, ELEMENTS_F,
     .details = check_nl_params<2>},
    {FUNCTION(forward_relu), .record = "ai_layer_nl", .types = {AI_LAYER_TYPE_NL}, ELEMENTS_F,
     .details = check_relu},
    {FUNCTION(forward_prelu), .record = "ai_layer_nl", .types = {AI_LAYER_TYPE_NL},
     .inputs = "f(N,C,W,H)", .outputs = "f#NCWH", .weights = "f", .in_place = InPlace::kSame,
     .side_effects = kResetsInput | kResetsOutput, .details = check_prelu},
    {FUNCTION(forward_sm), .types = {AI_LAYER_TYPE_SM}, SAME_F, .in_place = InPlace::kSame,
     .side_effects = kResetsInput | kResetsOutput},
    {FUNCTION(forward_hardmax), .record = "ai_layer_nl", .types = {AI_LAYER_TYPE_NL},
     .inputs = "f(1,C,1,H)", .outputs = "f#CH"},
    // pooling, normalization, binary functions
    {FUNCTION(forward_mp), .record = "ai_layer_pool", .types = {AI_LAYER_TYPE_POOL}, MAP_F,
     .details = check_pooling},
    {FUNCTION(forward_ap), .record = "ai_layer_pool", .types = {AI_LAYER_TYPE_POOL}, MAP_F,
     .details = check_pooling},
    {FUNCTION(forward_bn), .types = {AI_LAYER_TYPE_BN}, .inputs = "f(N,C,W,H)", .outputs = "f#NCWH",
     .weights = "f#C ?f#C", .in_place = InPlace::kSame},
    {FUNCTION(forward_lrn), .record = "ai_layer_lrn", .types = {AI_LAYER_TYPE_LRN}, SAME_F},
    {FUNCTION(forward_norm), .record = "ai_layer_norm", .types = {AI_LAYER_TYPE_NORM}, SAME_F,
     .in_place = InPlace::kSame, .details = check_norm},
    {FUNCTION(forward_instanceNormalization), .record = "ai_layer_instance_norm",
     .types = {AI_LAYER_TYPE_INSTANCENORMALIZATION}, .inputs = "f(1,C,W,H)",
     .outputs = "f(1,C,W,H)", .weights = "f#C f#C", .in_place = InPlace::kSame},
    {FUNCTION(forward_eltwise), .record = "ai_layer_eltwise", .types = {AI_LAYER_TYPE_ELTWISE},
     .inputs = "f f", .outputs = "f", .in_place = InPlace::kSame, .details = check_eltwise},
    {FUNCTION(forward_reduce), .record = "ai_layer_reduce", .types = {AI_LAYER_TYPE_REDUCE},
     .inputs = "f", .outputs = "f", .details = check_reduce},
    // sequences
    {FUNCTION(forward_lstm), .record = "ai_layer_lstm", .types = {AI_LAYER_TYPE_LSTM}, SEQUENCE,
     .weights = "f#4UF f#4UU f#3U f#4U", .record_sizes = lstm_sizes, .details = check_lstm},
    {FUNCTION(forward_gru), .record = "ai_layer_gru", .types = {AI_LAYER_TYPE_GRU}, SEQUENCE,
     .weights = "f#3UF f#3UU f#3U", .record_sizes = gru_sizes, .details = check_recurrent},
    {FUNCTION(_forward_gru_after), .record = "ai_layer_gru", .types = {AI_LAYER_TYPE_GRU}, SEQUENCE,
     .weights = "f#3UF f#3UU f#3U", .record_sizes = gru_sizes, .details = refuse_gru_after},
    {FUNCTION(forward_time_delay), .record = "ai_layer_time_delay",
     .types = {AI_LAYER_TYPE_TIME_DELAY}, .inputs = "f(1,F,1,S)", .outputs = "f(1,U,1,T)",
     .weights = "f#UDF ?f#U", .record_sizes = time_delay_sizes, .details = check_time_delay},
    {FUNCTION(forward_time_distributed), .record = "ai_layer_time_distributed",
     .types = {AI_LAYER_TYPE_TIME_DISTRIBUTED}, .inputs = "a(.,.,.,T)", .outputs = "a(.,.,.,T)",
     .in_place = InPlace::kSame, .details = check_time_distributed},
    // moving elements, routing, conversion
    {FUNCTION(forward_pad), .record = "ai_layer_pad", .types = {AI_LAYER_TYPE_PAD},
     .inputs = "a(N,C,W,H)", .outputs = "s(N,C,w,h)", .details = check_pad},
    {FUNCTION(forward_tile), .record = "ai_layer_tile", .types = {AI_LAYER_TYPE_TILE},
     .inputs = "a(N,C,W,H)", .outputs = "s(N,Cc,Ww,Hh)", .record_sizes = tile_sizes,
     .details = check_tile},
    {FUNCTION(forward_upsample), .record = "ai_layer_upsample", .types = {AI_LAYER_TYPE_UPSAMPLE},
     .inputs = "a(N,C,W,H)", .outputs = "s(N,C,w,h)", .details = check_upsample},
    {FUNCTION(forward_concat), .record = "ai_layer_concat", .types = {AI_LAYER_TYPE_CONCAT},
     .inputs = "a ?s*", .outputs = "s", .details = check_concat},
    {FUNCTION(forward_transpose), .record = "ai_layer_transpose",
     .types = {AI_LAYER_TYPE_TRANSPOSE}, .inputs = "a", .outputs = "s", .details = check_transpose},
    {FUNCTION(forward_slice), .record = "ai_layer_slice", .types = {AI_LAYER_TYPE_SLICE},
     .inputs = "a", .outputs = "s", .details = check_slice},
    {FUNCTION(forward_topK), .record = "ai_layer_topk", .types = {AI_LAYER_TYPE_GENERIC},
     .inputs = "f", .outputs = "f u", .details = check_topk},
    {FUNCTION(forward_split), .record = "ai_layer_split", .types = {AI_LAYER_TYPE_SPLIT},
     .in_place = InPlace::kNoTensors, .details = check_split},
    {FUNCTION(forward_add), .record = "ai_layer_add", .types = {AI_LAYER_TYPE_ADD},
     .in_place = InPlace::kNoTensors, .details = check_add},
    {FUNCTION(node_convert), .types = {AI_LAYER_TYPE_NL}, .inputs = "a(N,C,W,H)",
     .outputs = "a#NCWH", .details = check_convert},
    {FUNCTION(node_convert_fixed), .types = {AI_LAYER_TYPE_NL}, .inputs = "q(N,C,W,H)",
     .outputs = "q#NCWH", .in_place = InPlace::kSame, .details = check_convert_fixed},
    {FUNCTION(node_convert_integer), .types = {AI_LAYER_TYPE_NL}, .inputs = "e(N,C,W,H)",
     .outputs = "e#NCWH", .in_place = InPlace::kSame, .details = check_convert_integer},
    // 8-bit integers
    {FUNCTION(forward_conv2d_integer), .record = "ai_layer_conv2d",
     .types = {AI_LAYER_TYPE_CONV2D, AI_LAYER_TYPE_OPTIMIZED_CONV2D}, CONV_I, .scratch = "?a ?a",
     .record_sizes = convolution_sizes, .details = check_convolution,
     .memory = check_conv2d_integer_memory},
    {FUNCTION(forward_conv2d_nl_pool_integer), .record = "ai_layer_conv2d_nl_pool",
     .types = {AI_LAYER_TYPE_CONV2D, AI_LAYER_TYPE_OPTIMIZED_CONV2D}, CONV_I,
     .scratch = "a(1,D,v,.) ?a", .record_sizes = convolution_sizes,
     .details = check_fused_convolution, .memory = check_fused_integer_memory},
    {FUNCTION(forward_dense_integer), .types = {AI_LAYER_TYPE_DENSE}, .inputs = "i(1,n,W,H)",
     .outputs = "t(1,D,W,H)", .weights = "w(n,D,1,1) ?b#D", .scratch = "?a",
     .record_sizes = dense_sizes, .details = check_dense, .memory = check_dense_integer_memory},
    {FUNCTION(forward_add_integer), .types = {AI_LAYER_TYPE_ELTWISE, AI_LAYER_TYPE_ADD},
     .inputs = "i t", .outputs = "t", .in_place = InPlace::kSame, .details = check_add_integer},
    {FUNCTION(forward_relu_integer), .record = "ai_layer_nl", .types = {AI_LAYER_TYPE_NL},
     ELEMENTS_I, .details = check_relu_integer},
    {FUNCTION(forward_clip_integer), .record = "ai_layer_nl", .types = {AI_LAYER_TYPE_NL},
     ELEMENTS_I, .details = check_clip_integer},
    {FUNCTION(forward_nl_integer), .record = "ai_layer_nl", .types = {AI_LAYER_TYPE_NL}, ELEMENTS_I,
     .details = check_nl_params<256>},
    {FUNCTION(forward_mp_integer), .record = "ai_layer_pool", .types = {AI_LAYER_TYPE_POOL},
     .inputs = "i(1,C,W,H)", .outputs = "t(1,C,w,h)", .details = check_pooling},
    {FUNCTION(forward_ap_integer), .record = "ai_layer_pool", .types = {AI_LAYER_TYPE_POOL},
     .inputs = "i(1,C,W,H)", .outputs = "t(1,C,w,h)", .details = check_pooling},
    // fixed point
    {FUNCTION(forward_conv2d_fixed), .record = "ai_layer_conv2d",
     .types = {AI_LAYER_TYPE_CONV2D, AI_LAYER_TYPE_OPTIMIZED_CONV2D}, CONV_Q, .scratch = "?a",
     .record_sizes = convolution_sizes, .details = check_convolution,
     .memory = check_conv2d_fixed_memory},
    {FUNCTION(forward_conv2d_nl_pool_fixed), .record = "ai_layer_conv2d_nl_pool",
     .types = {AI_LAYER_TYPE_CONV2D, AI_LAYER_TYPE_OPTIMIZED_CONV2D}, CONV_Q,
     .scratch = "a(1,D,v,.) ?a", .record_sizes = convolution_sizes,
     .details = check_fused_convolution, .memory = check_fused_fixed_memory},
    {FUNCTION(forward_dense_fixed), .types = {AI_LAYER_TYPE_DENSE}, .inputs = "q(1,n,W,H)",
     .outputs = "p(1,m,W,H)", .weights = "q(n,m,1,1) ?q#m", .scratch = "?a",
     .record_sizes = dense_sizes, .details = check_dense, .memory = check_dense_fixed_memory},
    {FUNCTION(forward_relu_fixed), .record = "ai_layer_nl", .types = {AI_LAYER_TYPE_NL}, ELEMENTS_Q,
     .details = check_same_bits},
    {FUNCTION(forward_relu_max_fixed), .record = "ai_layer_nl", .types = {AI_LAYER_TYPE_NL},
     ELEMENTS_Q, .details = check_relu_max_fixed},
    {FUNCTION(forward_tanh_fixed), .record = "ai_layer_nl", .types = {AI_LAYER_TYPE_NL}, ELEMENTS_Q,
     .details = check_full_fraction},
    {FUNCTION(forward_sigmoid_fixed), .record = "ai_layer_nl", .types = {AI_LAYER_TYPE_NL},
     ELEMENTS_Q, .details = check_full_fraction},
    {FUNCTION(forward_sm_fixed), .types = {AI_LAYER_TYPE_SM}, .inputs = "q(1,C,W,H)",
     .outputs = "p(1,C,W,H)", .in_place = InPlace::kSame, .details = check_full_fraction},
    {FUNCTION(forward_mp_fixed), .record = "ai_layer_pool", .types = {AI_LAYER_TYPE_POOL},
     .inputs = "q(1,C,W,H)", .outputs = "p(1,C,w,h)", .details = check_pooling},
    {FUNCTION(forward_ap_fixed), .record = "ai_layer_pool", .types = {AI_LAYER_TYPE_POOL},
     .inputs = "q(1,C,W,H)", .outputs = "p(1,C,w,h)", .details = check_pooling},
};

}  // namespace

const LayerRule* find_layer_rule(ai_layer_forward forward) {
  for (const LayerRule& rule : kRules) {
    if (rule.forward == forward && forward != nullptr) {
      return &rule;
    }
  }
  return nullptr;
}

LayerRules layer_rules() {
  return {kRules, sizeof(kRules) / sizeof(kRules[0])};
}

}  // namespace nnlib

const char* ai_layer_function_name(ai_layer_forward forward) {
  const nnlib::LayerRule* rule = nnlib::find_layer_rule(forward);
  return rule != nullptr ? rule->name : "";
}
