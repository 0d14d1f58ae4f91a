// SPDX-License-Identifier: MIT
#include "kernels/dsp/depthwise.hpp"
