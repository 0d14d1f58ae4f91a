// SPDX-License-Identifier: MIT
// How far computed tensors are from what they should be.
#ifndef NNLIB_IMPORTER_RUN_ERRORS_HPP
#define NNLIB_IMPORTER_RUN_ERRORS_HPP

#include "importer/run/interpreter.hpp"

namespace nnlib::importer {

// Over all elements that were compared.
struct Error {
  double largest = 0;      // difference of real numbers
  double largest_ulp = 0;  // of f32: differences between the nearest representable numbers
  double signal = 0;       // sum of squares of what it should be
  double noise = 0;        // of the differences

  void add(double should, double is);
  // Signal to noise in decibels; infinite where nothing differs.
  double decibels() const;
};

// What quantization costs one tensor.
struct Loss {
  ValueId value;
  size_t node;          // that gives it, in the quantized graph
  Error own;            // of its node alone, on the inputs that the quantized network has there
  Error all;            // with the losses before it
  size_t clipped = 0;   // elements that lie outside the range of their type by more than a quantum
  size_t elements = 0;  // compared
};

// Compares a quantized graph with itself in float.
class LossMeter {
 public:
  // Throws Refused when the graph cannot be computed in float.
  explicit LossMeter(const Graph& prepared);

  // Adds one set of inputs. Returns the values of the quantized graph.
  Interpreter::Values add(const std::vector<Bytes>& inputs);

  // Of every tensor that a node computes, in the order of the nodes.
  const std::vector<Loss>& losses() const { return losses_; }

 private:
  Interpreter quantized_;
  Interpreter floats_;
  std::vector<Loss> losses_;
};

// Real numbers between two neighbouring elements of a quantized value; 0 for floats.
double quantum_of(const Value& value);

}  // namespace nnlib::importer

#endif
