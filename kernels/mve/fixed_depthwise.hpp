// SPDX-License-Identifier: MIT
#include "kernels/dsp/fixed_depthwise.hpp"
