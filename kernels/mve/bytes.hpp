// SPDX-License-Identifier: MIT
#include "kernels/dsp/bytes.hpp"
