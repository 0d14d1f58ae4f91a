// SPDX-License-Identifier: MIT
// What quantization has cost and spared, as tables to read.
#ifndef NNLIB_IMPORTER_QUANTIZE_TABLE_HPP
#define NNLIB_IMPORTER_QUANTIZE_TABLE_HPP

#include "importer/quantize/quantize.hpp"
#include "importer/report/report.hpp"

namespace nnlib::importer {

// Layers of the model, the noisiest first.
std::string noise_table(const Quantized& quantized, const std::string& type);

// What the network takes before and after.
std::string size_table(const Report& before, const Report& after, const std::string& type);

// Samples for which the largest number of the first output stands at the sample's label.
size_t right_answers(const Graph& graph, const std::vector<Sample>& samples,
                     std::span<const int64_t> labels);

}  // namespace nnlib::importer

#endif
