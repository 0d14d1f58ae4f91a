// SPDX-License-Identifier: MIT
// Tensors of a model: element types, shapes, quantization, constant bytes.
#ifndef NNLIB_IMPORTER_GRAPH_VALUE_HPP
#define NNLIB_IMPORTER_GRAPH_VALUE_HPP

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nnlib::importer {

enum class Type : uint8_t { f32, f64, f16, u8, s8, u16, s16, u32, s32, u64, s64, boolean };

std::string_view type_name(Type type);
std::optional<Type> type_of_name(std::string_view name);
size_t type_bytes(Type type);

// The Type of a C++ element type.
template <class T>
constexpr Type type_of() {
  if constexpr (std::is_same_v<T, float>) {
    return Type::f32;
  } else if constexpr (std::is_same_v<T, double>) {
    return Type::f64;
  } else if constexpr (std::is_same_v<T, bool>) {
    return Type::boolean;
  } else if constexpr (sizeof(T) == 1) {
    return std::is_signed_v<T> ? Type::s8 : Type::u8;
  } else if constexpr (sizeof(T) == 2) {
    return std::is_signed_v<T> ? Type::s16 : Type::u16;
  } else if constexpr (sizeof(T) == 4) {
    return std::is_signed_v<T> ? Type::s32 : Type::u32;
  } else {
    return std::is_signed_v<T> ? Type::s64 : Type::u64;
  }
}

// Row-major dimensions as the model has them; empty for a scalar, -1 where unknown.
using Shape = std::vector<int64_t>;

// Elements of a shape; -1 when a dimension is unknown or the product exceeds 2^40.
int64_t elements_of(const Shape& shape);

// real = (q - zero point) * scale. One entry, or one for each index along `axis`.
struct Quantization {
  std::vector<float> scales;
  std::vector<int32_t> zero_points;  // as many as scales
  int axis = 0;
  bool fixed = false;  // fixed point: one scale, a power of two, and zero point 0

  bool per_tensor() const { return scales.size() == 1; }
  // Of fixed point: -log2(scale).
  int fraction_bits() const;
  bool operator==(const Quantization&) const = default;
};

Quantization fixed_point(int fraction_bits);

// Elements in row-major order and in this machine's byte order.
using Bytes = std::vector<uint8_t>;

struct Value {
  std::string name;  // unique in its graph
  Type type = Type::f32;
  Shape shape;
  std::optional<Quantization> quantization;
  std::shared_ptr<const Bytes> data;  // null: not a constant

  bool constant() const { return data != nullptr; }
  int64_t elements() const { return elements_of(shape); }
  int64_t rank() const { return static_cast<int64_t>(shape.size()); }

  // A constant's elements; T must be its type.
  template <class T>
  std::span<const T> as() const {
    return {reinterpret_cast<const T*>(data->data()), data->size() / sizeof(T)};
  }
};

template <class T>
std::shared_ptr<const Bytes> make_bytes(std::span<const T> elements) {
  const auto* first = reinterpret_cast<const uint8_t*>(elements.data());
  return std::make_shared<const Bytes>(first, first + elements.size_bytes());
}

// A constant's elements as numbers of a common type, whatever its own type is (but f16).
std::vector<double> to_doubles(const Value& value);
std::vector<int64_t> to_integers(const Value& value);
// The numbers that a constant's elements stand for.
std::vector<double> to_reals(const Value& value);

}  // namespace nnlib::importer

#endif
