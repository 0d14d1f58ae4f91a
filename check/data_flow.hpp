// SPDX-License-Identifier: MIT
// What layers hand to each other: who writes what, and whether it is still there when it is read.
#ifndef NNLIB_CHECK_DATA_FLOW_HPP
#define NNLIB_CHECK_DATA_FLOW_HPP

#include "check/memory.hpp"
#include "check/report.hpp"

namespace nnlib {

// Of a network whose walk visits so many layers.
void check_data_flow(const Scope& scope, uint32_t layers, Report& report);

}  // namespace nnlib

#endif
