// SPDX-License-Identifier: MIT
#include "core/core_common.h"

#include "ports/port.h"

bool core_init(void) {
  return true;
}

bool core_set_error(ai_error* error, uint32_t type, uint32_t code) {
  if (ai_error_type(*error) != AI_ERROR_TYPE_NONE) {
    return false;
  }
  *error = AI_ERROR_MAKE(type & 0xFFu, code);
  return true;
}

ai_error core_get_error(ai_error* error) {
  const ai_error stored = *error;
  *error = 0;
  return stored;
}

NNLIB_WEAK void core_fault(void) {
  __builtin_trap();
}

NNLIB_WEAK void core_hang(void) {
  // The volatile access keeps the loop: without one it could be assumed to end.
  volatile bool forever = true;
  while (forever) {
  }
  __builtin_unreachable();
}
