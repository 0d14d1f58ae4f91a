// SPDX-License-Identifier: MIT
// Q7 depthwise convolution, by the best instruction set that the processor has.
#ifndef NNLIB_KERNELS_FIXED_DEPTHWISE_HPP
#define NNLIB_KERNELS_FIXED_DEPTHWISE_HPP

#include "kernels/fixed_convolution.hpp"

namespace nnlib {

// Weights [kernel row][kernel column][output channel]. out_channels is a multiple m of in_channels;
// output channel c sees input channel c / m.
void fixed_depthwise(const FixedConv<q7_t>& conv);

}  // namespace nnlib

#endif
