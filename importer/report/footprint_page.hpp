// SPDX-License-Identifier: MIT
// The measured figures of docs/footprint.md, which the build puts into the program.
#ifndef NNLIB_IMPORTER_REPORT_FOOTPRINT_PAGE_HPP
#define NNLIB_IMPORTER_REPORT_FOOTPRINT_PAGE_HPP

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nnlib::importer {

// Executed instructions per multiply-accumulate, element or step of a layer that was counted.
struct CountRow {
  std::string layer;                                    // "convolution 3x3, 16 to 16 channels"
  std::string of;                                       // type, or the unit
  std::map<std::string, double, std::less<>> per_unit;  // by column: "m4f O2"
};

class FootprintPage {
 public:
  explicit FootprintPage(std::string_view page);

  // Bytes of flash (text, rodata and data at -Os) that a function adds to an empty program.
  std::optional<uint32_t> flash(std::string_view core, std::string_view function) const;
  const std::vector<CountRow>& counts() const { return counts_; }

 private:
  std::map<std::string, std::map<std::string, uint32_t, std::less<>>, std::less<>> flash_;
  std::vector<CountRow> counts_;
};

// The page of this version.
const FootprintPage& footprint_page();

}  // namespace nnlib::importer

#endif
