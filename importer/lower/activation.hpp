// SPDX-License-Identifier: MIT
// Functions of one number: as float layers, as the function of a fused layer, as tables.
#ifndef NNLIB_IMPORTER_LOWER_ACTIVATION_HPP
#define NNLIB_IMPORTER_LOWER_ACTIVATION_HPP

#include <optional>

#include "importer/lower/network_builder.hpp"

namespace nnlib::importer {

struct Activation {
  Function kernel;   // ai_nl_func
  Function forward;  // of an ai_layer_nl
  std::vector<float> parameters;
};

// The runtime's function of a unary node; nothing when it has none.
std::optional<Activation> activation_of(const Node& node);

// The activation that a pass has fused into the node (pass/fusing.hpp).
std::optional<Activation> fused_activation(const Node& node);

// The function's value in double precision; nothing when the node is no function of one number.
std::optional<double> unary_value(const Node& node, double x);

// The results of all 256 inputs of a unary function between two quantizations, rounded to nearest,
// halves away from zero.
Bytes unary_table(const Node& node, const Value& in, const Value& out);

}  // namespace nnlib::importer

#endif
