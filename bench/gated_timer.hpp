// SPDX-License-Identifier: MIT
// Times that repeat on a machine whose speed does not: a batch of calls counts only when the
// processor ran at full speed just before and just after it.
#ifndef BENCH_GATED_TIMER_HPP
#define BENCH_GATED_TIMER_HPP

#include <cstdint>
#include <functional>

namespace bench {

struct Timing {
  double seconds;  // of one call: the median over the kept batches
  uint32_t kept;
  uint32_t dropped;
};

// Gives up waiting for full speed after a while: kept is then lower, perhaps 0.
Timing time_gated(const std::function<void()>& call);

// Seconds of this thread on a processor.
double thread_seconds();

}  // namespace bench

#endif
