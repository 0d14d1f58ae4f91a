// SPDX-License-Identifier: MIT
// The functions and parameters that the records of layers point to.
#include "check/slots.hpp"

#include <type_traits>

#include "check/public_functions.hpp"

// X(function, kind letter of its elements, parameters, 0xFFFF for one for each channel)
#define PLAIN_OP(op) X(nl_func_##op##_array_f32, 'f', 0)
#define NL_FUNCTIONS                            \
  AI_NL_ARITHMETIC_OPS(PLAIN_OP)                \
  AI_NL_LIBRARY_OPS(PLAIN_OP)                   \
  AI_NL_EXP_OPS(PLAIN_OP)                       \
  X(nl_func_relu_array_f32, 'f', 0)             \
  X(nl_func_sm_group_array_f32, 'f', 0)         \
  X(nl_func_clip_array_f32, 'f', 2)             \
  X(nl_func_elu_array_f32, 'f', 1)              \
  X(nl_func_relu_thresholded_array_f32, 'f', 1) \
  X(nl_func_selu_array_f32, 'f', 2)             \
  X(nl_func_relu_generic_array_f32, 'f', 3)     \
  X(nl_func_prelu_array_f32, 'f', kEachChannel) \
  X(nl_func_relu_array_integer, 'i', 1)         \
  X(nl_func_clip_array_integer, 'i', 2)         \
  X(nl_func_array_integer, 'i', 256)            \
  X(nl_func_relu_array_fixed, 'q', 0)           \
  X(nl_func_relu_max_array_fixed, 'q', 1)       \
  X(nl_func_tanh_array_fixed, 'q', 0)           \
  X(nl_func_sigmoid_array_fixed, 'q', 0)        \
  X(sm_func_sm_array_fixed, 'q', 0)

#define POOL_FUNCTIONS                  \
  X(pool_func_mp_array_f32, 'f', 0)     \
  X(pool_func_ap_array_f32, 'f', 0)     \
  X(pool_func_mp_array_integer, 'i', 0) \
  X(pool_func_ap_array_integer, 'i', 0) \
  X(pool_func_mp_array_fixed, 'q', 0)   \
  X(pool_func_ap_array_fixed, 'q', 0)

namespace nnlib {
namespace {

constexpr uint32_t kEachChannel = 0xFFFF;

template <class Function>
struct Known {
  Function* function;
  const char* name;
  char kind;
  uint16_t parameters;
};
using NlFunction = void(ai_array*, const ai_array*, ai_size, const void*);
using PoolFunction = std::remove_pointer_t<ai_pool_func>;

#define X(function, kind, parameters) {function, #function, kind, parameters},
const Known<NlFunction> kNlFunctions[] = {NL_FUNCTIONS};
const Known<PoolFunction> kPoolFunctions[] = {POOL_FUNCTIONS};
#undef X

template <class Function, size_t Count>
const Known<Function>* find(const Known<Function> (&known)[Count], Function* function) {
  for (const Known<Function>& entry : known) {
    if (entry.function == function) {
      return &entry;
    }
  }
  return nullptr;
}

const char* words_of(char kind) {
  return kind == 'f' ? "float32" : kind == 'i' ? "8-bit integers" : "fixed point";
}

// The function takes the elements of the layer, as the layer's row says of its input.
template <class Function>
void check_family(LayerCheck& check, const char* slot, const Known<Function>& function) {
  const char needed = check.rule()->inputs[0];
  if (function.kind != needed) {
    Finding(check.report()) << slot << " is " << function.name << " for " << words_of(function.kind)
                            << ", the layer computes " << words_of(needed);
  }
}

// A convolution of floats steps through its parameter tensor with the pixels of a row, by stride[2]
// bytes, until the array ends.
void check_parameter_steps(LayerCheck& check, const ai_tensor& params, uint32_t needed) {
  const uint64_t bytes = uint64_t{params.data->size} * sizeof(float);
  const uint64_t step = params.stride.data[AI_SHAPE_W];
  const uint64_t pixels = check.sizes[check.sizes.known('v') ? 'v' : 'w'];
  const uint64_t places = step == 0 ? 1 : (bytes + step - 1) / step;
  const uint64_t last = (pixels < places ? pixels : places) - 1;
  if (pixels != 0 && places != 0 && last * step + needed * sizeof(float) > bytes) {
    Finding(check.report()) << "the parameters of pixel " << last << " in weights 2 begin at byte "
                            << last * step << " of " << bytes << ", " << needed * sizeof(float)
                            << " bytes are needed";
  }
}

}  // namespace

void check_parameters(LayerCheck& check, const ai_array* params, uint32_t needed,
                      const char* what) {
  if (params == nullptr || params->data == nullptr) {
    Finding(check.report()) << what << " is missing, " << Count{needed, "value"}
                            << (needed == 1 ? " is needed" : " are needed");
    return;
  }
  if (params->size < needed) {
    Finding(check.report()) << what << " has " << Count{params->size, "value"} << ", "
                            << Needed{needed};
  }
  const ai_tensor* input = check.sound(AI_CHAIN_INPUT);
  if (input == nullptr) {
    return;
  }
  const ai_array_format format = input->data->format;
  if (ai_fmt_get_bits(params->format) != ai_fmt_get_bits(format) ||
      ai_fmt_get_type_id(params->format) != ai_fmt_get_type_id(format) ||
      ai_fmt_is_float(params->format) != ai_fmt_is_float(format)) {
    Finding(check.report()) << what << " has the format " << FormatName{params->format}
                            << ", input 0 has " << FormatName{format};
  }
}

void check_nl_function(LayerCheck& check, ai_nl_func function, const ai_array* nl_params) {
  const Known<NlFunction>* known = function != nullptr ? find(kNlFunctions, function) : nullptr;
  if (known == nullptr) {
    return;
  }
  check_family(check, "nl_func", *known);
  const uint32_t channels = check.sizes['D'];
  const uint32_t needed = known->parameters == kEachChannel ? channels : known->parameters;
  if (needed == 0) {
    return;
  }
  const ai_tensor* tensor = check.tensor(AI_CHAIN_WEIGHTS, 2);
  const ai_array* params = tensor != nullptr ? ai_tensor_array(tensor) : nl_params;
  check_parameters(check, params, needed, tensor != nullptr ? "weights 2" : "nl_params");
  const bool steps = is_sound(tensor) && tensor->stride.data != nullptr && known->kind == 'f';
  if (steps && tensor->data->size >= needed) {
    check_parameter_steps(check, *tensor, needed);
  }
}

void check_pool_function(LayerCheck& check, ai_pool_func function) {
  if (function == nullptr) {
    Finding(check.report()) << "pool_func is null, the layer pools with it";
    return;
  }
  if (const Known<PoolFunction>* known = find(kPoolFunctions, function)) {
    check_family(check, "pool_func", *known);
  }
}

}  // namespace nnlib
