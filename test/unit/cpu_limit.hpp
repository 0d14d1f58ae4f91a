// SPDX-License-Identifier: MIT
// A limit on processor time, for functions that are to hang.
#ifndef TEST_UNIT_CPU_LIMIT_HPP
#define TEST_UNIT_CPU_LIMIT_HPP

#include <sys/time.h>

// The process ends with SIGVTALRM when it has computed for 0.1 s from now on, however busy the
// machine is.
inline void limit_cpu_time() {
  const itimerval limit = {{0, 0}, {0, 100000}};
  setitimer(ITIMER_VIRTUAL, &limit, nullptr);
}

#endif
