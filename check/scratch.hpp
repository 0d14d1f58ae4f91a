// SPDX-License-Identifier: MIT
// Scratch tensors against the sizes that the layers' own functions give.
#ifndef NNLIB_CHECK_SCRATCH_HPP
#define NNLIB_CHECK_SCRATCH_HPP

#include "check/layer_check.hpp"

namespace nnlib {

// The scratch tensor has that many bytes at a multiple of `alignment`; none is needed for 0 bytes.
void check_scratch(LayerCheck& check, uint32_t index, uint64_t bytes, uint32_t alignment);

// The layer with the chain with which it runs, for the functions that give scratch sizes.
template <class Record>
class LayerCopy {
 public:
  explicit LayerCopy(const LayerCheck& check) : copy_(check.record<Record>()) {
    reinterpret_cast<ai_layer&>(copy_).tensor_chain = check.chain();
  }
  const Record* record() const { return &copy_; }

 private:
  Record copy_;
};

}  // namespace nnlib

#endif
