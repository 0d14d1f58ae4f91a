// SPDX-License-Identifier: MIT
#include "importer/read/onnx_window.hpp"

#include <algorithm>

namespace nnlib::importer {
namespace {

void require_size(int64_t size, int64_t low, const char* what) {
  if (size < low || size > INT16_MAX) {
    throw NotAvailable{std::string(what) + " out of range", ""};
  }
}

// SAME_UPPER, SAME_LOWER: as many outputs as the stride divides the input into.
void pad_same(OnnxWindow& w, const Shape& in, bool lower) {
  for (size_t i = 0; i < 2; ++i) {
    const int64_t out = (in[i] + w.strides[i] - 1) / w.strides[i];
    const int64_t total = std::max<int64_t>((out - 1) * w.strides[i] + w.extent(i) - in[i], 0);
    w.pads[i] = lower ? total - total / 2 : total / 2;
    w.pads[2 + i] = total - w.pads[i];
  }
}

}  // namespace

Shape two_of(const OnnxContext& c, const char* attribute, int64_t otherwise, int64_t low) {
  const auto spatial = static_cast<size_t>(c.rank() - 2);
  Shape given = c.integers(attribute, Shape(spatial, otherwise));
  if (given.size() != spatial) {
    throw NotAvailable{std::string(attribute) + " does not have a number for each dimension", ""};
  }
  if (spatial == 1) {
    given.insert(given.begin(), low);
  }
  for (const int64_t size : given) {
    require_size(size, low, attribute);
  }
  return given;
}

OnnxWindow OnnxWindow::of(const OnnxContext& c, const Shape& kernel, const Shape& in) {
  OnnxWindow w{kernel, two_of(c, "strides", 1, 1), two_of(c, "dilations", 1, 1), {0, 0, 0, 0}, {}};
  const std::string how = c.text("auto_pad", "NOTSET");
  if (how == "SAME_UPPER" || how == "SAME_LOWER") {
    pad_same(w, in, how == "SAME_LOWER");
  } else if (how == "NOTSET" && c.has_attribute("pads")) {
    const Shape given = c.integers("pads");
    if (given.size() != 2 * static_cast<size_t>(c.rank() - 2)) {
      throw NotAvailable{"there must be two pads for each dimension", ""};
    }
    w.pads = given.size() == 4 ? given : Shape{0, given[0], 0, given[1]};
  } else if (how != "NOTSET" && how != "VALID") {
    throw NotAvailable{"auto_pad " + how + " is not available", ""};
  }
  for (const int64_t pad : w.pads) {
    require_size(pad, 0, "a pad");
  }
  for (const int64_t size : w.kernel) {
    require_size(size, 1, "the window");
  }
  const bool ceil = c.integer("ceil_mode", 0) != 0;
  for (size_t i = 0; i < 2; ++i) {
    const int64_t room = in[i] + w.pads[i] + w.pads[2 + i] - w.extent(i);
    int64_t out = room < 0 ? 0 : (room + (ceil ? w.strides[i] - 1 : 0)) / w.strides[i] + 1;
    // A window that would begin behind the map does not count.
    if (ceil && out > 1 && (out - 1) * w.strides[i] >= in[i] + w.pads[i]) {
      --out;
    }
    w.out.push_back(out);
  }
  return w;
}

Shape map_size(const OnnxContext& c) {
  const Shape& shape = c.shape();
  if (shape.size() == 3) {
    return {1, shape[2]};
  }
  if (shape.size() != 4) {
    throw NotAvailable{"it works on " + std::to_string(c.rank() - 2) + " dimensions",
                       "one and two are available"};
  }
  return {shape[2], shape[3]};
}

ValueId channels_last(GraphBuilder& b, ValueId x) {
  Shape perm{0};
  for (size_t axis = 2; axis < b.shape(x).size(); ++axis) {
    perm.push_back(static_cast<int64_t>(axis));
  }
  perm.push_back(1);
  return b.transpose(x, perm);
}

ValueId channels_second(GraphBuilder& b, ValueId x) {
  Shape perm{0, static_cast<int64_t>(b.shape(x).size()) - 1};
  for (size_t axis = 1; axis + 1 < b.shape(x).size(); ++axis) {
    perm.push_back(static_cast<int64_t>(axis));
  }
  return b.transpose(x, perm);
}

ValueId to_map(OnnxContext& c, ValueId x) {
  const ValueId last = channels_last(c.build, x);
  const Shape shape = c.build.shape(last);
  return shape.size() == 4 ? last : c.build.reshape(last, {shape[0], 1, shape[1], shape[2]});
}

ValueId from_map(OnnxContext& c, ValueId map) {
  const Shape shape = c.build.shape(map);
  const bool row = c.rank() == 3;
  return channels_second(c.build, row ? c.build.reshape(map, {shape[0], shape[2], shape[3]}) : map);
}

}  // namespace nnlib::importer
