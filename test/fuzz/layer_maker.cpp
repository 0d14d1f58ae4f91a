// SPDX-License-Identifier: MIT
// The tensors of a layer, as its rule has them.
#include <algorithm>
#include <cstring>

#include "nnlib.h"
#include "test/fuzz/random_network.hpp"

using namespace nnlib;

LayerMaker::LayerMaker(RandomNetwork& network, const LayerRule& layer_rule, RandomTensor* given)
    : choose(network.choose_), rule(layer_rule), network_(network), given_(given) {
  find(rule)->make(*this);
  for (const uint32_t list :
       {AI_CHAIN_INPUT, AI_CHAIN_OUTPUT, AI_CHAIN_WEIGHTS, AI_CHAIN_SCRATCH}) {
    make(list);
  }
  finish();
}

const RecordMaker* LayerMaker::find(const LayerRule& rule) {
  for (const RecordMaker& maker : kRecordMakers) {
    if (std::strcmp(maker.record, rule.record) == 0) {
      return &maker;
    }
  }
  return nullptr;
}

bool LayerMaker::knows(const LayerRule& rule) {
  return find(rule) != nullptr;
}

uint32_t LayerMaker::size() {
  return choose.one_in(8) ? choose.between(8, 34) : choose.between(1, 6);
}

LayerMaker::Dims LayerMaker::dims(uint32_t list, uint32_t index) const {
  return nnlib::dims_of(lists_[list][index]->tensor);
}

ai_array_format LayerMaker::input_format() const {
  return lists_[AI_CHAIN_INPUT].empty()
             ? AI_ARRAY_FORMAT_FLOAT
             : ai_fmt_get_code(ai_tensor_format(&lists_[AI_CHAIN_INPUT][0]->tensor));
}

ai_array* LayerMaker::array(ai_array_format format, uint32_t count) {
  const uint32_t bytes = ai_array_get_data_byte_size(format, count);
  auto* data = own<uint8_t>(bytes);
  network_.fill(data, bytes, ai_fmt_is_float(format));
  auto* made = own<ai_array>();
  *made = {format, count, data, data};
  return made;
}

// --- sizes --------------------------------------------------------------------------------------

// Without an extent: of later inputs those of the first with some sizes 1, of outputs that of all
// inputs.
LayerMaker::Dims LayerMaker::dims_of(const TensorRule& tensor, uint32_t list) {
  const char* text = tensor.terms;
  Dims made = {{choose.one_in(8) ? size() : 1, size(), size(), size()}};
  if (tensor.extent == TensorRule::kElements) {
    const Term term = next_term(text, sizes);
    const uint64_t elements = term.known ? term.value : size();
    if (term.symbol != 0) {
      sizes.set(term.symbol, static_cast<uint32_t>(elements));
    }
    made = {{1, 1, 1, 1}};
    made.sizes[choose.below(AI_SHAPE_DIMS)] = elements;
    if (list == AI_CHAIN_OUTPUT && choose.below(4) != 0) {
      made = dims(AI_CHAIN_INPUT);
    }
  } else if (tensor.extent == TensorRule::kDims) {
    for (uint64_t& dim : made.sizes) {
      const Term term = next_term(text, sizes);
      dim = term.known ? term.value : dim;
      if (term.symbol != 0) {
        sizes.set(term.symbol, static_cast<uint32_t>(dim));
      }
    }
  } else if (list == AI_CHAIN_WEIGHTS) {  // parameters of a nonlinearity or slopes
    made = {{1, sizes.known('D') ? sizes['D'] : size(), choose.one_in(2) ? sizes['w'] : 1, 1}};
  } else if (list != AI_CHAIN_SCRATCH && !lists_[AI_CHAIN_INPUT].empty()) {
    made = dims(AI_CHAIN_INPUT);
    for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
      if (list == AI_CHAIN_INPUT && choose.one_in(3)) {
        made.sizes[i] = made.sizes[i] == 1 ? size() : 1;
      }
      for (uint32_t k = 1; list == AI_CHAIN_OUTPUT && k < lists_[AI_CHAIN_INPUT].size(); ++k) {
        made.sizes[i] = std::max(made.sizes[i], dims(AI_CHAIN_INPUT, k).sizes[i]);
      }
    }
  }
  for (uint64_t elements = 1; uint64_t & dim : made.sizes) {
    if (!product(elements, dim) || product(elements, dim) > 20000) {
      dim = 1;
    }
    elements *= dim;
  }
  return made;
}

// Whether the terms can have these dimensions; if so, their letters get them.
bool LayerMaker::binds(const char* terms, const Dims& wanted) {
  Symbols bound = sizes;
  for (const uint64_t dim : wanted.sizes) {
    const Term term = next_term(terms, bound);
    if (term.known && term.value != dim) {
      return false;
    }
    if (term.symbol != 0) {
      bound.set(term.symbol, static_cast<uint32_t>(dim));
    }
  }
  sizes = bound;
  return true;
}

// --- formats ------------------------------------------------------------------------------------

ai_array_format LayerMaker::format(uint32_t list, char kind) {
  const ai_array_format in = input_format();
  const auto q = [this](uint32_t bits) {
    return AI_ARRAY_FORMAT_MAKE_Q(bits,
                                  choose.one_in(16) ? choose.below(128) : choose.below(bits + 1));
  };
  const auto any_q = [&] { return q(choose.of({8u, 16u})); };
  const auto integer = [this] { return choose.of({AI_ARRAY_FORMAT_S8, AI_ARRAY_FORMAT_U8}); };
  switch (kind) {
    case 'f':
      return AI_ARRAY_FORMAT_FLOAT;
    case 'd':
    case 'r':
      return choose.of({AI_ARRAY_FORMAT_FLOAT, AI_ARRAY_FORMAT_LUT8_FLOAT, AI_ARRAY_FORMAT_FLOAT,
                        AI_ARRAY_FORMAT_LUT4_FLOAT});
    case 'a':
      if (list == AI_CHAIN_OUTPUT) {  // of a conversion
        return !ai_fmt_is_float(in) ? AI_ARRAY_FORMAT_FLOAT
               : choose.one_in(2)   ? any_q()
                                    : integer();
      }
      if (choose.one_in(4)) {
        const ai_array_format* formats = nullptr;
        const uint32_t count = ai_array_fmt_get_formats(&formats);
        return formats[choose.below(count)];
      }
      return choose.of({AI_ARRAY_FORMAT_FLOAT, AI_ARRAY_FORMAT_S8, AI_ARRAY_FORMAT_U8,
                        AI_ARRAY_FORMAT_S16, any_q()});
    case 'i':
      return integer();
    case 'w':
      return ai_fmt_is_signed(in) ? AI_ARRAY_FORMAT_S8 : integer();
    case 'e':
      return list != AI_CHAIN_OUTPUT ? integer()
             : ai_fmt_is_signed(in)  ? AI_ARRAY_FORMAT_U8
                                     : AI_ARRAY_FORMAT_S8;
    case 'q':
      return any_q();
    case 'p':
      return choose.one_in(2) ? in
             : choose.one_in(2)
                 ? AI_ARRAY_FORMAT_MAKE_Q(ai_fmt_get_bits(in), ai_fmt_get_bits(in) - 1)
                 : q(ai_fmt_get_bits(in));
    case 'b':
      return AI_ARRAY_FORMAT_S32;
    case 'u':
      return AI_ARRAY_FORMAT_U32;
    default:  // s, t, k
      return in;
  }
}

namespace {

bool is_byte(ai_array_format format) {
  const uint32_t code = ai_fmt_get_code(format);
  return code == AI_ARRAY_FORMAT_S8 || code == AI_ARRAY_FORMAT_U8;
}

}  // namespace

bool LayerMaker::takes(char kind, const RandomTensor& tensor) const {
  const ai_array_format format = ai_fmt_get_code(ai_tensor_format(&tensor.tensor));
  const bool quantized = tensor.tensor.klass != nullptr;
  switch (kind) {
    case 'f':
      return format == AI_ARRAY_FORMAT_FLOAT;
    case 'i':
    case 'e':
      return quantized && is_byte(format);
    case 'q':
      return !quantized && ai_fmt_get_type_id(format) == AI_FORMAT_TYPE_Q &&
             ai_fmt_is_signed(format) &&
             (ai_fmt_get_bits(format) == 8 || ai_fmt_get_bits(format) == 16);
    case 'a':
      return true;
    default:
      return format == input_format();
  }
}

void LayerMaker::quantize(RandomTensor& tensor, uint32_t list, char kind) {
  const std::vector<RandomTensor*>& inputs = lists_[AI_CHAIN_INPUT];
  const bool must = kind != '\0' && std::strchr("itekw", kind) != nullptr;
  if (!must && !(is_byte(ai_tensor_format(&tensor.tensor)) && std::strchr("as", kind) != nullptr &&
                 choose.one_in(2))) {
    return;
  }
  if (std::strchr("tks", kind) != nullptr && !inputs.empty() && choose.below(4) != 0) {
    tensor.tensor.klass = inputs[0]->tensor.klass;
    return;
  }
  const uint32_t entries = kind == 'w' && choose.one_in(2) ? sizes['D'] : 1;
  auto* scales = own<float>(entries);
  auto* zeropoints = own<int8_t>(entries);
  for (uint32_t i = 0; i < entries; ++i) {
    scales[i] = choose.one_in(32) ? choose.of({1e-30f, 3e38f, 1e-42f})
                                  : 0.01f * static_cast<float>(1 + choose.below(256));
    const bool symmetric = kind == 'w' && ai_fmt_is_signed(ai_tensor_format(&tensor.tensor));
    zeropoints[i] = static_cast<int8_t>(symmetric ? 0 : choose.below(256));
  }
  if (kind == 'e' && list == AI_CHAIN_OUTPUT) {  // the same number with the other sign
    zeropoints[0] = static_cast<int8_t>(ai_tensor_zeropoint(&inputs[0]->tensor, 0) - 128);
  }
  auto* info = own<ai_intq_info>();
  auto* record = own<ai_intq_info_list>();
  *info = {scales, zeropoints};
  *record = {entries << 16, info};
  tensor.tensor.klass = record;
}

// --- tensors ------------------------------------------------------------------------------------

RandomTensor& LayerMaker::add(uint32_t list, char kind, const Dims& wanted) {
  RandomTensor& made = network_.make_tensor(format(list, kind), wanted);
  quantize(made, list, kind);
  if (kind == 'r' && choose.one_in(3)) {  // longer rows
    const uint32_t pitch = made.tensor.stride.data[1] + 4 * choose.below(4);
    made.tensor.stride.data[1] = pitch;
    made.tensor.stride.data[2] = made.tensor.stride.data[3] = pitch * made.tensor.shape.data[1];
  }
  if (list == AI_CHAIN_INPUT && (network_.ports_[0].empty() || choose.below(4) != 0) &&
      ai_array_fmt_exported(ai_tensor_format(&made.tensor))) {
    network_.ports_[0].push_back(&network_.make_port(made));
    network_.readable_.push_back(&made);
  }
  if (list == AI_CHAIN_OUTPUT) {
    share(made);
  }
  if (made.memory->block != nullptr) {
    made.memory->block->constant &= list == AI_CHAIN_WEIGHTS;
  }
  lists_[list].push_back(&made);
  return made;
}

// A view of something that is there already, or the thing itself.
bool LayerMaker::reuse(const TensorRule& rule_of_tensor) {
  std::vector<RandomTensor*>& from = network_.readable_;
  if (from.empty() || choose.one_in(5)) {
    return false;
  }
  RandomTensor& found =
      *from[from.size() - 1 - choose.below(static_cast<uint32_t>(from.size())) / 2];
  if (!takes(rule_of_tensor.kind, found)) {
    return false;
  }
  RandomTensor* use = &found;
  const uint64_t elements = elements_of(found.tensor);
  if (rule_of_tensor.extent == TensorRule::kDims &&
      !binds(rule_of_tensor.terms, nnlib::dims_of(found.tensor))) {
    Dims flat = {{1, 1, 1, 1}};
    flat.sizes[choose.of({AI_SHAPE_C, AI_SHAPE_H})] = elements;
    if (!binds(rule_of_tensor.terms, flat)) {
      return false;
    }
    use = &network_.make_tensor(ai_tensor_format(&found.tensor), flat);
    use->memory = found.memory;
    use->tensor.data = found.tensor.data;
    use->tensor.klass = found.tensor.klass;
  }
  found.read = true;
  lists_[AI_CHAIN_INPUT].push_back(use);
  return true;
}

// Lets the output lie where an input lies, which is then no longer readable.
void LayerMaker::share(RandomTensor& output) {
  std::vector<RandomTensor*> others = lists_[AI_CHAIN_INPUT];
  others.insert(others.end(), lists_[AI_CHAIN_WEIGHTS].begin(), lists_[AI_CHAIN_WEIGHTS].end());
  if (others.empty() || !choose.one_in(rule.in_place == InPlace::kNever ? 64 : 3)) {
    return;
  }
  RandomTensor& other = *others[rule.in_place == InPlace::kThird
                                    ? others.size() - 1
                                    : choose.below(static_cast<uint32_t>(others.size()))];
  const bool same_format = ai_fmt_get_code(ai_tensor_format(&other.tensor)) ==
                           ai_fmt_get_code(ai_tensor_format(&output.tensor));
  if (same_format && choose.one_in(2)) {
    output.memory = other.memory;
    output.tensor.data = &other.memory->array;
  } else if (other.memory->block != nullptr) {
    const uint32_t element = std::max(ai_fmt_get_bits(ai_tensor_format(&output.tensor)) / 8, 1u);
    output.memory->block = other.memory->block;
    output.memory->lead =
        other.memory->lead + (rule.in_place == InPlace::kAbove ? element * choose.below(3) : 0);
  }
  std::erase_if(network_.readable_, [&](const RandomTensor* tensor) {
    return tensor->memory == output.memory ||
           (output.memory->block != nullptr && tensor->memory->block == output.memory->block);
  });
}

void LayerMaker::make(uint32_t list, const char* text) {
  static constexpr const char* LayerRule::*kTexts[] = {&LayerRule::inputs, &LayerRule::outputs,
                                                       &LayerRule::weights, &LayerRule::scratch};
  const uint32_t groups = sizes['G'];
  const bool depthwise =
      list == AI_CHAIN_WEIGHTS && rule.depthwise != nullptr && groups > 1 && groups == sizes['C'];
  if (text == nullptr) {
    text = depthwise ? rule.depthwise : rule.*kTexts[list];
  }
  if (!lists_[list].empty()) {
    return;
  }
  for (TensorRule tensor; next_tensor_rule(text, tensor);) {
    if (tensor.optional && choose.one_in(3)) {
      break;
    }
    if (list == AI_CHAIN_INPUT && lists_[list].empty() && given_ != nullptr) {
      const bool bound =
          tensor.extent != TensorRule::kDims || binds(tensor.terms, nnlib::dims_of(given_->tensor));
      lists_[list].push_back(given_);
      if (!bound) {
        sizes = {};
      }
    } else if (list != AI_CHAIN_INPUT || !reuse(tensor)) {
      add(list, tensor.kind, dims_of(tensor, list));
    }
  }
}

void LayerMaker::finish() {
  const uint32_t lists = rule.scratch[0] != '\0' ? 4 : rule.weights[0] != '\0' ? 3 : 2;
  auto* chain = own<ai_tensor_chain>();
  auto* all = own<ai_tensor_list>(lists);
  for (uint32_t i = 0; i < lists; ++i) {
    all[i] = network_.make_list(lists_[i], false);
  }
  *chain = {static_cast<uint16_t>(lists), all};
  const uint16_t type = rule.types[rule.types[1] != 0 ? choose.below(2) : 0];
  *layer_ = {type, 0, nullptr, nullptr, nullptr, rule.forward, chain};
  number(layer_->type, type);
}

RandomTensor& LayerMaker::inner_layers(ai_layer*& first) {
  Dims step = dims(AI_CHAIN_INPUT);
  step.sizes[AI_SHAPE_H] = 1;
  const RandomTensor& outer = *lists_[AI_CHAIN_INPUT][0];
  RandomTensor* given =
      &network_.make_tensor(ai_fmt_get_code(ai_tensor_format(&outer.tensor)), step);
  given->memory->block->constant = false;  // a run points the tensor elsewhere
  given->tensor.klass = outer.tensor.klass;
  const LayerRules rules = layer_rules();
  ai_layer** next = &first;
  for (uint32_t left = choose.between(1, 2), tries = 8; left > 0 && tries > 0; --tries) {
    const LayerRule& inner = rules.rows[choose.below(rules.count)];
    if (inner.in_place == InPlace::kNoTensors || !takes(inner.inputs[0], *given)) {
      continue;
    }
    LayerMaker maker(network_, inner, given);
    network_.layers_.push_back(maker.layer());
    given = &maker.output();
    *next = maker.layer();
    next = &maker.layer()->next;
    --left;
  }
  return *given;
}
