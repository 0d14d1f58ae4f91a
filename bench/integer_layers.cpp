// SPDX-License-Identifier: MIT
// The layers of 8-bit integers that are not products of matrices, and the conversions.
#include "bench/layer.hpp"
#include "core/core_convert.h"
#include "layers_quantized/layers_nl_quarn_integer.h"
#include "layers_quantized/layers_pool_quarn_integer.h"
#include "layers_quantized/layers_quarn_integer.h"

namespace bench {
namespace {

constexpr nnlib::dims kLong = {1, 65536, 1, 1};
constexpr const char* kContestant = "uint8";
constexpr ai_array_format kFormat = AI_ARRAY_FORMAT_U8;

void add_pool(const char* name, ai_layer_forward forward, float out_scale = 0.5f) {
  auto layer = std::make_shared<Layer<ai_layer_pool>>(forward);
  layer->add(AI_CHAIN_INPUT, kFormat, nnlib::dims{1, 64, 32, 32}, 0.5f);
  layer->add(AI_CHAIN_OUTPUT, kFormat, nnlib::dims{1, 64, 16, 16}, out_scale);
  std::fill_n(layer->record.pool_size, 2, 2u);
  std::fill_n(layer->record.pool_stride, 2, 2u);
  layer->record.pool_pad = layer->square_pads(0);
  add_layer(name, kContestant, layer);
}

void add_sum(const char* name, float second_scale, float out_scale) {
  auto layer = std::make_shared<Layer<ai_layer>>(forward_add_integer);
  layer->add(AI_CHAIN_INPUT, kFormat, kLong, 0.5f);
  layer->add(AI_CHAIN_INPUT, kFormat, kLong, second_scale);
  layer->add(AI_CHAIN_OUTPUT, kFormat, kLong, out_scale);
  add_layer(name, kContestant, layer);
}

void add_table() {
  struct Table {
    Buffer<uint8_t> results{256};
    ai_array array = {kFormat, 256, results.data(), results.data()};
    Layer<ai_layer_nl> layer{forward_nl_integer};
  };
  auto table = std::make_shared<Table>();
  table->layer.add(AI_CHAIN_INPUT, kFormat, kLong, 0.5f);
  table->layer.add(AI_CHAIN_OUTPUT, kFormat, kLong, 0.5f);
  table->layer.record.nl_params = &table->array;
  add_benchmark("table 65536", kContestant, 0, [table] { table->layer.run(); });
}

}  // namespace

void add_integer_layers() {
  add_pool("max pool 2x2, 32x32x64", forward_mp_integer);
  add_pool("average pool 2x2, 32x32x64", forward_ap_integer);
  add_pool("average pool 2x2, 32x32x64, to another scale", forward_ap_integer, 0.7f);
  add_sum("add 65536", 0.5f, 0.5f);
  add_sum("add 65536, of different scales", 0.3f, 0.7f);
  add_table();
}

// None of them changes its input: repeated, it would be another work.
void add_conversions() {
  const struct {
    const char* name;
    ai_layer_forward forward;
    ai_array_format in, out;
    float in_scale, out_scale;
  } conversions[] = {
      {"float32 to int8, 65536", node_convert, AI_ARRAY_FORMAT_FLOAT, AI_ARRAY_FORMAT_S8, 0,
       1 / 256.0f},
      {"float32 to uint8, 65536", node_convert, AI_ARRAY_FORMAT_FLOAT, AI_ARRAY_FORMAT_U8, 0,
       1 / 256.0f},
      {"int8 to float32, 65536", node_convert, AI_ARRAY_FORMAT_S8, AI_ARRAY_FORMAT_FLOAT,
       1 / 256.0f, 0},
      {"uint8 to float32, 65536", node_convert, AI_ARRAY_FORMAT_U8, AI_ARRAY_FORMAT_FLOAT,
       1 / 256.0f, 0},
      {"float32 to Q7, 65536", node_convert, AI_ARRAY_FORMAT_FLOAT, AI_ARRAY_FORMAT_Q7, 0, 0},
      {"float32 to Q15, 65536", node_convert, AI_ARRAY_FORMAT_FLOAT, AI_ARRAY_FORMAT_Q15, 0, 0},
      {"Q7 to float32, 65536", node_convert, AI_ARRAY_FORMAT_Q7, AI_ARRAY_FORMAT_FLOAT, 0, 0},
      {"Q15 to float32, 65536", node_convert, AI_ARRAY_FORMAT_Q15, AI_ARRAY_FORMAT_FLOAT, 0, 0},
      {"Q7 to Q15, 65536", node_convert_fixed, AI_ARRAY_FORMAT_Q7, AI_ARRAY_FORMAT_Q15, 0, 0},
      {"Q15 to Q7, 65536", node_convert_fixed, AI_ARRAY_FORMAT_Q15, AI_ARRAY_FORMAT_Q7, 0, 0},
      {"uint8 to int8, 65536", node_convert_integer, AI_ARRAY_FORMAT_U8, AI_ARRAY_FORMAT_S8, 1, 1},
  };
  for (const auto& c : conversions) {
    auto layer = std::make_shared<Layer<ai_layer>>(c.forward);
    layer->add(AI_CHAIN_INPUT, c.in, kLong, c.in_scale);
    layer->add(AI_CHAIN_OUTPUT, c.out, kLong, c.out_scale);
    add_benchmark(c.name, "conversion", 0, [layer] { layer->run(); });
  }
}

}  // namespace bench
