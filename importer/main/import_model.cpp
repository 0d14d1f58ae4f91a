// SPDX-License-Identifier: MIT
#include "importer/main/import_model.hpp"

#include <algorithm>

#include "importer/graph/refusals.hpp"
#include "importer/lower/complete.hpp"
#include "importer/lower/lowering.hpp"
#include "importer/pass/compose.hpp"
#include "importer/pass/fusing.hpp"
#include "importer/pass/layout.hpp"
#include "importer/pass/ports.hpp"
#include "importer/pass/quantization.hpp"
#include "importer/read/onnx.hpp"

namespace nnlib::importer {

Graph read_model(std::span<const uint8_t> file, const ImportOptions& options) {
  return is_tflite(file) ? read_tflite(file, options.tflite) : read_onnx(file, options.read);
}

namespace {

Graph run_passes(Graph graph, const ImportOptions& options) {
  graph.remove_dead();
  lower_truth(graph);
  push_transpositions(graph, options.channels_last_ports);
  quantize_canonically(graph);
  if (options.strip_softmax) {
    strip_softmax(graph);
  }
  if (options.quantized_ports) {
    add_quantized_ports(graph);
  }
  if (options.float_ports) {
    add_float_ports(graph);
  }
  fuse_biases(graph);
  fold_batch_norm(graph);
  pool_means(graph);
  return graph;
}

// What passes throw becomes a refusal.
template <class Passes>
Graph refusing(Passes passes) {
  try {
    return passes();
  } catch (const Refused&) {
    throw;
  } catch (const NotAvailable& why) {
    throw Refused(why.reason);
  } catch (const std::runtime_error& error) {
    throw Refused(error.what());
  }
}

}  // namespace

Graph simplify(Graph graph, const ImportOptions& options) {
  return refusing([&] { return run_passes(std::move(graph), options); });
}

Graph finish(Graph simple) {
  return refusing([&] {
    complete(simple);
    return std::move(simple);
  });
}

Graph prepare(Graph graph, const ImportOptions& options) {
  return finish(simplify(std::move(graph), options));
}

namespace {

// With parts of other tensors in place and without: parts save copies, but keep what they are a
// part of. The least memory comes first, then the fewest layers.
std::vector<Imported> lowered_ways(const Graph& prepared, uint32_t alignment) {
  const bool can_share =
      std::any_of(prepared.nodes.begin(), prepared.nodes.end(),
                  [](const Node& node) { return node.op == Op::concat || node.op == Op::slice; });
  std::vector<Imported> ways;
  for (const auto& [concatenations, slices] :
       {std::pair{false, false}, {true, true}, {true, false}, {false, true}}) {
    Imported one;
    one.network = lower(prepared, {concatenations, slices, alignment});
    one.memory = plan_memory(*one.network, alignment);
    ways.push_back(std::move(one));
    if (!can_share) {
      break;
    }
  }
  std::stable_sort(ways.begin(), ways.end(), [](const Imported& a, const Imported& b) {
    return std::pair{a.memory.plan.bytes, a.network->layers.size()} <
           std::pair{b.memory.plan.bytes, b.network->layers.size()};
  });
  return ways;
}

}  // namespace

Imported build(const Graph& prepared, const ImportOptions& options) {
  if (prepared.inputs.empty()) {
    throw Refused("the network has no inputs: its outputs are constants");
  }
  std::string findings;
  for (Imported& way : lowered_ways(prepared, options.alignment)) {
    findings.clear();
    for (const std::string& finding : Runner(*way.network, way.memory).findings()) {
      findings += (findings.empty() ? "the network is not sound: " : "\n") + finding;
    }
    if (findings.empty()) {
      return std::move(way);
    }
  }
  throw Refused(findings);
}

Imported import_model(std::span<const uint8_t> file, const ImportOptions& options) {
  return build(prepare(read_model(file, options), options), options);
}

}  // namespace nnlib::importer
