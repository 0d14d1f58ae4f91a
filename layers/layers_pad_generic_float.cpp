// SPDX-License-Identifier: MIT
#include "layers/layers_pad_generic_float.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "layers/layer_tensors.hpp"
#include "layers/repeat_block.hpp"
#include "layers/signed_dims.hpp"

using namespace nnlib;

namespace {

// Which row or column of the map fills a position before, inside or after it.
using SourceOf = ptrdiff_t (*)(ptrdiff_t position, ptrdiff_t extent);

ptrdiff_t mirrored(ptrdiff_t position, ptrdiff_t extent) {
  if (extent == 1) {
    return 0;
  }
  const ptrdiff_t period = 2 * (extent - 1);
  const ptrdiff_t distance = std::abs(position) % period;
  return std::min(distance, period - distance);
}

ptrdiff_t clamped(ptrdiff_t position, ptrdiff_t extent) {
  return std::clamp(position, ptrdiff_t{0}, extent - 1);
}

// The input's place in the output, in rows and columns, and the strides in bytes.
struct Frame {
  Frame(const ai_layer_pad& pad, const ai_tensor& in, const ai_tensor& out)
      : top(static_cast<ptrdiff_t>(pad.pads[0])),
        left(static_cast<ptrdiff_t>(pad.pads[1])),
        height(signed_dim(in, AI_SHAPE_H)),
        width(signed_dim(in, AI_SHAPE_W)),
        out_height(signed_dim(out, AI_SHAPE_H)),
        out_width(signed_dim(out, AI_SHAPE_W)),
        pixel(signed_stride(in, AI_SHAPE_W)),
        in_row(signed_stride(in, AI_SHAPE_H)),
        out_row(signed_stride(out, AI_SHAPE_H)) {}

  ptrdiff_t top, left, height, width, out_height, out_width, pixel, in_row, out_row;
};

void copy_rows(const Frame& f, uint8_t* out, const uint8_t* in) {
  for (ptrdiff_t y = 0; y < f.height; ++y) {
    std::memcpy(out + (f.top + y) * f.out_row + f.left * f.pixel, in + y * f.in_row,
                static_cast<size_t>(f.in_row));
  }
}

void fill_columns(const Frame& f, uint8_t* row, ptrdiff_t begin, ptrdiff_t end, SourceOf source) {
  for (ptrdiff_t x = begin; x < end; ++x) {
    const ptrdiff_t from = f.left + source(x - f.left, f.width);
    std::memcpy(row + x * f.pixel, row + from * f.pixel, static_cast<size_t>(f.pixel));
  }
}

void fill_rows(const Frame& f, uint8_t* out, ptrdiff_t begin, ptrdiff_t end, SourceOf source) {
  for (ptrdiff_t y = begin; y < end; ++y) {
    const ptrdiff_t from = f.top + source(y - f.top, f.height);
    std::memcpy(out + y * f.out_row, out + from * f.out_row, static_cast<size_t>(f.out_row));
  }
}

void pad_from_map(const Frame& f, uint8_t* out, const uint8_t* in, ptrdiff_t rows_before,
                  SourceOf source) {
  copy_rows(f, out, in);
  for (ptrdiff_t y = f.top; y < f.top + f.height; ++y) {
    fill_columns(f, out + y * f.out_row, 0, f.left, source);
    fill_columns(f, out + y * f.out_row, f.left + f.width, f.out_width, source);
  }
  fill_rows(f, out, 0, rows_before, source);
  fill_rows(f, out, f.top + f.height, f.out_height, source);
}

void pad_constant(const Frame& f, const ai_tensor& output, const uint8_t* in,
                  const ai_array& value) {
  uint8_t* const out = tensor_data<uint8_t>(output);
  const ai_size elements = ai_shape_elements(&output.shape);
  if (elements != 0) {
    const size_t element = output.stride.data[0];
    std::memcpy(out, value.data, element);
    repeat_block(out, element, elements);
  }
  copy_rows(f, out, in);
}

}  // namespace

void forward_pad(ai_layer* layer) {
  const ai_layer_pad& pad = layer_record<ai_layer_pad>(layer);
  const ai_tensor& output = layer_output(*layer);
  const uint8_t* const in = tensor_data<uint8_t>(layer_input(*layer));
  uint8_t* const out = tensor_data<uint8_t>(output);
  const Frame frame(pad, layer_input(*layer), output);
  switch (pad.mode) {
    case AI_PAD_CONSTANT:
      pad_constant(frame, output, in, *pad.value);
      break;
    case AI_PAD_REFLECT:
      pad_from_map(frame, out, in, std::min(frame.top, frame.left), mirrored);
      break;
    case AI_PAD_EDGE:
      pad_from_map(frame, out, in, frame.top, clamped);
      break;
    default:
      break;
  }
}
