// SPDX-License-Identifier: MIT
// Graphs node by node, and quantized ones in float.
#include <gtest/gtest.h>

#include <cmath>

#include "importer/graph/refusals.hpp"
#include "importer/graph/text.hpp"
#include "importer/main/import_model.hpp"
#include "importer/run/float_twin.hpp"
#include "importer/run/interpreter.hpp"

namespace nnlib::importer {
namespace {

const char* const kQuantized = R"(
  in x: s8[1,2,2,2] q(0.5,3)
  const w: s8[3,1,2,2] q([0.25,0.5,0.125],[0,0,0],axis=0) = 1 -2 3 4 -5 6 7 -8 9 1 -1 2
  const b: s32[3] = 100 -20 7
  const d: s8[2,1,3] q([0.5,0.25,1],[0,0,0],axis=2) = 1 2 3 -4 5 6
  c: s8[1,2,1,3] q(0.75,-128) = conv2d(x, w, b) {strides=[1,1]}
  p: s8[1,1,1,3] q(2,5) = depthwise_conv2d(c, d, _)
  s: s8[1,1,1,3] q(0.00390625,-128) = sigmoid(p)
  a: s8[1,1,1,3] q(1,10) = add(p, s)
  h: s8[1,1,1,3] q(1,0) = hard_swish(a)
  out h
  out s
)";

ValueId id_of(const Graph& g, std::string_view name) {
  for (size_t i = 0; i < g.values.size(); ++i) {
    if (g.values[i].name == name) {
      return static_cast<ValueId>(i);
    }
  }
  return kAbsent;
}

TEST(Interpreter, GivesTheBytesOfTheNetworkAndAllThatIsBetween) {
  const Graph g = prepare(parse_graph(kQuantized), {});
  Imported whole = build(g, {});
  const Bytes x = {10, 0, 3, 0xFA, 100, 0x90, 7, 50};
  Interpreter interpreter(g);
  const Interpreter::Values values = interpreter.run({x});
  const auto outputs = Runner(*whole.network, whole.memory).run({x});
  EXPECT_EQ(values[static_cast<size_t>(g.outputs[0])], outputs[0]);
  EXPECT_EQ(values[static_cast<size_t>(g.outputs[1])], outputs[1]);
  // 0.25 (3.5 + 2*1.5 - 4*4.5) + 12.5 = 9.625
  const auto c = real_elements(g.value(id_of(g, "c")), values[static_cast<size_t>(id_of(g, "c"))]);
  EXPECT_EQ(c[0], 9.75);
  EXPECT_THROW(interpreter.run({}), std::runtime_error);
  EXPECT_THROW(interpreter.run({Bytes(7)}), std::runtime_error);
}

TEST(FloatTwin, ComputesWhatTheScalesSay) {
  const Graph g = prepare(parse_graph(kQuantized), {});
  Interpreter twin(float_twin(g));
  const std::vector<float> x = {3.5F, -1.5F, 0, -4.5F, 48.5F, -57.5F, 2, 23.5F};
  const auto values = twin.run({*make_bytes<float>(x)});
  const auto floats = [&](const char* name) {
    const auto id = static_cast<size_t>(id_of(g, name));
    return real_elements(twin.graph().values[id], values[id]);
  };
  const auto c = floats("c");
  EXPECT_EQ(c[0], 9.625);
  // 0.5 (-5*3.5 - 6*1.5 + 8*4.5) - 5 = -0.25: the zero point bounds it at 0.
  EXPECT_EQ(c[1], 0);
  const auto p = floats("p"), s = floats("s"), h = floats("h");
  EXPECT_NEAR(p[0], 0.5 * c[0] - 2 * c[3], 1e-4);
  EXPECT_NEAR(s[0], 1 / (1 + std::exp(-p[0])), 1e-6);
  const double a = p[1] + s[1];
  EXPECT_NEAR(h[1], a * std::clamp(a / 6 + 0.5, 0.0, 1.0), 1e-4);
}

TEST(FloatTwin, TablesBecomeTheirFunctionAgain) {
  const Graph g = prepare(parse_graph(R"(
    in x: s8[4] q(0.5,1)
    const two: f32[] = 2.0
    d: f32[4] = dequantize(x)
    c: f32[4] = clip(d) {min=-100.0, max=6.0}
    m: f32[4] = mul(d, c)
    h: f32[4] = div(m, two)
    y: s8[4] q(4,2) = quantize(h)
    out y
  )"),
                          {});
  ASSERT_EQ(g.nodes[0].op, Op::lookup);
  Interpreter twin(float_twin(g));
  const std::vector<float> x = {1.5F, 7.0F, -2.0F, 0.75F};
  const auto values = twin.run({*make_bytes<float>(x)});
  const auto got = real_elements({"", Type::f32, {4}, {}, {}},
                                 values[static_cast<size_t>(twin.graph().outputs[0])]);
  // The last lies between two entries: half way from 0.125 to 0.5.
  EXPECT_EQ(got, (std::vector<double>{1.125, 21, 2, 0.3125}));
}

}  // namespace
}  // namespace nnlib::importer
