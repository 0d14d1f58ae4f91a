// SPDX-License-Identifier: MIT
#include "importer/report/report.hpp"

#include <algorithm>
#include <set>

#include "profile/ai_layer_work.h"

namespace nnlib::importer {
namespace {

constexpr uint32_t kScaleBytes = sizeof(float) + 1;  // a scale and a zero point of 8 bits

std::string type_text(const Tensor& tensor) {
  const ai_array_format format = ai_fmt_get_code(tensor.array.format);
  if (format == AI_ARRAY_FORMAT_FLOAT) {
    return "float";
  }
  const std::string bits = std::to_string(ai_fmt_get_bits(format));
  const int fraction = ai_fmt_get_fbits(format);
  const bool is_signed = (format >> 23 & 1) != 0;
  return fraction == 0 ? (is_signed ? "int" : "uint") + bits
                       : (is_signed ? "Q" : "UQ") + bits + "." + std::to_string(fraction);
}

// Constants that a layer reads: its tensors' and those that its record points to.
uint64_t weight_bytes(const Network& network, const Layer& layer) {
  std::set<const Constant*> constants;
  for (const auto& list : layer.lists) {
    for (const Tensor* tensor : list) {
      if (tensor != nullptr && tensor->storage.constant != nullptr) {
        constants.insert(tensor->storage.constant);
      }
    }
  }
  for (const Parameters& p : network.parameters) {
    if (std::any_of(layer.fields.begin(), layer.fields.end(),
                    [&](const Field& f) { return f.text == "&" + p.name; })) {
      constants.insert(p.constant);
    }
  }
  uint64_t bytes = 0;
  for (const Constant* c : constants) {
    bytes += c->bytes.size();
  }
  return bytes;
}

// Bytes of the arena that activations cover at a step; those in place count once.
uint32_t live_at(const std::vector<ReportBuffer>& buffers, int step, bool scratch) {
  std::vector<std::pair<uint32_t, uint32_t>> spans;
  for (const ReportBuffer& b : buffers) {
    if (b.scratch == scratch && b.first <= step && step <= b.last) {
      spans.emplace_back(b.offset, b.offset + b.bytes);
    }
  }
  std::sort(spans.begin(), spans.end());
  uint32_t bytes = 0, end = 0;
  for (const auto& [from, to] : spans) {
    bytes += to - std::min(to, std::max(from, end));
    end = std::max(end, to);
  }
  return bytes;
}

std::vector<ReportBuffer> buffers_of(const Network& network, const MemoryMap& memory) {
  std::vector<ReportBuffer> buffers;
  for (const Buffer& b : network.buffers) {
    if (b.whole != nullptr) {
      continue;  // drawn with what it is a part of
    }
    const int first = std::max(b.first, -1);
    buffers.push_back({b.name.substr(0, b.name.rfind("_memory")), memory.offsets.at(&b), b.bytes,
                       first, std::max(b.last, first), b.is_scratch});
  }
  return buffers;
}

// Who wrote a buffer so far.
using Writers = std::map<const Buffer*, std::vector<int>>;

// A slice that stays in place was written with what it is a part of.
void add_writers(std::vector<int>& reads, const Writers& writers, const Tensor* tensor) {
  const Buffer* buffer = tensor != nullptr ? tensor->storage.buffer : nullptr;
  auto found = writers.find(buffer);
  for (; found == writers.end() && buffer != nullptr; buffer = buffer->whole) {
    found = writers.find(buffer);
  }
  for (const int writer : found == writers.end() ? std::vector<int>{} : found->second) {
    if (std::find(reads.begin(), reads.end(), writer) == reads.end()) {
      reads.push_back(writer);
    }
  }
}

ReportPort port_of(const Port& port) {
  ReportPort out;
  out.name = port.model_name;
  out.shape = port.shape;
  out.type = type_text(*port.tensor);
  if (port.tensor->quantization != nullptr) {
    out.scale = port.tensor->quantization->scales[0];
    out.zero_point = static_cast<int>(ai_tensor_zeropoint(&port.tensor->record, 0));
  }
  return out;
}

ReportLayer layer_of(const Network& network, const Layer& layer) {
  ReportLayer out;
  const Tensor& output = *layer.lists[AI_CHAIN_OUTPUT].at(0);
  out.name = layer.name;
  out.origin = layer.origin;
  out.model_name = layer.model_name;
  out.function = layer.forward.name;
  out.dims = output.dims;
  out.type = type_text(output);
  out.macs = ai_layer_multiply_accumulates(&layer.record());
  out.weight_bytes = weight_bytes(network, layer);
  out.heap_bytes = layer.heap_bytes;
  const LayerWork work = work_of(layer);
  for (size_t core = 0; core < kReportCores.size(); ++core) {
    out.flash[core] = footprint_page().flash(kReportCores[core].name, out.function);
    out.instructions[core] = estimate(footprint_page(), work, kReportCores[core].column);
  }
  return out;
}

void add_functions(Report& report) {
  for (const ReportLayer& layer : report.layers) {
    const auto known = std::find_if(report.functions.begin(), report.functions.end(),
                                    [&](const auto& f) { return f.name == layer.function; });
    if (known != report.functions.end()) {
      ++known->layers;
      continue;
    }
    report.functions.push_back({layer.function, 1, layer.flash});
  }
  for (size_t core = 0; core < kReportCores.size(); ++core) {
    report.code_bytes[core] =
        footprint_page().flash(kReportCores[core].name, "runtime core").value_or(0);
    for (const ReportFunction& f : report.functions) {
      report.code_bytes[core] += f.flash[core].value_or(0);
    }
  }
}

void add_totals(Report& report) {
  for (const ReportLayer& layer : report.layers) {
    report.macs += layer.macs;
    report.heap_bytes = std::max(report.heap_bytes, layer.heap_bytes);
    report.without_estimate += !layer.instructions[0];
    for (size_t core = 0; core < kReportCores.size(); ++core) {
      report.instructions[core] +=
          layer.instructions[core] ? layer.instructions[core]->instructions : 0;
    }
  }
}

}  // namespace

Report make_report(const Network& network, const MemoryMap& memory, const std::string& name) {
  Report report;
  report.name = name;
  report.buffers = buffers_of(network, memory);
  Writers writers;
  for (size_t i = 0; i < network.inputs.size(); ++i) {
    writers[network.inputs[i].tensor->storage.buffer] = {kFromInput - static_cast<int>(i)};
    report.inputs.push_back(port_of(network.inputs[i]));
  }
  int index = 0;
  for (const Layer& layer : network.layers) {
    ReportLayer& out = report.layers.emplace_back(layer_of(network, layer));
    out.live_bytes = live_at(report.buffers, index, false);
    out.scratch_bytes = live_at(report.buffers, index, true);
    for (const Tensor* tensor : layer.lists[AI_CHAIN_INPUT]) {
      add_writers(out.reads, writers, tensor);
    }
    for (const Tensor* tensor : layer.lists[AI_CHAIN_OUTPUT]) {
      for (const Buffer* b = tensor->storage.buffer; b != nullptr; b = b->whole) {
        writers[b].push_back(index);
      }
    }
    ++index;
  }
  for (const Port& port : network.outputs) {
    add_writers(report.outputs.emplace_back(port_of(port)).reads, writers, port.tensor);
  }
  for (const Constant& c : network.constants) {
    report.constant_bytes += c.bytes.size();
  }
  for (const Intq& q : network.quantizations) {
    report.scale_bytes += q.scales.size() * kScaleBytes;
  }
  report.arena_bytes = memory.plan.bytes;
  report.bound = memory.plan.bound;
  report.bound_with_scratch = memory.plan.bound_with_scratch;
  add_functions(report);
  add_totals(report);
  return report;
}

}  // namespace nnlib::importer
