// SPDX-License-Identifier: MIT
// The same convolutions and dense layers by oneDNN (float32) and XNNPACK (float32 and int8), their
// weights packed beforehand as they like them best.
#include <cpuinfo.h>
#include <xnnpack.h>

#include <algorithm>
#include <dnnl.hpp>
#include <limits>
#include <stdexcept>
#include <unordered_map>

#include "bench/layer.hpp"

namespace bench {
namespace {

using dnnl::memory;

// A oneDNN primitive with the memory of its arguments.
struct Dnnl {
  dnnl::engine engine{dnnl::engine::kind::cpu, 0};
  dnnl::stream stream{engine};
  dnnl::primitive primitive;
  std::unordered_map<int, memory> arguments;

  // Filled, since pages never written would all be the same page of zeros.
  void add(int argument, const memory::desc& desc) {
    const memory& added = arguments.emplace(argument, memory(desc, engine)).first->second;
    auto* data = static_cast<float*>(added.get_data_handle());
    std::fill_n(data, desc.get_size() / sizeof(float), 0.25f);
  }
  void run() {
    primitive.execute(stream, arguments);
    stream.wait();
  }
};

memory::desc floats(const memory::dims& dims, memory::format_tag tag) {
  return {dims, memory::data_type::f32, tag};
}

template <class Primitive, class Desc>
std::shared_ptr<Dnnl> dnnl_layer(const Desc& desc) {
  auto layer = std::make_shared<Dnnl>();
  const typename Primitive::primitive_desc primitive(desc, layer->engine);
  layer->primitive = Primitive(primitive);
  layer->add(DNNL_ARG_SRC, primitive.src_desc());
  layer->add(DNNL_ARG_WEIGHTS, primitive.weights_desc());
  layer->add(DNNL_ARG_BIAS, primitive.bias_desc());
  layer->add(DNNL_ARG_DST, primitive.dst_desc());
  return layer;
}

std::shared_ptr<Dnnl> dnnl_conv(const ConvShape& s) {
  using tag = memory::format_tag;
  const memory::dim channels = s.channels, filters = s.out_channels(), taps = s.taps;
  const memory::dims weights = s.depthwise() ? memory::dims{channels, 1, 1, taps, taps}
                                             : memory::dims{filters, channels, taps, taps};
  const memory::dims stride = {s.stride, s.stride}, pad = {s.pad, s.pad};
  return dnnl_layer<dnnl::convolution_forward>(dnnl::convolution_forward::desc(
      dnnl::prop_kind::forward_inference, dnnl::algorithm::convolution_direct,
      floats({1, channels, s.size, s.size}, tag::nhwc), floats(weights, tag::any),
      floats({filters}, tag::x), floats({1, filters, s.out_size(), s.out_size()}, tag::nhwc),
      stride, pad, pad));
}

std::shared_ptr<Dnnl> dnnl_dense(const DenseShape& s) {
  using tag = memory::format_tag;
  return dnnl_layer<dnnl::inner_product_forward>(dnnl::inner_product_forward::desc(
      dnnl::prop_kind::forward_inference, floats({1, s.inputs}, tag::nc),
      floats({s.outputs, s.inputs}, tag::any), floats({s.outputs}, tag::x),
      floats({1, s.outputs}, tag::nc)));
}

// An XNNPACK operator over buffers of its own. It may read a little past its input.
template <class T>
struct Xnn {
  Xnn(size_t in_count, size_t out_count)
      : in(in_count + XNN_EXTRA_BYTES / sizeof(T)), out(out_count) {}
  Buffer<T> in, out;
  xnn_operator_t op = nullptr;

  void run() { xnn_run_operator(op, nullptr); }
};

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kScale = 1.0f / 64;

void check(xnn_status status) {
  if (status != xnn_status_success) {
    throw std::runtime_error("XNNPACK refuses");
  }
}

// The first arguments of every convolution operator.
#define CONVOLUTION(s)                                                  \
  s.pad, s.pad, s.pad, s.pad, s.taps, s.taps, s.stride, s.stride, 1, 1, \
      s.depthwise() ? s.channels : 1, s.depthwise() ? 1 : s.channels,   \
      s.depthwise() ? 1 : s.filters, s.channels, s.out_channels()

std::shared_ptr<Xnn<float>> xnn_conv(const ConvShape& s) {
  auto layer = std::make_shared<Xnn<float>>(s.in_count(), s.out_count());
  const Floats weights(s.weight_count()), bias(s.out_channels());
  check(xnn_create_convolution2d_nhwc_f32(CONVOLUTION(s), weights.data(), bias.data(), -kInfinity,
                                          kInfinity, 0, &layer->op));
  check(xnn_setup_convolution2d_nhwc_f32(layer->op, 1, s.size, s.size, layer->in.data(),
                                         layer->out.data(), nullptr));
  return layer;
}

std::shared_ptr<Xnn<float>> xnn_dense(const DenseShape& s) {
  auto layer = std::make_shared<Xnn<float>>(s.inputs, s.outputs);
  const Floats weights(size_t{s.inputs} * s.outputs), bias(s.outputs);
  check(xnn_create_fully_connected_nc_f32(s.inputs, s.outputs, s.inputs, s.outputs, weights.data(),
                                          bias.data(), -kInfinity, kInfinity, 0, &layer->op));
  check(
      xnn_setup_fully_connected_nc_f32(layer->op, 1, layer->in.data(), layer->out.data(), nullptr));
  return layer;
}

std::shared_ptr<Xnn<int8_t>> xnn_conv_int8(const ConvShape& s) {
  auto layer = std::make_shared<Xnn<int8_t>>(s.in_count(), s.out_count());
  const Buffer<int8_t> weights(s.weight_count());
  const Buffer<int32_t> bias(s.out_channels());
  const std::vector<float> scales(s.out_channels(), kScale);
  check(xnn_create_convolution2d_nhwc_qc8(CONVOLUTION(s), 3, kScale, scales.data(), weights.data(),
                                          bias.data(), 5, 1.0f, -128, 127, 0, &layer->op));
  check(xnn_setup_convolution2d_nhwc_qc8(layer->op, 1, s.size, s.size, layer->in.data(),
                                         layer->out.data(), nullptr));
  return layer;
}

// It knows no scales for each channel here.
std::shared_ptr<Xnn<int8_t>> xnn_dense_int8(const DenseShape& s) {
  auto layer = std::make_shared<Xnn<int8_t>>(s.inputs, s.outputs);
  const Buffer<int8_t> weights(size_t{s.inputs} * s.outputs);
  const Buffer<int32_t> bias(s.outputs);
  check(xnn_create_fully_connected_nc_qs8(s.inputs, s.outputs, s.inputs, s.outputs, 3, kScale,
                                          kScale, weights.data(), bias.data(), 5, 1.0f, -128, 127,
                                          0, &layer->op));
  check(
      xnn_setup_fully_connected_nc_qs8(layer->op, 1, layer->in.data(), layer->out.data(), nullptr));
  return layer;
}

// XNNPACK has no setting for it and takes the widest instructions that cpuinfo found.
void hold_xnnpack_to_avx2() {
  cpuinfo_initialize();
  cpuinfo_isa.avx512f = cpuinfo_isa.avx512bw = cpuinfo_isa.avx512dq = cpuinfo_isa.avx512vl = false;
}

template <class Peer>
void add(const char* workload, const char* peer, double operations, std::shared_ptr<Peer> layer) {
  add_benchmark(workload, peer, operations, [layer] { layer->run(); });
}

}  // namespace

// Both with the instruction set of the runtime.
void add_peers() {
  dnnl::set_max_cpu_isa(dnnl::cpu_isa::avx2);
  hold_xnnpack_to_avx2();
  check(xnn_initialize(nullptr));
  for (const ConvShape& s : kConvShapes) {
    add(s.name, "oneDNN", s.operations(), dnnl_conv(s));
    add(s.name, "XNNPACK", s.operations(), xnn_conv(s));
    add(s.name, "XNNPACK int8", s.operations(), xnn_conv_int8(s));
  }
  for (const DenseShape& s : kDenseShapes) {
    add(s.name, "oneDNN", s.operations(), dnnl_dense(s));
    add(s.name, "XNNPACK", s.operations(), xnn_dense(s));
    add(s.name, "XNNPACK int8", s.operations(), xnn_dense_int8(s));
  }
}

}  // namespace bench
