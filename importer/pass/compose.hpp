// SPDX-License-Identifier: MIT
// Operators that no layer computes, as a few that layers do.
#ifndef NNLIB_IMPORTER_PASS_COMPOSE_HPP
#define NNLIB_IMPORTER_PASS_COMPOSE_HPP

#include <span>

#include "importer/pass/graph_builder.hpp"

namespace nnlib::importer {

// Replaces every operator that has to be composed, again and again until none is left: functions
// and normalizations by arithmetic, batches by one map after the other, axes that a layer does not
// work along by transpositions, gathers by slices.
void compose(Graph& graph);

// Truth values as floats 0 and 1; at inputs and outputs as bytes 0 and 1. Logic becomes arithmetic.
void lower_truth(Graph& graph);

// What replaces a node; the result stands for its only output. kAbsent: the node stays.
using Composition = ValueId (*)(GraphBuilder&, const Node&);
struct CompositionRow {
  Op op;
  Composition compose;
};

// The families, each in the file of its name.
std::span<const CompositionRow> function_compositions();
std::span<const CompositionRow> normalization_compositions();
std::span<const CompositionRow> movement_compositions();
std::span<const CompositionRow> batch_compositions();

}  // namespace nnlib::importer

#endif
