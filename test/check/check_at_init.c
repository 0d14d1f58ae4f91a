/* SPDX-License-Identifier: MIT */
/* Checks every network that a program initialises; one with a finding is refused.
 * Linked with --wrap=ai_platform_network_init. */
#include <stdio.h>

#include "check/ai_network_check.h"
#include "core/ai_platform_interface.h"

ai_handle __real_ai_platform_network_init(ai_handle handle, const ai_network_params* params);
ai_handle __wrap_ai_platform_network_init(ai_handle handle, const ai_network_params* params);

static void print(const ai_check_finding* finding, void* context) {
  (void)context;
  puts(finding->text);
}

ai_handle __wrap_ai_platform_network_init(ai_handle handle, const ai_network_params* params) {
  const uint32_t findings = ai_network_check(handle, print, NULL);
  return findings == 0 ? __real_ai_platform_network_init(handle, params) : NULL;
}
