// SPDX-License-Identifier: MIT
// Layers over time steps.
#include "check/details.hpp"
#include "layers/layers_rnn_generic_float.h"
#include "layers/layers_time_delay_generic_float.h"
#include "layers/layers_time_distributed_generic_float.h"

namespace nnlib {

void lstm_sizes(LayerCheck& check) {
  check.sizes.set('U', check.record<ai_layer_lstm>().n_units);
}

void gru_sizes(LayerCheck& check) {
  check.sizes.set('U', check.record<ai_layer_gru>().n_units);
}

// The last state, or one state for each step.
void check_recurrent(LayerCheck& check) {
  check_u16(check, check.sizes['U'], "n_units");
  if (check.sound(AI_CHAIN_INPUT) != nullptr) {
    check_u16(check, check.sizes['F'], "the number of input features");
  }
  const uint32_t steps = check.sizes['T'];
  const uint32_t states = check.sizes['S'];
  if (states > 1 && states != steps) {
    Finding(check.report()) << "output 0 has " << states << " steps, 1 or input 0's " << steps
                            << " are possible";
  }
}

void check_lstm(LayerCheck& check) {
  check_recurrent(check);
  if (check.record<ai_layer_lstm>().out_activation == nullptr) {
    Finding(check.report()) << "out_activation is null, the function faults";
  }
}

void refuse_gru_after(LayerCheck& check) {
  check_recurrent(check);
  Finding(check.report()) << "the function is not to be installed: forward_gru calls it when"
                             " reset_after is set";
}

void time_delay_sizes(LayerCheck& check) {
  const ai_array* delays = check.record<ai_layer_time_delay>().delays;
  check.sizes.set('D', delays != nullptr ? delays->size : 0);
}

void check_time_delay(LayerCheck& check) {
  const ai_array* delays = check.record<ai_layer_time_delay>().delays;
  if (delays == nullptr || delays->data == nullptr || delays->size == 0) {
    Finding(check.report()) << "there are 0 delays, at least 1 is needed";
    return;
  }
  if (ai_fmt_get_code(delays->format) != AI_ARRAY_FORMAT_U8) {
    Finding(check.report()) << "the delays have the format " << FormatName{delays->format}
                            << ", needed is uint8";
    return;
  }
  uint32_t longest = 0;
  for (uint32_t i = 0; i < delays->size; ++i) {
    const uint32_t delay = static_cast<const uint8_t*>(delays->data)[i];
    longest = delay > longest ? delay : longest;
  }
  const uint64_t needed = uint64_t{check.sizes['T']} + longest;
  if (check.sizes['S'] < needed) {
    Finding(check.report()) << "input 0 has " << check.sizes['S'] << " steps; " << check.sizes['T']
                            << " steps of output 0 and a delay of " << longest << " need "
                            << needed;
  }
}

void check_time_distributed(LayerCheck& check) {
  if (check.record<ai_layer_time_distributed>().inner == nullptr) {
    Finding(check.report()) << "there are 0 inner layers, at least 1 is needed";
  }
}

}  // namespace nnlib
