// SPDX-License-Identifier: MIT
// The canonical operators: what readers translate to and lowerings understand.
//
// Tensors are row-major of any rank. Spatial operators take and give [N, H, W, C]; spatial
// attributes are ordered y, x. Shapes of outputs stand in the values, so attributes that would
// only repeat them (the new shape of a reshape, the size of a resize) do not exist. axis and axes
// are 0 or greater. A missing input is -1 (`_` in text). Quantization is a property of values:
// operators on u8/s8 values compute with it.
#ifndef NNLIB_IMPORTER_GRAPH_OPERATORS_HPP
#define NNLIB_IMPORTER_GRAPH_OPERATORS_HPP

#include <optional>
#include <string_view>

namespace nnlib::importer {

// X(name). Inputs, then {attributes with their defaults}.
// clang-format off
#define NNLIB_IMPORTER_OPERATORS(X)                                                                \
  /* x, weights [O][Kh][Kw][I / groups], bias [O] or _ {strides = [1,1], dilations = [1,1],        \
     pads = [0,0,0,0] top, left, bottom, right, groups = 1} */                                     \
  X(conv2d)                                                                                        \
  /* x, weights [Kh][Kw][C * m], bias or _ {strides, dilations, pads}; output channel c sees       \
     input channel c / m */                                                                        \
  X(depthwise_conv2d)                                                                              \
  /* x, weights [O][Kh][Kw][I / groups], bias or _ {strides, dilations, pads, groups}: enlarges    \
     its input; pads cut the output */                                                             \
  X(conv2d_transpose)                                                                              \
  /* x [..., I], weights [O][I], bias [O] or _ */                                                  \
  X(dense)                                                                                         \
  /* a [..., M, K], b [..., K, N] */                                                               \
  X(matmul)                                                                                        \
  /* x {kernel, strides = [1,1], pads = [0,0,0,0]}; average: {count_include_pad = 0} */            \
  X(max_pool) X(average_pool)                                                                      \
  /* x {mode = "nearest" | "linear", coordinates = "asymmetric" | "half_pixel" | "align_corners",  \
     scales = [y, x] out / in, from the shapes when absent} */                                     \
  X(resize)                                                                                        \
  /* x {block, order = "dcr" | "crd"} */                                                           \
  X(depth_to_space)                                                                                \
  /* x {block} */                                                                                  \
  X(space_to_depth)                                                                                \
  /* Element by element with NumPy's broadcasting: a, b. mod is fmod */                            \
  X(add) X(sub) X(mul) X(div) X(maximum) X(minimum) X(mod) X(floor_div) X(pow)                     \
  /* Comparisons and logic of 0/1 bytes or floats */                                               \
  X(equal) X(greater) X(greater_equal) X(less) X(less_equal)                                       \
  X(logical_and) X(logical_or) X(logical_xor) X(logical_not)                                       \
  /* a where |a| > b; a nearer to 0 by b; a where b is not 0, where it is 0. Else 0 */              \
  X(keep_beyond) X(towards_zero) X(zero_unless) X(zero_if)                                         \
  /* condition, a, b */                                                                            \
  X(where)                                                                                         \
  /* One input each; round is half away from zero, round_even half to even */                      \
  X(abs) X(neg) X(ceil) X(floor) X(round) X(round_even) X(sign) X(reciprocal) X(sqrt) X(rsqrt)     \
  X(exp) X(log) X(sin) X(cos) X(tan) X(asin) X(acos) X(atan) X(sinh) X(cosh) X(tanh) X(asinh)      \
  X(acosh) X(atanh) X(erf) X(sigmoid) X(soft_plus) X(soft_sign) X(hard_swish) X(relu) X(square)    \
  /* is_inf {positive = 1, negative = 1}, or as a second input 1, 2 or both added */                \
  X(is_nan) X(is_inf)                                                                              \
  /* {min, max}; an absent bound is infinite. relu6 is clip {0, 6} */                              \
  X(clip)                                                                                          \
  /* {alpha} */                                                                                    \
  X(leaky_relu) X(elu) X(celu) X(thresholded_relu)                                                 \
  /* {alpha, gamma} */                                                                             \
  X(selu)                                                                                          \
  /* {alpha = 0.2, beta = 0.5} */                                                                  \
  X(hard_sigmoid)                                                                                  \
  /* {lambda, bias} */                                                                             \
  X(shrink)                                                                                        \
  /* x, slopes (broadcast against x) */                                                            \
  X(prelu)                                                                                         \
  /* {axis, beta = 1} */                                                                           \
  X(softmax)                                                                                       \
  /* {axis} */                                                                                     \
  X(log_softmax) X(hardmax)                                                                        \
  /* The output's shape says all; squeeze, flatten, ... are reshapes */                            \
  X(reshape)                                                                                       \
  X(identity)                                                                                      \
  /* {perm} */                                                                                     \
  X(transpose)                                                                                     \
  /* any number of inputs {axis} */                                                                \
  X(concat)                                                                                        \
  /* x {starts, ends, steps}, each for every dimension, clamped, from 0 on */                      \
  X(slice)                                                                                         \
  /* x {pads = before each dimension, then after each; mode = "constant" | "reflect" |             \
     "symmetric" | "edge", value = 0.0 (real)} */                                                  \
  X(pad)                                                                                           \
  /* x {repeats for every dimension} */                                                            \
  X(tile)                                                                                          \
  /* x, broadcast to the output's shape */                                                         \
  X(expand)                                                                                        \
  /* x {axes}; the output may keep or drop them */                                                 \
  X(reduce_sum) X(reduce_mean) X(reduce_max) X(reduce_min) X(reduce_prod)                          \
  X(reduce_l1) X(reduce_l2) X(reduce_sum_square) X(reduce_log_sum) X(reduce_log_sum_exp)           \
  /* x, scale [C], bias [C]: x * scale + bias along the last axis */                               \
  X(batch_norm)                                                                                    \
  /* x {size, alpha (multiplies the plain sum of squares), beta, k}, along the last axis */        \
  X(lrn)                                                                                           \
  /* x [N,H,W,C], scale [C], bias [C] {epsilon} */                                                 \
  X(instance_norm)                                                                                 \
  /* x {axis, p} */                                                                                \
  X(lp_norm)                                                                                       \
  /* x, scale or _, bias or _ {axis, epsilon}: over axis and all after it */                       \
  X(layer_norm)                                                                                    \
  /* x, indices (constant) {axis} */                                                               \
  X(gather)                                                                                        \
  /* x [T, F], kernel [4 U][F], recurrent [4 U][U], bias [4 U] or _, peepholes [3 U] or _; gates   \
     i, f, c, o; peepholes i, o, f. Output [T or 1, U] {activation = "tanh",                       \
     recurrent_activation = "sigmoid", out_activation = "tanh", go_backwards = 0, reverse = 0} */  \
  X(lstm)                                                                                          \
  /* x [T, F], kernel [3 U][F], recurrent [3 U][U], bias [3 U] or _; gates z, r, h {activation,    \
     recurrent_activation, reset_after = 0, go_backwards, reverse} */                              \
  X(gru)                                                                                           \
  /* Between float and quantized values, and between two quantizations */                          \
  X(quantize) X(dequantize) X(requantize)                                                          \
  /* x (8 bits), its 256 results from the least input on, the same unrounded (f32) or _ */         \
  X(lookup)                                                                                        \
  X(cast)                                                                                          \
  /* Shape arithmetic, folded before anything is lowered */                                        \
  X(shape_of) X(constant_of_shape) X(range)                                                        \
  /* What a reader does not know {reason, way_out}: refused together with all else */              \
  X(unknown)
// clang-format on

enum class Op : uint16_t {
#define NNLIB_IMPORTER_OP_(name) name,
  NNLIB_IMPORTER_OPERATORS(NNLIB_IMPORTER_OP_)
#undef NNLIB_IMPORTER_OP_
};

std::string_view op_name(Op op);
std::optional<Op> op_of_name(std::string_view name);

}  // namespace nnlib::importer

#endif
