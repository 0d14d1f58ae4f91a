#include "kernels/float_conv2d.hpp"

#include <algorithm>

#include "kernels/vector.hpp"
#include "kernels/window.hpp"

#define NNLIB_VECTOR_BODY "kernels/float_conv2d_body.hpp"
#include "kernels/vector_bodies.hpp"

namespace nnlib {

void conv2d_f32(const Conv2d& conv) {
  NNLIB_VECTOR_IF(conv.out_channels >= kWideLanes, conv2d)(conv);
}

void depthwise_conv2d_f32(const Conv2d& conv) {
  NNLIB_VECTOR_IF(conv.out_channels >= kWideLanes, depthwise_conv2d)(conv);
}

}  // namespace nnlib
