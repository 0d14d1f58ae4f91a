// SPDX-License-Identifier: MIT
// A profile as text and as JSON.
#include <algorithm>

#include "check/ai_network_check.h"
#include "check/text.hpp"
#include "profile/ai_profile.h"

namespace {

using nnlib::Text;

// Text in columns; a number stands at the right of its column.
class Line {
 public:
  Line(ai_profile_write write, void* context) : write_(write), context_(context) {}

  template <class Value>
  Line& left(const Value& value, size_t width) {
    const size_t start = text_.length();
    text_ << value;
    return fill(start + width);
  }
  template <class Value>
  Line& right(const Value& value, size_t width) {
    Text number;
    number << value;
    fill(text_.length() + width - std::min(width, number.length()));
    text_ << number.c_str();
    return *this;
  }
  void end() {
    text_ << '\n';
    write_(text_.c_str(), context_);
    text_.clear();
  }

 private:
  Line& fill(size_t column) {
    while (text_.length() < std::min(column, Text::kCapacity)) {
      text_ << ' ';
    }
    return *this;
  }

  ai_profile_write write_;
  void* context_;
  Text text_;
};

// numerator / denominator with so many decimals, rounded; "-" without a denominator.
Text quotient(uint64_t numerator, uint64_t denominator, uint32_t decimals) {
  Text text;
  if (denominator == 0) {
    text << '-';
    return text;
  }
  uint64_t unit = 1;
  for (uint32_t i = 0; i < decimals; ++i) {
    unit *= 10;
  }
  const uint64_t scaled = (numerator * unit + denominator / 2) / denominator;
  text << scaled / unit << '.';
  for (uint64_t digit = unit / 10; digit > 0; digit /= 10) {
    text << static_cast<char>('0' + scaled / digit % 10);
  }
  return text;
}

const ai_tensor* output_of(const ai_profile_entry& entry) {
  return ai_tensor_chain_output(entry.layer->tensor_chain, 0);
}

const char* function_of(const ai_profile_entry& entry) {
  const char* name = ai_layer_function_name(entry.layer->forward);
  return name[0] != '\0' ? name : "(application)";
}

Text map_of(const ai_profile_entry& entry) {
  const ai_tensor* output = output_of(entry);
  Text text;
  text << ai_tensor_dim(output, AI_SHAPE_H) << 'x' << ai_tensor_dim(output, AI_SHAPE_W) << 'x'
       << ai_tensor_dim(output, AI_SHAPE_C);
  return text;
}

struct Sums {
  uint64_t ticks = 0;
  uint64_t macs = 0;
};

Sums sums_of(const ai_profile_entry* entries, uint32_t count) {
  Sums sums;
  for (uint32_t i = 0; i < count; ++i) {
    sums.ticks += entries[i].ticks;
    sums.macs += ai_layer_multiply_accumulates(entries[i].layer);
  }
  return sums;
}

void figures(Line& line, uint64_t ticks, uint64_t all_ticks, uint64_t macs) {
  line.right(ticks, 12)
      .right(quotient(100 * ticks, all_ticks, 1).c_str(), 8)
      .right(macs, 12)
      .right(quotient(ticks, macs, 2).c_str(), 10)
      .end();
}

}  // namespace

void ai_profile_print(const ai_profile_entry* entries, uint32_t count, const char* unit,
                      ai_profile_write write, void* context) {
  constexpr size_t kPlace = 4;
  constexpr size_t kName = 34;
  constexpr size_t kMap = 14;
  const Sums sums = sums_of(entries, count);
  Line line(write, context);
  line.left("#", kPlace).left("function", kName).left("output", kMap);
  line.right(unit, 12).right("%", 8).right("macs", 12).right("per mac", 10).end();
  for (uint32_t i = 0; i < count; ++i) {
    line.left(i, kPlace).left(function_of(entries[i]), kName);
    line.left(map_of(entries[i]).c_str(), kMap);
    figures(line, entries[i].ticks, sums.ticks, ai_layer_multiply_accumulates(entries[i].layer));
  }
  line.left("all", kPlace + kName + kMap);
  figures(line, sums.ticks, sums.ticks, sums.macs);
}

void ai_profile_print_json(const ai_profile_entry* entries, uint32_t count, const char* unit,
                           ai_profile_write write, void* context) {
  Text text;
  text << "{\"unit\": \"" << unit << "\", \"layers\": [";
  write(text.c_str(), context);
  for (uint32_t i = 0; i < count; ++i) {
    text.clear();
    text << (i == 0 ? "" : ", ") << "{\"function\": \"" << function_of(entries[i])
         << "\", \"shape\": [";
    for (uint32_t dim = 0; dim < AI_SHAPE_DIMS; ++dim) {
      text << (dim == 0 ? "" : ", ") << ai_tensor_dim(output_of(entries[i]), dim);
    }
    text << "], \"ticks\": " << entries[i].ticks
         << ", \"macs\": " << ai_layer_multiply_accumulates(entries[i].layer) << '}';
    write(text.c_str(), context);
  }
  write("]}\n", context);
}
