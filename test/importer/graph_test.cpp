// SPDX-License-Identifier: MIT
// Graph and its text form.
#include <gtest/gtest.h>

#include "importer/graph/refusals.hpp"
#include "importer/graph/text.hpp"

namespace nnlib::importer {
namespace {

TEST(GraphText, ReadsBackWhatItPrints) {
  const std::string text =
      "in x: s8[1,4] q(0.5,-3)\n"
      "in f: s16[2] fix(-3)\n"
      "const w: s8[2,4] q([0.1,0.25],[0,0],axis=0) = 1 2 3 4 -1 -2 -3 -4\n"
      "const \"b:0\": f32[2] = 0.1 -1e-30\n"
      "y: s8[1,2] q(0.25,4) = dense(x, w, _) @\"fc \\\"1\\\"\" (FULLY_CONNECTED)\n"
      "z: f32[1,2], u: f32[] = softmax(y, \"b:0\") {axis=1, beta=1.0, mode=\"a\", "
      "pads=[1,-2], v=[1.5,2.0]}\n"
      "out z\n"
      "out u\n";
  EXPECT_EQ(print_graph(parse_graph(text)), text);
}

TEST(GraphText, NamesTheLineOfAnError) {
  const auto error = [](const char* text) -> std::string {
    try {
      parse_graph(text);
    } catch (const std::runtime_error& e) {
      return e.what();
    }
    return "";
  };
  EXPECT_EQ(error("in x: s8[1]\n\ny: s8[1] = relu(z)\n"), "line 3: 'z' is not declared above");
  EXPECT_EQ(error("in x: s9[1]"), "line 1: unknown type 's9'");
  EXPECT_EQ(error("in x: s8[1]\nin x: s8[1]"), "line 2: 'x' is declared twice");
  EXPECT_EQ(error("in x: s8[1]\ny: s8[1] = swim(x)"), "line 2: unknown operator 'swim'");
  EXPECT_EQ(error("const x: s8[2] = 1"), "line 1: a number expected, not ''");
}

TEST(Graph, DeadNodesAndValuesGo) {
  Graph g = parse_graph(R"(
    in x: f32[2]
    in unused: f32[3]
    const k: f32[1] = 1
    a: f32[2] = relu(x)
    dead: f32[2] = add(a, k)
    deader: f32[2] = neg(dead)
    y: f32[2] = abs(a)
    out y
  )");
  g.remove_dead();
  EXPECT_EQ(print_graph(g),
            "in x: f32[2]\nin unused: f32[3]\na: f32[2] = relu(x)\ny: f32[2] = abs(a)\nout y\n");
}

TEST(Graph, SortRunsProducersFirstAndFindsFaults) {
  Graph g = parse_graph("in x: f32[2]\na: f32[2] = relu(x)\nb: f32[2] = abs(a)\nout b\n");
  std::swap(g.nodes[0], g.nodes[1]);
  g.sort();
  EXPECT_EQ(g.nodes[0].op, Op::relu);

  Graph cycle = g;
  cycle.nodes[0].inputs[0] = cycle.nodes[1].outputs[0];
  EXPECT_THROW(cycle.sort(), std::runtime_error);
  Graph twice = g;
  twice.nodes[1].outputs[0] = twice.nodes[0].outputs[0];
  EXPECT_THROW(twice.sort(), std::runtime_error);
  Graph missing = g;
  missing.inputs.clear();
  EXPECT_THROW(missing.sort(), std::runtime_error);
  Graph beyond = g;
  beyond.nodes[0].inputs[0] = 99;
  EXPECT_THROW(beyond.sort(), std::runtime_error);
}

TEST(Graph, NamesBecomeUniqueAndShapesAreCountedSafely) {
  Graph g;
  for (const char* name : {"x", "x#2", "x", "x", ""}) {
    g.add({name, Type::f32, {}, {}, {}});
  }
  EXPECT_EQ(g.values[2].name, "x#3");
  EXPECT_EQ(g.values[3].name, "x#4");
  EXPECT_EQ(g.values[4].name, "value");
  EXPECT_EQ(elements_of({3, 0, 1 << 20}), 0);
  EXPECT_EQ(elements_of({1 << 20, 1 << 20, 2}), -1);
  EXPECT_EQ(elements_of({2, -1}), -1);
  EXPECT_EQ(elements_of({}), 1);
}

TEST(Refusals, SayWhatAndWhereAllAtOnce) {
  Refusals refusals;
  Node node;
  node.name = "up3";
  node.origin = "Resize";
  refusals.add(node, "mode cubic is not available", "nearest and linear are");
  refusals.add({"", "", "the file is cut short", ""});
  EXPECT_EQ(refusals.message(),
            "Resize 'up3': mode cubic is not available; nearest and linear are\n"
            "the file is cut short");
}

}  // namespace
}  // namespace nnlib::importer
