// SPDX-License-Identifier: MIT
// From the bytes of a model to a network in memory: readers, passes, lowering, memory plan.
#ifndef NNLIB_IMPORTER_MAIN_IMPORT_MODEL_HPP
#define NNLIB_IMPORTER_MAIN_IMPORT_MODEL_HPP

#include "importer/read/options.hpp"
#include "importer/read/tflite.hpp"
#include "importer/run/runner.hpp"

namespace nnlib::importer {

struct ImportOptions {
  TfliteOptions tflite;
  ReadOptions read;
  // Maps at inputs and outputs are [N, H, W, C], whatever the model's order is.
  bool channels_last_ports = true;
  bool strip_softmax = false;    // leave out a softmax at the end
  bool quantized_ports = false;  // quantized inputs and outputs where the model converts there
  bool float_ports = false;      // float inputs and outputs of quantized networks
  uint32_t alignment = 4;        // of what lies in the arena
};

struct Imported {
  std::unique_ptr<Network> network;
  MemoryMap memory;
};

// The graph as its file has it.
Graph read_model(std::span<const uint8_t> file, const ImportOptions& options);
// The same network of fewer operators, values and nodes still those of the model.
Graph simplify(Graph graph, const ImportOptions& options);
// The graph as it is lowered, from the simplified one and from the file's.
Graph finish(Graph simple);
Graph prepare(Graph graph, const ImportOptions& options);
Imported build(const Graph& prepared, const ImportOptions& options);

// All of it. Throws Refused.
Imported import_model(std::span<const uint8_t> file, const ImportOptions& options);

}  // namespace nnlib::importer

#endif
