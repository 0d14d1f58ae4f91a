// SPDX-License-Identifier: MIT
// The functions and parameters that the records of layers point to.
#ifndef NNLIB_CHECK_SLOTS_HPP
#define NNLIB_CHECK_SLOTS_HPP

#include "check/layer_check.hpp"
#include "layers/layers_nl_generic_float.h"
#include "layers/layers_pool_generic_float.h"

namespace nnlib {

// At least so many values, of the width of input 0; `what` names the array in sentences.
void check_parameters(LayerCheck& check, const ai_array* params, uint32_t needed,
                      const char* what = "nl_params");

// The nonlinearity of a convolution with D output channels and its parameters, from weights 2 or
// else from nl_params. A function of the application's may be and take anything.
void check_nl_function(LayerCheck& check, ai_nl_func function, const ai_array* nl_params);

void check_pool_function(LayerCheck& check, ai_pool_func function);

}  // namespace nnlib

#endif
