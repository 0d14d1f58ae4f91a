// SPDX-License-Identifier: MIT
// Passes between the readers and the lowering: graphs before and after, as text.
#include <gtest/gtest.h>

#include "importer/graph/text.hpp"
#include "importer/pass/compose.hpp"
#include "importer/pass/fusing.hpp"
#include "importer/pass/graph_builder.hpp"
#include "importer/pass/layout.hpp"
#include "importer/pass/quantization.hpp"

namespace nnlib::importer {
namespace {

using Pass = void (*)(Graph&);

// The operators that are left, in order, with the attributes that the case names.
std::string operators_after(const char* text, Pass pass) {
  Graph g = parse_graph(text);
  pass(g);
  std::string out;
  for (const Node& node : g.nodes) {
    out += (out.empty() ? "" : " ") + std::string(op_name(node.op));
  }
  return out;
}

std::string text_after(const char* text, Pass pass) {
  Graph g = parse_graph(text);
  pass(g);
  return print_graph(g);
}

void to_nhwc(Graph& g) {
  push_transpositions(g, true);
}
void keep_ports(Graph& g) {
  push_transpositions(g, false);
}

TEST(Layout, TranspositionsCancelThroughFunctionsAndVanishAtPorts) {
  EXPECT_EQ(text_after(R"(
    in x: f32[1,3,4,5]
    a: f32[1,4,5,3] = transpose(x) {perm=[0,2,3,1]}
    p: f32[1,2,5,3] = max_pool(a) {kernel=[3,1]}
    b: f32[1,3,2,5] = transpose(p) {perm=[0,3,1,2]}
    r: f32[1,3,2,5] = relu(b)
    c: f32[1,2,5,3] = transpose(r) {perm=[0,2,3,1]}
    q: f32[1,2,4,3] = average_pool(c) {kernel=[1,2]}
    y: f32[1,3,2,4] = transpose(q) {perm=[0,3,1,2]}
    out y
  )",
                       to_nhwc),
            "in x: f32[1,4,5,3]\np: f32[1,2,5,3] = max_pool(x) {kernel=[3,1]}\n"
            "\"r#2\": f32[1,2,5,3] = relu(p)\n"
            "y: f32[1,2,4,3] = average_pool(\"r#2\") {kernel=[1,2]}\nout y\n");
}

TEST(Layout, OperandsOfAResidualMeetBelowTheirTranspositions) {
  const char* text = R"(
    in x: f32[1,3,4,5]
    const k: f32[3,1,1] = 1 2 3
    a: f32[1,4,5,3] = transpose(x) {perm=[0,2,3,1]}
    p: f32[1,4,5,3] = max_pool(a) {kernel=[3,1], pads=[1,0,1,0]}
    b: f32[1,3,4,5] = transpose(p) {perm=[0,3,1,2]}
    s: f32[1,3,4,5] = add(b, x)
    t: f32[1,3,4,5] = mul(s, k)
    y: f32[1,3] = reduce_sum(t) {axes=[2,3]}
    out y
  )";
  EXPECT_EQ(operators_after(text, to_nhwc), "max_pool add mul reduce_sum reshape");
  EXPECT_EQ(operators_after(text, keep_ports), "transpose max_pool add mul reduce_sum reshape");
}

TEST(Layout, FlattenedMapReordersTheWeights) {
  Graph g = parse_graph(R"(
    in x: f32[1,1,2,2]
    const w: f32[1,4] = 1 2 3 4
    p: f32[1,1,2,2] = max_pool(x) {kernel=[1,1]}
    b: f32[1,2,1,2] = transpose(p) {perm=[0,3,1,2]}
    f: f32[1,4] = reshape(b)
    y: f32[1,1] = dense(f, w, _)
    out y
  )");
  to_nhwc(g);
  ASSERT_EQ(g.nodes.back().op, Op::dense);
  EXPECT_EQ(to_integers(g.value(g.nodes.back().input(1))), (Shape{1, 3, 2, 4}));
  EXPECT_EQ(g.nodes.size(), 3u);
}

TEST(Layout, LastAxisStaysLastForSoftmax) {
  EXPECT_EQ(operators_after(R"(
    in x: f32[2,3,4]
    t: f32[2,4,3] = transpose(x) {perm=[0,2,1]}
    y: f32[2,4,3] = softmax(t) {axis=2}
    out y
  )",
                            keep_ports),
            "transpose softmax");
}

TEST(Quantization, OperatorsBetweenDequantizeAndQuantizeBecomeIntegers) {
  EXPECT_EQ(text_after(R"(
    in x: u8[1,2] q(0.5,3)
    const w: s8[2,2] q([0.5,0.25],[0,0],axis=0) = 1 2 3 -4
    const b: f32[2] = 1 -1
    dx: f32[1,2] = dequantize(x)
    dw: f32[2,2] = dequantize(w)
    d: f32[1,2] = dense(dx, dw, b)
    r: f32[1,2] = relu(d)
    y: u8[1,2] q(2.0,0) = quantize(r)
    out y
  )",
                       quantize_canonically),
            "in x: u8[1,2] q(0.5,3)\n"
            "const w: s8[2,2] q([0.5,0.25],[0,0],axis=0) = 1 2 3 -4\n"
            "const \"b#2\": s32[2] = 4 -8\n"
            "\"y#2#2\": u8[1,2] q(2,0) = dense(x, w, \"b#2\")\n"
            "y: u8[1,2] q(2,0) = relu(\"y#2#2\")\nout y\n");
}

TEST(Quantization, FunctionOfOneValueIsAnExactTable) {
  // x * clip(x + 3, 0, 6) / 6 in pieces; 2.5 quanta round to even.
  Graph g = parse_graph(R"(
    in x: s8[4] q(0.5,-1)
    const three: f32[] = 3.0
    const six: f32[] = 6.0
    d: f32[4] = dequantize(x)
    a: f32[4] = add(d, three)
    c: f32[4] = clip(a) {min=0.0, max=6.0}
    m: f32[4] = mul(d, c)
    h: f32[4] = div(m, six)
    y: s8[4] q(0.1,2) = quantize(h)
    out y
  )");
  quantize_canonically(g);
  ASSERT_EQ(g.nodes.size(), 1u);
  ASSERT_EQ(g.nodes[0].op, Op::lookup);
  const std::vector<int64_t> table = to_integers(g.value(g.nodes[0].input(1)));
  const auto at = [&](int byte) { return table[static_cast<size_t>(byte + 128)]; };
  EXPECT_EQ(at(-1), 2);     // 0
  EXPECT_EQ(at(-4), -2);    // -1.5 * 1.5 / 6 = -0.375: -3.75 quanta
  EXPECT_EQ(at(1), 2 + 7);  // 1 * 4 / 6: 6.67 quanta
  EXPECT_EQ(at(-10), 2);    // below -3
  EXPECT_EQ(at(100), 127);
}

TEST(Quantization, MovesAndDifferentScales) {
  EXPECT_EQ(operators_after(R"(
    in x: s8[2,3] q(0.5,0)
    in z: s8[3,2] q(0.25,1)
    dx: f32[2,3] = dequantize(x)
    dz: f32[3,2] = dequantize(z)
    t: f32[3,2] = transpose(dx) {perm=[1,0]}
    c: f32[3,4] = concat(t, dz) {axis=1}
    y: s8[3,4] q(0.5,0) = quantize(c)
    out y
  )",
                            quantize_canonically),
            "transpose requantize concat");
  // No integer layer multiplies: the conversions stay around it.
  EXPECT_EQ(operators_after(R"(
    in x: s8[2] q(0.5,0)
    in z: s8[2] q(0.25,1)
    dx: f32[2] = dequantize(x)
    dz: f32[2] = dequantize(z)
    m: f32[2] = mul(dx, dz)
    y: s8[2] q(0.5,0) = quantize(m)
    out y
  )",
                            quantize_canonically),
            "dequantize dequantize mul quantize");
}

TEST(Compose, OperatorsWithoutLayer) {
  const auto one = [](const char* line) {
    const std::string text =
        std::string("in x: f32[2,3,4]\nconst i: s64[3] = 2 0 1\n") + line + "\nout y\n";
    return operators_after(text.c_str(), compose);
  };
  EXPECT_EQ(one("y: f32[2,3,4] = softmax(x) {axis=1}"), "transpose softmax transpose");
  EXPECT_EQ(one("y: f32[2,3,4] = hard_swish(x)"), "mul add clip mul");
  EXPECT_EQ(one("y: f32[2,3,4] = gather(x, i) {axis=1}"), "slice slice concat");
  EXPECT_EQ(one("y: f32[2,2,4] = slice(x) {starts=[0,0,0], ends=[2,3,4], steps=[1,2,1]}"),
            "slice reshape slice reshape slice concat");
  EXPECT_EQ(one("y: f32[2,1,4] = reduce_log_sum_exp(x) {axes=[1]}"),
            "reduce_max sub exp reduce_sum log add");
}

TEST(Compose, TruthIsBytesAtPortsAndFloatsWithin) {
  EXPECT_EQ(operators_after(R"(
    in a: bool[3]
    in b: bool[3]
    x: bool[3] = logical_xor(a, b)
    y: bool[3] = logical_not(x)
    out y
  )",
                            lower_truth),
            "dequantize dequantize sub abs sub quantize");
}

TEST(Fusing, ConstantsAddedToEachChannelBecomeBiases) {
  Graph g = parse_graph(R"(
    in x: f32[2,2]
    const w: f32[3,2] = 1 2 3 4 5 6
    const b: f32[3] = 1 2 3
    const k: f32[1,3] = 10 20 30
    d: f32[2,3] = dense(x, w, b)
    y: f32[2,3] = add(k, d)
    out y
  )");
  fuse_biases(g);
  ASSERT_EQ(g.nodes.size(), 1u);
  const auto bias = g.value(g.nodes[0].input(2)).as<float>();
  EXPECT_EQ(std::vector<float>(bias.begin(), bias.end()), (std::vector<float>{11, 22, 33}));
  // A value for each row, no constant, a result that others read.
  const std::string head = "in x: f32[2,2]\nconst w: f32[2,2] = 1 2 3 4\n";
  for (const char* tail :
       {"const k: f32[2,1] = 1 2\nd: f32[2,2] = dense(x, w, _)\ny: f32[2,2] = add(d, k)\nout y\n",
        "const k: f32[2] = 1 2\nd: f32[1,2] = dense(x, w, _)\ny: f32[1,2] = add(d, d)\nout y\n",
        "const k: f32[2] = 1 2\nd: f32[2,2] = dense(x, w, _)\ny: f32[2,2] = add(d, k)\nout y\n"
        "out d\n"}) {
    EXPECT_EQ(operators_after((head + tail).c_str(), fuse_biases), "dense add") << tail;
  }
}

}  // namespace
}  // namespace nnlib::importer
