// SPDX-License-Identifier: MIT
#include "importer/main/import_model.hpp"

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

Imported build(const Graph& prepared, const ImportOptions& options) {
  Imported result;
  result.network = lower(prepared);
  result.memory = plan_memory(*result.network, options.alignment);
  std::string findings;
  for (const std::string& finding : Runner(*result.network, result.memory).findings()) {
    findings += (findings.empty() ? "the network is not sound: " : "\n") + finding;
  }
  if (!findings.empty()) {
    throw Refused(findings);
  }
  return result;
}

Imported import_model(std::span<const uint8_t> file, const ImportOptions& options) {
  return build(prepare(read_model(file, options), options), options);
}

}  // namespace nnlib::importer
