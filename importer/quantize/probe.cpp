// SPDX-License-Identifier: MIT
#include "importer/quantize/probe.hpp"

#include "importer/lower/complete.hpp"
#include "importer/lower/lowering.hpp"

namespace nnlib::importer {

Probe::Probe(Graph graph, std::vector<ValueId> values) {
  for (const ValueId id : values) {
    values_.push_back(graph.value(id));
  }
  graph.outputs = std::move(values);
  complete(graph);
  network_ = lower(graph);
  runner_ = std::make_unique<Runner>(*network_, plan_memory(*network_));
}

std::vector<std::vector<double>> Probe::run(const Sample& sample) {
  std::vector<Bytes> outputs = runner_->run(sample);
  std::vector<std::vector<double>> numbers;
  for (size_t i = 0; i < outputs.size(); ++i) {
    Value value = values_[i];
    value.data = std::make_shared<const Bytes>(std::move(outputs[i]));
    numbers.push_back(to_reals(value));
  }
  return numbers;
}

}  // namespace nnlib::importer
