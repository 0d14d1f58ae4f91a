// SPDX-License-Identifier: MIT
// Dense layers and matrix products.
#include <initializer_list>

#include "check/details.hpp"
#include "check/public_functions.hpp"
#include "check/scratch.hpp"

namespace nnlib {
namespace {

// A tensor as a matrix of H rows and C columns.
struct Matrix {
  const ai_tensor* tensor;
  TensorName name;
  uint32_t rows, columns;
};

Matrix matrix_of(const LayerCheck& check, TensorName name, bool transposed) {
  const ai_tensor* tensor = check.sound(name.list, name.index);
  const uint32_t rows = ai_tensor_dim(tensor, AI_SHAPE_H);
  const uint32_t columns = ai_tensor_dim(tensor, AI_SHAPE_C);
  return transposed ? Matrix{tensor, name, columns, rows} : Matrix{tensor, name, rows, columns};
}

void check_flat(LayerCheck& check, const Matrix& matrix) {
  if (matrix.tensor != nullptr &&
      elements_of(*matrix.tensor) != product(matrix.rows, matrix.columns)) {
    Finding(check.report()) << matrix.name << " has the dimensions " << dims_of(*matrix.tensor)
                            << ", a matrix has 1 as first and third";
  }
}

// Operand k of a product: the inputs, then the weights.
TensorName operand(const LayerCheck& check, uint32_t k) {
  const uint32_t inputs = check.list_size(AI_CHAIN_INPUT);
  return k < inputs ? TensorName{AI_CHAIN_INPUT, k} : TensorName{AI_CHAIN_WEIGHTS, k - inputs};
}

}  // namespace

// A map whose elements are as many as the weights' rows take needs a flat view.
void dense_sizes(LayerCheck& check) {
  const ai_tensor* input = check.sound(AI_CHAIN_INPUT);
  const uint32_t rows = check.size(AI_CHAIN_WEIGHTS, 0);
  if (input != nullptr && rows != input->shape.data[AI_SHAPE_C] && rows == elements_of(*input)) {
    check.sizes.set('n', rows);
    check.sizes.set('W', 1);
    check.sizes.set('H', 1);
  }
}

void check_dense(LayerCheck& check) {
  const ai_tensor* input = check.sound(AI_CHAIN_INPUT);
  const ai_tensor* weights = check.sound(AI_CHAIN_WEIGHTS);
  if (input == nullptr || weights == nullptr) {
    return;
  }
  const ai_array_format in = input->data->format;
  const ai_array_format w = weights->data->format;
  const char kind = check.rule()->inputs[0];
  if (kind != 'f') {
    check_u16_sizes(check);
  }
  if (kind == 'q' && ai_fmt_get_bits(in) == 8 && ai_fmt_get_bits(w) == 16) {
    Finding(check.report()) << "input 0 has 8 bits, weights 0 have 16: the function hangs";
  }
  const ai_tensor* bias = check.sound(AI_CHAIN_WEIGHTS, 1);
  if (kind != 'q' || bias == nullptr) {
    return;
  }
  const int32_t sum = ai_fmt_get_fbits(in) + ai_fmt_get_fbits(w);
  const int32_t bits = ai_fmt_get_fbits(bias->data->format);
  if (bits > sum) {
    Finding(check.report()) << "weights 1 have " << bits
                            << " fractional bits, more than the products' " << sum;
  }
  if (ai_fmt_get_bits(bias->data->format) != ai_fmt_get_bits(w)) {
    Finding(check.report()) << "weights 1 have " << ai_fmt_get_bits(bias->data->format)
                            << " bits, weights 0 have " << ai_fmt_get_bits(w);
  }
}

// Needed for weights with a scale for each channel, else an absent one makes the layer slower.
void check_dense_integer_memory(LayerCheck& check) {
  const LayerCopy<ai_layer> copy(check);
  if (check.sound(AI_CHAIN_SCRATCH) != nullptr ||
      ai_tensor_intq_size(check.sound(AI_CHAIN_WEIGHTS)) > 1) {
    check_scratch(check, 0, ai_dense_integer_scratch_size(copy.record()), 4);
  }
}

void check_dense_fixed_memory(LayerCheck& check) {
  const LayerCopy<ai_layer> copy(check);
  if (check.sound(AI_CHAIN_SCRATCH) != nullptr) {
    check_scratch(check, 0, ai_dense_fixed_scratch_size(copy.record()), 2);
  }
}

// Y = op(A) op(B) + C
void check_gemm(LayerCheck& check) {
  const auto& gemm = check.record<ai_layer_gemm>();
  const uint32_t operands = check.list_size(AI_CHAIN_INPUT) + check.list_size(AI_CHAIN_WEIGHTS);
  if (operands != 3) {
    Finding(check.report()) << "inputs and weights are " << operands << " together, " << Needed{3};
    return;
  }
  const Matrix a = matrix_of(check, operand(check, 0), gemm.tA != 0);
  const Matrix b = matrix_of(check, operand(check, 1), gemm.tB != 0);
  const Matrix c = matrix_of(check, operand(check, 2), false);
  const Matrix y = matrix_of(check, {AI_CHAIN_OUTPUT, 0}, false);
  for (const Matrix* matrix : {&a, &b, &c, &y}) {
    check_flat(check, *matrix);
  }
  if (a.columns != b.rows || a.rows != y.rows || b.columns != y.columns) {
    Finding(check.report()) << "the product of " << a.rows << " x " << a.columns << " and "
                            << b.rows << " x " << b.columns << " does not give " << y.rows << " x "
                            << y.columns << ", the function writes zeros";
  }
  if ((c.rows != 1 && c.rows != y.rows) || (c.columns != 1 && c.columns != y.columns)) {
    Finding(check.report()) << c.name << " is " << c.rows << " x " << c.columns
                            << ", which does not spread over " << y.rows << " x " << y.columns;
  }
}

void check_matmul(LayerCheck& check) {
  const bool second_input = check.tensor(AI_CHAIN_INPUT, 1) != nullptr;
  const bool weights = check.tensor(AI_CHAIN_WEIGHTS) != nullptr;
  if (second_input == weights) {
    Finding(check.report()) << (weights ? "both input 1 and weights 0 are there"
                                        : "neither input 1 nor weights 0 is there")
                            << ", the product takes one of them";
  }
}

}  // namespace nnlib
