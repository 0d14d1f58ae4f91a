// SPDX-License-Identifier: MIT
// Sizes, strides, dilations and pads of windows as ONNX states them, made two-dimensional.
#ifndef NNLIB_IMPORTER_READ_ONNX_WINDOW_HPP
#define NNLIB_IMPORTER_READ_ONNX_WINDOW_HPP

#include "importer/read/onnx_context.hpp"

namespace nnlib::importer {

// Order y, x; a one-dimensional window is a row of height 1.
struct OnnxWindow {
  Shape kernel;
  Shape strides;
  Shape dilations;
  Shape pads;  // top, left, bottom, right
  Shape out;   // of a layer that shrinks its input

  // The node's own attributes for an input of `in` (rows, columns).
  static OnnxWindow of(const OnnxContext& c, const Shape& kernel, const Shape& in);

  int64_t extent(size_t i) const { return (kernel[i] - 1) * dilations[i] + 1; }
};

// Two sizes of the attribute of a node on a map with one or two dimensions.
Shape two_of(const OnnxContext& c, const char* attribute, int64_t otherwise, int64_t low);

// [N, C, W] and [N, C, H, W] to [N, H, W, C], and back to the rank of the node's first input.
ValueId to_map(OnnxContext& c, ValueId x);
ValueId from_map(OnnxContext& c, ValueId map);
// Rows and columns of the node's first input. Refuses any but one or two dimensions.
Shape map_size(const OnnxContext& c);

// [N, C, ...] to [N, ..., C] and back.
ValueId channels_last(GraphBuilder& b, ValueId x);
ValueId channels_second(GraphBuilder& b, ValueId x);

}  // namespace nnlib::importer

#endif
