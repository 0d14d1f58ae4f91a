// SPDX-License-Identifier: MIT
#include "kernels/fixed_depthwise.hpp"

#include "kernels/vector.hpp"

#include <algorithm>

#include "kernels/ko_requantize.hpp"

#define NNLIB_VECTOR_BODY "kernels/fixed_depthwise_body.hpp"
#include "kernels/vector_bodies.hpp"

void nnlib::fixed_depthwise(const FixedConv<q7_t>& conv) {
  NNLIB_VECTOR(convolve_channels)(conv);
}
