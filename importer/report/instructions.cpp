// SPDX-License-Identifier: MIT
#include "importer/report/instructions.hpp"

#include <array>
#include <cmath>
#include <cstdio>

#include "profile/ai_layer_work.h"

namespace nnlib::importer {
namespace {

constexpr size_t kTerms = 3;
using Terms = std::array<double, kTerms>;

Terms terms_of(double products, double channels) {
  return {1, 1 / products, 1 / channels};
}

double value_of(const Terms& factors, const Terms& terms) {
  double sum = 0;
  for (size_t i = 0; i < kTerms; ++i) {
    sum += factors[i] * terms[i];
  }
  return sum;
}

// A row of the table, taken apart.
struct Counted {
  std::string kind;
  double products = 1;
  double channels = 1;
  double per_unit = 0;
};

Counted counted_of(const CountRow& row, double per_unit) {
  unsigned height = 0, width = 0, in = 0, out = 0;
  char operation[8];
  const char* title = row.layer.c_str();
  if (std::sscanf(title, "convolution %ux%u, %u to %u", &height, &width, &in, &out) == 4) {
    return {"convolution", double(height) * width * in, double(out), per_unit};
  }
  if (std::sscanf(title, "depthwise %ux%u, %u", &height, &width, &out) == 3) {
    return {"depthwise", double(height) * width, double(out), per_unit};
  }
  if (std::sscanf(title, "dense, %u to %u", &in, &out) == 2) {
    return {"dense", double(in), double(out), per_unit};
  }
  if (std::sscanf(title, "%7s pooling %ux%u", operation, &width, &height) == 3) {
    const double cells = double(width) * height;
    return {operation + std::string(" pooling"), cells, 1, per_unit / cells};
  }
  if (std::sscanf(title, "LSTM, %u features, %u units", &in, &out) == 2) {
    return {"LSTM", double(in) + out, double(out), per_unit / (4.0 * out * (in + out))};
  }
  if (std::sscanf(title, "GRU, %u features, %u units", &in, &out) == 2) {
    return {"GRU", double(in) + out, double(out), per_unit / (3.0 * out * (in + out))};
  }
  return {row.layer, 1, 1, per_unit};
}

// The solution of the normal equations of the chosen terms by elimination; nothing when they are
// singular.
std::optional<Terms> solve(const std::vector<Counted>& rows, unsigned chosen) {
  double m[kTerms][kTerms + 1] = {};
  for (const Counted& row : rows) {
    // Relative errors count alike.
    Terms t = terms_of(row.products, row.channels);
    for (double& x : t) {
      x /= row.per_unit;
    }
    for (size_t i = 0; i < kTerms; ++i) {
      for (size_t j = 0; j < kTerms; ++j) {
        m[i][j] += t[i] * t[j];
      }
      m[i][kTerms] += t[i];
    }
  }
  for (size_t i = 0; i < kTerms; ++i) {
    if ((chosen >> i & 1) == 0) {
      for (size_t j = 0; j <= kTerms; ++j) {
        m[i][j] = 0;
        if (j < kTerms) {
          m[j][i] = 0;
        }
      }
      m[i][i] = 1;
    }
  }
  for (size_t i = 0; i < kTerms; ++i) {
    if (std::abs(m[i][i]) < 1e-9) {
      return std::nullopt;
    }
    for (size_t r = 0; r < kTerms; ++r) {
      const double factor = r == i ? 0 : m[r][i] / m[i][i];
      for (size_t j = 0; j <= kTerms; ++j) {
        m[r][j] -= factor * m[i][j];
      }
    }
  }
  Terms factors;
  for (size_t i = 0; i < kTerms; ++i) {
    factors[i] = m[i][kTerms] / m[i][i];
  }
  return factors;
}

// The best fit without negative factors, with at most as many terms as rows.
Terms fit(const std::vector<Counted>& rows) {
  Terms best{rows[0].per_unit, 0, 0};
  double least = INFINITY;
  for (unsigned chosen = 1; chosen < 1u << kTerms; ++chosen) {
    if (static_cast<size_t>(__builtin_popcount(chosen)) > rows.size()) {
      continue;
    }
    const auto factors = solve(rows, chosen);
    if (!factors || (*factors)[0] < 0 || (*factors)[1] < 0 || (*factors)[2] < 0) {
      continue;
    }
    double error = 0;
    for (const Counted& row : rows) {
      const double relative =
          value_of(*factors, terms_of(row.products, row.channels)) / row.per_unit - 1;
      error += relative * relative;
    }
    if (error < least) {
      least = error;
      best = *factors;
    }
  }
  return best;
}

std::string type_of_layer(const Layer& layer) {
  const ai_array& in = layer.lists[AI_CHAIN_INPUT].at(0)->array;
  if (layer.forward.name.ends_with("_fixed")) {
    return ai_fmt_get_bits(in.format) == 8 ? "Q7" : "Q15";
  }
  // Weights decide: int8 ones are taken by the same loops whatever the input is.
  const auto& weights = layer.lists[AI_CHAIN_WEIGHTS];
  const ai_array& first = weights.empty() || weights[0] == nullptr ? in : weights[0]->array;
  switch (ai_fmt_get_code(first.format)) {
    case AI_ARRAY_FORMAT_FLOAT:
      return "float";
    case AI_ARRAY_FORMAT_U8:
      return "uint8";
    default:
      return "int8";
  }
}

// What a function without weights is called in the table.
std::string kind_of_function(const Layer& layer) {
  static constexpr const char* kNames[][2] = {
      {"forward_relu", "relu"},
      {"forward_relu_integer", "relu"},
      {"forward_relu_fixed", "relu"},
      {"forward_clip_integer", "clip"},
      {"forward_nl_integer", "table"},
      {"forward_exp", "exp"},
      {"forward_sigmoid", "sigmoid"},
      {"forward_tanh", "tanh"},
      {"forward_elu", "elu"},
      {"forward_selu", "selu"},
      {"forward_sm", "softmax"},
      {"forward_cosh", "cosh"},
      {"forward_soft_plus", "softplus"},
      {"forward_sinh", "sinh"},
      {"forward_add_integer", "addition"},
      {"forward_mp", "max pooling"},
      {"forward_mp_integer", "max pooling"},
      {"forward_mp_fixed", "max pooling"},
      {"forward_ap", "average pooling"},
      {"forward_ap_integer", "average pooling"},
      {"forward_ap_fixed", "average pooling"},
      {"node_convert_integer", "int8 to uint8"},
  };
  for (const auto& [function, kind] : kNames) {
    if (layer.forward.name == function) {
      return kind;
    }
  }
  if (layer.forward.name == "forward_eltwise") {
    const ai_binary_fn operation = layer.as<ai_layer_eltwise>().operation;
    return operation == ai_sum || operation == ai_sub || operation == ai_mul ? "addition" : "";
  }
  if (layer.forward.name == "node_convert") {
    const auto name_of = [](const Tensor& t) -> std::string {
      const bool is_float = ai_fmt_get_code(t.array.format) == AI_ARRAY_FORMAT_FLOAT;
      const bool is_integer = t.quantization != nullptr;
      return is_float                               ? "float"
             : is_integer                           ? "int8"
             : ai_fmt_get_bits(t.array.format) == 8 ? "Q7"
                                                    : "Q15";
    };
    return name_of(*layer.lists[AI_CHAIN_INPUT].at(0)) + " to " +
           name_of(*layer.lists[AI_CHAIN_OUTPUT].at(0));
  }
  return "";
}

}  // namespace

const char* basis_name(Basis basis) {
  constexpr const char* kNames[] = {"counted", "interpolated", "scaled"};
  return kNames[static_cast<size_t>(basis)];
}

LayerWork work_of(const Layer& layer) {
  const auto& outputs = layer.lists[AI_CHAIN_OUTPUT];
  const auto& weights = layer.lists[AI_CHAIN_WEIGHTS];
  const std::string_view name = layer.forward.name;
  LayerWork work{"", type_of_layer(layer), ai_layer_multiply_accumulates(&layer.record()), 1, 1};
  if (weights.empty() || weights[0] == nullptr) {
    work.kind = kind_of_function(layer);
    work.units = outputs.at(0)->dims.elements();
    if (work.type == "uint8") {
      work.type = "int8";  // the same loops
    }
    if (work.kind.ends_with(" pooling")) {
      const auto& window = layer.as<ai_layer_pool>().pool_size;
      work.products = double(window[0]) * window[1];
      work.units *= uint64_t{window[0]} * window[1];
    }
    return work;
  }
  const Dims& w = weights[0]->dims;
  work.channels = outputs.at(0)->dims.c;
  if (name.starts_with("forward_conv2d") && !name.starts_with("forward_conv2d_transpose")) {
    const bool depthwise = layer.as<ai_layer_conv2d>().groups > 1 && (w.n == 1 || w.c == 1);
    work.kind = depthwise ? "depthwise" : "convolution";
    work.products = double(w.w) * w.h * (depthwise ? 1 : w.c);
  } else if (name.starts_with("forward_dense")) {
    work.kind = "dense";
    work.products = w.n;
  } else if (name == "forward_lstm" || name.find("forward_gru") != name.npos) {
    work.kind = name == "forward_lstm" ? "LSTM" : "GRU";
    work.products = work.channels + layer.lists[AI_CHAIN_INPUT].at(0)->dims.c;
  }
  return work;
}

std::optional<Estimate> estimate(const FootprintPage& page, const LayerWork& work,
                                 std::string_view column) {
  std::vector<Counted> rows;
  const auto total = [&](double per_unit) { return per_unit * static_cast<double>(work.units); };
  for (const CountRow& row : page.counts()) {
    const auto figure = row.per_unit.find(column);
    const bool other_type = row.of != work.type && !row.of.starts_with(work.type + " ") &&
                            row.of != "element" && row.of != "step";
    if (work.kind.empty() || other_type || figure == row.per_unit.end()) {
      continue;
    }
    const Counted counted = counted_of(row, figure->second);
    if (counted.kind != work.kind) {
      continue;
    }
    if (counted.products == work.products && counted.channels == work.channels) {
      return Estimate{total(counted.per_unit), Basis::counted};
    }
    rows.push_back(counted);
  }
  if (rows.empty()) {
    return std::nullopt;
  }
  const Terms terms = terms_of(work.products, work.channels);
  return Estimate{total(value_of(fit(rows), terms)),
                  rows.size() == 1 ? Basis::scaled : Basis::interpolated};
}

}  // namespace nnlib::importer
