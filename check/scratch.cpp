// SPDX-License-Identifier: MIT
#include "check/scratch.hpp"

namespace nnlib {

void check_scratch(LayerCheck& check, uint32_t index, uint64_t bytes, uint32_t alignment) {
  const TensorName name = {AI_CHAIN_SCRATCH, index};
  const ai_tensor* scratch = check.sound(name.list, name.index);
  if (bytes == 0) {
    return;
  }
  if (scratch == nullptr) {
    Finding(check.report()) << name << " is missing, " << bytes << " bytes are needed";
    return;
  }
  const uint32_t held = ai_array_get_data_byte_size(scratch->data->format, scratch->data->size);
  if (held < bytes) {
    Finding(check.report()) << name << " holds " << held << " bytes, " << bytes << " are needed";
  }
  const auto address = reinterpret_cast<uintptr_t>(scratch->data->data);
  if (address % alignment != 0) {
    Finding(check.report()) << name << " lies " << uint64_t{address % alignment}
                            << " bytes behind a multiple of " << alignment;
  }
}

}  // namespace nnlib
