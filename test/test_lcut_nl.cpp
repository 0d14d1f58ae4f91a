// SPDX-License-Identifier: MIT
// Element-wise functions, softmax and hardmax.
#include "layers/layers_nl_generic_float.h"

#include "test/fixture.hpp"
#include "test/reference/nl.h"

namespace {

// stem_in, stem_out, stem_layer_chain and stem_layer over stem_in_data, of shape 1 x c x w x h;
// params is the layer's array of parameters or null, the lists after it follow inputs and outputs.
#define NL_FIXTURE(stem, c, w, h, type, forward, params, ...)                                   \
  static constinit nnlib::tensor stem##_in({1, c, w, h}, stem##_in_data);                       \
  static constinit output_tensor<float, 1, c, w, h> stem##_out;                                 \
  static constinit nnlib::layer_chain stem##_layer_chain(                                       \
      nnlib::list(stem##_in), nnlib::list(stem##_out) __VA_OPT__(, ) __VA_ARGS__);              \
  static constinit ai_layer_nl stem##_layer = {nnlib::layer(type, forward, stem##_layer_chain), \
                                               params}

template <size_t Count>
constexpr ai_array parameters(const float (&values)[Count]) {
  return {AI_ARRAY_FORMAT_FLOAT, Count, const_cast<float*>(values), const_cast<float*>(values)};
}

template <size_t Count>
void check_kernel(lcut_case* tc, ai_nl_func kernel, const float (&data)[Count],
                  const float (&reference)[Count], Site site = CALLING_SITE) {
  const nnlib::tensor in({1, Count, 1, 1}, data);
  output_tensor<float, 1, Count, 1, 1> out;
  kernel(&out.array, &in.array, Count, nullptr);
  check_near(tc, out.storage, reference, kFloatEpsilon, 1.0f, site);
}

#define LAYER_CASE(name, stem, forward, params, tolerance)                 \
  CASE(name) {                                                             \
    constexpr uint32_t width = sizeof(stem##_in_data) / sizeof(float) / 3; \
    NL_FIXTURE(stem, 1, width, 3, AI_LAYER_TYPE_NL, forward, params);      \
    check_layer(tc, stem##_layer, stem##_out_reference, tolerance);        \
  }
#define PLAIN_CASE(op) LAYER_CASE(tc_##op##_conformance, op, forward_##op, nullptr, kFloatEpsilon)
#define PARAMETER_CASE(name, stem, forward)                             \
  constinit ai_array stem##_nl_params = parameters(stem##_params_data); \
  LAYER_CASE(name, stem, forward, &stem##_nl_params, kFloatEpsilon)
#define KERNEL_CASE(stem, op)                                                         \
  CASE(tc_##stem##_conformance) {                                                     \
    check_kernel(tc, nl_func_##op##_array_f32, stem##_in_data, stem##_out_reference); \
  }

PLAIN_CASE(relu)
PARAMETER_CASE(tc_relu6_conformance, relu6, forward_clip)
PARAMETER_CASE(tc_relu_thresholded_conformance, relu_thresholded, forward_relu_thresholded)
PARAMETER_CASE(tc_relu_generic_conformance, relu_generic, forward_relu)
PARAMETER_CASE(tc_relu_generic_conformance_no_max, relu_generic_no_max, forward_relu)
PARAMETER_CASE(tc_elu_conformance, elu, forward_elu)
PARAMETER_CASE(tc_selu_conformance, selu, forward_selu)
PLAIN_CASE(sign)
PARAMETER_CASE(tc_clip_conformance, clip, forward_clip)
PLAIN_CASE(sigmoid)
PLAIN_CASE(hard_sigmoid)
PLAIN_CASE(exp)
PLAIN_CASE(sqrt)
LAYER_CASE(tc_soft_plus_conformance, soft_plus, forward_soft_plus, nullptr, kLooseTolerance)
PLAIN_CASE(soft_sign)
PLAIN_CASE(tanh)
PLAIN_CASE(reciprocal)

CASE(tc_prelu_conformance) {
  static constinit nnlib::tensor prelu_weights({1, 3, 1, 1}, prelu_slope_data);
  NL_FIXTURE(prelu, 3, 2, 1, AI_LAYER_TYPE_NL, forward_prelu, nullptr, nnlib::list(prelu_weights));
  check_layer(tc, prelu_layer, prelu_out_reference, kFloatEpsilon);
}

CASE(tc_soft_max_conformance) {
  NL_FIXTURE(soft_max, 3, 2, 2, AI_LAYER_TYPE_SM, forward_sm, nullptr);
  check_layer(tc, soft_max_layer, soft_max_out_reference, kFloatEpsilon);
}

CASE(tc_hardmax_conformance) {
  NL_FIXTURE(hardmax, 4, 2, 3, AI_LAYER_TYPE_NL, forward_hardmax, nullptr);
  check_layer(tc, hardmax_layer, hardmax_out_reference, kFloatEpsilon);
}

KERNEL_CASE(acos, acos)
KERNEL_CASE(acosh, acosh)
KERNEL_CASE(atanh, atanh)
KERNEL_CASE(asinh, asinh)
KERNEL_CASE(cosh, cosh)
KERNEL_CASE(sinh, sinh)
KERNEL_CASE(abs, abs)
KERNEL_CASE(ceil, ceil)
KERNEL_CASE(floor, floor)
KERNEL_CASE(round, round)
KERNEL_CASE(erf, erf)
KERNEL_CASE(asin, asin)
KERNEL_CASE(atan, atan)
KERNEL_CASE(cos, cos)
KERNEL_CASE(sin, sin)
KERNEL_CASE(tan, tan)
KERNEL_CASE(neg, neg)
KERNEL_CASE(log, log)
KERNEL_CASE(rsqrt, rsqrt)
KERNEL_CASE(reciprocal_u, reciprocal)

}  // namespace

SUITE(test_lcut_nl, "test_lcut_nl test unit", ENTRY(tc_relu_conformance),
      ENTRY(tc_relu6_conformance), ENTRY(tc_relu_thresholded_conformance),
      ENTRY(tc_relu_generic_conformance), ENTRY(tc_relu_generic_conformance_no_max),
      ENTRY(tc_elu_conformance), ENTRY(tc_selu_conformance), ENTRY(tc_prelu_conformance),
      ENTRY(tc_sign_conformance), ENTRY(tc_clip_conformance), ENTRY(tc_sigmoid_conformance),
      ENTRY(tc_hard_sigmoid_conformance), ENTRY(tc_exp_conformance), ENTRY(tc_sqrt_conformance),
      ENTRY(tc_soft_plus_conformance), ENTRY(tc_soft_sign_conformance), ENTRY(tc_tanh_conformance),
      ENTRY(tc_reciprocal_conformance), ENTRY(tc_soft_max_conformance),
      ENTRY(tc_hardmax_conformance), ENTRY(tc_acos_conformance), ENTRY(tc_acosh_conformance),
      ENTRY(tc_atanh_conformance), ENTRY(tc_asinh_conformance), ENTRY(tc_cosh_conformance),
      ENTRY(tc_sinh_conformance), ENTRY(tc_abs_conformance), ENTRY(tc_ceil_conformance),
      ENTRY(tc_floor_conformance), ENTRY(tc_round_conformance), ENTRY(tc_erf_conformance),
      ENTRY(tc_asin_conformance), ENTRY(tc_atan_conformance), ENTRY(tc_cos_conformance),
      ENTRY(tc_sin_conformance), ENTRY(tc_tan_conformance), ENTRY(tc_neg_conformance),
      ENTRY(tc_log_conformance), ENTRY(tc_rsqrt_conformance), ENTRY(tc_reciprocal_u_conformance))
