// SPDX-License-Identifier: MIT
// Checks of layers with 8-bit integer outputs.
#ifndef TEST_INTEGER_FIXTURE_HPP
#define TEST_INTEGER_FIXTURE_HPP

#include "test/fixture.hpp"

// Runs the layer once; its first output must have Count elements, which are returned.
template <class T, size_t Count, class Layer>
const T* run_integer_layer(lcut_case* tc, Layer& layer_record, Site site) {
  ai_layer& base = base_of(layer_record);
  const ai_array& output = first_output(base);
  ai_layers_forward_layer(&base);
  lcut_int_equal(tc, static_cast<int32_t>(Count), static_cast<int32_t>(output.size), site.line,
                 site.function, site.file);
  return static_cast<const T*>(output.data);
}

// Every output element is within tolerance of the reference.
template <class Layer, class T, size_t Count>
void check_integer_layer(lcut_case* tc, Layer& layer_record, const T (&reference)[Count],
                         int32_t tolerance, Site site = CALLING_SITE) {
  check_near_int(tc, run_integer_layer<T, Count>(tc, layer_record, site), reference, tolerance,
                 site);
}

// Every output element, as a float, is that of the reference.
template <class Layer, class T, size_t Count>
void check_exact_layer(lcut_case* tc, Layer& layer_record, const T (&reference)[Count],
                       Site site = CALLING_SITE) {
  check_near(tc, run_integer_layer<T, Count>(tc, layer_record, site), reference, 0.0f, 1.0f, site);
}

#endif
