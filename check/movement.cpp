// SPDX-License-Identifier: MIT
// Layers that move elements: padding, tiling, enlarging, joining, turning, cutting, choosing.
#include <algorithm>

#include "check/details.hpp"
#include "layers/layers_concat_generic_float.h"
#include "layers/layers_pad_generic_float.h"
#include "layers/layers_slice_generic_float.h"
#include "layers/layers_tile_generic_float.h"
#include "layers/layers_topk_generic_float.h"
#include "layers/layers_transpose_generic_float.h"
#include "layers/layers_upsample_generic_float.h"

namespace nnlib {
namespace {

bool check_axis(LayerCheck& check, uint32_t axis) {
  if (axis >= AI_SHAPE_DIMS) {
    Finding(check.report()) << "the axis is " << axis << ", 0 to 3 are possible";
  }
  return axis < AI_SHAPE_DIMS;
}

void check_dims(LayerCheck& check, TensorName name, const Dims& needed) {
  const Dims actual = dims_of(*check.tensor(name.list, name.index));
  bool fits = true;
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    fits = fits && actual.sizes[i] == needed.sizes[i];
  }
  if (!fits) {
    say_dims(check, name, needed);
  }
}

// Input and output, when both are sound.
struct Pair {
  const ai_tensor* in;
  const ai_tensor* out;
  explicit Pair(const LayerCheck& check)
      : in(check.sound(AI_CHAIN_INPUT)), out(check.sound(AI_CHAIN_OUTPUT)) {}
  bool sound() const { return in != nullptr && out != nullptr; }
};

void check_whole_bytes(LayerCheck& check) {
  const ai_tensor* input = check.sound(AI_CHAIN_INPUT);
  if (input != nullptr &&
      run_bytes(input->data->format, 8) != 8 * run_bytes(input->data->format, 1)) {
    Finding(check.report()) << "input 0 has the format " << FormatName{input->data->format}
                            << ", the function moves whole bytes";
  }
}

}  // namespace

// --- padding ------------------------------------------------------------------------------------

namespace {

void check_room(LayerCheck& check, uint64_t before, uint64_t in, uint64_t out,
                const char* direction) {
  if (before + in > out) {
    Finding(check.report()) << "output 0 has a " << direction << " of " << out << ", " << before
                            << " before input 0's " << in << " need " << before + in;
  }
}

void check_pad_value(LayerCheck& check, const ai_array* value, const ai_tensor& input) {
  if (value == nullptr || value->data == nullptr || value->size == 0) {
    Finding(check.report()) << "the padding's value is missing, 1 is needed";
  } else if (ai_fmt_get_bits(value->format) != ai_fmt_get_bits(input.data->format) ||
             ai_fmt_is_float(value->format) != ai_fmt_is_float(input.data->format)) {
    Finding(check.report()) << "the padding's value has the format " << FormatName{value->format}
                            << ", input 0 has " << FormatName{input.data->format};
  }
}

}  // namespace

void check_pad(LayerCheck& check) {
  check_whole_bytes(check);
  const auto& pad = check.record<ai_layer_pad>();
  if (pad.mode > AI_PAD_EDGE) {
    Finding(check.report()) << "the mode is " << pad.mode << ", the function does nothing: 0 to "
                            << AI_PAD_EDGE << " are possible";
  }
  if (pad.pads == nullptr) {
    Finding(check.report()) << "there are no pads, 2 are needed";
    return;
  }
  const Pair tensors(check);
  if (!tensors.sound()) {
    return;
  }
  const uint32_t top = pad.pads[0];
  const uint32_t left = pad.pads[1];
  check_room(check, top, check.sizes['H'], check.sizes['h'], "height");
  check_room(check, left, check.sizes['W'], check.sizes['w'], "width");
  if (pad.mode == AI_PAD_CONSTANT) {
    check_pad_value(check, pad.value, *tensors.in);
  } else if (pad.mode == AI_PAD_REFLECT && left < top) {
    Finding(check.report()) << "with " << top << " rows and " << left
                            << " columns before the map, reflection leaves rows " << left << " to "
                            << top - 1 << " unwritten";
  }
}

// --- tiling -------------------------------------------------------------------------------------

void tile_sizes(LayerCheck& check) {
  if (const uint16_t* repeats = check.record<ai_layer_tile>().repeats) {
    check.sizes.set('h', repeats[0]);
    check.sizes.set('w', repeats[1]);
    check.sizes.set('c', repeats[2]);
  }
}

void check_tile(LayerCheck& check) {
  check_whole_bytes(check);
  const uint16_t* repeats = check.record<ai_layer_tile>().repeats;
  if (repeats == nullptr) {
    Finding(check.report()) << "there are no repeats, 3 are needed";
    return;
  }
  for (uint32_t i = 0; i < 3; ++i) {
    if (repeats[i] == 0) {
      Finding(check.report()) << "repeat count " << i << " is 0, the function writes nothing";
    }
  }
}

// --- enlarging ----------------------------------------------------------------------------------

namespace {

// Sizes up to one position more or less than the product go with a scale that is no whole number.
// With corners the last pixels may fall on each other too: out - 1 is (in - 1) * scale.
void check_scaled(LayerCheck& check, float scale, uint32_t in, uint32_t out, bool corners,
                  const char* direction) {
  if (!(scale > 0.0f)) {
    Finding(check.report()) << "the scale of the " << direction << " is " << scale
                            << ", not above 0";
    return;
  }
  const float wanted = static_cast<float>(in) * scale;
  const float actual = static_cast<float>(out);
  const float between_corners = corners ? (static_cast<float>(in) - 1.0f) * scale + 1.0f : wanted;
  if (!(actual > std::min(wanted, between_corners) - 1.0f &&
        actual < std::max(wanted, between_corners) + 1.0f)) {
    Finding(check.report()) << "output 0 has a " << direction << " of " << out << ", input 0's "
                            << in << " times " << scale << " is " << wanted;
  }
}

}  // namespace

void check_upsample(LayerCheck& check) {
  check_whole_bytes(check);
  const auto& upsample = check.record<ai_layer_upsample>();
  if (upsample.mode > AI_UPSAMPLE_BILINEAR) {
    Finding(check.report()) << "the mode is " << upsample.mode
                            << ", the function does nothing: 0 to " << AI_UPSAMPLE_BILINEAR
                            << " are possible";
  }
  const ai_array* scales = upsample.scales;
  if (scales == nullptr || scales->data == nullptr || scales->size < 2) {
    Finding(check.report()) << "there are "
                            << (scales != nullptr && scales->data != nullptr ? scales->size : 0u)
                            << " scales, 2 are needed";
    return;
  }
  if (ai_fmt_get_code(scales->format) != AI_ARRAY_FORMAT_FLOAT) {
    Finding(check.report()) << "the scales have the format " << FormatName{scales->format}
                            << ", needed is float32";
    return;
  }
  const Pair tensors(check);
  if (!tensors.sound()) {
    return;
  }
  const auto* scale = static_cast<const float*>(scales->data);
  const bool corners = upsample.mode == AI_UPSAMPLE_BILINEAR && !upsample.center;
  check_scaled(check, scale[0], check.sizes['H'], check.sizes['h'], corners, "height");
  check_scaled(check, scale[1], check.sizes['W'], check.sizes['w'], corners, "width");
  if (upsample.mode == AI_UPSAMPLE_BILINEAR) {
    check_kind(check, {AI_CHAIN_INPUT, 0}, 'f');
  }
}

// --- joining ------------------------------------------------------------------------------------

void check_concat(LayerCheck& check) {
  check_whole_bytes(check);
  const uint32_t axis = check.record<ai_layer_concat>().axis;
  const Pair tensors(check);
  if (!check_axis(check, axis) || !tensors.sound()) {
    return;
  }
  Dims needed = dims_of(*tensors.in);
  needed.sizes[axis] = 0;
  for (uint32_t i = 0; i < check.list_size(AI_CHAIN_INPUT); ++i) {
    const ai_tensor* input = check.sound(AI_CHAIN_INPUT, i);
    if (input == nullptr) {
      continue;
    }
    Dims alike = dims_of(*tensors.in);
    alike.sizes[axis] = input->shape.data[axis];
    check_dims(check, {AI_CHAIN_INPUT, i}, alike);
    needed.sizes[axis] += alike.sizes[axis];
  }
  check_dims(check, {AI_CHAIN_OUTPUT, 0}, needed);
  const ai_array& array = *tensors.out->data;
  const uint64_t bytes = run_bytes(array.format, elements_of(*tensors.out));
  if (ai_array_get_byte_size(array.format, array.size) != bytes) {  // tables count in it
    Finding(check.report()) << "output 0 has an array of "
                            << ai_array_get_byte_size(array.format, array.size)
                            << " bytes, up to whose end the function writes; its dimensions take "
                            << bytes;
  }
}

// --- turning ------------------------------------------------------------------------------------

void check_transpose(LayerCheck& check) {
  check_whole_bytes(check);
  const uint32_t* perm = check.record<ai_layer_transpose>().perm;
  if (perm == nullptr) {
    Finding(check.report()) << "there is no permutation, 4 axes are needed";
    return;
  }
  uint32_t seen = 0;
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    seen |= perm[i] < AI_SHAPE_DIMS ? 1u << perm[i] : 0u;
  }
  if (seen != 15) {
    Finding(check.report()) << "the permutation is " << Dims{{perm[0], perm[1], perm[2], perm[3]}}
                            << ", each of the axes 0 to 3 is needed once";
    return;
  }
  const Pair tensors(check);
  if (tensors.sound()) {
    const uint32_t* in = tensors.in->shape.data;
    check_dims(check, {AI_CHAIN_OUTPUT, 0}, {{in[perm[0]], in[perm[1]], in[perm[2]], in[perm[3]]}});
  }
}

// --- cutting ------------------------------------------------------------------------------------

namespace {

bool check_indices(LayerCheck& check, const ai_array* array, uint32_t count, const char* what) {
  if (array == nullptr || array->data == nullptr || array->size < count) {
    Finding(check.report()) << "there are "
                            << (array != nullptr && array->data != nullptr ? array->size : 0u)
                            << ' ' << what << ", " << count << " are needed";
    return false;
  }
  if (ai_fmt_get_bits(array->format) != 32 || ai_fmt_is_float(array->format)) {
    Finding(check.report()) << "the " << what << " have the format " << FormatName{array->format}
                            << ", needed are 32-bit integers";
    return false;
  }
  return true;
}

}  // namespace

void check_slice(LayerCheck& check) {
  check_whole_bytes(check);
  const auto& slice = check.record<ai_layer_slice>();
  const uint32_t count = slice.starts != nullptr ? slice.starts->size : 0;
  bool usable = check_indices(check, slice.starts, count > 0 ? count : 1, "starts");
  usable &= check_indices(check, slice.ends, count, "ends");
  usable &= slice.axes == nullptr || check_indices(check, slice.axes, count, "axes");
  const Pair tensors(check);
  if (!usable || !tensors.sound()) {
    return;
  }
  Dims needed = dims_of(*tensors.in);
  for (uint32_t i = 0; i < count; ++i) {
    const uint32_t axis =
        slice.axes != nullptr ? static_cast<const uint32_t*>(slice.axes->data)[i] : i;
    if (!check_axis(check, axis)) {
      return;
    }
    const int64_t size = tensors.in->shape.data[axis];
    const auto clamp = [size](int64_t at) { return at < 0 ? 0 : at > size ? size : at; };
    const int64_t start = clamp(static_cast<const int32_t*>(slice.starts->data)[i]);
    const int64_t end = clamp(static_cast<const int32_t*>(slice.ends->data)[i]);
    if (end <= start) {
      Finding(check.report()) << "the slice of axis " << axis << " runs from "
                              << static_cast<const int32_t*>(slice.starts->data)[i] << " to "
                              << static_cast<const int32_t*>(slice.ends->data)[i] << " of "
                              << static_cast<uint64_t>(size) << ": it is empty";
      return;
    }
    needed.sizes[axis] = static_cast<uint64_t>(end - start);
  }
  check_dims(check, {AI_CHAIN_OUTPUT, 0}, needed);
}

// --- choosing -----------------------------------------------------------------------------------

void check_topk(LayerCheck& check) {
  const auto& topk = check.record<ai_layer_topk>();
  const ai_tensor* input = check.sound(AI_CHAIN_INPUT);
  if (!check_axis(check, topk.axis) || input == nullptr) {
    return;
  }
  const uint32_t size = input->shape.data[topk.axis];
  if (topk.k == 0 || topk.k > size) {
    Finding(check.report()) << "k is " << topk.k << ", 1 to " << size << " are possible";
    return;
  }
  Dims needed = dims_of(*input);
  needed.sizes[topk.axis] = topk.k;
  for (uint32_t i = 0; i < 2; ++i) {
    if (check.sound(AI_CHAIN_OUTPUT, i) != nullptr) {
      check_dims(check, {AI_CHAIN_OUTPUT, i}, needed);
    }
  }
}

}  // namespace nnlib
