// SPDX-License-Identifier: MIT
// Windows of pooling, alone and behind a convolution.
#ifndef NNLIB_IMPORTER_LOWER_POOL_WINDOW_HPP
#define NNLIB_IMPORTER_LOWER_POOL_WINDOW_HPP

#include "importer/lower/lowering.hpp"

namespace nnlib::importer {

struct PoolWindow {
  std::vector<int64_t> kernel, strides, pads;
};

// Of a pooling node from map x to map y. Throws Unsupported where windows and maps do not fit.
PoolWindow pool_window(const Node& node, const Value& x, const Value& y);

template <class Record>
void set_window(LayerBuilder& layer, const PoolWindow& w) {
  const auto at = [](const std::vector<int64_t>& v, size_t i) {
    return static_cast<uint32_t>(v[i]);
  };
  layer.set(NNLIB_MEMBER(Record, pool_size), at(w.kernel, 1), at(w.kernel, 0))
      .set(NNLIB_MEMBER(Record, pool_stride), at(w.strides, 1), at(w.strides, 0))
      .set(NNLIB_MEMBER(Record, pool_pad),
           {at(w.pads, 0), at(w.pads, 1), at(w.pads, 2), at(w.pads, 3)});
}

}  // namespace nnlib::importer

#endif
