// SPDX-License-Identifier: MIT
// Chosen values of a graph while its network runs in memory.
#ifndef NNLIB_IMPORTER_QUANTIZE_PROBE_HPP
#define NNLIB_IMPORTER_QUANTIZE_PROBE_HPP

#include "importer/graph/graph.hpp"
#include "importer/run/runner.hpp"

namespace nnlib::importer {

// The bytes of every input of a network.
using Sample = std::vector<Bytes>;

class Probe {
 public:
  // The graph as passes leave it before `complete`; the values become its outputs. Throws Refused.
  Probe(Graph graph, std::vector<ValueId> values);

  // The numbers of each value, in the order given.
  std::vector<std::vector<double>> run(const Sample& sample);

 private:
  std::vector<Value> values_;
  std::unique_ptr<Network> network_;
  std::unique_ptr<Runner> runner_;
};

}  // namespace nnlib::importer

#endif
