// SPDX-License-Identifier: MIT
// Well-known small networks as int8 graphs of full size, with random weights.
#ifndef TOOLS_NETWORKS_ARCHITECTURES_HPP
#define TOOLS_NETWORKS_ARCHITECTURES_HPP

#include <string>
#include <utility>
#include <vector>

#include "importer/graph/graph.hpp"

namespace nnlib::importer {

struct Architecture {
  std::string name;
  uint32_t bound;  // bytes of activations that live at once
  Graph graph;
};

// Keyword spotting, visual wake words, image classification, anomaly detection.
std::vector<Architecture> architectures();

}  // namespace nnlib::importer

#endif
