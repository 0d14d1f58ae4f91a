// SPDX-License-Identifier: MIT
// What a layer function needs of its record and tensors: one row for each public function.
#ifndef NNLIB_CHECK_LAYER_RULE_HPP
#define NNLIB_CHECK_LAYER_RULE_HPP

#include <cstdint>

#include "core/ai_layer.h"

namespace nnlib {

class LayerCheck;

enum class InPlace : uint8_t {
  kNever,      // no output shares memory with an input
  kSame,       // an output may start where an input starts
  kAbove,      // it may start there or behind
  kThird,      // an output may start where the third of inputs and weights starts
  kNoTensors,  // the layer reads and writes none
};

// What a function does to its tensors besides writing its outputs.
enum SideEffect : uint8_t {
  kResetsInput = 1,  // leaves the array's data at data_start
  kResetsOutput = 2,
  kResetsScratch = 4,
};

// The tensors of a list are written as text, one after the other, separated by blanks:
//
//   f(1,n,W,H)   float32 with these dimensions, in the order N, C, W, H. A letter stands for a size
//                that is the same wherever the letter stands in the row; the first tensor that has
//                it decides, unless the record does. A product is written 4UF, a quotient C/G, any
//                size '.'.
//   f#3U         float32 with this many elements in whatever shape
//   a            whatever shape
//   ?f#m         may be absent
//   f(N,C,W,H)*  one or more alike; letters that differ between them are written '.'
//
// The first letter is the kind of elements:
//
//   f  float32                        d  float32, or indices into a table of floats
//   r  as d, rows of any pitch        a  any format
//   i  uint8 or int8, one scale       w  uint8 or int8, one scale or D of them
//   s  the format of input 0          t  as i, of the type of input 0
//   e  uint8 or int8, whose scale     k  as e, of the type of input 0
//      the function does not read
//   q  Q7 or Q15                      p  Q of the width of input 0
//   b  int32                          u  uint32
//   x  8 bits or more, scratch bytes
struct LayerRule {
  ai_layer_forward forward;
  const char* name;
  const char* record = "ai_layer";  // the type of its record
  uint16_t types[2];                // layer types, 0 for none
  const char* inputs = "";
  const char* outputs = "";
  const char* weights = "";
  const char* depthwise = nullptr;  // weights where groups G are as many as input channels C
  const char* scratch = "";
  InPlace in_place = InPlace::kNever;
  uint8_t side_effects = 0;                     // SideEffect
  void (*record_sizes)(LayerCheck&) = nullptr;  // sets letters before tensors are read
  void (*details)(LayerCheck&) = nullptr;       // what the texts cannot say
  void (*memory)(LayerCheck&) = nullptr;        // scratch; called when nothing else was found
};

// The row of a function, or null.
const LayerRule* find_layer_rule(ai_layer_forward forward);

// Whether the layer's type is one of the function's. Of others the record may be a smaller one: it
// is not looked at.
inline bool has_type_of(const ai_layer& layer, const LayerRule& rule) {
  return layer.type == rule.types[0] || (rule.types[1] != 0 && layer.type == rule.types[1]);
}

// All rows, for tools.
struct LayerRules {
  const LayerRule* rows;
  uint32_t count;
};
LayerRules layer_rules();

}  // namespace nnlib

#endif
