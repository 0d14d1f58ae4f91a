// SPDX-License-Identifier: MIT
// What suites are made of: cases, fixtures and checks.
//
//   CASE(tc_relu_conformance) {
//     TENSOR(relu_in, relu_in_data, 1, 3, 1, 1);
//     OUTPUT(relu_out, 1, 3, 1, 1);
//     CHAIN(relu, nnlib::list(relu_in), nnlib::list(relu_out));
//     RECORD_LAYER(ai_layer_nl, relu, NL, forward_relu, nullptr);
//     check_layer(tc, relu_layer, relu_out_reference, kFloatEpsilon);
//   }
//
//   SUITE(test_lcut_nl, "test_lcut_nl test unit", ENTRY(tc_relu_conformance), ...)
#ifndef TEST_FIXTURE_HPP
#define TEST_FIXTURE_HPP

#include <cstring>
#include <initializer_list>

#include "lcut/lcut.h"
#include "nnlib.h"

#define CASE(name) static void name([[maybe_unused]] lcut_case* tc, void*)

// A case whose display name is its function's name; NAMED where the two differ.
#define ENTRY(function) \
  SuiteEntry {          \
#function, function \
  }
#define NAMED(display_name, function) \
  SuiteEntry {                        \
    display_name, function            \
  }

#define SUITE(registration, display_name, ...)         \
  extern "C" void registration(lcut_test* test);       \
  void registration(lcut_test* test) {                 \
    register_suite(test, display_name, {__VA_ARGS__}); \
  }

struct SuiteEntry {
  const char* name;
  lcut_case_function function;
};

inline void register_suite(lcut_test* test, const char* display_name,
                           std::initializer_list<SuiteEntry> entries) {
  lcut_suite* suite = nullptr;
  lcut_ts_init(&suite, display_name, nullptr, nullptr);
  for (const SuiteEntry& entry : entries) {
    lcut_tc_add(suite, entry.name, entry.function, nullptr, nullptr, nullptr);
  }
  lcut_ts_add(test, suite);
}

// Where a check stands: the caller's own place, as a default argument.
struct Site {
  uint32_t line;
  const char* function;
  const char* file;

  static constexpr Site current(uint32_t line = static_cast<uint32_t>(__builtin_LINE()),
                                const char* function = __builtin_FUNCTION(),
                                const char* file = __builtin_FILE()) {
    return {line, function, file};
  }
};
#define CALLING_SITE Site::current()

// Absolute tolerances.
inline constexpr float kFloatEpsilon = 1.1920929e-7f;  // 2^-23
inline constexpr float kRecurrentTolerance = 2e-7f;
inline constexpr float kTwoEpsilon = 2.3841858e-7f;  // 2^-22
inline constexpr float kLooseTolerance = 6.192093e-5f;
inline constexpr float kQ7Tolerance = 0.00787401f;
inline constexpr float kQ15Tolerance = 3.051851e-5f;
inline constexpr float kQ7ConvTolerance = 0.12598416f;

// Elements filled so that one left unwritten is noticed: 0xA5 bytes, as a float no number that a
// reference comes near.
template <class T, size_t Count>
struct rubbish_storage {
  constexpr rubbish_storage() {
    for (T& element : storage) {
      element = rubbish();
    }
  }
  static constexpr T rubbish() {
    if constexpr (static_cast<T>(0.5f) != T{}) {
      return static_cast<T>(-28720636.0f);
    } else {
      return static_cast<T>(0xA5A5A5A5u);
    }
  }
  T storage[Count];
};

// A tensor with storage of its own.
template <class T, uint32_t N, uint32_t C, uint32_t W, uint32_t H>
struct output_tensor : rubbish_storage<T, size_t{N} * C * W * H>, nnlib::tensor {
  constexpr explicit output_tensor(ai_array_format format = nnlib::format_of<T>,
                                   const ai_intq_info_list* quantization = nullptr)
      : nnlib::tensor(format, {N, C, W, H}, this->storage, quantization) {}
};

// Static fixtures, named after a stem; the same in all suites. Dimensions are N, C, W, H.
#define TENSOR(name, elements, ...) static constinit nnlib::tensor name({__VA_ARGS__}, elements)
#define OUTPUT(name, ...) static constinit output_tensor<float, __VA_ARGS__> name
// The chain of the given lists.
#define CHAIN(stem, ...) static constinit nnlib::layer_chain stem##_layer_chain(__VA_ARGS__)
// A layer that is no more than its base record, and the chain of the given lists.
#define LAYER(stem, type, forward, ...) LINKED_LAYER(stem, type, forward, nullptr, __VA_ARGS__)
#define LINKED_LAYER(stem, type, forward, next, ...) \
  CHAIN(stem, __VA_ARGS__);                          \
  static constinit ai_layer stem##_layer =           \
      nnlib::layer(AI_LAYER_TYPE_##type, forward, stem##_layer_chain, next)
// A layer with a record of its own, of the given fields, over a chain declared before.
#define RECORD_LAYER(record, stem, type, forward, ...) \
  static constinit record stem##_layer = {             \
      nnlib::layer(AI_LAYER_TYPE_##type, forward, stem##_layer_chain), __VA_ARGS__}

// The padding behind a map with which windows from `before` positions ahead of it give that many
// outputs.
constexpr uint32_t pad_after(uint32_t in, uint32_t window, uint32_t stride, uint32_t before,
                             uint32_t outputs) {
  const uint32_t reach = (outputs - 1) * stride + window;
  return reach > before + in ? reach - before - in : 0;
}

inline const ai_array& first_output(const ai_layer& layer) {
  const ai_tensor* output = ai_tensor_chain_output(layer.tensor_chain, 0);
  if (output == nullptr) {
    core_fault();  // the fixture is wrong
  }
  return *output->data;
}

// Elements, times scale, near the reference. No element may be NaN, which lcut_float_near lets
// pass.
template <class T, class Reference, size_t Count>
void check_near(lcut_case* tc, const T* actual, const Reference (&reference)[Count],
                float tolerance, float scale = 1.0f, Site site = CALLING_SITE) {
  Reference expected[Count];
  std::memcpy(expected, reference, sizeof(expected));
  for (size_t i = 0; i < Count; ++i) {
    const float value = static_cast<float>(actual[i]) * scale;
    lcut_float_near(tc, static_cast<float>(expected[i]), value, tolerance, site.line, site.function,
                    site.file);
    lcut_assert(tc, "not a number", value == value, site.line, site.function, site.file);
  }
}

// Integer elements within tolerance of the reference.
template <class T, size_t Count>
void check_near_int(lcut_case* tc, const T* actual, const T (&reference)[Count], int32_t tolerance,
                    Site site = CALLING_SITE) {
  T expected[Count];
  std::memcpy(expected, reference, sizeof(expected));
  for (size_t i = 0; i < Count; ++i) {
    lcut_int_near(tc, expected[i], actual[i], tolerance, site.line, site.function, site.file);
  }
}

// The base record of a layer kind's record, or of a plain layer.
inline ai_layer& base_of(ai_layer& layer) {
  return layer;
}
template <class Layer>
ai_layer& base_of(Layer& layer) {
  return layer.base;
}

// Runs the layer once and compares every element of its first output, which must be as many as the
// reference has.
template <class Layer, size_t Count>
void check_layer(lcut_case* tc, Layer& layer_record, const float (&reference)[Count],
                 float tolerance, Site site = CALLING_SITE) {
  ai_layer& base = base_of(layer_record);
  const ai_array& output = first_output(base);
  ai_layers_forward_layer(&base);
  lcut_int_equal(tc, static_cast<int32_t>(Count), static_cast<int32_t>(output.size), site.line,
                 site.function, site.file);
  check_near(tc, static_cast<const float*>(output.data), reference, tolerance, 1.0f, site);
}

// Whole numbers, compared in pairs by their low 32 bits.
inline void check_equal(lcut_case* tc, std::initializer_list<int64_t> expected,
                        std::initializer_list<int64_t> actual, Site site = CALLING_SITE) {
  lcut_true(tc, expected.size() == actual.size(), site.line, site.function, site.file);
  for (size_t i = 0; i < expected.size() && i < actual.size(); ++i) {
    lcut_int_equal(tc, static_cast<int32_t>(expected.begin()[i]),
                   static_cast<int32_t>(actual.begin()[i]), site.line, site.function, site.file);
  }
}

#endif
