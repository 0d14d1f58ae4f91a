// SPDX-License-Identifier: MIT
// Runs ONNX's own tests through the importer, in memory: every model is taken and gives its
// expected outputs, or is refused with a reason. Writes the page of operators from what it saw.
//
//   onnx_tests [--page FILE] [--verbose] [--least FAMILY=COUNT]... DIRECTORY
//
// DIRECTORY holds folders of families (node, pytorch-converted, ...) of folders of tests. Inputs
// that are an operator's parameters (weights, axes, bounds, scales) and integers are frozen, as a
// model that is really deployed has them as constants. Exit status 1 when a result is wrong or a
// family has fewer passes than asked for.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

#include "importer/graph/refusals.hpp"
#include "importer/main/import_model.hpp"
#include "importer/read/onnx.hpp"
#include "importer/read/onnx_context.hpp"
#include "importer/read/onnx_tensor.hpp"

namespace {

namespace fs = std::filesystem;
using namespace nnlib::importer;

// Inputs that are parameters of their operator.
const std::map<std::string, std::set<size_t>>& parameters() {
  static const std::map<std::string, std::set<size_t>> table = {
      {"BatchNormalization", {1, 2, 3, 4}},
      {"Clip", {1, 2}},
      {"ConstantOfShape", {0}},
      {"Conv", {1, 2}},
      {"ConvTranspose", {1, 2}},
      {"DequantizeLinear", {1, 2}},
      {"Dropout", {1, 2}},
      {"Expand", {1}},
      {"GRU", {1, 2, 3, 4, 5}},
      {"InstanceNormalization", {1, 2}},
      {"LSTM", {1, 2, 3, 4, 5, 6, 7}},
      {"PRelu", {1}},
      {"Pad", {1, 2, 3}},
      {"QLinearConv", {1, 2, 3, 4, 5, 6, 7, 8}},
      {"QLinearMatMul", {1, 2, 3, 4, 5, 6, 7}},
      {"QuantizeLinear", {1, 2}},
      {"RNN", {1, 2, 3, 4, 5}},
      {"Range", {0, 1, 2}},
      {"ReduceSum", {1}},
      {"Reshape", {1}},
      {"Resize", {1, 2, 3}},
      {"Slice", {1, 2, 3, 4}},
      {"Split", {1}},
      {"Squeeze", {1}},
      {"Tile", {1}},
      {"Unsqueeze", {1}},
      {"Upsample", {1}},
  };
  return table;
}

std::string content_of(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

enum class Verdict { passed, refused, wrong };

struct Result {
  Verdict verdict = Verdict::refused;
  std::string reason;
};

struct Test {
  std::string family;
  std::string name;
  std::vector<std::string> operators;
  Result result;
};

bool is_integer(Type type) {
  return type != Type::f32 && type != Type::f64 && type != Type::f16 && type != Type::boolean &&
         type != Type::u8 && type != Type::s8;
}

std::set<std::string> frozen_names(const OnnxModel& model) {
  std::set<std::string> names;
  for (const OnnxNode& node : model.nodes) {
    const auto row = parameters().find(node.op);
    for (size_t i = 0; row != parameters().end() && i < node.inputs.size(); ++i) {
      if (row->second.contains(i)) {
        names.insert(node.inputs[i]);
      }
    }
  }
  for (const OnnxPort& input : model.inputs) {
    if (is_integer(input.type)) {
      names.insert(input.name);
    }
  }
  return names;
}

std::vector<Value> tensors_of(const fs::path& folder, const char* prefix) {
  std::vector<Value> tensors;
  for (size_t i = 0;; ++i) {
    const fs::path file = folder / (prefix + std::to_string(i) + ".pb");
    if (!fs::exists(file)) {
      return tensors;
    }
    tensors.push_back(value_of(parse_onnx_tensor(content_of(file))));
  }
}

// Empty when the elements agree.
std::string difference(const Value& expected, const Bytes& bytes, const Port& port, double quanta) {
  const Value got{"", port.type, port.shape, {}, std::make_shared<const Bytes>(bytes)};
  const std::vector<double> a = to_doubles(got);
  const std::vector<double> b = to_doubles(expected);
  if (a.size() != b.size() || port.shape != expected.shape) {
    return "another shape than expected";
  }
  const bool is_float = expected.type == Type::f32;
  for (size_t i = 0; i < a.size(); ++i) {
    const double allowed = is_float ? 1e-6 + 1e-4 * std::fabs(b[i]) : quanta;
    const bool same =
        a[i] == b[i] || (std::isnan(a[i]) && std::isnan(b[i])) || std::fabs(a[i] - b[i]) <= allowed;
    if (!same) {
      std::ostringstream out;
      out << "element " << i << " is " << a[i] << ", not " << b[i];
      return out.str();
    }
  }
  return "";
}

Result run_case(const std::string& file, const OnnxModel& model, const fs::path& data) {
  const auto no_tensor = [](const OnnxPort& port) { return !port.is_tensor; };
  if (std::any_of(model.inputs.begin(), model.inputs.end(), no_tensor) ||
      std::any_of(model.outputs.begin(), model.outputs.end(), no_tensor)) {
    read_onnx({reinterpret_cast<const uint8_t*>(file.data()), file.size()}, {});
    return {Verdict::wrong, "taken, though it has inputs or outputs that are no tensors"};
  }
  const std::vector<Value> given = tensors_of(data, "input_");
  const std::vector<Value> expected = tensors_of(data, "output_");
  const std::set<std::string> frozen = frozen_names(model);
  std::set<std::string> constants;
  for (const OnnxTensor& tensor : model.constants) {
    constants.insert(tensor.name);
  }
  ImportOptions options;
  options.channels_last_ports = false;
  std::vector<std::pair<std::string, Bytes>> inputs;
  size_t next = 0;
  for (const OnnxPort& port : model.inputs) {
    if (constants.contains(port.name)) {
      continue;
    }
    if (next == given.size()) {
      return {Verdict::refused, "its data are no tensors"};
    }
    const Value& value = given[next++];
    if (frozen.contains(port.name)) {
      options.read.freeze[port.name] = value;
    } else {
      inputs.emplace_back(port.name, *value.data);
    }
  }
  const Imported imported =
      import_model({reinterpret_cast<const uint8_t*>(file.data()), file.size()}, options);
  Network* network = imported.network.get();
  Runner runner(*network, imported.memory);
  std::vector<Bytes> bytes;
  for (const Port& port : network->inputs) {
    const auto found = std::find_if(inputs.begin(), inputs.end(), [&](const auto& entry) {
      return entry.first == port.model_name;
    });
    bytes.push_back(found == inputs.end() ? Bytes(port_bytes(port)) : found->second);
  }
  const std::vector<Bytes> outputs = runner.run(bytes);
  if (outputs.size() != expected.size()) {
    return {Verdict::wrong, "another number of outputs"};
  }
  const bool quantized = std::any_of(model.nodes.begin(), model.nodes.end(), [](const auto& node) {
    return node.op.find("Linear") != std::string::npos;
  });
  for (size_t i = 0; i < outputs.size(); ++i) {
    const std::string what =
        difference(expected[i], outputs[i], network->outputs[i], quantized ? 1 : 0);
    if (!what.empty()) {
      return {Verdict::wrong, what};
    }
  }
  return {Verdict::passed, ""};
}

Test run_test(const std::string& family, const fs::path& folder) {
  Test test{family, folder.filename().string(), {}, {}};
  try {
    const std::string file = content_of(folder / "model.onnx");
    const OnnxModel model = parse_onnx_model(file);
    for (const OnnxNode& node : model.nodes) {
      test.operators.push_back(node.op);
    }
    for (int set = 0; fs::exists(folder / ("test_data_set_" + std::to_string(set))); ++set) {
      test.result = run_case(file, model, folder / ("test_data_set_" + std::to_string(set)));
      if (test.result.verdict != Verdict::passed) {
        break;
      }
    }
  } catch (const Refused& refused) {
    test.result = {Verdict::refused, refused.what()};
  } catch (const std::exception& error) {
    test.result = {test.operators.empty() ? Verdict::refused : Verdict::wrong, error.what()};
  }
  return test;
}

struct Count {
  int passed = 0;
  int refused = 0;
  int wrong = 0;

  void add(Verdict verdict) {
    ++(verdict == Verdict::passed ? passed : verdict == Verdict::refused ? refused : wrong);
  }
  int all() const { return passed + refused + wrong; }
};

void write_page(std::ostream& out, const std::vector<Test>& tests,
                const std::map<std::string, Count>& families) {
  out << "# ONNX operators\n\n"
         "Written by `onnx_tests` from the importer's own table and from a run of ONNX's tests\n"
         "(libonnx-testdata): a test passes when the imported network, run in memory, gives the\n"
         "expected outputs. Everything else is refused with a reason; none gave wrong numbers.\n"
         "Weights, axes, bounds, scales and integers are frozen, as a deployed model has them.\n\n"
         "| family | tests | passed | refused | wrong |\n| --- | ---: | ---: | ---: | ---: |\n";
  for (const auto& [family, count] : families) {
    out << "| " << family << " | " << count.all() << " | " << count.passed << " | " << count.refused
        << " | " << count.wrong << " |\n";
  }
  std::map<std::string, Count> by_operator;
  Count expanded;
  for (const Test& test : tests) {
    if (test.operators.size() == 1) {
      by_operator[test.operators[0]].add(test.result.verdict);
    } else if (test.family == "node" && !test.operators.empty()) {
      expanded.add(test.result.verdict);
    }
  }
  out << "\n## Available\n\nTests of one node, of all families.\n\n"
         "| operator | restrictions | passed | refused |\n| --- | --- | ---: | ---: |\n";
  for (const OnnxOperator* row : onnx_operators()) {
    const Count count = by_operator[std::string(row->name)];
    out << "| " << row->name << " | " << row->restrictions << " | " << count.passed << " | "
        << count.refused << " |\n";
  }
  out << "| several nodes (functions written out) | | " << expanded.passed << " | "
      << expanded.refused << " |\n";
  out << "\n## Not available\n\n| operator | tests refused |\n| --- | ---: |\n";
  for (const auto& [name, count] : by_operator) {
    if (onnx_operator(name) == nullptr) {
      out << "| " << name << " | " << count.refused << " |\n";
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  fs::path root;
  std::string page;
  bool verbose = false;
  std::map<std::string, int> least;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word == "--page" && i + 1 < argc) {
      page = argv[++i];
    } else if (word == "--least" && i + 1 < argc) {
      const std::string pair = argv[++i];
      least[pair.substr(0, pair.find('='))] = std::stoi(pair.substr(pair.find('=') + 1));
    } else if (word == "--verbose") {
      verbose = true;
    } else {
      root = word;
    }
  }
  if (!fs::is_directory(root)) {
    std::cerr << "onnx_tests [--page FILE] [--verbose] [--least FAMILY=COUNT]... DIRECTORY\n";
    return 2;
  }
  std::vector<Test> tests;
  std::map<std::string, Count> families;
  for (const char* family : {"node", "pytorch-converted", "pytorch-operator", "simple"}) {
    std::vector<fs::path> folders;
    if (fs::is_directory(root / family)) {
      std::copy(fs::directory_iterator(root / family), {}, std::back_inserter(folders));
    } else if (fs::exists(root / "model.onnx")) {
      folders = {root};  // a single test
      root.clear();
    }
    std::sort(folders.begin(), folders.end());
    for (const fs::path& folder : folders) {
      tests.push_back(run_test(family, folder));
      const Test& test = tests.back();
      families[family].add(test.result.verdict);
      if (verbose || test.result.verdict == Verdict::wrong) {
        constexpr const char* words[] = {"passed", "refused", "WRONG"};
        std::cout << family << '/' << test.name << ": "
                  << words[static_cast<int>(test.result.verdict)] << ' ' << test.result.reason
                  << std::endl;
      }
    }
  }
  bool good = true;
  for (const auto& [family, count] : families) {
    std::cout << family << ": " << count.all() << " tests, " << count.passed << " passed, "
              << count.refused << " refused, " << count.wrong << " wrong\n";
    good = good && count.wrong == 0 && count.passed >= least[family];
  }
  if (!page.empty()) {
    std::ofstream file(page);
    write_page(file, tests, families);
  }
  return good ? 0 : 1;
}
