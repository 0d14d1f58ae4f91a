// SPDX-License-Identifier: MIT
// What calibration data tells about a network: ranges, mean errors, noise.
#ifndef NNLIB_IMPORTER_QUANTIZE_CALIBRATE_HPP
#define NNLIB_IMPORTER_QUANTIZE_CALIBRATE_HPP

#include <functional>

#include "importer/quantize/probe.hpp"
#include "importer/quantize/rewrite.hpp"
#include "importer/run/errors.hpp"

namespace nnlib::importer {

// Called after each run of a network on a sample.
using RunDone = std::function<void()>;

// How every float value that a node gives or an input has is spread, by its id.
std::vector<Histogram> spreads_of(const Graph& graph, const std::vector<Sample>& samples,
                                  const RunDone& progress);

// Quantized weights differ from their floats by amounts that do not cancel out: the graph with
// biases that take away what this adds to a channel on average.
Graph corrected(const Graph& graph, const Rewritten& rewritten, const std::vector<Sample>& samples,
                const RunDone& progress);

// Of values of a graph against their twins, by the float graph's ids. Those without a twin are
// left at 0.
std::vector<Error> noise_of(const Graph& graph, const Rewritten& rewritten,
                            const std::vector<Sample>& samples, const RunDone& progress);

}  // namespace nnlib::importer

#endif
