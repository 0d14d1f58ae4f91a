// SPDX-License-Identifier: MIT
#include "importer/main/command.hpp"

#include <charconv>
#include <fstream>
#include <iterator>

#include "importer/emit/c_source.hpp"

namespace nnlib::importer {
namespace {

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

}  // namespace

void add_model_options(CLI::App& command, ModelArguments& a) {
  command.add_option("model", a.path, "model.tflite or model.onnx")
      ->required()
      ->check(CLI::ExistingFile);
  command.add_flag("--strip-softmax", a.options.strip_softmax,
                   "leave out a softmax at the end: the largest output stays the largest");
  command.add_option("--io", a.io, "order of maps at inputs and outputs: the model's own or NHWC")
      ->check(CLI::IsMember({"model", "nhwc"}));
  command.add_option("--io-type", a.io_type, "inputs and outputs of quantized networks")
      ->check(CLI::IsMember({"model", "float", "quantized"}));
  command
      .add_option("--freeze", a.freeze,
                  "NAME=numbers or NAME=file (.npy, .pb or raw elements): an input that is a "
                  "constant; again for each")
      ->allow_extra_args(false);
  command.add_option("--input-dim", a.input_dims, "NAME=size of an open dimension; again for each")
      ->allow_extra_args(false);
  command.add_option("--alignment", a.options.alignment, "of tensors in the arena")
      ->check(CLI::IsMember({"4", "8", "16"}));
  command.add_flag("--ignore-cell-clip", a.options.tflite.ignore_cell_clip,
                   "leave out the clipping of an LSTM's cell state");
}

void settle(ModelArguments& a) {
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

std::string name_of(const ModelArguments& a) {
  return c_identifier(std::filesystem::path(a.path).stem().string());
}

Graph prepared_graph(const ModelArguments& a, Progress& progress) {
  progress.say("reading " + a.path);
  Graph graph = read_model(read_file(a.path), a.options);
  progress.say("preparing " + a.path);
  return prepare(std::move(graph), a.options);
}

Imported import_model(const ModelArguments& a, Progress& progress) {
  const Graph graph = prepared_graph(a, progress);
  progress.say("building the network");
  return build(graph, a.options);
}

Bytes read_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  Bytes bytes(std::istreambuf_iterator<char>(file), {});
  if (!file) {
    throw std::runtime_error("cannot read " + path);
  }
  return bytes;
}

void write_file(const std::filesystem::path& path, std::string_view bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  file.close();
  if (!file) {
    throw std::runtime_error("cannot write " + path.string());
  }
}

}  // namespace nnlib::importer
