// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>

#include "importer/report/report_columns.hpp"
#include "importer/report/svg.hpp"

namespace nnlib::importer {
namespace {

constexpr double kLeft = 72;
constexpr double kTop = 12;
constexpr double kHeight = 360;
constexpr double kBelow = 40;
constexpr double kLetter = 6.2;  // mean width
constexpr int kColours = 6;

// 1, 2 or 5 times a power of ten, so that some five of them make the whole.
double tick_of(double whole) {
  const double power = std::pow(10, std::floor(std::log10(std::max(whole / 5, 1.0))));
  const double lead = whole / 5 / power;
  return power * (lead < 1.5 ? 1 : lead < 3.5 ? 2 : 5);
}

struct Axes {
  double column;  // width of a step
  double scale;   // of a byte
  int steps;      // layers, and one before and one behind

  double x(int step) const { return kLeft + (step + 1) * column; }
  double y(double address) const { return kTop + kHeight - address * scale; }
};

std::string axes_of(const Axes& axes, double bytes) {
  std::string out;
  const double right = axes.x(axes.steps - 1);
  const double tick = tick_of(bytes);
  for (double at = 0; at <= bytes; at += tick) {
    out += "<line class=\"grid\" x1=\"" + px(kLeft) + "\" x2=\"" + px(right) + "\" y1=\"" +
           px(axes.y(at)) + "\" y2=\"" + px(axes.y(at)) + "\"/>\n" +
           svg_text(kLeft - 8, axes.y(at) + 4, "end", grouped(static_cast<uint64_t>(at)));
  }
  const int every = std::max(1, static_cast<int>(std::ceil(26 / axes.column)));
  for (int step = -1; step + 1 < axes.steps; ++step) {
    const bool end = step < 0 || step + 2 == axes.steps;
    const bool beside_end = step % every != 0 || (every > 1 && step + 2 + every / 2 > axes.steps);
    if (end || !beside_end) {
      out += svg_text(axes.x(step) + axes.column / 2, kTop + kHeight + 16, "middle",
                      step < 0 ? "in"
                      : end    ? "out"
                               : std::to_string(step));
    }
  }
  return out + svg_text((kLeft + right) / 2, kTop + kHeight + 34, "middle", "layer");
}

// Whether a layer writes over what it reads there.
bool is_followed_in_place(const ReportBuffer& a, const ReportBuffer& b) {
  return !a.scratch && !b.scratch && &a != &b && a.last == b.first &&
         a.offset < b.offset + b.bytes && b.offset < a.offset + a.bytes;
}

std::string block(const Axes& axes, const std::vector<ReportBuffer>& all, const ReportBuffer& b,
                  int colour) {
  // Both share the layer's column.
  const auto half_if = [&](auto&& is_partner) {
    return std::any_of(all.begin(), all.end(), is_partner) ? axes.column / 2 : 0;
  };
  const double from =
      axes.x(b.first) + half_if([&](const auto& other) { return is_followed_in_place(other, b); });
  const double to = axes.x(b.last + 1) -
                    half_if([&](const auto& other) { return is_followed_in_place(b, other); });
  const double x = from + 0.5;
  const double width = std::max(to - from - 1, 1.0);
  const double height = std::max(b.bytes * axes.scale, 1.0);
  const double top = axes.y(b.offset + b.bytes);
  const std::string lives =
      b.first == b.last ? "layer " + std::to_string(b.first)
                        : "from " + (b.first < 0 ? "the start" : std::to_string(b.first)) + " to " +
                              (b.last + 2 >= axes.steps ? "the end" : std::to_string(b.last));
  std::string out = svg_rect(
      x, top, width, height, b.scratch ? "block scratch" : "block c" + std::to_string(colour),
      b.name + ": " + grouped(b.bytes) + " bytes at " + grouped(b.offset) + ", " + lives);
  if (height >= 13 && static_cast<double>(b.name.size()) * kLetter + 6 <= width) {
    out += svg_text(x + width / 2, top + height / 2 + 4, "middle", b.name, "on-block");
  }
  return out;
}

}  // namespace

std::string arena_picture(const Report& report) {
  const int steps = static_cast<int>(report.layers.size()) + 2;
  const double bytes = std::max<double>(report.arena_bytes, 1);
  const Axes axes{std::clamp(1100.0 / steps, 12.0, 110.0), kHeight / bytes, steps};
  std::string content = axes_of(axes, bytes);
  int colour = 0;
  for (const ReportBuffer& b : report.buffers) {
    content += block(axes, report.buffers, b, b.scratch ? 0 : colour++ % kColours);
  }
  return svg(axes.x(steps - 1) + 16, kTop + kHeight + kBelow,
             "bytes of the arena by address and layer", content);
}

}  // namespace nnlib::importer
