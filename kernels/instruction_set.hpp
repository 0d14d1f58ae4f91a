// SPDX-License-Identifier: MIT
// Which instruction set the integer and fixed-point kernels use. Each is a folder beside this file
// that holds the same parts, written with the same names:
//
//   columns.hpp    Columns, what one or two output pixels see as 16-bit values; widen, which
//                  loads and widens a run of values; column_sum
//   finish.hpp     finish<Output>(channel, sum), an output from its sum
//   products.hpp   TileProduct, a tile of kTileRows weight rows, or of kAllRows, by columns,
//                  multiplied, finished and stored; convolve_map, a whole map by other means, or
//                  false; kWholeMaps<Input>, whether that takes all maps
//   depthwise.hpp, fixed_depthwise.hpp
//                  depthwise_blocks: blocks of channels side by side, of a whole map; how many
//                  channels that was
//   pool.hpp       is_narrow, which windows pool_narrow pools by its own means
//   add.hpp        add_exactly, add_rescaled: sums of runs of bytes
//   bytes.hpp      raise_bytes, clip_bytes, look_up_bytes: functions of runs of bytes
//
// Kernel bodies (vector.hpp) include the parts that they need as NNLIB_PART(columns): those of the
// narrow instance's set, chosen here, or of kernels/avx2 in the wide one. A new instruction set is
// a folder and a line here.
#ifndef NNLIB_KERNELS_INSTRUCTION_SET_HPP
#define NNLIB_KERNELS_INSTRUCTION_SET_HPP

// The DSP extension of Arm, in code that Thumb-2 can encode and on any address. (Its blocks of
// assembly need a compiler that optimises: else there are not registers enough.)
#if defined(__OPTIMIZE__) && defined(__ARM_FEATURE_SIMD32) && defined(__thumb2__) && \
    defined(__ARM_FEATURE_UNALIGNED) && !defined(__ARM_BIG_ENDIAN)
#include "kernels/dsp/instructions.hpp"
#if __ARM_FEATURE_MVE & 1
#include <arm_mve.h>
#define NNLIB_NARROW_SET mve
#else
#define NNLIB_NARROW_SET dsp
#endif
#else
#define NNLIB_NARROW_SET scalar
#endif

// clang-format off

#define NNLIB_PART_STRING_(path) #path
#define NNLIB_PART_OF_(set, part) NNLIB_PART_STRING_(kernels/set/part.hpp)
#define NNLIB_PART_IN_(set, part) NNLIB_PART_OF_(set, part)
#define NNLIB_PART(part) NNLIB_PART_IN_(NNLIB_SET, part)
// clang-format on

#endif
