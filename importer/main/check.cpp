// SPDX-License-Identifier: MIT
// nnlib-import check: where the network's numbers are lost.
#include <algorithm>
#include <cmath>
#include <iostream>

#include "importer/main/command.hpp"
#include "importer/main/inputs.hpp"
#include "importer/read/elements.hpp"
#include "importer/read/npy.hpp"
#include "importer/report/table.hpp"
#include "importer/run/errors.hpp"
#include "importer/run/float_twin.hpp"

namespace nnlib::importer {
namespace {

struct CheckArguments {
  ModelArguments model;
  std::vector<std::string> inputs;
  std::vector<std::string> expected;
  std::string layers;
};

// What a tensor should be, set by set.
struct Reference {
  ValueId value;
  std::vector<std::vector<double>> sets;
  Error error;
};

std::string number(double x) {
  char text[32];
  std::snprintf(text, sizeof(text), x != 0 && std::abs(x) < 0.01 ? "%.2e" : "%.2f", x);
  return text;
}

std::string decibels(const Error& error) {
  return std::isinf(error.decibels()) && error.noise == 0 ? "exact" : number(error.decibels());
}

std::string quanta(const Error& error, const Value& value) {
  return is_quantized_value(value) ? number(error.largest / quantum_of(value)) : "-";
}

// A tensor's name in the model, without the numbers that passes have added.
std::string model_name(std::string name) {
  for (size_t at = name.rfind('#'); at != std::string::npos && at + 1 < name.size() &&
                                    name.find_first_not_of("0123456789", at + 1) == name.npos;
       at = name.rfind('#')) {
    name.resize(at);
  }
  return name;
}

// The same with nothing that a file's name may not have.
std::string file_name(std::string name) {
  std::replace_if(
      name.begin(), name.end(),
      [](char c) { return !std::isalnum(static_cast<unsigned char>(c)) && c != '.' && c != '-'; },
      '_');
  return name;
}

std::vector<std::vector<double>> reference_sets(const std::string& path, Value like) {
  if (path.ends_with(".npy")) {
    const Type type = read_npy(read_file(path)).type;
    if (type == Type::f32 || type == Type::f64) {
      like.type = Type::f32;
      like.quantization.reset();
    }
  }
  std::vector<std::vector<double>> sets;
  for (const Bytes& set : read_element_sets(path, like)) {
    sets.push_back(real_elements(like, set));
  }
  return sets;
}

// The value that a file is named for; of several the one that is computed from the others.
ValueId value_named(const Graph& graph, const std::string& stem) {
  ValueId found = kAbsent;
  for (const Node& node : graph.nodes) {
    for (const ValueId id : node.outputs) {
      const std::string& name = graph.value(id).name;
      if (name == stem || file_name(model_name(name)) == file_name(stem)) {
        found = id;
      }
    }
  }
  return found;
}

std::vector<Reference> references_of(const Graph& graph, const CheckArguments& a) {
  std::vector<Reference> references;
  if (a.expected.size() > graph.outputs.size()) {
    throw CLI::ValidationError(
        "--expect", "the network has " + std::to_string(graph.outputs.size()) + " outputs");
  }
  for (size_t i = 0; i < a.expected.size(); ++i) {
    const ValueId id = graph.outputs[i];
    references.push_back({id, reference_sets(a.expected[i], graph.value(id)), {}});
  }
  if (a.layers.empty()) {
    return references;
  }
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(a.layers)) {
    files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  for (const std::filesystem::path& file : files) {
    const ValueId id = value_named(graph, file.stem().string());
    if (id == kAbsent) {
      std::cerr << file.string() << ": no tensor of the network has this name\n";
    } else {
      references.push_back({id, reference_sets(file.string(), graph.value(id)), {}});
    }
  }
  return references;
}

void compare(const Graph& graph, const Interpreter::Values& values, size_t set,
             std::vector<Reference>& references) {
  for (Reference& r : references) {
    const std::vector<double> is =
        real_elements(graph.value(r.value), values[static_cast<size_t>(r.value)]);
    for (size_t i = 0; set < r.sets.size() && i < is.size(); ++i) {
      r.error.add(r.sets[set][i], is[i]);
    }
  }
}

const Node* giver(const Graph& graph, ValueId id) {
  const int node = graph.producer(id);
  return node < 0 ? nullptr : &graph.nodes[static_cast<size_t>(node)];
}

std::string reference_table(const Graph& graph, std::vector<Reference> references) {
  std::stable_sort(references.begin(), references.end(), [](const auto& x, const auto& y) {
    return x.error.decibels() < y.error.decibels();
  });
  Table table{{{"operator", Table::text},
               {"tensor", Table::name},
               {"type", Table::text},
               {"signal/noise dB", Table::number},
               {"largest error", Table::number},
               {"quanta", Table::number},
               {"ULP", Table::number}},
              {}};
  for (const Reference& r : references) {
    const Value& v = graph.value(r.value);
    const Node* node = giver(graph, r.value);
    table.rows.push_back({node == nullptr ? "input" : node->origin, model_name(v.name),
                          std::string(type_name(v.type)), decibels(r.error),
                          number(r.error.largest), quanta(r.error, v),
                          v.type == Type::f32 ? number(r.error.largest_ulp) : "-"});
  }
  return "Against the references, worst first:\n" + table_text(table);
}

std::string loss_table(const Graph& graph, std::vector<Loss> losses) {
  std::stable_sort(losses.begin(), losses.end(), [](const Loss& x, const Loss& y) {
    return x.own.decibels() < y.own.decibels();
  });
  Table table{{{"operator", Table::text},
               {"tensor", Table::name},
               {"own dB", Table::number},
               {"quanta", Table::number},
               {"clipped", Table::number},
               {"up to here dB", Table::number},
               {"quanta", Table::number}},
              {}};
  size_t exact = 0;
  for (const Loss& loss : losses) {
    if (loss.own.noise == 0) {
      ++exact;
      continue;
    }
    const Value& v = graph.value(loss.value);
    const double clipped = loss.elements == 0 ? 0
                                              : 100 * static_cast<double>(loss.clipped) /
                                                    static_cast<double>(loss.elements);
    table.rows.push_back({graph.nodes[loss.node].origin, model_name(v.name), decibels(loss.own),
                          quanta(loss.own, v), clipped == 0 ? "-" : number(clipped) + " %",
                          decibels(loss.all), quanta(loss.all, v)});
  }
  return "Against the same model in float, worst first (signal to noise of each tensor; own: of "
         "its operator\nalone, up to here: with all losses before it; clipped: beyond the range of "
         "its scale):\n" +
         table_text(table) + "Exact on its inputs: " + std::to_string(exact) + " more.\n";
}

bool is_quantized_graph(const Graph& graph) {
  return std::any_of(graph.nodes.begin(), graph.nodes.end(), [&](const Node& node) {
    return node.output() != kAbsent && is_quantized_value(graph.value(node.output()));
  });
}

// Computes all sets. The outputs of the whole network have to be those of its nodes.
void check(CheckArguments& a) {
  settle(a.model);
  Progress progress;
  const Graph graph = prepared_graph(a.model, progress);
  Imported imported = build(graph, a.model.options);
  Runner runner(*imported.network, imported.memory);
  const InputSets sets = a.inputs.empty() ? noise(graph) : read_inputs(graph, a.inputs, "--input");
  std::vector<Reference> references = references_of(graph, a);
  std::unique_ptr<LossMeter> meter;
  std::unique_ptr<Interpreter> interpreter;
  if (is_quantized_graph(graph)) {
    meter = std::make_unique<LossMeter>(graph);
  } else {
    interpreter = std::make_unique<Interpreter>(graph);
  }
  for (size_t s = 0; s < sets.size(); ++s) {
    progress.say("computing", s, sets.size());
    const Interpreter::Values values = meter ? meter->add(sets[s]) : interpreter->run(sets[s]);
    const std::vector<Bytes> outputs = runner.run(sets[s]);
    for (size_t i = 0; i < outputs.size(); ++i) {
      const Bytes& alone = values[static_cast<size_t>(graph.outputs[i])];
      if (!alone.empty() && alone != outputs[i]) {
        throw std::logic_error("the network and its layers one by one give different outputs");
      }
    }
    compare(graph, values, s, references);
  }
  progress.clear();
  if (a.inputs.empty()) {
    std::cout << "Inputs are noise: give --input for figures that mean something.\n\n";
  }
  if (!references.empty()) {
    std::cout << reference_table(graph, references) << (meter ? "\n" : "");
  }
  if (meter) {
    std::cout << loss_table(graph, meter->losses());
  } else if (references.empty()) {
    std::cout << "The network runs; give --expect or --layers to compare with.\n";
  }
}

}  // namespace

void add_check(CLI::App& app) {
  CLI::App* command =
      app.add_subcommand("check", "run in memory and show the error of every layer");
  const auto a = std::make_shared<CheckArguments>();
  add_model_options(*command, a->model);
  command->add_option("--input", a->inputs, "a file for each input: .npy or raw elements")
      ->check(CLI::ExistingFile);
  command->add_option("--expect", a->expected, "a file for each output: .npy or raw elements")
      ->check(CLI::ExistingFile);
  command
      ->add_option("--layers", a->layers,
                   "folder of files NAME.npy or NAME.bin: what the model's tensor NAME should be")
      ->check(CLI::ExistingDirectory);
  command->callback([a] { check(*a); });
}

}  // namespace nnlib::importer
