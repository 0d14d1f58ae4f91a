// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "bench/gated_timer.hpp"
#include "bench/layer.hpp"
#include "bench/peaks.hpp"
#include "bench/workloads.hpp"
#include "kernels/vector.hpp"

namespace bench {
void add_benchmark(const std::string& workload, const std::string& contestant, double operations,
                   std::function<void()> call, bool wide) {
  const auto run = [=](benchmark::State& state) {
    nnlib::vector_allow_wide(wide);
    Timing timing = {};
    for ([[maybe_unused]] auto _ : state) {
      timing = time_gated(call);
      state.SetIterationTime(timing.seconds);
    }
    nnlib::vector_allow_wide(true);
    state.counters["kept"] = timing.kept;
    state.counters["dropped"] = timing.dropped;
    if (timing.kept == 0) {
      state.SkipWithError("the processor never ran at full speed");
    } else if (operations != 0) {
      state.counters["Gops"] = operations / timing.seconds * 1e-9;
    }
  };
  benchmark::RegisterBenchmark((workload + "/" + contestant).c_str(), run)
      ->UseManualTime()
      ->Iterations(1)
      ->Unit(benchmark::kMicrosecond);
}

void add_peaks() {
  const auto chains = [] { multiply_add_chains(5000); };
  const auto pairs = [] { multiply_add_pairs(5000); };
  for (const bool wide : {true, false}) {
    nnlib::vector_allow_wide(wide);
    if (wide != nnlib::vector_wide()) {
      continue;
    }
    const std::string suffix = wide ? "" : " narrow";
    add_benchmark("peak", "multiply-add" + suffix, static_cast<double>(multiply_add_chains(5000)),
                  chains, wide);
    if (multiply_add_pairs(1) != 0) {
      add_benchmark("peak", "16-bit pairs" + suffix, static_cast<double>(multiply_add_pairs(5000)),
                    pairs, wide);
    }
  }
  nnlib::vector_allow_wide(true);
  add_benchmark("peak", "one chain", static_cast<double>(multiply_add_chain(5000)),
                [] { multiply_add_chain(5000); });
  constexpr size_t kFloats = size_t{64} << 20;
  static const auto floats = std::make_shared<Floats>(kFloats);
  add_benchmark("peak", "reads of 256 MiB", 0, [] { read_floats(floats->data(), kFloats); });
}

}  // namespace bench

int main(int argc, char** argv) {
  bench::add_peaks();
  bench::add_products();
  bench::add_float_layers();
  bench::add_integer_layers();
  bench::add_conversions();
  bench::add_naive_loops();
#if BENCH_PEERS
  bench::add_peers();
#endif
  bench::add_peaks();  // again: the core may have become faster
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return EXIT_SUCCESS;
}
