// SPDX-License-Identifier: MIT
// The C source of a network: it compiles without warnings and computes the bytes that the network
// computes in memory.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "importer/emit/c_source.hpp"
#include "importer/graph/refusals.hpp"
#include "importer/graph/text.hpp"
#include "importer/main/import_model.hpp"

namespace nnlib::importer {
namespace {

// Convolution with an absent bias, activation parameters, a constant operand, infinite bounds,
// several inputs and outputs, a reshape, a table, fixed point, pooling in a convolution's layer, a
// concatenation in place.
const char* const kModel = R"(
  in x: f32[1,2,3,2]
  in q: s8[1,4] q(0.5,-3)
  in f: s16[1,3] fix(11)
  const w: f32[3,1,2,2] = 0.5 -1 2 0.25 1 1 -0.5 3 0 0.1 -2 1
  const k: f32[3] = 1 -2 0.3
  c: f32[1,2,2,3] = conv2d(x, w, _) {strides=[1,1]} @"conv */ //" (CONV_2D)
  e: f32[1,2,2,3] = leaky_relu(c) {alpha=0.1}
  s: f32[1,2,2,3] = mul(e, k)
  m: f32[1,2,2,3] = clip(s) {min=-1.5}
  r: f32[4,3] = reshape(m)
  t: f32[4,3] = softmax(r) {axis=1}
  v: s8[1,4] q(0.00390625,-128) = sigmoid(q)
  const d: s16[2,3] fix(13) = 5000 -7000 123 -456 789 8000
  g: s16[1,2] fix(10) = dense(f, d, _)
  const u: f32[2,1,1,2] = 1 -1 0.5 2
  cu: f32[1,2,3,2] = conv2d(x, u, _)
  ru: f32[1,2,3,2] = relu(cu)
  pu: f32[1,1,2,2] = max_pool(ru) {kernel=[1,2], strides=[2,1]}
  eu: f32[1,1,2,2] = exp(pu)
  su: f32[1,1,2,2] = sin(pu)
  z: f32[2,1,2,2] = concat(eu, su) {axis=0}
  out t
  out v
  out g
  out z
)";

const char* const kMain = R"(
#include <stdio.h>
#include "tiny.h"
static float x[TINY_INPUT_1_ELEMENTS];
static int8_t q[TINY_INPUT_2_ELEMENTS] = {-128, -3, 4, 127};
static int16_t f[TINY_INPUT_3_ELEMENTS] = {1 << TINY_INPUT_3_FRACTION_BITS, -300, 2000};
static float t[TINY_OUTPUT_1_ELEMENTS];
static int8_t v[TINY_OUTPUT_2_ELEMENTS];
static int16_t g[TINY_OUTPUT_3_ELEMENTS];
static float z[TINY_OUTPUT_4_ELEMENTS];
static _Alignas(8) uint8_t arena[TINY_ARENA_BYTES];
int main(void) {
  (void)arena;
  for (int i = 0; i < 12; ++i) x[i] = (float)(i * 7 % 12) / 4.0f - 1.0f;
  if (tiny_init(ARENA) != 0 || tiny_run(x, q, f, t, v, g, z) != 0) return 1;
  return fwrite(t, sizeof(t), 1, stdout) != 1 || fwrite(v, sizeof(v), 1, stdout) != 1 ||
         fwrite(g, sizeof(g), 1, stdout) != 1 || fwrite(z, sizeof(z), 1, stdout) != 1;
}
)";

Bytes read_file(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

// Standard output of the compiled network.
Bytes run_compiled(const std::vector<SourceFile>& files, const std::string& arena) {
  const std::filesystem::path folder =
      std::filesystem::path(testing::TempDir()) / ("emit_" + std::to_string(::getpid()));
  std::filesystem::create_directories(folder);
  std::string sources = (folder / "main.c").string();
  std::ofstream(folder / "main.c") << kMain;
  for (const SourceFile& file : files) {
    std::ofstream(folder / file.name) << file.text;
    if (file.name.ends_with(".c")) {
      sources += " " + (folder / file.name).string();
    }
  }
  const std::string flags = " -std=c11 -Wall -Wextra -Wpedantic -Wconversion -Werror";
  const std::string program = (folder / "program").string();
  const std::string compile = NNLIB_TEST_CC + flags + " -I" NNLIB_TEST_ROOT " -I" +
                              folder.string() + " -D'ARENA=" + arena + "' " + sources +
                              " " NNLIB_TEST_LIBRARY " -lstdc++ -lm -o " + program;
  EXPECT_EQ(std::system(compile.c_str()), 0) << compile;
  EXPECT_EQ(std::system((program + " >" + program + ".out").c_str()), 0);
  const Bytes out = read_file(program + ".out");
  std::filesystem::remove_all(folder);
  return out;
}

TEST(EmittedC, ComputesTheBytesOfTheNetworkInMemory) {
  Imported imported = build(prepare(parse_graph(kModel), {}), {});
  std::vector<float> x;
  for (int i = 0; i < 12; ++i) {
    x.push_back(static_cast<float>(i * 7 % 12) / 4.0f - 1.0f);
  }
  const auto outputs = Runner(*imported.network, imported.memory)
                           .run({*make_bytes<float>(x), Bytes{0x80, 0xFD, 4, 127},
                                 *make_bytes<int16_t>(std::vector<int16_t>{2048, -300, 2000})});
  Bytes expected = outputs[0];
  for (const Bytes& more : {outputs[1], outputs[2], outputs[3]}) {
    expected.insert(expected.end(), more.begin(), more.end());
  }

  SourceOptions options;
  options.name = "tiny";
  const auto plain = emit_c(*imported.network, imported.memory, options);
  EXPECT_EQ(run_compiled(plain, ""), expected);
  options.separate_weights = options.arena_from_caller = true;
  EXPECT_EQ(run_compiled(emit_c(*imported.network, imported.memory, options), "arena"), expected);

  Imported again = build(prepare(parse_graph(kModel), {}), {});
  options = {};
  options.name = "tiny";
  EXPECT_EQ(emit_c(*again.network, again.memory, options)[0].text, plain[0].text);
}

TEST(EmittedC, NetworkWithoutInputsIsRefused) {
  const Graph g = parse_graph("const k: f32[3] = 1 -2 3\ny: f32[3] = relu(k)\nout y\n");
  EXPECT_THROW(build(prepare(g, {}), {}), Refused);
}

}  // namespace
}  // namespace nnlib::importer
