// SPDX-License-Identifier: MIT
#include "kernels/float_conv2d.hpp"

#include <algorithm>

#include "kernels/vector.hpp"
#include "kernels/window.hpp"

#define NNLIB_VECTOR_BODY "kernels/float_conv2d_body.hpp"
#include "kernels/vector_bodies.hpp"

namespace nnlib {
namespace {

bool one_to_one(const ConvAxis& axis) {
  return axis.taps == 1 && axis.stride == 1 && axis.start == 0 && axis.in == axis.out;
}

}  // namespace

void join_rows(Conv2d& conv) {
  const bool joins = one_to_one(conv.x) && one_to_one(conv.y) &&
                     conv.y.in_pitch == conv.x.in * conv.x.in_pitch &&
                     conv.y.out_pitch == conv.x.out * conv.x.out_pitch;
  if (joins) {
    conv.x.in = conv.x.out = conv.x.in * conv.y.in;
    conv.y.in = conv.y.out = 1;
  }
}

void conv2d_f32(const Conv2d& conv) {
  NNLIB_VECTOR_IF(conv.out_channels >= kWideLanes, conv2d)(conv);
}

}  // namespace nnlib
