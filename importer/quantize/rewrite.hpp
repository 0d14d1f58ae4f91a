// SPDX-License-Identifier: MIT
// A float graph in integers or in fixed point, node by node; what no layer does stays float.
#ifndef NNLIB_IMPORTER_QUANTIZE_REWRITE_HPP
#define NNLIB_IMPORTER_QUANTIZE_REWRITE_HPP

#include <set>

#include "importer/quantize/formats.hpp"
#include "importer/quantize/weights.hpp"

namespace nnlib::importer {

enum class Target { int8, uint8, q7, q15 };

constexpr bool is_fixed_point(Target target) {
  return target == Target::q7 || target == Target::q15;
}
constexpr Type element_type(Target target) {
  return target == Target::uint8 ? Type::u8 : target == Target::q15 ? Type::s16 : Type::s8;
}
// Those of the activations; integers with a scale for each channel.
constexpr WeightType usual_weights(Target target) {
  return {element_type(target), !is_fixed_point(target)};
}

struct RewriteOptions {
  Target target = Target::int8;
  RangeOptions ranges;
  // q15: s8 for dense layers, which alone take it.
  WeightType weights = usual_weights(Target::int8);
  std::set<std::string> keep_float;  // names of nodes or of their results
};

struct Rewritten {
  Graph graph;
  // By the ids of the float graph: the same value here, in the type that it is computed in. A
  // result that only a relu reads has the relu's format and is no longer the same: kAbsent.
  std::vector<ValueId> twins;
  // By the nodes of the float graph: whether quantized, and the weights then.
  std::vector<bool> quantized;
  std::vector<ValueId> weights;
};

// What a value is stored as where its node is quantized, by its id.
using Formats = std::vector<std::optional<Quantization>>;

// From how each value of the graph is spread.
Formats choose_formats(const Graph& graph, const std::vector<Histogram>& spreads,
                       const RewriteOptions& options);

// Inputs and outputs stay float. Throws Refused where a name to keep is not there.
Rewritten rewrite(const Graph& graph, const Formats& formats, const RewriteOptions& options);

}  // namespace nnlib::importer

#endif
