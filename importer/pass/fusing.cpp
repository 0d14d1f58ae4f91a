// SPDX-License-Identifier: MIT
#include "importer/pass/fusing.hpp"

#include <algorithm>

#include "importer/pass/readers.hpp"

namespace nnlib::importer {
namespace {

bool is_convolution(Op op) {
  return op == Op::conv2d || op == Op::depthwise_conv2d || op == Op::conv2d_transpose;
}

}  // namespace

void fuse_activations(Graph& graph, const std::function<bool(const Node&)>& is_function) {
  for (Node& node : graph.nodes) {
    if (!is_convolution(node.op) || node.has("activation") ||
        graph.value(node.output()).type != Type::f32) {
      continue;
    }
    Node* reader = only_reader(graph, node);
    if (reader == nullptr || reader->inputs.size() != 1 || !is_function(*reader)) {
      continue;
    }
    fuse_reader("activation", node, *reader);
  }
  graph.remove_dead();
}

void fuse_biases(Graph& graph) {
  for (Node& node : graph.nodes) {
    Node* reader = only_reader(graph, node);
    if ((!is_convolution(node.op) && node.op != Op::dense) || node.has("activation") ||
        reader == nullptr || reader->op != Op::add) {
      continue;
    }
    const Value& sum = graph.value(reader->output());
    const Value& map = graph.value(node.output());
    const Value& added = graph.value(reader->inputs[reader->inputs[0] == node.output() ? 1 : 0]);
    const Value* bias = graph.find(node.input(2));
    const auto channels = static_cast<size_t>(map.shape.empty() ? 0 : map.shape.back());
    if (map.type != Type::f32 || sum.shape != map.shape || !added.constant() ||
        added.elements() != static_cast<int64_t>(channels) ||
        added.shape.back() != added.elements() ||
        (bias != nullptr && (!bias->constant() || bias->elements() != added.elements()))) {
      continue;
    }
    std::vector<float> both(added.as<float>().begin(), added.as<float>().end());
    for (size_t c = 0; bias != nullptr && c < channels; ++c) {
      both[c] += bias->as<float>()[c];
    }
    const std::string name = added.name;
    node.inputs = {node.input(0), node.input(1),
                   graph.add_constant<float>(name, {static_cast<int64_t>(channels)}, both)};
    take_over(node, *reader);
  }
  graph.remove_dead();
}

void fold_batch_norm(Graph& graph) {
  for (Node& node : graph.nodes) {
    const bool dense = node.op == Op::dense;
    if ((!is_convolution(node.op) && !dense) || node.has("activation")) {
      continue;
    }
    Node* reader = only_reader(graph, node);
    const Value* weights = graph.find(node.input(1));
    const Value* bias = graph.find(node.input(2));
    if (reader == nullptr || reader->op != Op::batch_norm || !weights->constant() ||
        weights->type != Type::f32 || (bias != nullptr && !bias->constant())) {
      continue;
    }
    const Value scale = graph.value(reader->input(1));
    const Value shift = graph.value(reader->input(2));
    const bool last = node.op == Op::depthwise_conv2d;
    const auto channels = static_cast<size_t>(last ? weights->shape.back() : weights->shape[0]);
    if (!scale.constant() || !shift.constant() || scale.as<float>().size() != channels ||
        shift.as<float>().size() != channels) {
      continue;
    }
    std::vector<float> w(weights->as<float>().begin(), weights->as<float>().end());
    const size_t run = last ? 1 : w.size() / channels;
    for (size_t i = 0; i < w.size(); ++i) {
      w[i] *= scale.as<float>()[i / run % channels];
    }
    std::vector<float> b(shift.as<float>().begin(), shift.as<float>().end());
    for (size_t c = 0; bias != nullptr && c < channels; ++c) {
      b[c] += bias->as<float>()[c] * scale.as<float>()[c];
    }
    const std::string name = weights->name;
    const Shape shape = weights->shape;
    const ValueId folded = graph.add_constant<float>(name, shape, w);
    const ValueId shifted =
        graph.add_constant<float>(name + "_bias", {static_cast<int64_t>(channels)}, b);
    node.inputs = {node.input(0), folded, shifted};
    take_over(node, *reader);
  }
  graph.remove_dead();
}

void pool_means(Graph& graph) {
  std::vector<Node> nodes;
  for (Node node : graph.nodes) {
    const auto axes = node.integers("axes");
    if (node.op != Op::reduce_mean || axes.empty()) {
      nodes.push_back(std::move(node));
      continue;
    }
    const Value x = graph.value(node.input(0));
    const Value y = graph.value(node.output());
    int64_t before = 1, reduced = 1, after = 1;
    for (int64_t i = 0; i < x.rank(); ++i) {
      const bool inside = std::find(axes.begin(), axes.end(), i) != axes.end();
      (inside ? reduced : i < axes[0] ? before : after) *= x.shape[static_cast<size_t>(i)];
    }
    const bool neighbours = axes.back() - axes.front() + 1 == static_cast<int64_t>(axes.size());
    if (before != 1 || !neighbours || axes.back() == x.rank() - 1 || reduced > UINT16_MAX) {
      nodes.push_back(std::move(node));
      continue;
    }
    const ValueId map = graph.add({x.name, x.type, {1, reduced, 1, after}, x.quantization, {}});
    const ValueId mean = graph.add({y.name, y.type, {1, 1, 1, after}, y.quantization, {}});
    nodes.push_back({node.name, node.origin, Op::reshape, {node.input(0)}, {map}, {}});
    nodes.push_back({node.name,
                     node.origin,
                     Op::average_pool,
                     {map},
                     {mean},
                     {{"kernel", std::vector<int64_t>{reduced, 1}}}});
    nodes.push_back({node.name, node.origin, Op::reshape, {mean}, {node.output()}, {}});
  }
  graph.nodes = std::move(nodes);
}

}  // namespace nnlib::importer
