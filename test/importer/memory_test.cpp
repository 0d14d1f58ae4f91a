// SPDX-License-Identifier: MIT
// Memory that is saved without a change of any byte: pooling in the convolution's layer, inputs of
// concatenations made in place, slices that stay where they are.
#include <gtest/gtest.h>

#include <random>

#include "importer/graph/text.hpp"
#include "importer/lower/complete.hpp"
#include "importer/lower/lowering.hpp"
#include "importer/main/import_model.hpp"

namespace nnlib::importer {
namespace {

struct Ran {
  std::vector<Bytes> outputs;
  uint32_t arena;
  std::vector<std::string> functions;  // of the layers
};

Bytes noise(const Value& v, uint32_t seed) {
  std::mt19937 random(seed);
  Bytes bytes;
  for (int64_t i = 0; i < v.elements(); ++i) {
    const auto number = static_cast<float>(random() % 2001) / 1000.0f - 1.0f;
    const auto* parts = reinterpret_cast<const uint8_t*>(&number);
    v.type == Type::f32 ? bytes.insert(bytes.end(), parts, parts + sizeof(number))
                        : bytes.insert(bytes.end(), type_bytes(v.type), uint8_t(random()));
  }
  return bytes;
}

Ran run(const Graph& g, const Sharing& sharing = {}) {
  const std::unique_ptr<Network> network = lower(g, sharing);
  const MemoryMap memory = plan_memory(*network);
  Runner runner(*network, memory);
  std::vector<Bytes> inputs;
  for (const ValueId id : g.inputs) {
    inputs.push_back(noise(g.value(id), 7 + static_cast<uint32_t>(id)));
  }
  Ran ran{runner.run(inputs), memory.plan.bytes, {}};
  for (const Layer& layer : network->layers) {
    ran.functions.push_back(layer.forward.name);
  }
  return ran;
}

std::string join(const std::vector<std::string>& words) {
  std::string out;
  for (const std::string& word : words) {
    out += (out.empty() ? "" : " ") + word;
  }
  return out;
}

std::string numbers(int count, int most) {
  std::mt19937 random(static_cast<uint32_t>(count));
  std::string out = " =";
  for (int i = 0; i < count; ++i) {
    out += " " + std::to_string(static_cast<int>(random() % (2 * static_cast<uint32_t>(most) + 1)) -
                                most);
  }
  return out + "\n";
}

// --- convolution and pooling
// --------------------------------------------------------------------------

// The functions of the layers after fusing; the bytes are those of before.
std::string fused(const std::string& text) {
  const Graph before = parse_graph(text);
  Graph after = before;
  complete(after);
  const Ran apart = run(before);
  const Ran together = run(after);
  EXPECT_EQ(apart.outputs, together.outputs) << text;
  EXPECT_LE(together.arena, apart.arena) << text;
  EXPECT_NO_THROW(build(after, {})) << text;
  return join(together.functions);
}

std::string float_case(const std::string& tail) {
  return "in x: f32[1,9,8,2]\nconst w: f32[3,3,2,2]" + numbers(36, 4) + "const b: f32[3]" +
         numbers(3, 2) + "c: f32[1,8,8,3] = conv2d(x, w, b) {strides=[1,1], pads=[1,0,0,1]}\n" +
         tail + "out y\n";
}

TEST(FusedPooling, FloatMaximaOfBoundedFunctions) {
  EXPECT_EQ(fused(float_case("r: f32[1,8,8,3] = relu(c)\n"
                             "y: f32[1,4,3,3] = max_pool(r) {kernel=[3,2], strides=[2,3], "
                             "pads=[1,0,0,0]}\n")),
            "forward_conv2d_nl_pool");
  // A relu after the pooling goes before it.
  EXPECT_EQ(fused(float_case("p: f32[1,4,4,3] = max_pool(c) {kernel=[2,2], strides=[2,2]}\n"
                             "y: f32[1,4,4,3] = relu(p)\n")),
            "forward_conv2d_nl_pool");
  // Below -2^31 the maximum of the fused layer is another one.
  EXPECT_EQ(fused(float_case("y: f32[1,4,4,3] = max_pool(c) {kernel=[2,2], strides=[2,2]}\n")),
            "forward_conv2d forward_mp");
  EXPECT_EQ(fused(float_case("r: f32[1,8,8,3] = leaky_relu(c) {alpha=0.1}\n"
                             "y: f32[1,4,4,3] = max_pool(r) {kernel=[2,2], strides=[2,2]}\n")),
            "forward_conv2d forward_mp");
}

TEST(FusedPooling, FloatAveragesThatDivideExactly) {
  EXPECT_EQ(fused(float_case("y: f32[1,4,4,3] = average_pool(c) {kernel=[2,2], strides=[2,2]}\n")),
            "forward_conv2d_nl_pool");
  EXPECT_EQ(fused(float_case("y: f32[1,3,4,3] = average_pool(c) {kernel=[3,2], strides=[2,2]}\n")),
            "forward_conv2d forward_ap");
  EXPECT_EQ(fused(float_case("y: f32[1,5,4,3] = average_pool(c) {kernel=[2,2], strides=[2,2], "
                             "pads=[1,0,1,0]}\n")),
            "forward_conv2d forward_ap");
}

TEST(FusedPooling, NotWhereTheMapIsNeededOrNoMemorySaved) {
  EXPECT_EQ(fused(float_case("r: f32[1,8,8,3] = relu(c)\nout r\n"
                             "y: f32[1,4,4,3] = max_pool(r) {kernel=[2,2], strides=[2,2]}\n")),
            "forward_conv2d forward_mp");
  EXPECT_EQ(fused(float_case("r: f32[1,8,8,3] = relu(c)\n"
                             "y: f32[1,1,1,3] = max_pool(r) {kernel=[8,8]}\n")),
            "forward_conv2d forward_mp");
}

std::string integer_case(const std::string& type, const std::string& q, const std::string& tail) {
  const std::string maps = type + "[1,";
  return "in x: " + maps +
         "9,8,4] q(0.5,3)\nconst w: s8[3,3,4] q([0.25,0.5,0.125,0.3],[0,0,0,0],"
         "axis=2)" +
         numbers(36, 90) + "const b: s32[4]" + numbers(4, 200) + "c: " + maps + "7,6,4] " + q +
         " = depthwise_conv2d(x, w, b)\n" + tail + "out y\n";
}

TEST(FusedPooling, IntegersOfOneScale) {
  const std::string pool = "(c) {kernel=[3,2], strides=[2,2]}\n";
  EXPECT_EQ(fused(integer_case("s8", "q(20,-5)", "y: s8[1,3,3,4] q(20,-5) = max_pool" + pool)),
            "forward_conv2d_nl_pool_integer");
  EXPECT_EQ(fused(integer_case("u8", "q(20,9)", "y: u8[1,3,3,4] q(20,9) = average_pool" + pool)),
            "forward_conv2d_nl_pool_integer");
  // A bound that saturation does not do moves behind the maximum.
  EXPECT_EQ(fused(integer_case("s8", "q(20,-5)",
                               "r: s8[1,7,6,4] q(20,-5) = relu(c)\n"
                               "y: s8[1,3,3,4] q(20,-5) = max_pool(r) {kernel=[3,2], "
                               "strides=[2,2]}\n")),
            "forward_conv2d_nl_pool_integer forward_clip_integer");
  EXPECT_EQ(fused(integer_case("s8", "q(20,-5)", "y: s8[1,3,3,4] q(20,-5) = average_pool" + pool)),
            "forward_conv2d_integer forward_ap_integer");
  EXPECT_EQ(fused(integer_case("s8", "q(20,-5)", "y: s8[1,3,3,4] q(21,-5) = max_pool" + pool)),
            "forward_conv2d_integer forward_mp_integer");
}

TEST(FusedPooling, FixedPoint) {
  const auto text = [](const char* pool) {
    return "in x: s8[1,9,8,2] fix(5)\nconst w: s8[3,3,2,2] fix(6)" + numbers(36, 90) +
           "const b: s8[3] fix(7)" + numbers(3, 100) +
           "c: s8[1,7,7,3] fix(4) = conv2d(x, w, b)\nr: s8[1,7,7,3] fix(4) = relu(c)\n"
           "y: s8[1,3,3,3] fix(4) = " +
           pool + "(r) {kernel=[3,2], strides=[2,2]}\nout y\n";
  };
  EXPECT_EQ(fused(text("max_pool")), "forward_conv2d_nl_pool_fixed forward_relu_fixed");
  EXPECT_EQ(fused(text("average_pool")),
            "forward_conv2d_fixed forward_relu_fixed forward_ap_fixed");
}

// --- parts of other tensors
// --------------------------------------------------------------------------

constexpr Sharing kBoth = {true, true, 4};

// The layers with parts in place; the bytes are those of without.
std::string shared(const std::string& text, const Sharing& sharing = kBoth) {
  const Graph g = parse_graph(text);
  const Ran copied = run(g);
  const Ran in_place = run(g, sharing);
  EXPECT_EQ(copied.outputs, in_place.outputs) << text;
  return join(in_place.functions);
}

TEST(Parts, ConcatenationsAreWrittenByWhoMakesTheirInputs) {
  // One in another, a reshaped input, one that something else reads too.
  EXPECT_EQ(shared(R"(
    in x: f32[1,2,6]
    a: f32[1,2,6] = sqrt(x)
    b: f32[1,12] = exp(x)
    r: f32[1,2,6] = reshape(b)
    c: f32[1,4,6] = concat(a, r) {axis=1}
    d: f32[1,2,6] = sin(a)
    y: f32[1,6,6] = concat(d, c) {axis=1}
    out y
  )"),
            "forward_sqrt forward_exp forward_sin");
  // Network inputs and values that are part of another one are copied; with a constant and along
  // another axis all are.
  EXPECT_EQ(shared(R"(
    in x: f32[2,3]
    const k: f32[1,3] = 1 2 3
    a: f32[2,3] = relu(x)
    b: f32[2,3] = exp(x)
    y: f32[8,3] = concat(x, a, x, b) {axis=0}
    z: f32[3,3] = concat(k, b) {axis=0}
    v: f32[2,6] = concat(a, x) {axis=1}
    out y
    out z
    out v
  )"),
            "forward_relu forward_exp forward_slice forward_slice forward_concat forward_concat");
}

TEST(Parts, QuantizedInputsOfOtherScalesAreBroughtIn) {
  EXPECT_EQ(shared(R"(
    in x: s8[4,4] q(0.5,1)
    a: s8[4,4] q(0.25,3) = sigmoid(x)
    b: s8[4,4] q(0.125,3) = tanh(x)
    y: s8[8,4] q(0.25,3) = concat(a, b) {axis=0}
    out y
  )"),
            "forward_nl_integer forward_nl_integer forward_nl_integer");
}

TEST(Parts, SlicesOfOneRunStay) {
  // The second is no run; the third begins at 6 bytes.
  EXPECT_EQ(shared(R"(
    in x: u8[4,3,4] q(0.5,1)
    a: u8[1,2,4] q(0.5,1) = slice(x) {starts=[2,1,0], ends=[3,3,4], steps=[1,1,1]}
    b: u8[2,1,4] q(0.5,1) = slice(x) {starts=[0,1,0], ends=[2,2,4], steps=[1,1,1]}
    c: u8[1,1,1] q(0.5,1) = slice(x) {starts=[0,1,2], ends=[1,2,3], steps=[1,1,1]}
    p: u8[1,2,4] q(0.25,1) = sigmoid(a)
    q: u8[2,1,4] q(0.25,1) = sigmoid(b)
    r: u8[1,1,1] q(0.25,1) = sigmoid(c)
    out p
    out q
    out r
  )"),
            "forward_slice forward_slice forward_nl_integer forward_nl_integer forward_nl_integer");
}

// Values of rows of 4 floats from functions in place, sums that repeat one row, slices and
// concatenations of whatever is there.
Graph random_graph(uint32_t seed) {
  std::mt19937 random(seed);
  Graph g;
  const auto rows = [&](ValueId id) { return g.value(id).shape[0]; };
  std::vector<ValueId> known = {g.add({"x", Type::f32, {3, 4}, {}, nullptr})};
  g.inputs = known;
  const auto pick = [&] { return known[random() % known.size()]; };
  const auto add = [&](Op op, std::vector<ValueId> inputs, int64_t count,
                       std::map<std::string, Attribute, std::less<>> attributes = {}) {
    known.push_back(g.add({"v", Type::f32, {count, 4}, {}, nullptr}));
    g.nodes.push_back({"", "", op, std::move(inputs), {known.back()}, std::move(attributes)});
  };
  while (g.nodes.size() < 14) {
    const ValueId a = pick();
    const int64_t first = static_cast<int64_t>(random()) % rows(a);
    const int64_t end = first + 1 + static_cast<int64_t>(random()) % (rows(a) - first);
    switch (random() % 5) {
      case 0:
        add(Op::sin, {a}, rows(a));
        break;
      case 1:
        add(Op::reshape, {a}, rows(a));
        break;
      case 2:
        add(Op::slice, {a}, end - first,
            {{"starts", Shape{first, 0}}, {"ends", Shape{end, 4}}, {"steps", Shape{1, 1}}});
        break;
      case 3:
        if (const ValueId b = pick(); rows(a) == rows(b) || rows(b) == 1) {
          add(Op::sub, {a, b}, rows(a));
        }
        break;
      default:
        if (const ValueId b = pick(); rows(a) + rows(b) < 20) {
          add(Op::concat, {a, b}, rows(a) + rows(b), {{"axis", int64_t{0}}});
        }
    }
  }
  g.outputs = {known.back(), pick()};
  g.remove_dead();
  return g;
}

TEST(Parts, NoOrderOfUsesSpoilsAValue) {
  for (uint32_t seed = 0; seed < 300; ++seed) {
    const Graph g = random_graph(seed);
    const Ran copied = run(g);
    for (const Sharing& sharing : {kBoth, Sharing{true, false, 4}, Sharing{false, true, 4}}) {
      ASSERT_EQ(copied.outputs, run(g, sharing).outputs) << seed << "\n" << print_graph(g);
    }
  }
}

}  // namespace
}  // namespace nnlib::importer
