// SPDX-License-Identifier: MIT
// What the fixed-point suites share.
#ifndef TEST_FIXED_FIXTURE_HPP
#define TEST_FIXED_FIXTURE_HPP

#include "test/fixture.hpp"

template <class T>
constexpr ai_array_format fixed_format(int fraction_bits) {
  return AI_ARRAY_FORMAT_MAKE_Q(8 * sizeof(T), fraction_bits);
}

// Runs the layer and compares what the elements of its first output, of type T, stand for.
template <class T, size_t Count>
void check_fixed_layer(lcut_case* tc, ai_layer& layer, const float (&reference)[Count],
                       float tolerance, Site site = CALLING_SITE) {
  const ai_array& output = first_output(layer);
  ai_layers_forward_layer(&layer);
  lcut_int_equal(tc, static_cast<int32_t>(Count), static_cast<int32_t>(output.size), site.line,
                 site.function, site.file);
  const int32_t fraction_bits = ai_fmt_get_fbits(output.format);
  check_near(tc, static_cast<const T*>(output.data), reference, tolerance,
             1.0f / static_cast<float>(1 << fraction_bits), site);
}

#endif
