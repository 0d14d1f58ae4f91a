// SPDX-License-Identifier: MIT
// The tables and sentences of a report, as text and HTML share them.
#ifndef NNLIB_IMPORTER_REPORT_REPORT_COLUMNS_HPP
#define NNLIB_IMPORTER_REPORT_REPORT_COLUMNS_HPP

#include "importer/report/report.hpp"
#include "importer/report/table.hpp"

namespace nnlib::importer {

Table layer_table(const Report& report);
Table function_table(const Report& report);
Table port_table(const Report& report);

// "arena", "24,064 bytes": what stands at the head.
std::vector<std::pair<std::string, std::string>> report_summary(const Report& report);
// Sentences on where the figures come from.
std::vector<std::string> report_notes(const Report& report);

// "1 x 49 x 10 x 1".
std::string shape_of(const ReportPort& port);
// "scale 0.5, zero point -3", or nothing.
std::string quantization_of(const ReportPort& port);

// 1234567 as "1,234,567".
std::string grouped(uint64_t number);

}  // namespace nnlib::importer

#endif
