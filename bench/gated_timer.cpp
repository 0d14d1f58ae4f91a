// SPDX-License-Identifier: MIT
#include "bench/gated_timer.hpp"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <vector>

#include "bench/peaks.hpp"
#include "kernels/vector.hpp"

namespace bench {
namespace {

constexpr double kCalibrationSeconds = 25e-6;
constexpr double kBatchSeconds = 1e-3;
constexpr double kSpeedTolerance = 1.04;
constexpr uint32_t kKeptBatches = 61;
constexpr double kPatienceSeconds = 60.0;

double seconds_of(const std::function<void()>& work) {
  const double start = thread_seconds();
  work();
  return thread_seconds() - start;
}

// A fixed piece of arithmetic in registers, which only the speed of the core decides on.
class Calibration {
 public:
  Calibration() {
    while (run() < kCalibrationSeconds) {
      rounds_ *= 2;
    }
    std::vector<double> seconds(40000);
    for (double& sample : seconds) {
      sample = run();
    }
    // Not the least, which may be a slip of the clock.
    const auto low = seconds.begin() + static_cast<ptrdiff_t>(seconds.size() / 50);
    std::nth_element(seconds.begin(), low, seconds.end());
    full_speed_ = *low;
  }

  bool at_full_speed() const { return run() <= full_speed_ * kSpeedTolerance; }

 private:
  // Always with the same vectors, whatever the workload is to use.
  double run() const {
    const bool wide = nnlib::vector_wide();
    nnlib::vector_allow_wide(true);
    const double seconds = seconds_of([this] { multiply_add_chains(rounds_); });
    nnlib::vector_allow_wide(wide);
    return seconds;
  }

  uint64_t rounds_ = 64;
  double full_speed_;
};

uint32_t calls_in_batch(const std::function<void()>& call) {
  double fastest = 1.0;
  for (int i = 0; i < 5; ++i) {
    fastest = std::min(fastest, seconds_of(call));
  }
  return static_cast<uint32_t>(std::ceil(kBatchSeconds / std::max(fastest, 1e-8)));
}

}  // namespace

double thread_seconds() {
  timespec now = {};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

Timing time_gated(const std::function<void()>& call) {
  static Calibration calibration;
  const uint32_t calls = calls_in_batch(call);
  std::vector<double> kept;
  uint32_t batches = 0;
  const double give_up = thread_seconds() + kPatienceSeconds;
  for (; kept.size() < kKeptBatches && thread_seconds() < give_up; ++batches) {
    const bool before = calibration.at_full_speed();
    const double seconds = seconds_of([&] {
      for (uint32_t i = 0; i < calls; ++i) {
        call();
      }
    });
    if (calibration.at_full_speed() && before) {
      kept.push_back(seconds / calls);
    }
  }
  const auto count = static_cast<uint32_t>(kept.size());
  if (kept.empty()) {
    return {0.0, 0, batches};
  }
  std::nth_element(kept.begin(), kept.begin() + count / 2, kept.end());
  return {kept[count / 2], count, batches - count};
}

}  // namespace bench
