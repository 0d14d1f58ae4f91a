// SPDX-License-Identifier: MIT
#include "check/layer_check.hpp"

#include "layers/layers.h"

namespace nnlib {

Text& operator<<(Text& text, TensorName name) {
  static constexpr const char* kLists[] = {"input ", "output ", "weights ", "scratch "};
  return text << kLists[name.list] << name.index;
}

Text& operator<<(Text& text, const Dims& dims) {
  text << '(';
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    text << (i == 0 ? "" : ", ") << dims.sizes[i];
  }
  return text << ')';
}

Text& operator<<(Text& text, FormatName name) {
  const char* known = ai_array_fmt_name(name.format);
  if (known[0] == 'F') {
    return text << known;
  }
  return text << ai_fmt_get_bits(name.format) << " bits, " << ai_fmt_get_fbits(name.format)
              << " of them fractional";
}

Text& operator<<(Text& text, TypeName name) {
  const char* known = ai_layer_type_name(name.type);
  return *known != '\0' ? text << known : text << name.type;
}

uint64_t product(uint64_t a, uint64_t b) {
  return b != 0 && a > ~uint64_t{0} / b ? ~uint64_t{0} : a * b;
}

uint64_t run_bytes(ai_array_format format, uint64_t elements) {
  const uint64_t width = ai_fmt_get_bits(format) + ai_fmt_get_pbits(format);
  const uint64_t bits = product(width, elements) >> ai_fmt_get_comp_shift(format);
  return bits / 8 + (bits % 8 != 0 ? 1 : 0);
}

bool is_sound(const ai_tensor* tensor) {
  return tensor != nullptr && tensor->data != nullptr && tensor->shape.data != nullptr &&
         ai_dims_count(tensor->shape.type_size) == AI_SHAPE_DIMS;
}

uint64_t elements_of(const ai_tensor& tensor) {
  uint64_t elements = 1;
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    elements = product(elements, tensor.shape.data[i]);
  }
  return elements;
}

Dims dims_of(const ai_tensor& tensor) {
  const uint32_t* sizes = tensor.shape.data;
  return {{sizes[0], sizes[1], sizes[2], sizes[3]}};
}

void say_dims(LayerCheck& check, TensorName name, const Dims& needed) {
  const ai_tensor& tensor = *check.tensor(name.list, name.index);
  uint64_t elements = 1;
  for (const uint64_t size : needed.sizes) {
    elements = product(elements, size);
  }
  Finding finding(check.report());
  finding << name << " has the dimensions " << dims_of(tensor) << ", " << needed << " are needed";
  if (elements == elements_of(tensor)) {
    finding << ": another order or view of its " << Count{elements, "element"};
  }
}

// --- one layer ----------------------------------------------------------------------------------

// False when the record is that of another function.
bool LayerCheck::check_type() {
  if (rule_ == nullptr) {
    if (!ai_layer_type_is_valid(layer_.type)) {
      Finding(report_) << "type " << uint32_t{layer_.type} << " is no layer type";
    }
    return false;
  }
  if (has_type_of(layer_, *rule_)) {
    return true;
  }
  Finding finding(report_);
  finding << "the layer's type is " << TypeName{layer_.type} << ", needed is "
          << TypeName{rule_->types[0]};
  if (rule_->types[1] != 0) {
    finding << " or " << TypeName{rule_->types[1]};
  }
  return false;
}

// Of a function that is not known, or whose record is another's.
void LayerCheck::check_own_records() {
  for (uint32_t list = 0; list < AI_CHAIN_LISTS; ++list) {
    const uint32_t count = ai_tensor_list_count(ai_tensor_chain_list(chain_, list));
    for (uint32_t index = 0; index < count; ++index) {
      check_records(*this, {list, index}, true);
    }
  }
}

void LayerCheck::check_extent(TensorName name, const TensorRule& rule) {
  const ai_tensor& found = *tensor(name.list, name.index);
  const char* text = rule.terms;
  if (rule.extent == TensorRule::kElements) {
    const Term term = next_term(text, sizes);
    const uint64_t elements = elements_of(found);
    if (term.symbol != 0) {
      sizes.set(term.symbol, static_cast<uint32_t>(elements));
    } else if (term.known && elements != term.value) {
      Finding(report_) << name << " has " << Count{elements, "element"} << ", "
                       << Needed{term.value};
    }
    return;
  }
  Dims needed = dims_of(found);
  bool fits = true;
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    const uint32_t actual = found.shape.data[i];
    const Term term = next_term(text, sizes);
    if (term.symbol != 0) {
      sizes.set(term.symbol, actual);
    }
    if (term.known) {
      needed.sizes[i] = term.value;
      fits = fits && term.value == actual;
    }
  }
  if (!fits) {
    say_dims(*this, name, needed);
  }
}

void LayerCheck::check_tensor(TensorName name, const TensorRule& rule) {
  if (sound(name.list, name.index) == nullptr) {
    return;  // check_records says why
  }
  if (rule.extent != TensorRule::kAnyShape) {
    check_extent(name, rule);
  }
  check_kind(*this, name, rule.kind);
}

void LayerCheck::check_list(uint32_t list, const char* rules) {
  const uint32_t count = list_size(list);
  uint32_t index = 0;
  for (TensorRule rule; next_tensor_rule(rules, rule);) {
    do {
      const TensorName name = {list, index};
      if (tensor(list, index) != nullptr) {
        check_records(*this, name, rule.kind == 'r');
        check_tensor(name, rule);
      } else if (!rule.optional) {
        Finding(report_) << name << " is missing";
      }
      ++index;
    } while (rule.repeats && index < count);
  }
  if (count > index) {
    static constexpr const char* kLists[] = {"inputs", "outputs", "weights", "scratch"};
    Finding(report_) << "the list of " << kLists[list] << " has " << Count{count, "tensor"}
                     << ", at most " << index << (index == 1 ? " is taken" : " are taken");
  }
}

const char* LayerCheck::weights_rules() const {
  const uint32_t groups = sizes['G'];
  const bool depthwise =
      rule_->depthwise != nullptr && groups > 1 && groups == sizes['C'] &&
      (rule_->inputs[0] != 'f' || (size(AI_CHAIN_WEIGHTS, 0) == groups && sizes['D'] == groups));
  return depthwise ? rule_->depthwise : rule_->weights;
}

// As many lists as the function looks into.
bool LayerCheck::has_lists() {
  const bool weights = rule_ != nullptr && *rule_->weights != '\0';
  const bool scratch = rule_ != nullptr && *rule_->scratch != '\0';
  const uint32_t needed = scratch ? 4 : weights ? 3 : 2;
  const bool present = chain_ != nullptr && chain_->chain != nullptr;
  const uint32_t lists = present ? chain_->size : 0;
  if (lists < needed) {
    Finding(report_) << "the layer's chain has " << Count{lists, "list"} << ", " << Needed{needed};
  }
  return lists >= needed;
}

void LayerCheck::run() {
  const uint32_t before = report_.count();
  const bool known = check_type();
  const bool tensors = rule_ == nullptr || rule_->in_place != InPlace::kNoTensors;
  if (tensors && !has_lists()) {
    return;
  }
  if (!known) {
    check_own_records();
    return;
  }
  if (rule_->record_sizes != nullptr) {
    rule_->record_sizes(*this);
  }
  if (tensors) {
    check_list(AI_CHAIN_INPUT, rule_->inputs);
    check_list(AI_CHAIN_OUTPUT, rule_->outputs);
    check_list(AI_CHAIN_WEIGHTS, weights_rules());
    check_list(AI_CHAIN_SCRATCH, rule_->scratch);
    check_integer_types(*this);
    check_overlaps(*this);
  }
  if (rule_->details != nullptr) {
    rule_->details(*this);
  }
  if (rule_->memory != nullptr && report_.count() == before) {
    rule_->memory(*this);
  }
}

}  // namespace nnlib
