// SPDX-License-Identifier: MIT
// Fixed-point max and average pooling.
#include "layers_quantized/layers_pool_quarn_fixed.h"
#include "test/fixed_fixture.hpp"
#include "test/reference/pool_fixed.h"

namespace {

struct Options {
  ai_layer_forward forward;
  int fraction_bits;
  nnlib::dims in, out;
  uint32_t size[2], stride[2];  // x, y
  uint32_t pad[4] = {};         // top, left, bottom, right
};

template <class T, size_t Elements>
struct Pool {
  constexpr Pool(const Options& o, const T* in_data)
      : in(fixed_format<T>(o.fraction_bits), o.in, in_data),
        out(fixed_format<T>(o.fraction_bits), o.out, out_data),
        layer_chain(nnlib::list(in), nnlib::list(out)),
        pad{o.pad[0], o.pad[1], o.pad[2], o.pad[3]},
        layer{nnlib::layer(AI_LAYER_TYPE_POOL, o.forward, layer_chain),
              {o.size[0], o.size[1]},
              {o.stride[0], o.stride[1]},
              {AI_DIMS_WORD(AI_SHAPE_TYPE, 4), pad},
              0} {}

  T out_data[Elements] = {};
  nnlib::tensor in, out;
  nnlib::layer_chain<1, 1> layer_chain;
  uint32_t pad[4];
  ai_layer_pool layer;
};

constexpr Options square_q7(ai_layer_forward forward) {
  return {forward, 5, {1, 3, 4, 4}, {1, 3, 2, 2}, {2, 2}, {2, 2}};
}
constexpr Options wide_q7(ai_layer_forward forward) {
  return {forward, 5, {1, 2, 4, 5}, {1, 2, 3, 3}, {3, 2}, {1, 2}, {1, 0, 0, 1}};
}
constexpr Options wide_q15(ai_layer_forward forward) {
  return {forward, 12, {1, 2, 6, 3}, {1, 2, 4, 2}, {2, 3}, {2, 1}, {1, 1, 0, 1}};
}

}  // namespace

CASE(tc_max_pool_sq_q7_conformance) {
  static constinit Pool<int8_t, 12> pool(square_q7(forward_mp_fixed), max_pool_sq_q7_in_data);
  check_fixed_layer<int8_t>(tc, pool.layer.base, max_pool_sq_q7_out_reference, kQ7Tolerance);
}

CASE(tc_max_pool_q7_conformance) {
  static constinit Pool<int8_t, 18> pool(wide_q7(forward_mp_fixed), max_pool_q7_in_data);
  check_fixed_layer<int8_t>(tc, pool.layer.base, max_pool_q7_out_reference, kQ7Tolerance);
}

CASE(tc_max_pool_q15_conformance) {
  static constinit Pool<int16_t, 16> pool(wide_q15(forward_mp_fixed), max_pool_q15_in_data);
  check_fixed_layer<int16_t>(tc, pool.layer.base, max_pool_q15_out_reference, kQ15Tolerance);
}

CASE(tc_ave_pool_sq_q7_conformance) {
  static constinit Pool<int8_t, 12> pool(square_q7(forward_ap_fixed), ave_pool_sq_q7_in_data);
  check_fixed_layer<int8_t>(tc, pool.layer.base, ave_pool_sq_q7_out_reference, kQ7Tolerance);
}

CASE(tc_ave_pool_q7_conformance) {
  static constinit Pool<int8_t, 18> pool(wide_q7(forward_ap_fixed), ave_pool_q7_in_data);
  check_fixed_layer<int8_t>(tc, pool.layer.base, ave_pool_q7_out_reference, kQ7Tolerance);
}

CASE(tc_ave_pool_q15_conformance) {
  static constinit Pool<int16_t, 16> pool(wide_q15(forward_ap_fixed), ave_pool_q15_in_data);
  check_fixed_layer<int16_t>(tc, pool.layer.base, ave_pool_q15_out_reference, kQ15Tolerance);
}

SUITE(test_lcut_pool_fixed, "test_lcut_pool_fixed test unit", ENTRY(tc_max_pool_sq_q7_conformance),
      ENTRY(tc_max_pool_q7_conformance), ENTRY(tc_max_pool_q15_conformance),
      ENTRY(tc_ave_pool_sq_q7_conformance), ENTRY(tc_ave_pool_q7_conformance),
      ENTRY(tc_ave_pool_q15_conformance))
