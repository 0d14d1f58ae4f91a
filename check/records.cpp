// SPDX-License-Identifier: MIT
// A tensor's own records: shape, strides, array, memory.
#include "check/layer_check.hpp"
#include "check/memory.hpp"

namespace nnlib {
namespace {

bool is_lut(ai_array_format format) {
  const uint32_t type = ai_fmt_get_type_id(format);
  return type == AI_FORMAT_TYPE_LUT4 || type == AI_FORMAT_TYPE_LUT8;
}

void check_shape(LayerCheck& check, TensorName name, const ai_tensor& tensor) {
  const uint32_t count = ai_dims_count(tensor.shape.type_size);
  if (count != AI_SHAPE_DIMS) {
    Finding(check.report()) << name << " has " << Count{count, "dimension"} << ", "
                            << Needed{AI_SHAPE_DIMS};
  } else if (tensor.shape.data == nullptr) {
    Finding(check.report()) << name << " has a shape without its " << AI_SHAPE_DIMS << " sizes";
  } else if (tensor.data == nullptr) {
    Finding(check.report()) << name << " has no array";
  }
}

// Bytes that an address must be a multiple of.
uint32_t alignment(ai_array_format format) {
  const uint32_t bits = ai_fmt_get_bits(format);
  return is_lut(format) || bits <= 8 ? 1 : bits <= 16 ? 2 : bits <= 32 ? 4 : 8;
}

// Rows may lie further apart than they are long.
void check_pitch(LayerCheck& check, TensorName name, const ai_tensor& tensor) {
  const uint32_t* sizes = tensor.shape.data;
  const uint64_t row = run_bytes(tensor.data->format, sizes[0]);
  const uint64_t rows = product(product(sizes[1], sizes[2]), sizes[3]);
  const uint32_t pitch = tensor.stride.data[1];
  if (pitch <= row || rows < 2) {
    return;
  }
  const uint64_t bytes = run_bytes(tensor.data->format, tensor.data->size);
  const uint64_t before_last = product(rows - 1, pitch);
  if (before_last > bytes || row > bytes - before_last) {
    Finding(check.report()) << name << " has an array of " << bytes << " bytes, its dimensions "
                            << dims_of(tensor) << " and strides take " << before_last + row;
  }
}

// The strides that the format and the dimensions give; those of rows may be larger.
void check_strides(LayerCheck& check, TensorName name, const ai_tensor& tensor, bool free_pitch) {
  const ai_stride& stride = tensor.stride;
  const uint32_t count = ai_dims_count(stride.type_size);
  if (count != AI_SHAPE_DIMS || stride.data == nullptr) {
    Finding(check.report()) << name << " has "
                            << Count{stride.data != nullptr ? count : 0, "stride"} << ", "
                            << Needed{AI_SHAPE_DIMS};
    return;
  }
  const ai_array_format format = tensor.data->format;
  const uint32_t* sizes = tensor.shape.data;
  Dims needed = {{run_bytes(format, 1), run_bytes(format, sizes[0]), 0, 0}};
  if (free_pitch && stride.data[1] > needed.sizes[1] && stride.data[1] % alignment(format) == 0) {
    needed.sizes[1] = stride.data[1];
  }
  needed.sizes[2] = product(needed.sizes[1], sizes[1]);
  needed.sizes[3] = product(needed.sizes[2], sizes[2]);
  const Dims actual = {{stride.data[0], stride.data[1], stride.data[2], stride.data[3]}};
  bool fits = true;
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    // Of a dimension of size 1 with free pitch the stride is not read.
    fits = fits && (actual.sizes[i] == needed.sizes[i] || (free_pitch && i > 1));
  }
  if (!fits) {
    Finding(check.report()) << name << " has the strides " << actual << ", " << needed
                            << " are needed";
  } else if (free_pitch) {
    check_pitch(check, name, tensor);
  }
}

void check_array(LayerCheck& check, TensorName name, const ai_tensor& tensor) {
  const ai_array& array = *tensor.data;
  const uint64_t elements = elements_of(tensor);
  if (elements == 0) {
    Finding(check.report()) << name << " has the dimensions " << dims_of(tensor) << ": it is empty";
  }
  if (ai_fmt_get_bits(array.format) == 0) {
    Finding(check.report()) << name << " has a format without a width, "
                            << FormatName{array.format};
  }
  if (array.size < elements) {
    Finding(check.report()) << name << " has an array of " << Count{array.size, "element"}
                            << ", its dimensions " << dims_of(tensor) << " take " << elements;
  }
}

// Functions that move an array's data along leave it at its data_start.
void check_offset(LayerCheck& check, TensorName name, const ai_array& array) {
  static constexpr uint8_t kResets[] = {kResetsInput, kResetsOutput, 0, kResetsScratch};
  const LayerRule* rule = check.rule();
  if (rule != nullptr && (rule->side_effects & kResets[name.list]) != 0 &&
      array.data != array.data_start) {
    const auto data = reinterpret_cast<uintptr_t>(array.data);
    const auto start = reinterpret_cast<uintptr_t>(array.data_start);
    Finding(check.report()) << name << " has its data "
                            << uint64_t{data > start ? data - start : start - data} << " bytes "
                            << (data > start ? "behind" : "before")
                            << " data_start, to which the function moves it back";
  }
}

void check_memory(LayerCheck& check, TensorName name, const ai_tensor& tensor) {
  const ai_array& array = *tensor.data;
  if (array.data == nullptr) {
    if (!check.scope().binds(array) && elements_of(tensor) != 0) {
      Finding(check.report()) << name << " has no data: the array of " << uint32_t{array.size}
                              << " elements points to none";
    }
    return;
  }
  const auto address = reinterpret_cast<uintptr_t>(array.data);
  const uint32_t needed = alignment(array.format);
  if (address % needed != 0) {
    Finding(check.report()) << name << " lies " << static_cast<uint32_t>(address % needed)
                            << " bytes behind a multiple of " << needed;
  }
  if (is_lut(array.format)) {
    if (array.data_start == nullptr) {
      Finding(check.report()) << name << " is of indices, but data_start points to no table of "
                              << (ai_fmt_get_type_id(array.format) == AI_FORMAT_TYPE_LUT4 ? 16u
                                                                                          : 256u)
                              << " values";
    }
    return;
  }
  check_offset(check, name, array);
}

}  // namespace

void check_records(LayerCheck& check, TensorName name, bool free_pitch) {
  const ai_tensor& tensor = *check.tensor(name.list, name.index);
  check_shape(check, name, tensor);
  if (!is_sound(&tensor)) {
    return;
  }
  check_array(check, name, tensor);
  check_strides(check, name, tensor, free_pitch);
  check_memory(check, name, tensor);
}

}  // namespace nnlib
