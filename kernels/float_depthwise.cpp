// SPDX-License-Identifier: MIT
#include "kernels/float_depthwise.hpp"

#include <algorithm>

#include "kernels/vector.hpp"
#include "kernels/window.hpp"

#define NNLIB_VECTOR_BODY "kernels/float_depthwise_body.hpp"
#include "kernels/vector_bodies.hpp"

namespace nnlib {

void depthwise_conv2d_f32(const Conv2d& conv) {
  NNLIB_VECTOR_IF(conv.out_channels >= kWideLanes, depthwise_conv2d)(conv);
}

}  // namespace nnlib
