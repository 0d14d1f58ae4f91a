// SPDX-License-Identifier: MIT
// The table of lowerings: what is available, and how. The support table of the manual is printed
// from it, so neither can say what the other does not do.
#ifndef NNLIB_IMPORTER_LOWER_LOWERING_HPP
#define NNLIB_IMPORTER_LOWER_LOWERING_HPP

#include <memory>
#include <stdexcept>

#include "importer/graph/refusals.hpp"
#include "importer/lower/network_builder.hpp"

namespace nnlib::importer {

// Thrown by a lowering; becomes a refusal of its node.
struct Unsupported : std::runtime_error {
  explicit Unsupported(const std::string& reason, std::string way = {})
      : std::runtime_error(reason), way_out(std::move(way)) {}
  std::string way_out;
};

// Throws Unsupported unless the condition holds.
inline void require(bool condition, const std::string& reason, const std::string& way_out = {}) {
  if (!condition) {
    throw Unsupported(reason, way_out);
  }
}

// The element types that a lowering takes. Data movement takes any of 1, 2 or 4 bytes.
constexpr uint8_t kFloat = 1;
constexpr uint8_t kInteger = 2;  // quantized int8 and uint8
constexpr uint8_t kFixed = 4;    // fixed point of 8 and 16 bits
constexpr uint8_t kAnyType = kFloat | kInteger | kFixed | 8;

struct Lowering {
  Op op;
  void (*lower)(NetworkBuilder&, const Node&);
  uint8_t types;             // kFloat, kInteger, ...
  const char* restrictions;  // for the support table; may be empty
};

// All lowerings, in the order of the table.
std::vector<Lowering> lowerings();
const Lowering* lowering_of(Op op);

// Families, one a file.
std::span<const Lowering> convolution_lowerings();
std::span<const Lowering> dense_lowerings();
std::span<const Lowering> pool_lowerings();
std::span<const Lowering> elementwise_lowerings();
std::span<const Lowering> function_lowerings();
std::span<const Lowering> softmax_lowerings();
std::span<const Lowering> shape_lowerings();
std::span<const Lowering> convert_lowerings();
std::span<const Lowering> scalar_lowerings();
std::span<const Lowering> matrix_lowerings();
std::span<const Lowering> normalization_lowerings();
std::span<const Lowering> recurrent_lowerings();

// Builds the network of a graph whose shapes are all known. Throws Refused with all reasons.
std::unique_ptr<Network> lower(const Graph& graph, const Sharing& sharing = {});

}  // namespace nnlib::importer

#endif
