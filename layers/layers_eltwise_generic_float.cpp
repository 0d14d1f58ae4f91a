// SPDX-License-Identifier: MIT
#include "layers/layers_eltwise_generic_float.h"

#include <algorithm>
#include <type_traits>

#include "core/core_broadcast.h"
#include "layers/lanes.hpp"
#include "layers/layer_tensors.hpp"
#include "layers/loop_nest.hpp"

using namespace nnlib;

namespace {

// Calls use with the operation: a built-in one as code that takes floats and lanes alike, any
// other as the function it is.
template <class Use>
void with_operation(ai_binary_fn operation, Use use) {
  if (operation == ai_sum) {
    use([](auto a, auto b) { return a + b; });
  } else if (operation == ai_sub) {
    use([](auto a, auto b) { return a - b; });
  } else if (operation == ai_mul) {
    use([](auto a, auto b) { return a * b; });
  } else if (operation == ai_div) {
    use([](auto a, auto b) { return a / b; });
  } else if (operation == ai_min) {
    use([](auto a, auto b) { return a < b ? a : b; });
  } else if (operation == ai_max) {
    use([](auto a, auto b) { return a > b ? a : b; });
  } else {
    use(operation);
  }
}

// The values of an operand along a run: a new one at every visit, or always the same.
struct Changing {
  explicit Changing(const float* first) : values(first) {}
  Lanes lanes(ptrdiff_t i) const { return load_lanes(values + i); }
  const float* values;
};
struct Constant {
  explicit Constant(const float* first) : value(*first - Lanes{}) {}  // adding zero would lose -0
  Lanes lanes(ptrdiff_t) const { return value; }
  Lanes value;
};

// Whole groups of lanes; returns how many elements they are.
template <class A, class B, class Operation>
ptrdiff_t combine_lanes(float* out, const float* a, const float* b, ptrdiff_t size,
                        Operation operation) {
  const A from_a(a);
  const B from_b(b);
  ptrdiff_t i = 0;
  for (; i + kLanes <= size; i += kLanes) {
    store_lanes(out + i, operation(from_a.lanes(i), from_b.lanes(i)));
  }
  return i;
}

// out[i] = operation(a[i * step a], b[i * step b]), i ascending.
template <class Operation>
void combine(float* out, const float* a, const float* b, const LoopNest::Loop& run,
             Operation operation) {
  ptrdiff_t i = 0;
  if constexpr (!std::is_same_v<Operation, ai_binary_fn>) {
    if (run.step_a == 1 && run.step_b == 1) {
      i = combine_lanes<Changing, Changing>(out, a, b, run.size, operation);
    } else if (run.step_a == 1 && run.step_b == 0) {
      i = combine_lanes<Changing, Constant>(out, a, b, run.size, operation);
    } else if (run.step_a == 0 && run.step_b == 1) {
      i = combine_lanes<Constant, Changing>(out, a, b, run.size, operation);
    }
  }
  for (; i < run.size; ++i) {
    out[i] = operation(a[i * run.step_a], b[i * run.step_b]);
  }
}

// How far an operand moves with each coordinate of the loops. The offsets tell what it takes
// after a loop; here the loop's own way is added.
struct OperandSteps {
  OperandSteps(const ai_shape& operand, const ai_shape& loops) {
    int32_t steps[AI_SHAPE_DIMS];
    ai_offsets offsets = {0, steps};
    core_compute_offsets(&offsets, &operand, &loops);
    along[0] = steps[0];
    for (uint32_t i = 1; i < AI_SHAPE_DIMS; ++i) {
      along[i] = along[i - 1] * static_cast<ptrdiff_t>(loops.data[i - 1]) + steps[i];
    }
  }
  ptrdiff_t along[AI_SHAPE_DIMS];
};

LoopNest loops_over(const ai_shape& loops, const ai_shape& a, const ai_shape& b) {
  const OperandSteps step_a(a, loops);
  const OperandSteps step_b(b, loops);
  LoopNest nest;
  for (uint32_t i = 0; i < AI_SHAPE_DIMS; ++i) {
    nest.add(static_cast<ptrdiff_t>(loops.data[i]), step_a.along[i], step_b.along[i]);
  }
  return nest;
}

}  // namespace

void forward_eltwise(ai_layer* layer) {
  const ai_tensor& input_a = layer_input(*layer, 0);
  const ai_tensor& input_b = layer_input(*layer, 1);
  const float* const a = tensor_data<float>(input_a);
  const float* const b = tensor_data<float>(input_b);
  float* out = tensor_data<float>(layer_output(*layer));
  uint32_t dims[AI_SHAPE_DIMS];
  ai_shape shape = {0, dims};
  core_get_broadcasted_shape(&shape, &input_a.shape, &input_b.shape);
  const LoopNest loops = loops_over(shape, input_a.shape, input_b.shape);
  with_operation(layer_record<ai_layer_eltwise>(layer).operation, [&](auto operation) {
    loops.for_each_run([&](ptrdiff_t at_a, ptrdiff_t at_b, const LoopNest::Loop& run) {
      combine(out, a + at_a, b + at_b, run, operation);
      out += run.size;
    });
  });
}

void forward_reduce(ai_layer* layer) {
  const ai_layer_reduce& reduce = layer_record<ai_layer_reduce>(layer);
  const ai_tensor& input = layer_input(*layer);
  const ai_tensor& output = layer_output(*layer);
  const float* const x = tensor_data<float>(input);
  float* const y = tensor_data<float>(output);
  std::fill_n(y, output.data->size, reduce.neutral_value);
  const LoopNest loops = loops_over(input.shape, output.shape, input.shape);
  with_operation(reduce.operation, [&](auto operation) {
    loops.for_each_run([&](ptrdiff_t at_y, ptrdiff_t at_x, const LoopNest::Loop& run) {
      if (run.step_a != 0) {
        combine(y + at_y, y + at_y, x + at_x, run, operation);
        return;
      }
      float folded = y[at_y];
      for (ptrdiff_t i = 0; i < run.size; ++i) {
        folded = operation(folded, x[at_x + i * run.step_b]);
      }
      y[at_y] = folded;
    });
  });
}
