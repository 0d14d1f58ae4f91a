// SPDX-License-Identifier: MIT
// Depthwise convolution of float32 maps.
#ifndef NNLIB_KERNELS_FLOAT_DEPTHWISE_HPP
#define NNLIB_KERNELS_FLOAT_DEPTHWISE_HPP

#include "kernels/float_conv2d.hpp"

namespace nnlib {

// Every output channel sees the input channel of its own number only (in_channels is not read), and
// the weights of a tap lie side by side: weights_pitch is 1.
void depthwise_conv2d_f32(const Conv2d& conv);

}  // namespace nnlib

#endif
