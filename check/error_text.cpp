// SPDX-License-Identifier: MIT
#include <cstddef>

#include "check/ai_network_check.h"

// X(type, words)
#define ERROR_TYPES(X)                                                  \
  X(AI_ERROR_TYPE_INTERFACE_VERSION, "generated for a newer interface") \
  X(AI_ERROR_TYPE_CUSTOM_TYPES, "custom types of another runtime")      \
  X(AI_ERROR_TYPE_INVALID_HANDLE, "invalid handle or parameters")       \
  X(AI_ERROR_TYPE_INVALID_STATE, "not initialised, or without layers")  \
  X(AI_ERROR_TYPE_INVALID_INPUT, "invalid input")                       \
  X(AI_ERROR_TYPE_INVALID_OUTPUT, "invalid output")                     \
  X(AI_ERROR_TYPE_INIT_FAILED, "the runtime could not be initialised")

// X(type's words, code, words)
#define ERROR_CODES(X, type)                                                            \
  X(type, AI_ERROR_CODE_NONE, "")                                                       \
  X(type, AI_ERROR_CODE_NETWORK, ": the network as a whole")                            \
  X(type, AI_ERROR_CODE_NETWORK_PARAMS, ": the network's parameters record")            \
  X(type, AI_ERROR_CODE_NETWORK_WEIGHTS, ": the weights buffer")                        \
  X(type, AI_ERROR_CODE_NETWORK_ACTIVATIONS, ": the activations buffer")                \
  X(type, AI_ERROR_CODE_NULL_POINTER, ": a null pointer where data was required")       \
  X(type, AI_ERROR_CODE_SIZE, ": a size or shape that does not fit, or a missing list") \
  X(type, AI_ERROR_CODE_FORMAT, ": a format that does not fit")                         \
  X(type, AI_ERROR_CODE_BATCHES, ": a batch count of zero")                             \
  X(type, AI_ERROR_CODE_NOT_INITIALISED, ": the network was not initialised")

namespace {

struct ErrorText {
  ai_error error;
  const char* text;
};
// Every type with every code, so that a text needs no buffer to be put together in.
#define WITH_CODE(type, code, words) {(code) << 8, type words},
#define OF_TYPE(type, words) {type, {ERROR_CODES(WITH_CODE, words)}},
struct TypeTexts {
  uint32_t type;
  ErrorText texts[10];
};
constexpr TypeTexts kTypes[] = {ERROR_TYPES(OF_TYPE)};

}  // namespace

const char* ai_error_text(ai_error error) {
  if (ai_error_type(error) == AI_ERROR_TYPE_NONE) {
    return "no error";
  }
  for (const TypeTexts& type : kTypes) {
    for (const ErrorText& entry : type.texts) {
      if ((entry.error | type.type) == error) {
        return entry.text;
      }
    }
  }
  return "unknown error";
}
