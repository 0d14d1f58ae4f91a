// SPDX-License-Identifier: MIT
// A layer of a network, and the layers inside a time-distributed one.
#ifndef NNLIB_CHECK_INNER_LAYERS_HPP
#define NNLIB_CHECK_INNER_LAYERS_HPP

#include "check/memory.hpp"
#include "check/report.hpp"

namespace nnlib {

// chain: with which the layer runs.
void check_layer(const Scope& scope, const ai_layer& layer, const ai_tensor_chain* chain,
                 const Place& place, Report& report);

}  // namespace nnlib

#endif
