// SPDX-License-Identifier: MIT
// Formats and quantization records.
#include "check/layer_check.hpp"

namespace nnlib {
namespace {

bool is_q(ai_array_format format) {
  return ai_fmt_get_type_id(format) == AI_FORMAT_TYPE_Q && !ai_fmt_is_float(format) &&
         ai_fmt_get_pbits(format) == 0 && ai_fmt_get_comp_shift(format) == 0;
}
bool is_q_of(ai_array_format format, uint32_t bits) {
  return is_q(format) && ai_fmt_get_bits(format) == bits;
}
bool is_float(ai_array_format format) {
  return ai_fmt_get_code(format) == AI_ARRAY_FORMAT_FLOAT;
}
bool is_index(ai_array_format format) {
  const uint32_t code = ai_fmt_get_code(format);
  return code == AI_ARRAY_FORMAT_LUT4_FLOAT || code == AI_ARRAY_FORMAT_LUT8_FLOAT;
}
bool is_fixed(ai_array_format format) {
  return ai_fmt_is_signed(format) && (is_q_of(format, 8) || is_q_of(format, 16));
}
bool is_integer(ai_array_format format) {
  return is_q_of(format, 8) && ai_fmt_get_fbits(format) == 0;
}

// One kind letter: the test of a format, given that of input 0, what is needed in words, and
// whether the tensor has a quantization record.
struct Kind {
  enum Record : uint8_t { kNone, kOne, kOneOrChannels, kEither };

  char letter;
  Record record;
  bool (*fits)(ai_array_format format, ai_array_format input);
  const char* words;
};

constexpr Kind kKinds[] = {
    {'f', Kind::kNone, [](ai_array_format f, ai_array_format) { return is_float(f); }, "float32"},
    {'d', Kind::kNone,
     [](ai_array_format f, ai_array_format) { return is_float(f) || is_index(f); },
     "float32 or indices into a table of floats"},
    {'r', Kind::kNone,
     [](ai_array_format f, ai_array_format) { return is_float(f) || is_index(f); },
     "float32 or indices into a table of floats"},
    {'i', Kind::kOne, [](ai_array_format f, ai_array_format) { return is_integer(f); },
     "uint8 or int8"},
    {'w', Kind::kOneOrChannels, [](ai_array_format f, ai_array_format) { return is_integer(f); },
     "uint8 or int8"},
    {'t', Kind::kOne,
     [](ai_array_format f, ai_array_format input) {
       return is_integer(f) && ai_fmt_is_signed(f) == ai_fmt_is_signed(input);
     },
     "that of input 0"},
    {'e', Kind::kEither, [](ai_array_format f, ai_array_format) { return is_integer(f); },
     "uint8 or int8"},
    {'k', Kind::kEither,
     [](ai_array_format f, ai_array_format input) {
       return is_integer(f) && ai_fmt_is_signed(f) == ai_fmt_is_signed(input);
     },
     "that of input 0"},
    {'s', Kind::kEither,
     [](ai_array_format f, ai_array_format input) {
       return ai_fmt_get_code(f) == ai_fmt_get_code(input);
     },
     "that of input 0"},
    {'q', Kind::kNone, [](ai_array_format f, ai_array_format) { return is_fixed(f); },
     "fixed point of 8 or 16 bits"},
    {'p', Kind::kNone,
     [](ai_array_format f, ai_array_format input) {
       return is_fixed(f) && ai_fmt_get_bits(f) == ai_fmt_get_bits(input);
     },
     "fixed point of the width of input 0"},
    {'b', Kind::kEither,
     [](ai_array_format f, ai_array_format) { return ai_fmt_get_code(f) == AI_ARRAY_FORMAT_S32; },
     "int32"},
    {'u', Kind::kEither,
     [](ai_array_format f, ai_array_format) { return ai_fmt_get_code(f) == AI_ARRAY_FORMAT_U32; },
     "uint32"},
};

const Kind* find_kind(char letter) {
  for (const Kind& kind : kKinds) {
    if (kind.letter == letter) {
      return &kind;
    }
  }
  return nullptr;
}

bool is_positive(float number) {
  return number > 0.0f && number <= 3.4028235e38f;
}

void check_scales(LayerCheck& check, TensorName name, const ai_intq_info& info, uint32_t entries) {
  if (info.scale == nullptr) {
    Finding(check.report()) << "the quantization record of " << name << " has no scales, "
                            << Needed{entries};
    return;
  }
  for (uint32_t i = 0; i < entries; ++i) {
    if (!is_positive(info.scale[i])) {
      Finding(check.report()) << "scale " << i << " of " << name << " is " << info.scale[i]
                              << ", not above 0";
      return;
    }
  }
}

void check_zeropoints(LayerCheck& check, TensorName name, const ai_intq_info& info,
                      uint32_t entries, bool weights) {
  const bool symmetric =
      weights && ai_fmt_is_signed(check.tensor(name.list, name.index)->data->format);
  if (info.zeropoint == nullptr) {
    if (!symmetric) {
      Finding(check.report()) << "the quantization record of " << name << " has no zero points, "
                              << Needed{entries};
    }
    return;
  }
  for (uint32_t i = 0; symmetric && i < entries; ++i) {
    const int32_t zeropoint = static_cast<const int8_t*>(info.zeropoint)[i];
    if (zeropoint != 0) {
      Finding(check.report()) << "zero point " << i << " of " << name << " is " << zeropoint
                              << ", int8 weights have 0";
      return;
    }
  }
}

void check_quantization(LayerCheck& check, TensorName name, const ai_tensor& tensor,
                        const Kind& kind) {
  const ai_intq_info_list* record = tensor.klass;
  if (kind.record == Kind::kNone) {
    if (record != nullptr) {
      Finding(check.report()) << name << " has a quantization record of "
                              << Count{record->flags_size >> 16, "scale"} << ", " << kind.words
                              << " has none";
    }
    return;
  }
  const bool weights = kind.record == Kind::kOneOrChannels;
  const uint32_t channels = check.sizes['D'];
  const uint32_t entries = ai_tensor_intq_size(&tensor);
  if (ai_tensor_intq(&tensor) == nullptr) {
    Finding(check.report()) << name << " has no quantization record, one of 1 scale"
                            << (weights ? " or one for each output channel" : "") << " is needed";
    return;
  }
  if (entries != 1 && !(weights && entries == channels)) {
    Finding finding(check.report());
    finding << "the quantization record of " << name << " has " << Count{entries, "scale"};
    if (weights && channels > 1) {
      finding << ", 1 or " << Needed{channels};
    } else {
      finding << ", " << Needed{1};
    }
    return;
  }
  check_scales(check, name, *record->info, entries);
  check_zeropoints(check, name, *record->info, entries, weights);
}

}  // namespace

void check_kind(LayerCheck& check, TensorName name, char letter) {
  const Kind* kind = find_kind(letter);
  if (kind == nullptr) {
    return;
  }
  const ai_tensor& tensor = *check.tensor(name.list, name.index);
  const ai_tensor* input = check.sound(AI_CHAIN_INPUT);
  const ai_array_format format = tensor.data->format;
  if (!kind->fits(format, input != nullptr ? input->data->format : format)) {
    Finding finding(check.report());
    finding << name << " has the format " << FormatName{format};
    if (kind->words[0] == 't') {
      finding << ", input 0 has " << FormatName{ai_tensor_format(input)};
    } else {
      finding << ", needed is " << kind->words;
    }
    return;
  }
  if (kind->record != Kind::kEither) {
    check_quantization(check, name, tensor, *kind);
  }
}

}  // namespace nnlib
