// SPDX-License-Identifier: MIT
// ONNX Resize and Upsample, as far as the upsampling layer gives the same pixels.
#include <algorithm>
#include <cmath>

#include "importer/read/onnx_window.hpp"

namespace nnlib::importer {
namespace {

// Where an output index lies on the input axis.
double position(const std::string& mode, int64_t out, double scale, int64_t in_size,
                int64_t out_size) {
  const auto r = static_cast<double>(out);
  if (mode == "asymmetric") {
    return r / scale;
  }
  if (mode == "align_corners") {
    return out_size == 1 ? 0
                         : r * static_cast<double>(in_size - 1) / static_cast<double>(out_size - 1);
  }
  if (mode == "pytorch_half_pixel" && out_size == 1) {
    return 0;
  }
  if (mode == "half_pixel" || mode == "pytorch_half_pixel") {
    return (r + 0.5) / scale - 0.5;
  }
  throw NotAvailable{"coordinates " + mode + " are not available",
                     "half_pixel, asymmetric and align_corners are"};
}

int64_t nearest(const std::string& rounding, double x, int64_t size) {
  const double index = rounding == "floor"               ? std::floor(x)
                       : rounding == "ceil"              ? std::ceil(x)
                       : rounding == "round_prefer_ceil" ? std::floor(x + 0.5)
                                                         : std::ceil(x - 0.5);
  return std::clamp<int64_t>(static_cast<int64_t>(index), 0, size - 1);
}

// The layer takes the pixel before: whether that is the one that the node means, for each index.
void require_nearest(const std::string& coordinates, const std::string& rounding, double scale,
                     int64_t in_size, int64_t out_size) {
  for (int64_t r = 0; r < out_size; ++r) {
    const int64_t wanted =
        nearest(rounding, position(coordinates, r, scale, in_size, out_size), in_size);
    const auto layer = static_cast<int64_t>(static_cast<float>(r) / static_cast<float>(scale));
    if (wanted != std::min(layer, in_size - 1)) {
      throw NotAvailable{"nearest with " + coordinates + " coordinates and " + rounding +
                             " picks other pixels than the layer does at this scale",
                         "asymmetric coordinates with floor are available"};
    }
  }
}

struct Target {
  Shape size;                  // rows, columns
  std::vector<double> scales;  // as given, or from the sizes
};

Target target_of(const OnnxContext& c) {
  const Shape in = map_size(c);
  const auto rank = static_cast<size_t>(c.rank());
  const size_t scales_at = c.opset < 11 ? 1 : 2;
  Target target;
  std::vector<double> scales;
  if (c.has_input(scales_at) && c.value(scales_at).elements() != 0) {
    scales = c.constant_numbers(scales_at, "scales");
  } else if (c.has_attribute("scales")) {
    const std::vector<float> given = c.numbers("scales");
    scales.assign(given.begin(), given.end());
  } else {
    const Shape sizes = c.constant_integers(3, "sizes");
    for (size_t axis = 0; axis < rank && sizes.size() == rank; ++axis) {
      scales.push_back(static_cast<double>(sizes[axis]) / static_cast<double>(c.shape()[axis]));
    }
  }
  if (scales.size() != rank || scales[0] != 1 || scales[1] != 1) {
    throw NotAvailable{"it resizes other axes than the map's", "rows and columns can be resized"};
  }
  for (size_t i = 0; i < 2; ++i) {
    const double scale = rank == 3 && i == 0 ? 1 : scales[rank - 2 + i];
    const double size = std::floor(static_cast<double>(in[i]) * scale + 1e-5);
    if (!(scale > 0 && size >= 1 && size <= INT16_MAX)) {
      throw NotAvailable{"a scale out of range", ""};
    }
    target.scales.push_back(scale);
    target.size.push_back(static_cast<int64_t>(size));
  }
  return target;
}

void resize(OnnxContext& c) {
  const bool upsample = c.opset < 11;  // Upsample, and Resize 10
  const std::string mode = c.text("mode", "nearest");
  const bool is_nearest = mode == "nearest";
  if (!is_nearest && mode != "linear" && mode != "bilinear") {
    throw NotAvailable{"mode " + mode + " is not available", "nearest and linear are"};
  }
  if (!is_nearest) {
    c.require_float();
  }
  std::string coordinates =
      c.text("coordinate_transformation_mode", upsample ? "asymmetric" : "half_pixel");
  const std::string rounding = c.text("nearest_mode", upsample ? "floor" : "round_prefer_floor");
  const Shape in = map_size(c);
  const Target target = target_of(c);
  for (size_t i = 0; i < 2; ++i) {
    position(coordinates, 0, 1, 1, 1);  // refuses a mode that is not known
    if (is_nearest) {
      require_nearest(coordinates, rounding, target.scales[i], in[i], target.size[i]);
    } else if (target.size[i] == 1 && in[i] != 1 && coordinates != "asymmetric" &&
               coordinates != "half_pixel") {
      throw NotAvailable{coordinates + " to a single pixel is not available",
                         "half_pixel and asymmetric are"};
    }
  }
  if (is_nearest) {
    coordinates = "asymmetric";
  } else if (coordinates == "pytorch_half_pixel") {
    coordinates = "half_pixel";
  }
  const ValueId y = c.build.emit(Op::resize, {to_map(c, c.input())}, c.value(0).type,
                                 {c.shape()[0], target.size[0], target.size[1], c.shape()[1]},
                                 {{"mode", is_nearest ? "nearest" : "linear"},
                                  {"coordinates", coordinates},
                                  {"scales", target.scales}},
                                 c.value(0).quantization);
  c.output(from_map(c, y));
}

constexpr OnnxOperator kResizeOperators[] = {
    {"Resize", resize,
     "rows and columns; nearest where it picks the pixel before, linear with half_pixel, "
     "asymmetric and align_corners"},
    {"Upsample", resize, "rows and columns"},
};

}  // namespace

std::span<const OnnxOperator> onnx_resize_operators() {
  return kResizeOperators;
}

}  // namespace nnlib::importer
