// SPDX-License-Identifier: MIT
// The commands: convert (the default), run.
#include <CLI/CLI.hpp>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "importer/emit/c_source.hpp"
#include "importer/graph/refusals.hpp"
#include "importer/graph/text.hpp"
#include "importer/main/import_model.hpp"

using namespace nnlib::importer;

namespace {

Bytes read_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw std::runtime_error("cannot read " + path);
  }
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

void write_file(const std::filesystem::path& path, std::span<const char> bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!file) {
    throw std::runtime_error("cannot write " + path.string());
  }
}

struct Arguments {
  std::string model;
  std::string folder = ".";
  SourceOptions source;
  ImportOptions options;
  std::string weights = "inside";
  std::string arena = "inside";
  std::string io = "nhwc";
  std::string io_type = "model";
  std::vector<std::string> freeze;
  std::vector<std::string> input_dims;
  std::vector<std::string> inputs;
  std::vector<std::string> outputs;
  std::string layers;
};

void convert(Arguments& a) {
  if (a.source.name.empty()) {
    a.source.name = c_identifier(std::filesystem::path(a.model).stem().string());
  }
  a.source.separate_weights = a.weights == "separate";
  a.source.arena_from_caller = a.arena == "caller";
  const Imported imported = import_model(read_file(a.model), a.options);
  std::filesystem::create_directories(a.folder);
  for (const SourceFile& file : emit_c(*imported.network, imported.memory, a.source)) {
    write_file(std::filesystem::path(a.folder) / file.name, file.text);
  }
  const Plan& plan = imported.memory.plan;
  std::cout << a.source.name << ": arena " << plan.bytes << " bytes, activations at least "
            << plan.bound << ", with scratch " << plan.bound_with_scratch << "\n";
}

// Runs the network in memory on files of raw elements.
void run(const Arguments& a) {
  Imported imported = import_model(read_file(a.model), a.options);
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
      const auto* data = static_cast<const char*>(array.data);
      write_file(std::filesystem::path(a.layers) / (std::to_string(number++) + ".bin"),
                 {data, ai_array_get_byte_size(array.format, array.size)});
      std::cout << layer.name << "\t" << layer.model_name << "\n";
    };
  }
  const std::vector<Bytes> outputs = runner.run(inputs, observer);
  for (size_t i = 0; i < outputs.size() && i < a.outputs.size(); ++i) {
    write_file(a.outputs[i], {reinterpret_cast<const char*>(outputs[i].data()), outputs[i].size()});
  }
}

void add_model(CLI::App& command, Arguments& a) {
  command.add_option("model", a.model, "model.tflite or model.onnx")
      ->required()
      ->check(CLI::ExistingFile);
  command.add_flag("--strip-softmax", a.options.strip_softmax,
                   "leave out a softmax at the end: the largest output stays the largest");
  command.add_option("--io", a.io, "order of maps at inputs and outputs: the model's own or NHWC")
      ->check(CLI::IsMember({"model", "nhwc"}));
  command.add_option("--io-type", a.io_type, "inputs and outputs of quantized networks")
      ->check(CLI::IsMember({"model", "float", "quantized"}));
  command.add_option(
      "--freeze", a.freeze,
      "NAME=numbers or NAME=file (.pb or raw elements): an input that is a constant");
  command.add_option("--input-dim", a.input_dims, "NAME=size of an open dimension");
  command.add_option("--alignment", a.options.alignment, "of tensors in the arena")
      ->check(CLI::IsMember({"4", "8", "16"}));
  command.add_flag("--ignore-cell-clip", a.options.tflite.ignore_cell_clip,
                   "leave out the clipping of an LSTM's cell state");
}

std::map<std::string, std::string, std::less<>> pairs_of(const std::vector<std::string>& given) {
  std::map<std::string, std::string, std::less<>> pairs;
  for (const std::string& pair : given) {
    const size_t equals = pair.rfind('=');
    if (equals == std::string::npos || equals == 0) {
      throw CLI::ValidationError(pair, "NAME=... is expected");
    }
    pairs[pair.substr(0, equals)] = pair.substr(equals + 1);
  }
  return pairs;
}

// What the words of the command line mean for the import.
void settle_options(Arguments& a) {
  a.options.float_ports = a.io_type == "float";
  a.options.quantized_ports = a.io_type == "quantized";
  a.options.channels_last_ports = a.io == "nhwc";
  a.options.read.freeze_text = pairs_of(a.freeze);
  for (const auto& [name, size] : pairs_of(a.input_dims)) {
    int64_t number = 0;
    const auto [end, error] = std::from_chars(size.data(), size.data() + size.size(), number);
    if (error != std::errc() || end != size.data() + size.size() || number < 1) {
      throw CLI::ValidationError(size, "a size above 0 is expected");
    }
    a.options.read.input_dims[name] = number;
  }
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app("From a trained model to C source on nnlib", "nnlib-import");
  Arguments a;
  a.source.name.clear();
  CLI::App* convert_command = app.add_subcommand("convert", "write C source (the default)");
  CLI::App* run_command = app.add_subcommand("run", "run the network in memory on raw files");
  CLI::App* print_command = app.add_subcommand("print", "print the graph as text");
  for (CLI::App* command : {convert_command, run_command, print_command}) {
    add_model(*command, a);
  }
  convert_command->add_option("-o,--output", a.folder, "folder");
  convert_command->add_option("--name", a.source.name, "of files and functions");
  convert_command->add_option("--section", a.source.section, "of the arena");
  convert_command->add_option("--weights", a.weights, "in a file of their own or not")
      ->check(CLI::IsMember({"inside", "separate"}));
  convert_command->add_option("--arena", a.arena, "in the source or given to the init function")
      ->check(CLI::IsMember({"inside", "caller"}));
  run_command->add_option("--input", a.inputs, "raw elements, a file for each input");
  run_command->add_option("--output", a.outputs, "raw elements, a file for each output");
  run_command->add_option("--layers", a.layers, "folder for the output of every layer");
  app.require_subcommand(1);

  std::vector<std::string> arguments(argv + 1, argv + argc);
  const auto is_command = [&](const std::string& word) {
    const auto commands = app.get_subcommands([](const CLI::App*) { return true; });
    return word == "-h" || word == "--help" ||
           std::any_of(commands.begin(), commands.end(),
                       [&](const CLI::App* command) { return command->get_name() == word; });
  };
  if (!arguments.empty() && !is_command(arguments[0])) {
    arguments.insert(arguments.begin(), "convert");
  }
  std::reverse(arguments.begin(), arguments.end());
  try {
    app.parse(std::move(arguments));
    settle_options(a);
    if (convert_command->parsed()) {
      convert(a);
    } else if (run_command->parsed()) {
      run(a);
    } else {
      std::cout << print_graph(prepare(read_model(read_file(a.model), a.options), a.options), 16);
    }
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  } catch (const Refused& refused) {
    std::cerr << refused.what() << "\n";
    return 1;
  } catch (const std::exception& fault) {
    std::cerr << fault.what() << "\n";
    return 2;
  }
  return 0;
}
