// SPDX-License-Identifier: MIT
#include "importer/graph/value.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <type_traits>

#include "importer/graph/refusals.hpp"

namespace nnlib::importer {
namespace {

struct TypeRow {
  std::string_view name;
  size_t bytes;
};
constexpr std::array<TypeRow, 12> kTypes = {{{"f32", 4},
                                             {"f64", 8},
                                             {"f16", 2},
                                             {"u8", 1},
                                             {"s8", 1},
                                             {"u16", 2},
                                             {"s16", 2},
                                             {"u32", 4},
                                             {"s32", 4},
                                             {"u64", 8},
                                             {"s64", 8},
                                             {"bool", 1}}};

template <class To, class From>
std::vector<To> converted(const Value& value) {
  const auto from = value.as<From>();
  std::vector<To> to(from.size());
  std::transform(from.begin(), from.end(), to.begin(), [&](From x) {
    if constexpr (std::is_integral_v<To> && std::is_floating_point_v<From>) {
      if (!(x >= -0x1p63 && x < 0x1p63)) {  // nor is it one when not a number
        throw Refused("'" + value.name + "' holds " + std::to_string(x) + ", which is no integer");
      }
    }
    return static_cast<To>(x);
  });
  return to;
}

template <class To>
std::vector<To> to_numbers(const Value& value) {
  switch (value.type) {
    case Type::f32:
      return converted<To, float>(value);
    case Type::f64:
      return converted<To, double>(value);
    case Type::u8:
    case Type::boolean:
      return converted<To, uint8_t>(value);
    case Type::s8:
      return converted<To, int8_t>(value);
    case Type::u16:
      return converted<To, uint16_t>(value);
    case Type::s16:
      return converted<To, int16_t>(value);
    case Type::u32:
      return converted<To, uint32_t>(value);
    case Type::s32:
      return converted<To, int32_t>(value);
    case Type::u64:
      return converted<To, uint64_t>(value);
    case Type::s64:
      return converted<To, int64_t>(value);
    case Type::f16:
      break;
  }
  return {};
}

}  // namespace

std::string_view type_name(Type type) {
  return kTypes[static_cast<size_t>(type)].name;
}

std::optional<Type> type_of_name(std::string_view name) {
  for (size_t i = 0; i < kTypes.size(); ++i) {
    if (kTypes[i].name == name) {
      return static_cast<Type>(i);
    }
  }
  return std::nullopt;
}

size_t type_bytes(Type type) {
  return kTypes[static_cast<size_t>(type)].bytes;
}

int64_t elements_of(const Shape& shape) {
  constexpr int64_t kMost = int64_t{1} << 40;
  int64_t elements = 1;
  bool empty = false;
  for (const int64_t d : shape) {
    if (d < 0 || d > kMost) {
      return -1;
    }
    if (d == 0) {
      empty = true;
    } else if ((elements *= d) > kMost) {
      return -1;
    }
  }
  return empty ? 0 : elements;
}

int Quantization::fraction_bits() const {
  return -std::ilogb(scales[0]);
}

Quantization fixed_point(int fraction_bits) {
  return {{std::ldexp(1.0F, -fraction_bits)}, {0}, 0, true};
}

std::vector<double> to_doubles(const Value& value) {
  return to_numbers<double>(value);
}

std::vector<int64_t> to_integers(const Value& value) {
  return to_numbers<int64_t>(value);
}

std::vector<double> to_reals(const Value& value) {
  std::vector<double> numbers = to_doubles(value);
  if (const auto& q = value.quantization) {
    const auto axis = static_cast<size_t>(q->axis);
    size_t run = 1;
    for (size_t i = axis + 1; i < value.shape.size(); ++i) {
      run *= static_cast<size_t>(value.shape[i]);
    }
    for (size_t i = 0; i < numbers.size(); ++i) {
      const size_t c = q->per_tensor() ? 0 : i / run % q->scales.size();
      numbers[i] = (numbers[i] - q->zero_points[c]) * static_cast<double>(q->scales[c]);
    }
  }
  return numbers;
}

}  // namespace nnlib::importer
