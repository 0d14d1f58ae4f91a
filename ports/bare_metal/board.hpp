// SPDX-License-Identifier: MIT
// What a program without an operating system runs on: memory marks and the way out. The start-up
// code of each architecture stands in its directory beside this file.
#ifndef NNLIB_PORTS_BARE_METAL_BOARD_HPP
#define NNLIB_PORTS_BARE_METAL_BOARD_HPP

#include <cstddef>
#include <cstdint>

namespace nnlib::board {

// Statuses that no count of failures reaches as long as it is below them.
inline constexpr int kFaultStatus = 250;
inline constexpr int kAbortStatus = 134;  // as a shell shows it

// Fills the unused stack, so that the deepest use can be told later. The part below `above` bytes
// over the stack's limit stays untouched (it may be guarded).
void paint_stack(uint32_t above);

// sbrk: moves the end of the heap; (void*)-1 with errno ENOMEM when it would meet the stack.
void* take_heap(ptrdiff_t bytes);

// Writes status and memory marks to standard error and leaves:
//   [Board] status 3, stack 1234, heap 5678
// The numbers are the exit status in full and the most bytes that stack and heap took.
[[noreturn]] void leave(int status);

// Reports a fault and leaves with kFaultStatus.
[[noreturn]] void leave_after_fault(uint32_t cause, uint32_t program_counter, uint32_t detail);

}  // namespace nnlib::board

#endif
