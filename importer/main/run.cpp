// SPDX-License-Identifier: MIT
// nnlib-import run: the network in memory, on files of elements. nnlib-import print: its graph.
#include <iostream>

#include "importer/graph/text.hpp"
#include "importer/main/command.hpp"
#include "importer/main/inputs.hpp"
#include "importer/read/npy.hpp"

namespace nnlib::importer {
namespace {

struct RunArguments {
  ModelArguments model;
  std::vector<std::string> inputs;
  std::vector<std::string> outputs;
  std::string layers;
};

std::string_view text_of(const void* data, size_t bytes) {
  return {static_cast<const char*>(data), bytes};
}

// Writes each layer's output into the folder, and what the layers are called.
Runner::Observer layer_writer(const std::filesystem::path& folder) {
  std::filesystem::create_directories(folder);
  return [folder, number = size_t{0}](const Layer& layer) mutable {
    const ai_array& array = layer.lists[AI_CHAIN_OUTPUT][0]->array;
    write_file(folder / (std::to_string(number++) + ".bin"),
               text_of(array.data, ai_array_get_byte_size(array.format, array.size)));
    std::cout << layer.name << "\t" << layer.model_name << "\n";
  };
}

// The results of all runs, one behind the other.
void write_output(const std::string& path, const Value& like, const Bytes& all, size_t runs) {
  Value array{"", like.type, like.shape, {}, std::make_shared<const Bytes>(all)};
  if (runs > 1) {
    array.shape.insert(array.shape.begin(), static_cast<int64_t>(runs));
  }
  const Bytes file = path.ends_with(".npy") ? npy_file(array) : all;
  write_file(path, text_of(file.data(), file.size()));
}

void run(RunArguments& a) {
  settle(a.model);
  Progress progress;
  const Graph graph = prepared_graph(a.model, progress);
  Imported imported = build(graph, a.model.options);
  Runner runner(*imported.network, imported.memory);
  const InputSets sets = read_inputs(graph, a.inputs, "--input");
  if (a.outputs.size() > graph.outputs.size()) {
    throw CLI::ValidationError("--output", "more files than the network has outputs");
  }
  std::vector<Bytes> results(graph.outputs.size());
  for (size_t s = 0; s < sets.size(); ++s) {
    progress.say("computing", s, sets.size());
    const bool shows_layers = s == 0 && !a.layers.empty();
    const std::vector<Bytes> outputs =
        runner.run(sets[s], shows_layers ? layer_writer(a.layers) : Runner::Observer());
    for (size_t i = 0; i < outputs.size(); ++i) {
      results[i].insert(results[i].end(), outputs[i].begin(), outputs[i].end());
    }
  }
  progress.clear();
  for (size_t i = 0; i < a.outputs.size(); ++i) {
    write_output(a.outputs[i], graph.value(graph.outputs[i]), results[i], sets.size());
  }
}

}  // namespace

void add_run(CLI::App& app) {
  CLI::App* command = app.add_subcommand("run", "run the network in memory on files");
  const auto a = std::make_shared<RunArguments>();
  add_model_options(*command, a->model);
  command->add_option("--input", a->inputs, "a file for each input: .npy or raw elements");
  command->add_option("--output", a->outputs, "a file for each output, alike");
  command->add_option("--layers", a->layers,
                      "folder for the output of every layer, of the first run");
  command->callback([a] { run(*a); });
}

void add_print(CLI::App& app) {
  constexpr size_t kLongest = 16;
  CLI::App* command = app.add_subcommand("print", "print the graph as text");
  const auto a = std::make_shared<ModelArguments>();
  add_model_options(*command, *a);
  command->callback([a] {
    settle(*a);
    Progress progress;
    const std::string text = print_graph(prepared_graph(*a, progress), kLongest);
    progress.clear();
    std::cout << text;
  });
}

}  // namespace nnlib::importer
