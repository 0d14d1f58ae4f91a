// SPDX-License-Identifier: MIT
// Functions of runs of bytes, by the instruction set that the target has anyway. The output may be
// an input.
#ifndef NNLIB_KERNELS_BYTE_FUNCTIONS_HPP
#define NNLIB_KERNELS_BYTE_FUNCTIONS_HPP

#include <algorithm>
#include <limits>
#include <type_traits>

#include "kernels/instruction_set.hpp"
#include "kernels/map_elements.hpp"
#include "kernels/vector.hpp"

namespace nnlib {
#define NNLIB_SET NNLIB_NARROW_SET
#include NNLIB_PART(bytes)
#undef NNLIB_SET

}  // namespace nnlib

#endif
