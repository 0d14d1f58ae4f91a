// SPDX-License-Identifier: MIT
// Marks what an emulator counts (region_counter.c); for programs of one source.
#ifndef TOOLS_INSTRUCTIONS_REGION_HPP
#define TOOLS_INSTRUCTIONS_REGION_HPP

extern "C" {
void region_begin();
void region_end();
__attribute__((noinline)) void region_begin() {
  __asm__ volatile("" ::: "memory");
}
__attribute__((noinline)) void region_end() {
  __asm__ volatile("" ::: "memory");
}
}

#endif
