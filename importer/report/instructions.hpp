// SPDX-License-Identifier: MIT
// How many instructions a layer will take, from those that were counted of others.
#ifndef NNLIB_IMPORTER_REPORT_INSTRUCTIONS_HPP
#define NNLIB_IMPORTER_REPORT_INSTRUCTIONS_HPP

#include "importer/lower/network.hpp"
#include "importer/report/footprint_page.hpp"

namespace nnlib::importer {

// Where an estimate comes from.
enum class Basis {
  counted,       // a layer of this very kernel, these channels and this type, per unit
  interpolated,  // several of this kind and type
  scaled,        // a single one of this kind and type, of other sizes
};
const char* basis_name(Basis basis);

struct Estimate {
  double instructions;
  Basis basis;
};

// What a layer is counted by.
struct LayerWork {
  std::string kind;  // "convolution", "depthwise", "dense", "relu", ...; empty: nothing was counted
  std::string type;  // "float", "int8", "uint8", "Q7", "Q15"
  uint64_t units;    // multiply-accumulates, cells of windows, or elements
  double products;   // or cells, that one output value is made of
  double channels;   // of the output
};
LayerWork work_of(const Layer& layer);

// The estimate for a column of the page's table ("m4f O2"); nothing when no such layer was counted.
//
// Instructions per multiply-accumulate or cell are a + b / products + c / channels, not below zero,
// fitted to the counted layers: what each product costs, each output value, and each loading of an
// input.
std::optional<Estimate> estimate(const FootprintPage& page, const LayerWork& work,
                                 std::string_view column);

}  // namespace nnlib::importer

#endif
