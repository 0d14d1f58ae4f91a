// SPDX-License-Identifier: MIT
// What a network takes and does, layer by layer: one record, written as text, JSON and HTML.
#ifndef NNLIB_IMPORTER_REPORT_REPORT_HPP
#define NNLIB_IMPORTER_REPORT_REPORT_HPP

#include <array>

#include "importer/report/instructions.hpp"
#include "importer/run/memory.hpp"

namespace nnlib::importer {

// The cores that figures are given for, and their columns on the footprint page.
struct ReportCore {
  const char* name;
  const char* title;
  const char* column;
};
inline constexpr std::array<ReportCore, 2> kReportCores = {
    {{"m4f", "Cortex-M4F", "m4f O2"}, {"m55", "Cortex-M55", "m55 O2"}}};
template <class T>
using PerCore = std::array<T, kReportCores.size()>;

// An index of a layer, or one of these.
constexpr int kFromInput = -1;  // kFromInput - i is network input i

struct ReportLayer {
  std::string name;        // of the C record
  std::string origin;      // the operator in the model
  std::string model_name;  // the operator's name there
  std::string function;
  Dims dims;  // of the output
  std::string type;
  uint64_t macs = 0;
  uint64_t weight_bytes = 0;               // constants it reads, tables included
  uint32_t live_bytes = 0;                 // activations in memory while it runs
  uint32_t scratch_bytes = 0;              // besides them, in the arena
  uint32_t heap_bytes = 0;                 // taken and given back by each call
  PerCore<std::optional<uint32_t>> flash;  // of its function, which layers may share
  PerCore<std::optional<Estimate>> instructions;
  std::vector<int> reads;         // layers and inputs whose results it reads
  std::optional<uint64_t> ticks;  // measured
};

// A layer function and what it takes in flash.
struct ReportFunction {
  std::string name;
  size_t layers = 0;
  PerCore<std::optional<uint32_t>> flash;
};

// A piece of the arena.
struct ReportBuffer {
  std::string name;
  uint32_t offset, bytes;
  int first, last;  // layers; -1: before the first one
  bool scratch;
};

struct ReportPort {
  std::string name;
  std::vector<int64_t> shape;  // in the model
  std::string type;
  std::optional<float> scale;  // of integers
  int zero_point = 0;
  std::vector<int> reads;  // outputs: the layers that write it
};

struct Report {
  std::string name;
  std::vector<ReportLayer> layers;
  std::vector<ReportFunction> functions;
  std::vector<ReportBuffer> buffers;
  std::vector<ReportPort> inputs, outputs;

  uint64_t macs = 0;
  uint64_t constant_bytes = 0;  // each once
  uint64_t scale_bytes = 0;     // scales and zero points
  uint32_t arena_bytes = 0;
  uint32_t bound = 0;               // activations that live at once
  uint32_t bound_with_scratch = 0;  // and the scratch beside them
  uint32_t heap_bytes = 0;          // most of a call
  PerCore<double> instructions{};
  size_t without_estimate = 0;     // layers that instructions leave out
  PerCore<uint32_t> code_bytes{};  // runtime core and functions; shared parts count repeatedly
  std::string tick_unit;           // of the measured times; empty: none
  uint64_t ticks = 0;
};

Report make_report(const Network& network, const MemoryMap& memory, const std::string& name);

// Adds times from the JSON of ai_profile_print_json. Throws std::runtime_error when it is damaged
// or of another network.
void add_profile(Report& report, const std::string& json);

std::string report_text(const Report& report);
std::string report_json(const Report& report);
// One page without anything loaded from elsewhere.
std::string report_html(const Report& report);

}  // namespace nnlib::importer

#endif
