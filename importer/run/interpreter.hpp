// SPDX-License-Identifier: MIT
// Computes a graph node by node on the runtime's kernels, with the elements of every value.
//
// Nothing shares memory and nothing is fused across nodes, so that intermediate results stay to be
// seen: for calibration, for errors layer by layer. A node gives the bytes that its layers give in
// the whole network.
#ifndef NNLIB_IMPORTER_RUN_INTERPRETER_HPP
#define NNLIB_IMPORTER_RUN_INTERPRETER_HPP

#include "importer/graph/graph.hpp"
#include "importer/run/runner.hpp"

namespace nnlib::importer {

class Interpreter {
 public:
  // The elements of each value, by its id; constants and what was not computed are empty.
  using Values = std::vector<Bytes>;

  // A graph ready to be lowered. Functions of one number may also be on floats where no layer is:
  // the host computes them, lookups on floats included. Throws Refused.
  explicit Interpreter(Graph graph);

  const Graph& graph() const { return graph_; }

  // All values from those of the graph's inputs. Throws std::runtime_error where the number of
  // inputs or their bytes are wrong.
  Values run(const std::vector<Bytes>& inputs);

  // The outputs of one node, from its inputs' elements in `values`.
  std::vector<Bytes> step(size_t node, const Values& values);

  // Values with the inputs' elements only.
  Values begin(const std::vector<Bytes>& inputs) const;

 private:
  struct Step {
    std::vector<ValueId> inputs;  // that are no constants, each once
    std::unique_ptr<Network> network;
    std::unique_ptr<Runner> runner;  // null: computed by the host
  };

  Step make_step(const Node& node) const;

  Graph graph_;
  std::vector<Step> steps_;
};

}  // namespace nnlib::importer

#endif
