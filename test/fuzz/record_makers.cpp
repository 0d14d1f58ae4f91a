// SPDX-License-Identifier: MIT
// The records of the layer functions: one maker for each.
#include <algorithm>

#include "check/windows.hpp"
#include "nnlib.h"
#include "test/fuzz/random_network.hpp"

using namespace nnlib;

namespace {

constexpr uint32_t kIn = AI_CHAIN_INPUT, kOut = AI_CHAIN_OUTPUT, kWeights = AI_CHAIN_WEIGHTS;

ai_array* random_params(LayerMaker& m) {
  return m.choose.one_in(8) ? nullptr
                            : m.array(m.input_format(), m.choose.of({3u, 1u, 2u, 256u, 40u}));
}

template <class Record>
void make_plain(LayerMaker& m) {
  m.record<Record>();
}

void make_nl(LayerMaker& m) {
  auto& nl = m.record<ai_layer_nl>();
  m.make(kIn);
  nl.nl_params = random_params(m);
}

// --- windows ------------------------------------------------------------------------------------

// A window's way along one side, with the numbers of the record that hold it.
WindowWay make_way(LayerMaker& m, char in, uint32_t taps, uint32_t& stride, uint32_t* dilation,
                   uint32_t& before, uint32_t& after, uint32_t most_pad) {
  m.number(stride, {1, 1, 2, 3});
  if (dilation != nullptr) {
    m.number(*dilation, {1, 1, 1, 2, 3, 0});
  }
  m.number(before, m.choose.below(most_pad));
  m.number(after, m.choose.below(most_pad));
  return {m.sizes[in], taps, stride, dilation != nullptr ? *dilation : 1, before, after};
}

struct Ways {
  WindowWay x, y;
};

Ways make_pool_ways(LayerMaker& m, uint32_t (&size)[2], uint32_t (&stride)[2], ai_shape& pad) {
  pad = {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), m.own<uint32_t>(4)};
  m.number(size[0], {2, 1, 3, 4});
  m.number(size[1], {2, 1, 3, 4});
  return {make_way(m, 'W', size[0], stride[0], nullptr, pad.data[1], pad.data[3], size[0]),
          make_way(m, 'H', size[1], stride[1], nullptr, pad.data[0], pad.data[2], size[1])};
}

void make_pool(LayerMaker& m) {
  auto& pool = m.record<ai_layer_pool>();
  m.make(kIn);
  const Ways ways = make_pool_ways(m, pool.pool_size, pool.pool_stride, pool.pool_pad);
  m.set('w', ways.x.outputs());
  m.set('h', ways.y.outputs());
  m.number(pool.count_include_pad, {0, 1});
}

ai_nl_func any_nl(LayerMaker& m) {
  const auto floats = m.choose.of({nl_func_relu_array_f32, nl_func_sigmoid_array_f32,
                                   nl_func_clip_array_f32, nl_func_prelu_array_f32,
                                   nl_func_relu_generic_array_f32, nl_func_sm_group_array_f32});
  const auto integers =
      m.choose.of({nl_func_relu_array_integer, nl_func_clip_array_integer, nl_func_array_integer});
  const auto fixed =
      m.choose.of({nl_func_relu_array_fixed, nl_func_relu_max_array_fixed, nl_func_tanh_array_fixed,
                   nl_func_sigmoid_array_fixed, sm_func_sm_array_fixed});
  const char kind = m.choose.one_in(32) ? 'f' : m.kind();
  return m.choose.one_in(2) ? nullptr : kind == 'f' ? floats : kind == 'i' ? integers : fixed;
}

// Groups: one, as many as channels, or of floats some number between.
void choose_groups(LayerMaker& m) {
  const uint32_t groups = m.choose.below(3);
  const uint32_t count = m.size();
  if (groups == 1) {
    m.set('C', m.set('G', count));
    m.set('D', m.kind() == 'i' ? count : count * m.choose.between(1, 2));
  } else if (groups == 2 && m.kind() == 'f') {
    m.set('G', m.choose.between(2, 3));
    m.set('C', m.sizes['G'] * m.choose.between(1, 4));
    m.set('D', m.sizes['G'] * m.choose.between(1, 4));
  } else {
    m.set('G', 1);
  }
}

Ways make_convolution(LayerMaker& m, ai_layer_conv2d& conv) {
  choose_groups(m);
  m.number(conv.groups, m.sizes['G']);
  const bool square = m.kind() == 'q' && m.choose.one_in(2);
  if (square) {
    m.set('W', m.set('H', m.size()));
  }
  m.make(kIn);
  m.set('x', m.choose.between(1, 4));
  m.set('y', square ? m.sizes['x'] : m.choose.between(1, 4));
  conv.filter_pad = {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), m.own<uint32_t>(4)};
  uint32_t* pads = conv.filter_pad.data;
  Ways ways = {
      make_way(m, 'W', m.sizes['x'], conv.filter_stride[0], &conv.dilation[0], pads[1], pads[3], 4),
      make_way(m, 'H', m.sizes['y'], conv.filter_stride[1], &conv.dilation[1], pads[0], pads[2],
               4)};
  if (m.kind() != 'f' && m.choose.below(8) != 0) {
    ways.x.dilation = ways.y.dilation = conv.dilation[0] = conv.dilation[1] = 1;
  }
  if (square) {
    conv.filter_stride[1] = conv.filter_stride[0];
    std::copy_n(pads, 2, pads + 2);
    pads[0] = pads[1];
    pads[2] = pads[3];
    ways.y = ways.x;
  }
  conv.nl_func = any_nl(m);
  conv.nl_params = random_params(m);
  return ways;
}

void make_conv2d(LayerMaker& m) {
  auto& conv = m.record<ai_layer_conv2d>();
  const Ways ways = make_convolution(m, conv);
  const auto enlarged = [&m](const WindowWay& way) {
    const uint64_t full = (way.in - 1) * way.stride + way.extent() + m.choose.below(2);
    return full > way.before + way.after ? full - way.before - way.after : 1;
  };
  const bool transposed = m.rule.forward == forward_conv2d_transpose;
  m.set('w', transposed ? enlarged(ways.x) : ways.x.outputs());
  m.set('h', transposed ? enlarged(ways.y) : ways.y.outputs());
}

void make_conv2d_nl_pool(LayerMaker& m) {
  auto& fused = m.record<ai_layer_conv2d_nl_pool>();
  const Ways ways = make_convolution(m, fused.base);
  Ways pool = make_pool_ways(m, fused.pool_size, fused.pool_stride, fused.pool_pad);
  m.set('v', pool.x.in = ways.x.outputs());
  pool.y.in = ways.y.outputs();
  m.set('w', pool.x.outputs());
  m.set('h', pool.y.outputs());
  const bool most = m.choose.one_in(2);
  fused.pool_func = m.kind() == 'f' ? (most ? pool_func_mp_array_f32 : pool_func_ap_array_f32)
                    : m.kind() == 'i'
                        ? (most ? pool_func_mp_array_integer : pool_func_ap_array_integer)
                        : (most ? pool_func_mp_array_fixed : pool_func_ap_array_fixed);
}

// --- products, normalization, binary functions --------------------------------------------------

void make_gemm(LayerMaker& m) {
  auto& gemm = m.record<ai_layer_gemm>();
  gemm.alpha = 0.5f;
  gemm.beta = m.choose.of({0.0f, 1.5f});
  m.number(gemm.tA, {0, 1});
  m.number(gemm.tB, {0, 1});
  const uint32_t rows = m.set('m', m.size()), columns = m.set('n', m.size()), inner = m.size();
  m.set('A', gemm.tA ? rows : inner);
  m.set('B', gemm.tA ? inner : rows);
  m.set('D', gemm.tB ? inner : columns);
  m.set('E', gemm.tB ? columns : inner);
  m.set('F', m.choose.one_in(2) ? 1 : columns);
  m.set('K', m.choose.one_in(2) ? 1 : rows);
  const char* texts[][2] = {{"f(1,A,1,B) f(1,D,1,E) f(1,F,1,K)", ""},
                            {"f(1,A,1,B) f(1,D,1,E)", "f(1,F,1,K)"},
                            {"f(1,A,1,B)", "f(1,D,1,E) f(1,F,1,K)"}};
  const auto& text = texts[m.choose.below(3)];
  m.make(kIn, text[0]);
  m.make(kWeights, text[1]);
  m.make(kOut, "f(1,n,1,m)");
}

void make_norm(LayerMaker& m) {
  auto& norm = m.record<ai_layer_norm>();
  m.number(norm.axis, m.choose.below(4));
  norm.exponent = m.choose.of({2.0f, 1.0f, -1.5f, 0.0f});
  norm.scale = m.choose.one_in(2);
}

void make_lrn(LayerMaker& m) {
  auto& lrn = m.record<ai_layer_lrn>();
  m.number(lrn.local_size, m.choose.below(12));
  lrn.k = lrn.alpha = lrn.beta = 0.75f;
}

ai_binary_fn any_binary(LayerMaker& m) {
  return m.choose.of<ai_binary_fn>({ai_sum, ai_sub, ai_mul, ai_div, ai_min, ai_max, ai_floor_div,
                                    ai_floor_mod, [](float a, float) { return a; }});
}

void make_eltwise(LayerMaker& m) {
  m.record<ai_layer_eltwise>().operation = any_binary(m);
}

void make_reduce(LayerMaker& m) {
  m.record<ai_layer_reduce>().operation = any_binary(m);
  m.make(kIn);
  Dims out = m.dims(kIn);
  for (uint64_t& dim : out.sizes) {
    dim = m.choose.one_in(2) ? 1 : dim;
  }
  m.add(kOut, 'f', out);
}

// --- sequences ----------------------------------------------------------------------------------

template <class Record>
void make_recurrent(LayerMaker& m) {
  auto& cell = m.record<Record>();
  const auto activation = [&m] {
    return m.choose.of<ai_activation_fn>(
        {ai_math_tanh, ai_math_sigmoid, ai_math_hard_sigmoid, ai_math_relu, ai_math_sign, nullptr});
  };
  m.set('U', m.number(cell.n_units, m.size()));
  cell.activation = activation();
  cell.recurrent_activation = activation();
  m.number(cell.go_backwards, {0, 1});
  m.number(cell.reverse, {0, 1});
  if constexpr (requires { cell.out_activation; }) {
    cell.out_activation = activation();
  } else {
    m.number(cell.reset_after, {0, 1});
  }
  m.make(kIn);
  m.set('S', m.choose.one_in(2) ? 1 : m.sizes['T']);
}

void make_time_delay(LayerMaker& m) {
  auto& delay = m.record<ai_layer_time_delay>();
  ai_array* delays = m.array(AI_ARRAY_FORMAT_U8, m.choose.between(1, 4));
  m.number(delays->format, AI_ARRAY_FORMAT_U8);
  auto* distances = static_cast<uint8_t*>(delays->data);
  for (uint32_t i = 0; i < delays->size; ++i) {
    m.number(distances[i], m.choose.below(5));
  }
  delay.delays = delays;
  m.set('D', delays->size);
  m.set('T', m.size());
  m.set('S',
        m.sizes['T'] + *std::max_element(distances, distances + delays->size) + m.choose.below(2));
}

void make_time_distributed(LayerMaker& m) {
  auto& outer = m.record<ai_layer_time_distributed>();
  m.make(kIn);
  const RandomTensor& last = m.inner_layers(outer.inner);
  Dims out = dims_of(last.tensor);
  out.sizes[AI_SHAPE_H] = m.dims(kIn).sizes[AI_SHAPE_H];
  RandomTensor& made = m.add(kOut, 's', out);
  made.memory->array.format = ai_fmt_get_code(ai_tensor_format(&last.tensor));
  made.tensor.klass = last.tensor.klass;
  std::copy_n(last.tensor.stride.data, AI_SHAPE_DIMS, made.tensor.stride.data);
}

// --- moving elements ----------------------------------------------------------------------------

void make_pad(LayerMaker& m) {
  auto& pad = m.record<ai_layer_pad>();
  auto* pads = m.own<uint32_t>(2);
  m.make(kIn);
  m.number(pad.mode, m.choose.below(3));
  m.number(pads[1], m.choose.below(4));
  m.number(pads[0], m.choose.below(pads[1] + 1));
  pad.pads = pads;
  pad.value = m.choose.one_in(8) ? nullptr : m.array(m.input_format(), 1);
  m.set('w', pads[1] + m.sizes['W'] + m.choose.below(4));
  m.set('h', pads[0] + m.sizes['H'] + m.choose.below(4));
}

void make_tile(LayerMaker& m) {
  auto* repeats = m.own<uint16_t>(3);
  m.record<ai_layer_tile>().repeats = repeats;
  m.set('h', m.number(repeats[0], m.choose.between(1, 3)));
  m.set('w', m.number(repeats[1], m.choose.between(1, 3)));
  m.set('c', m.number(repeats[2], m.choose.between(1, 3)));
}

void make_upsample(LayerMaker& m) {
  auto& upsample = m.record<ai_layer_upsample>();
  ai_array* scales = m.array(AI_ARRAY_FORMAT_FLOAT, 2);
  auto* scale = static_cast<float*>(scales->data);
  m.number(upsample.mode, m.choose.below(3));
  upsample.center = m.choose.one_in(2);
  upsample.scales = scales;
  m.make(kIn);
  for (uint32_t i = 0; i < 2; ++i) {
    scale[i] = m.choose.of({2.0f, 1.0f, 3.0f, 1.5f, 0.5f, 2.7f, 1e-30f});
    const float side = static_cast<float>(m.sizes["HW"[i]]) * scale[i];
    m.set("hw"[i], static_cast<uint32_t>(side) + m.choose.below(2));
  }
}

void make_concat(LayerMaker& m) {
  auto& concat = m.record<ai_layer_concat>();
  const uint32_t axis = m.number(concat.axis, m.choose.below(4)) % 4;
  m.make(kIn, "a");
  Dims out = m.dims(kIn), each = out;
  for (uint32_t left = m.choose.below(4); left > 0; --left) {
    each.sizes[axis] = m.size();
    out.sizes[axis] += each.sizes[axis];
    m.add(kIn, 's', each);
  }
  m.add(kOut, 's', out);
}

void make_transpose(LayerMaker& m) {
  auto* perm = m.own<uint32_t>(4);
  m.record<ai_layer_transpose>().perm = perm;
  m.make(kIn);
  Dims out = m.dims(kIn);
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    perm[i] = i;
    std::swap(perm[i], perm[m.choose.below(i + 1)]);
  }
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    out.sizes[i] = m.dims(kIn).sizes[m.number(perm[i], perm[i])];
  }
  m.add(kOut, 's', out);
}

void make_slice(LayerMaker& m) {
  auto& slice = m.record<ai_layer_slice>();
  const uint32_t count = m.choose.between(1, 4);
  ai_array* arrays[] = {m.array(AI_ARRAY_FORMAT_U32, count), m.array(AI_ARRAY_FORMAT_S32, count),
                        m.array(AI_ARRAY_FORMAT_S32, count)};
  m.make(kIn);
  Dims out = m.dims(kIn);
  const bool all = m.choose.one_in(2);
  for (uint32_t i = 0; i < count; ++i) {
    const auto at = [&arrays, i](uint32_t k) -> uint32_t& {
      return static_cast<uint32_t*>(arrays[k]->data)[i];
    };
    const uint32_t axis = m.number(at(0), all ? i : m.choose.below(4));
    const auto size = static_cast<uint32_t>(m.dims(kIn).sizes[axis]);
    const uint32_t start = m.number(at(1), m.choose.below(size));
    const uint32_t end = m.number(at(2), m.choose.between(start + 1, size + 1));
    out.sizes[axis] = std::min(end, size) - start;
  }
  slice = {slice.base, all ? nullptr : arrays[0], arrays[1], arrays[2]};
  m.add(kOut, 's', out);
}

void make_topk(LayerMaker& m) {
  auto& topk = m.record<ai_layer_topk>();
  m.make(kIn);
  Dims out = m.dims(kIn);
  uint64_t& line = out.sizes[m.number(topk.axis, m.choose.below(4))];
  line = m.number(topk.k, m.choose.between(1, static_cast<uint32_t>(line)));
  m.add(kOut, 'f', out);
  m.add(kOut, 'u', out);
}

// Layers without tensors are made by the network itself.
void make_nothing(LayerMaker&) {}

}  // namespace

const std::vector<RecordMaker> kRecordMakers = {
    {"ai_layer", make_plain<ai_layer>},
    {"ai_layer_nl", make_nl},
    {"ai_layer_pool", make_pool},
    {"ai_layer_conv2d", make_conv2d},
    {"ai_layer_conv2d_nl_pool", make_conv2d_nl_pool},
    {"ai_layer_gemm", make_gemm},
    {"ai_layer_norm", make_norm},
    {"ai_layer_lrn", make_lrn},
    {"ai_layer_instance_norm", make_plain<ai_layer_instance_norm>},
    {"ai_layer_eltwise", make_eltwise},
    {"ai_layer_reduce", make_reduce},
    {"ai_layer_lstm", make_recurrent<ai_layer_lstm>},
    {"ai_layer_gru", make_recurrent<ai_layer_gru>},
    {"ai_layer_time_delay", make_time_delay},
    {"ai_layer_time_distributed", make_time_distributed},
    {"ai_layer_pad", make_pad},
    {"ai_layer_tile", make_tile},
    {"ai_layer_upsample", make_upsample},
    {"ai_layer_concat", make_concat},
    {"ai_layer_transpose", make_transpose},
    {"ai_layer_slice", make_slice},
    {"ai_layer_topk", make_topk},
    {"ai_layer_split", make_nothing},
    {"ai_layer_add", make_nothing},
};
