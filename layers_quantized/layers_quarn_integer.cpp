// SPDX-License-Identifier: MIT
#include "layers_quantized/layers_quarn_integer.h"

#include <algorithm>
#include <type_traits>

#include "core/core_broadcast.h"
#include "kernels/integer_dense.hpp"
#include "kernels/ko_add.h"
#include "kernels/ko_fully_connected.h"
#include "layers_quantized/integer_quantization.hpp"

namespace nnlib {
namespace {

// --- dense ----------------------------------------------------------------------------------

#define PRODUCT(types) kTypesLinked<KO_TYPES(types)> ? connect<KO_TYPES(types)> : nullptr,
constexpr void (*kProducts[])(const IntegerProduct&) = {KO_TYPES_WORDS(PRODUCT)};

uint32_t widened_size(uint32_t length) {
  return aligned_to_word(ko_fully_connected_scratch_size(static_cast<uint16_t>(length)));
}

void dense(const ai_layer& layer) {
  const ai_tensor& input = layer_input(layer);
  const ai_tensor& output = layer_output(layer);
  const ai_tensor& weights = layer_weights(layer);
  const IntegerForm form = integer_form(input, weights);
  if (form == IntegerForm::kNone) {
    core_hang();
  }
  const uint32_t length = map_dims(input).channels;
  const MapDims out = map_dims(output);
  const ai_tensor* optional = ai_tensor_chain_scratch(layer.tensor_chain, 0);
  uint8_t* scratch = optional != nullptr ? aligned_scratch(*optional) : nullptr;
  uint8_t* pairs_scratch =
      has_channels(form) ? aligned_scratch(layer_scratch(layer)) + widened_size(length) : nullptr;
  const LayerQuantization quantization(layer, form, out.channels, pairs_scratch);
  const uint8_t* in = tensor_data<const uint8_t>(input);
  uint8_t* to = tensor_data<uint8_t>(output);
  IntegerProduct product = {
      in,
      ai_tensor_data(&weights),
      length,
      out.channels,
      static_cast<const int32_t*>(ai_tensor_data(optional_tensor(layer, AI_CHAIN_WEIGHTS, 1))),
      quantization,
      to,
      scratch};
  for (uint32_t position = 0; position < out.width * out.height; ++position) {
    kProducts[types_word(form)](product);
    product.in = in += length;
    product.out = to += out.channels;
  }
}

// --- addition -------------------------------------------------------------------------------

struct Addend {
  const uint8_t* data;
  const ai_shape& shape;
  float scale;
  int32_t zeropoint;
  bool repeats;  // one element for a whole run
};

Addend addend_of(const ai_tensor& tensor) {
  return {tensor_data<const uint8_t>(tensor), tensor.shape, tensor_scale(tensor),
          tensor_zeropoint(tensor), false};
}

struct Sum {
  uint8_t* out;
  bool is_signed;
  float scale;
  int32_t zeropoint;
};

void add_vectors(const Addend& a, const uint8_t* in_a, const Addend& b, const uint8_t* in_b,
                 const Sum& sum, uint8_t* out, uint32_t count) {
  for_elements(sum.is_signed, [&](auto element) {
    using T = decltype(element);
    const auto kernel = [] {
      if constexpr (std::is_signed_v<T>) {
        return ko_int8_add;
      } else {
        return ko_uint8_add;
      }
    }();
    kernel(reinterpret_cast<const T*>(in_a), reinterpret_cast<const T*>(in_b),
           reinterpret_cast<T*>(out), count, a.scale, static_cast<T>(a.zeropoint), b.scale,
           static_cast<T>(b.zeropoint), sum.scale, static_cast<T>(sum.zeropoint));
  });
}

// One run of the output. An element that repeats is spread out for a part of the run at a time.
void add_run(const Addend& a, const uint8_t* in_a, const Addend& b, const uint8_t* in_b,
             const Sum& sum, uint8_t* out, uint32_t length) {
  if (!a.repeats && !b.repeats) {
    add_vectors(a, in_a, b, in_b, sum, out, length);
    return;
  }
  constexpr uint32_t kPart = 64;
  uint8_t spread[kPart];
  std::fill_n(spread, std::min(length, kPart), a.repeats ? *in_a : *in_b);
  for (uint32_t i = 0; i < length; i += kPart) {
    add_vectors(a, a.repeats ? spread : in_a + i, b, b.repeats ? spread : in_b + i, sum, out + i,
                std::min(length - i, kPart));
  }
}

// The dimensions from the innermost on over which both operands run along, or one of them stays at
// one element. Sets which one does.
uint32_t run_dimensions(Addend& a, Addend& b, const ai_shape& loops) {
  const auto leading = [](auto holds) {
    uint32_t count = 0;
    while (count < AI_SHAPE_DIMS && holds(count)) {
      ++count;
    }
    return count;
  };
  const auto runs = [&loops](const Addend& x, uint32_t i) {
    return x.shape.data[i] == loops.data[i];
  };
  const auto stays = [](const Addend& x, uint32_t i) { return x.shape.data[i] == 1; };
  const uint32_t both = leading([&](uint32_t i) { return runs(a, i) && runs(b, i); });
  const uint32_t first = leading([&](uint32_t i) { return runs(a, i) && stays(b, i); });
  const uint32_t second = leading([&](uint32_t i) { return stays(a, i) && runs(b, i); });
  b.repeats = first > both;
  a.repeats = second > both;  // at most one of them: they differ at dimension `both`
  return std::max(both, std::max(first, second));
}

// The walk of core/core_broadcast.h whose visits are runs.
struct Walk {
  uint32_t shape[AI_SHAPE_DIMS];
  int32_t steps[AI_SHAPE_DIMS];

  Walk(const ai_shape& operand, const ai_shape& loops, uint32_t run_dims) {
    uint32_t outer_loops[AI_SHAPE_DIMS];
    for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
      shape[i] = i < run_dims ? 1 : operand.data[i];
      outer_loops[i] = i < run_dims ? 1 : loops.data[i];
    }
    const uint32_t word = AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS);
    const ai_shape outer_operand = {word, shape};
    const ai_shape outer = {word, outer_loops};
    ai_offsets offsets = {word, steps};
    core_compute_offsets(&offsets, &outer_operand, &outer);
    std::copy(outer_loops, outer_loops + AI_SHAPE_DIMS, shape);
  }
};

void add(Addend a, Addend b, Sum sum) {
  uint32_t loop_data[AI_SHAPE_DIMS];
  ai_shape loops = {AI_DIMS_WORD(AI_SHAPE_TYPE, AI_SHAPE_DIMS), loop_data};
  core_get_broadcasted_shape(&loops, &a.shape, &b.shape);
  const uint32_t run_dims = run_dimensions(a, b, loops);
  uint32_t run = 1;
  for (uint32_t i = 0; i < run_dims; ++i) {
    run *= loops.data[i];
  }
  const Walk walk_a(a.shape, loops, run_dims);
  const Walk walk_b(b.shape, loops, run_dims);
  const ptrdiff_t unit_a = a.repeats ? 1 : static_cast<ptrdiff_t>(run);
  const ptrdiff_t unit_b = b.repeats ? 1 : static_cast<ptrdiff_t>(run);
  ptrdiff_t at_a = 0;
  ptrdiff_t at_b = 0;
  const uint32_t* count = walk_a.shape;
  const auto step = [&](uint32_t dimension) {
    at_a += walk_a.steps[dimension] * unit_a;
    at_b += walk_b.steps[dimension] * unit_b;
  };
  for (uint32_t d3 = 0; d3 < count[3]; ++d3, step(3)) {
    for (uint32_t d2 = 0; d2 < count[2]; ++d2, step(2)) {
      for (uint32_t d1 = 0; d1 < count[1]; ++d1, step(1)) {
        for (uint32_t d0 = 0; d0 < count[0]; ++d0, step(0), sum.out += run) {
          add_run(a, a.data + at_a, b, b.data + at_b, sum, sum.out, run);
        }
      }
    }
  }
}

}  // namespace
}  // namespace nnlib

void forward_dense_integer(ai_layer* layer) {
  nnlib::dense(*layer);
}

ai_size ai_dense_integer_scratch_size(const ai_layer* layer) {
  const ai_tensor& input = nnlib::layer_input(*layer);
  const uint32_t rows = nnlib::map_dims(nnlib::layer_output(*layer)).channels;
  const bool channels =
      nnlib::has_channels(nnlib::integer_form(input, nnlib::layer_weights(*layer)));
  return nnlib::widened_size(nnlib::map_dims(input).channels) +
         (channels ? nnlib::LayerQuantization::scratch_size(rows) : 0);
}

void forward_add_integer(ai_layer* layer) {
  const ai_tensor& output = nnlib::layer_output(*layer);
  nnlib::add(nnlib::addend_of(nnlib::layer_input(*layer, 0)),
             nnlib::addend_of(nnlib::layer_input(*layer, 1)),
             {nnlib::tensor_data<uint8_t>(output),
              ai_fmt_is_signed(ai_tensor_format(&nnlib::layer_input(*layer, 0))),
              nnlib::tensor_scale(output), nnlib::tensor_zeropoint(output)});
}
