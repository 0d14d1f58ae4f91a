// SPDX-License-Identifier: MIT
// nnlib-import quantize: a float model in integers or in fixed point.
#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>

#include "importer/graph/refusals.hpp"
#include "importer/main/convert.hpp"
#include "importer/main/inputs.hpp"
#include "importer/pass/ports.hpp"
#include "importer/quantize/table.hpp"
#include "importer/read/npy.hpp"

namespace nnlib::importer {
namespace {

// The words of the command line.
struct QuantizeArguments {
  ModelArguments model;
  SourceArguments source;
  std::vector<std::string> calibrate;
  std::vector<std::string> evaluate;
  std::string labels;
  std::string to = "int8";
  std::string range = "mse";
  double percentile = 99.99;
  std::string weights;
  std::vector<std::string> keep_float;
  std::string equalize = "auto";
  std::string bias_correction = "auto";
};

template <class T>
struct Word {
  const char* word;
  T meaning;
};
constexpr Word<Target> kTargets[] = {
    {"int8", Target::int8}, {"uint8", Target::uint8}, {"q7", Target::q7}, {"q15", Target::q15}};
constexpr Word<RangeRule> kRanges[] = {
    {"minmax", RangeRule::minmax}, {"percentile", RangeRule::percentile}, {"mse", RangeRule::mse}};
constexpr Word<Use> kUses[] = {{"auto", Use::automatic}, {"on", Use::always}, {"off", Use::never}};
constexpr Word<WeightType> kWeightTypes[] = {{"int8-channel", {Type::s8, true}},
                                             {"int8-tensor", {Type::s8, false}},
                                             {"uint8-channel", {Type::u8, true}},
                                             {"uint8-tensor", {Type::u8, false}},
                                             {"q7", {Type::s8, false}}};

template <class T, size_t n>
CLI::IsMember word_of(const Word<T> (&words)[n]) {
  std::vector<std::string> names;
  for (const Word<T>& row : words) {
    names.push_back(row.word);
  }
  return CLI::IsMember(names);
}

template <class T, size_t n>
T meaning(const Word<T> (&words)[n], const std::string& word) {
  return std::find_if(std::begin(words), std::end(words),
                      [&](const Word<T>& row) { return word == row.word; })
      ->meaning;
}

std::optional<WeightType> weights_of(const QuantizeArguments& a, Target target) {
  if (a.weights.empty()) {
    return {};
  }
  const WeightType weights = meaning(kWeightTypes, a.weights);
  const bool fixed = a.weights == "q7";
  const bool fits =
      fixed ? target == Target::q15
            : target == Target::uint8 || (target == Target::int8 && weights.type == Type::s8);
  if (!fits) {
    throw CLI::ValidationError("--weight-type", a.weights + " does not go with --to " + a.to);
  }
  return weights;
}

QuantizeOptions options_of(const QuantizeArguments& a) {
  QuantizeOptions options;
  options.target = meaning(kTargets, a.to);
  options.ranges = {meaning(kRanges, a.range), a.percentile};
  options.weights = weights_of(a, options.target).value_or(usual_weights(options.target));
  options.keep_float = {a.keep_float.begin(), a.keep_float.end()};
  options.equalize = meaning(kUses, a.equalize);
  options.correct_bias = meaning(kUses, a.bias_correction);
  return options;
}

// Of a .npy file, or numbers as text.
std::vector<int64_t> labels_of(const std::string& path) {
  if (path.ends_with(".npy")) {
    return to_integers(read_npy(read_file(path)));
  }
  std::ifstream file(path);
  return {std::istream_iterator<int64_t>(file), {}};
}

void print_right(const QuantizeArguments& a, const Graph& graph, const Graph& quantized,
                 const std::vector<Sample>& samples) {
  const std::vector<int64_t> labels = labels_of(a.labels);
  std::cout << "right: " << right_answers(graph, samples, labels) << " of " << labels.size()
            << " in float, " << right_answers(quantized, samples, labels) << " in " << a.to << "\n";
}

void quantize_model(QuantizeArguments& a) {
  settle(a.model);
  const QuantizeOptions how = options_of(a);
  const ImportOptions& options = a.model.options;
  Progress progress;
  progress.say("reading " + a.model.path);
  Graph graph = simplify(read_model(read_file(a.model.path), options), options);
  const std::vector<Sample> samples = read_inputs(graph, a.calibrate, "--calibrate");
  Quantized quantized = quantize(graph, samples, how, [&](size_t done, size_t all) {
    progress.say("calibrating", done, all);
  });
  progress.clear();
  std::cout << noise_table(quantized, a.to) << std::flush;
  if (!a.labels.empty()) {
    progress.say("counting right answers");
    const std::vector<Sample> questions =
        a.evaluate.empty() ? samples : read_inputs(graph, a.evaluate, "--evaluate");
    progress.clear();
    print_right(a, graph, quantized.graph, questions);
  }
  const Imported before = build(finish(std::move(graph)), options);
  if (options.quantized_ports) {
    add_quantized_ports(quantized.graph);
  }
  const Imported after = build(finish(std::move(quantized.graph)), options);
  std::cout << size_table(make_report(*before.network, before.memory, "before"),
                          make_report(*after.network, after.memory, "after"), a.to);
  write_network(after, a.model, a.source, progress);
}

}  // namespace

void add_quantize(CLI::App& app) {
  CLI::App* command =
      app.add_subcommand("quantize", "write C source of a float model in integers or fixed point");
  const auto a = std::make_shared<QuantizeArguments>();
  add_model_options(*command, a->model);
  add_source_options(*command, a->source);
  command
      ->add_option("--calibrate", a->calibrate,
                   "data.npy: samples along the first dimension; a file for each input")
      ->required()
      ->check(CLI::ExistingFile);
  command->add_option("--to", a->to, "numbers to compute with")->check(word_of(kTargets));
  command
      ->add_option("--range", a->range,
                   "of activations: all, all but a part, or that of least squared error")
      ->check(word_of(kRanges));
  command->add_option("--percentile", a->percentile, "of the numbers that the range has to reach")
      ->check(CLI::Range(50.0, 100.0));
  command
      ->add_option("--weight-type", a->weights,
                   "with --to int8 and uint8: a scale for each output channel or for all; with "
                   "--to q15: dense layers on weights of 8 bits")
      ->check(word_of(kWeightTypes));
  command->add_option("--keep-float", a->keep_float, "layers that stay float, by their names");
  command->add_option("--equalize", a->equalize, "channels between layers")->check(word_of(kUses));
  command->add_option("--bias-correction", a->bias_correction, "of the mean errors of weights")
      ->check(word_of(kUses));
  command->add_option("--labels", a->labels, "right answers: .npy or numbers as text")
      ->check(CLI::ExistingFile);
  command->add_option("--evaluate", a->evaluate, "data.npy that the labels belong to, if another")
      ->check(CLI::ExistingFile);
  command->callback([a] { quantize_model(*a); });
}

}  // namespace nnlib::importer
