// SPDX-License-Identifier: MIT
// One layer under examination: its tensors, its sizes and its findings.
#ifndef NNLIB_CHECK_LAYER_CHECK_HPP
#define NNLIB_CHECK_LAYER_CHECK_HPP

#include "check/layer_rule.hpp"
#include "check/memory.hpp"
#include "check/report.hpp"
#include "check/symbols.hpp"
#include "check/tensor_rule.hpp"
#include "core/ai_network.h"

namespace nnlib {

// "input 0", ...
struct TensorName {
  uint32_t list;  // AI_CHAIN_*
  uint32_t index;
};
Text& operator<<(Text& text, TensorName name);

// "(1, 3, 2, 2)"
struct Dims {
  uint64_t sizes[AI_SHAPE_DIMS];
};
Text& operator<<(Text& text, const Dims& dims);

// "FMT_FLOAT", or "8 bits, 5 of them fractional" for a word without a name.
struct FormatName {
  ai_array_format format;
};
Text& operator<<(Text& text, FormatName name);

// "CONV2D", or the number of a type without a name.
struct TypeName {
  uint32_t type;
};
Text& operator<<(Text& text, TypeName name);

// At most 2^64 - 1.
uint64_t product(uint64_t a, uint64_t b);

// Bytes of elements that lie side by side; 0 for a format without a width.
uint64_t run_bytes(ai_array_format format, uint64_t elements);

// The number of elements that the shape has; for a sound tensor.
uint64_t elements_of(const ai_tensor& tensor);
Dims dims_of(const ai_tensor& tensor);

// Shape of four dimensions and array are there.
bool is_sound(const ai_tensor* tensor);

class LayerCheck {
 public:
  // chain: the layer's own, or that with which it runs inside a time-distributed layer.
  LayerCheck(const Scope& scope, const ai_layer& layer, const ai_tensor_chain* chain,
             const LayerRule* rule, Report& report)
      : scope_(scope), layer_(layer), chain_(chain), rule_(rule), report_(report) {}
  LayerCheck(const LayerCheck&) = delete;
  LayerCheck& operator=(const LayerCheck&) = delete;

  void run();

  const Scope& scope() const { return scope_; }
  const ai_layer& layer() const { return layer_; }
  const ai_tensor_chain* chain() const { return chain_; }
  const LayerRule* rule() const { return rule_; }
  Report& report() { return report_; }

  // The layer kind's record, which starts with the base record.
  template <class Record>
  const Record& record() const {
    return reinterpret_cast<const Record&>(layer_);
  }

  // Entries of a list, absent ones counted.
  uint32_t list_size(uint32_t list) const {
    const ai_tensor_list* found = ai_tensor_chain_list(chain_, list);
    return found != nullptr && found->tensors != nullptr ? found->size : 0;
  }
  // The tensor as the records have it, or null.
  const ai_tensor* tensor(uint32_t list, uint32_t index = 0) const {
    return ai_tensor_chain_get(chain_, list, index);
  }
  // The tensor if it is sound, or null.
  const ai_tensor* sound(uint32_t list, uint32_t index = 0) const {
    const ai_tensor* found = tensor(list, index);
    return is_sound(found) ? found : nullptr;
  }
  // A size of the tensor; 0 when the tensor is not sound.
  uint32_t size(uint32_t list, uint32_t dimension, uint32_t index = 0) const {
    return ai_tensor_dim(sound(list, index), dimension);
  }

  Symbols sizes;

 private:
  bool check_type();
  bool has_lists();
  void check_own_records();
  void check_list(uint32_t list, const char* rules);
  void check_tensor(TensorName name, const TensorRule& rule);
  void check_extent(TensorName name, const TensorRule& rule);
  const char* weights_rules() const;

  const Scope& scope_;
  const ai_layer& layer_;
  const ai_tensor_chain* chain_;
  const LayerRule* rule_;  // null for a function of the application's
  Report& report_;
};

// Says that a sound tensor should have other dimensions.
void say_dims(LayerCheck& check, TensorName name, const Dims& needed);

// --- the parts of an examination, a file each ---------------------------------------------------

// The tensor's own records: shape, strides, array, memory.
void check_records(LayerCheck& check, TensorName name, bool free_pitch);

// Format and quantization record against the kind letter of a rule.
void check_kind(LayerCheck& check, TensorName name, char kind);

// The types of a function that has an instance for each pair of them: those of products, or those
// of input 0.
void check_integer_types(LayerCheck& check);

// Whether the build has the elements of a sound tensor of kind 'q', or of integers.
void check_linked(LayerCheck& check, TensorName name, char kind);

// Outputs, inputs, weights and scratch that share memory.
void check_overlaps(LayerCheck& check);

}  // namespace nnlib

#endif
