// SPDX-License-Identifier: MIT
// nnlib-import run: the network in memory, on files of elements. nnlib-import print: its graph.
#include <iostream>

#include "importer/graph/text.hpp"
#include "importer/main/command.hpp"

namespace nnlib::importer {
namespace {

struct Arguments {
  ModelArguments model;
  std::vector<std::string> inputs;
  std::vector<std::string> outputs;
  std::string layers;
};

std::string_view text_of(const void* data, size_t bytes) {
  return {static_cast<const char*>(data), bytes};
}

void run(Arguments& a) {
  settle(a.model);
  Progress progress;
  Imported imported = import_model(a.model, progress);
  progress.clear();
  Runner runner(*imported.network, imported.memory);
  std::vector<Bytes> inputs;
  for (const std::string& path : a.inputs) {
    inputs.push_back(read_file(path));
  }
  size_t number = 0;
  Runner::Observer observer;
  if (!a.layers.empty()) {
    std::filesystem::create_directories(a.layers);
    observer = [&](const Layer& layer) {
      const ai_array& array = layer.lists[AI_CHAIN_OUTPUT][0]->array;
      write_file(std::filesystem::path(a.layers) / (std::to_string(number++) + ".bin"),
                 text_of(array.data, ai_array_get_byte_size(array.format, array.size)));
      std::cout << layer.name << "\t" << layer.model_name << "\n";
    };
  }
  const std::vector<Bytes> outputs = runner.run(inputs, observer);
  for (size_t i = 0; i < outputs.size() && i < a.outputs.size(); ++i) {
    write_file(a.outputs[i], text_of(outputs[i].data(), outputs[i].size()));
  }
}

}  // namespace

void add_run(CLI::App& app) {
  CLI::App* command = app.add_subcommand("run", "run the network in memory on raw files");
  const auto a = std::make_shared<Arguments>();
  add_model_options(*command, a->model);
  command->add_option("--input", a->inputs, "raw elements, a file for each input");
  command->add_option("--output", a->outputs, "raw elements, a file for each output");
  command->add_option("--layers", a->layers, "folder for the output of every layer");
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
