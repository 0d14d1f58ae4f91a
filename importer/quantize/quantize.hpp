// SPDX-License-Identifier: MIT
// A float network in integers or in fixed point, from the model and some of its data.
#ifndef NNLIB_IMPORTER_QUANTIZE_QUANTIZE_HPP
#define NNLIB_IMPORTER_QUANTIZE_QUANTIZE_HPP

#include "importer/quantize/calibrate.hpp"

namespace nnlib::importer {

// Of a step that may do good or harm. automatic: done where the outputs are better for it.
enum class Use { automatic, always, never };

struct QuantizeOptions : RewriteOptions {
  Use equalize = Use::automatic;  // never for weights with a scale for each channel
  Use correct_bias = Use::automatic;
};

// A layer of the model, by the results of all nodes that it has become.
struct LayerNoise {
  std::string name;    // of the node, or of its result
  std::string origin;  // the model's word for the operator
  size_t nodes = 0, quantized = 0;
  Error noise = {};
};

struct Quantized {
  Graph graph;  // float inputs and outputs
  bool equalized = false;
  bool corrected = false;
  std::vector<LayerNoise> layers;  // the noisiest first
  Error outputs;
};

// Called with the runs that are done, of all.
using RunsDone = std::function<void(size_t, size_t)>;

// `graph` as passes leave it before `complete`. The same graph and samples give the same bits.
// Throws Refused, also for a graph that has quantized values already.
Quantized quantize(const Graph& graph, const std::vector<Sample>& samples,
                   const QuantizeOptions& options, const RunsDone& progress);

}  // namespace nnlib::importer

#endif
