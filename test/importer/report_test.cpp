// SPDX-License-Identifier: MIT
// The figures of reports, and the places of their pictures.
#include "importer/report/report.hpp"

#include <gtest/gtest.h>

#include "importer/graph/text.hpp"
#include "importer/main/import_model.hpp"
#include "importer/report/graph_layout.hpp"

namespace nnlib::importer {
namespace {

Report report_of(const std::string& text) {
  const Imported imported = build(prepare(parse_graph(text), {}), {});
  return make_report(*imported.network, imported.memory, "<net> & \"co\"");
}

// Two branches of one input and a relu in place.
const char* const kBranches = R"(
  in x: f32[1,4,6,2]
  const w: f32[3,3,3,2] = )";
const char* const kBranchesEnd = R"(
  const v: f32[3,1,1,2] = 1 2 3 4 5 6
  const b: f32[3] = 1 -2 3
  c: f32[1,4,6,3] = conv2d(x, w, b) {strides=[1,1], pads=[1,1,1,1]} @"<script>" (CONV_2D)
  d: f32[1,4,6,3] = conv2d(x, v, _) {strides=[1,1]} @"second"
  s: f32[1,4,6,3] = add(c, d)
  e: f32[1,4,6,3] = exp(s)
  out e
)";

std::string branches() {
  std::string text = kBranches;
  for (int i = 0; i < 54; ++i) {
    text += std::to_string(i % 7 - 3) + " ";
  }
  return text + kBranchesEnd;
}

TEST(Report, FiguresOfEachLayer) {
  const Report r = report_of(branches());
  ASSERT_EQ(r.layers.size(), 4u);
  EXPECT_EQ(r.layers[0].macs, 4u * 6 * 3 * 18);
  EXPECT_EQ(r.layers[1].macs, 4u * 6 * 3 * 2);
  EXPECT_EQ(r.layers[0].weight_bytes, 4u * (54 + 3));
  EXPECT_EQ(r.constant_bytes, r.layers[0].weight_bytes + r.layers[1].weight_bytes);
  // x with c; all three; the two operands, the sum in place of one; the sum alone.
  const uint32_t map = 4 * 4 * 6;
  EXPECT_EQ(r.layers[0].live_bytes, map * (2 + 3));
  EXPECT_EQ(r.layers[1].live_bytes, map * (2 + 3 + 3));
  EXPECT_EQ(r.layers[2].live_bytes, map * (3 + 3));
  EXPECT_EQ(r.layers[3].live_bytes, map * 3);
  EXPECT_EQ(r.layers[0].reads, std::vector<int>{kFromInput});
  EXPECT_EQ(r.layers[2].reads, (std::vector<int>{0, 1}));
  EXPECT_EQ(r.outputs[0].reads, std::vector<int>{3});
  EXPECT_EQ(r.functions[0].layers, 2u);
  EXPECT_EQ(r.functions[0].flash, r.layers[1].flash);
  EXPECT_GT(*r.functions[0].flash[0], 1000u);
}

TEST(Report, NamesOfAModelAreText) {
  const std::string page = report_html(report_of(branches()));
  EXPECT_EQ(page.find("<script"), page.npos);
  EXPECT_NE(page.find("&lt;script&gt;"), page.npos);
  EXPECT_NE(page.find("<title>&lt;net&gt; &amp; &quot;co&quot;</title>"), page.npos);
}

TEST(Report, OperatorsBetweenScalesKeepTheirNames) {
  const Report r = report_of(R"(
    in x: s8[1,3] q(0.5,1)
    const w: s8[2,3] q(0.25,0) = 1 -2 3 4 5 -6
    a: f32[1,3] = dequantize(x) @"before" (DequantizeLinear)
    b: f32[2,3] = dequantize(w)
    c: f32[1,2] = dense(a, b, _) @"head" (Gemm)
    d: s8[1,2] q(0.5,0) = quantize(c) @"after" (QuantizeLinear)
    e: f32[1,2] = dequantize(d) @"again" (DequantizeLinear)
    f: f32[1,2] = tanh(e) @"act" (Tanh)
    g: s8[1,2] q(0.0078125,0) = quantize(f) @"last" (QuantizeLinear)
    out g
  )");
  ASSERT_EQ(r.layers.size(), 2u);
  EXPECT_EQ(r.layers[0].origin + " " + r.layers[0].model_name, "Gemm head");
  EXPECT_EQ(r.layers[1].origin + " " + r.layers[1].model_name, "Tanh act");
}

// --- expected instructions ----------------------------------------------------------------------

// What a layer costs that takes 2 + 30 / products + 5 / channels a product, as a page has it.
std::string page_of(const std::vector<std::array<int, 2>>& layers) {
  std::string page =
      "<!-- m4f -->\n<!-- m4f -->\n<!-- m55 -->\n<!-- m55 -->\n<!-- instructions -->\n";
  page += "| layer | of | m4f O2 |\n| --- | --- | ---: |\n";
  for (const auto& [in, out] : layers) {
    page += "| convolution 1x1, " + std::to_string(in) + " to " + std::to_string(out) +
            " channels | int8 | " + std::to_string(2 + 30.0 / in + 5.0 / out) + " |\n";
  }
  return page +
         "| relu | float element | 4 |\n| float to int8 | element | 7 |\n"
         "| max pooling 2x2, stride 2 | int8 element | 13 |\n"
         "| max pooling 3x3, stride 1 | int8 element | 23 |\n<!-- instructions -->\n";
}

std::optional<Estimate> estimate_of(const std::string& page, double in, double out,
                                    const char* kind = "convolution", const char* type = "int8") {
  return estimate(FootprintPage(page), {kind, type, 1000, in, out}, "m4f O2");
}

TEST(Instructions, AreCountedFittedOrScaled) {
  const std::string three = page_of({{8, 16}, {64, 8}, {16, 64}});
  const auto fitted = estimate_of(three, 32, 32);
  EXPECT_EQ(fitted->basis, Basis::interpolated);
  EXPECT_NEAR(fitted->instructions, 1000 * (2 + 30.0 / 32 + 5.0 / 32), 0.5);
  EXPECT_EQ(estimate_of(three, 64, 8)->basis, Basis::counted);
  EXPECT_NEAR(estimate_of(three, 64, 32)->instructions, 1000 * (2 + 30.0 / 64 + 5.0 / 32), 0.5);
  EXPECT_NEAR(estimate_of(three, 64, 8)->instructions, 1000 * (2 + 30.0 / 64 + 5.0 / 8), 0.5);
  const auto scaled = estimate_of(page_of({{8, 16}}), 500, 500);
  EXPECT_EQ(scaled->basis, Basis::scaled);
  EXPECT_NEAR(scaled->instructions, 1000 * (2 + 30.0 / 8 + 5.0 / 16), 0.5);
  EXPECT_NEAR(estimate_of(three, 1, 1, "relu", "float")->instructions, 4000, 0.5);
  EXPECT_FALSE(estimate_of(three, 1, 1, "relu", "int8"));
  EXPECT_NEAR(estimate_of(three, 1, 1, "float to int8", "float")->instructions, 7000, 0.5);
  // 5 an output and 2 a cell: 40 outputs of 25 cells.
  EXPECT_NEAR(estimate_of(three, 25, 1, "max pooling", "int8")->instructions, 40 * 55, 0.5);
  EXPECT_FALSE(estimate_of(three, 8, 16, "convolution", "float"));
  EXPECT_FALSE(estimate_of(three, 8, 16, ""));
}

TEST(Instructions, AreNeverNegative) {
  const std::string falling =
      "| layer | of | m4f O2 |\n| --- | --- | --- |\n| dense, 10 to 10 | int8 | 1 |\n"
      "| dense, 100 to 20 | int8 | 40 |\n<!-- instructions -->\n";
  const std::string page =
      "<!-- m4f -->\n<!-- m4f -->\n<!-- m55 -->\n<!-- m55 -->\n<!-- instructions -->\n" + falling;
  EXPECT_GT(estimate_of(page, 1, 1, "dense")->instructions, 0);
  EXPECT_GT(estimate_of(page, 1e6, 1e6, "dense")->instructions, 0);
}

TEST(Instructions, PageOfThisVersionHasWhatIsLookedFor) {
  for (const char* type : {"float", "int8", "Q15"}) {
    for (const char* kind : {"convolution", "dense"}) {
      const LayerWork work{kind, type, 100, 9, 4};
      EXPECT_TRUE(estimate(footprint_page(), work, "m55 O2")) << kind << " " << type;
    }
  }
  for (const char* kind : {"relu", "table", "clip", "addition", "max pooling", "average pooling",
                           "float to int8", "Q7 to float", "int8 to uint8"}) {
    EXPECT_TRUE(estimate(footprint_page(), {kind, "int8", 100, 4, 4}, "m4f O2")) << kind;
  }
  EXPECT_GT(footprint_page().flash("m55", "forward_gru").value_or(0), 1000u);
  EXPECT_FALSE(footprint_page().flash("m55", "forward_nothing"));
}

// --- places of boxes
// ------------------------------------------------------------------------------

TEST(GraphLayout, BoxesStandApartAndLinesGoDown) {
  // Skips over several ranks, a fan out and in, a box that nothing leads to.
  const std::vector<std::vector<size_t>> after = {{},     {0},    {0},       {0}, {1},   {2, 1},
                                                  {4, 3}, {5, 0}, {6, 7, 0}, {},  {9, 8}};
  const LayoutSizes sizes{100, 20, 10};
  const GraphLayout layout = lay_out(after, sizes);
  std::map<int, std::vector<std::pair<double, double>>> ranks;  // place and half width
  for (const auto& box : layout.boxes) {
    ranks[box.rank].emplace_back(box.x, 50);
    EXPECT_GE(box.x, 50 - 1e-9);
    EXPECT_LE(box.x, layout.width - 50 + 1e-9);
  }
  size_t lines = 0;
  for (const auto& line : layout.lines) {
    int rank = layout.boxes[line.from].rank;
    for (const auto& place : line.way) {
      EXPECT_EQ(place.rank, ++rank);
      ranks[rank].emplace_back(place.x, 0);
    }
    EXPECT_EQ(layout.boxes[line.to].rank, rank + 1);
    ++lines;
  }
  EXPECT_EQ(lines, 15u);
  for (auto& [rank, places] : ranks) {
    std::sort(places.begin(), places.end());
    for (size_t i = 1; i < places.size(); ++i) {
      EXPECT_GT(places[i].first - places[i - 1].first, places[i].second + places[i - 1].second);
    }
  }
}

}  // namespace
}  // namespace nnlib::importer
