// SPDX-License-Identifier: MIT
#include "ports/bare_metal/semihost.hpp"

namespace nnlib::semihost {

intptr_t transfer(Operation operation, Stream stream, const void* bytes, size_t count) {
  // The console opened in the modes r, w and a is standard input, output and error.
  static constexpr intptr_t kModes[] = {0, 4, 8};
  static intptr_t handles[] = {-1, -1, -1};
  intptr_t& handle = handles[stream];
  if (handle < 0) {
    const intptr_t block[] = {reinterpret_cast<intptr_t>(":tt"), kModes[stream], 3};
    handle = call(kOpen, block);
  }
  if (handle < 0) {
    return -1;
  }
  const intptr_t block[] = {handle, reinterpret_cast<intptr_t>(bytes),
                            static_cast<intptr_t>(count)};
  return call(operation, block);
}

}  // namespace nnlib::semihost
