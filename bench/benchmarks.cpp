#include <benchmark/benchmark.h>

#include <cstdlib>
#include <new>

#include "bench/gated_timer.hpp"
#include "bench/peaks.hpp"
#include "bench/workloads.hpp"
#include "kernels/vector.hpp"

namespace bench {
namespace {

constexpr std::align_val_t kCacheLine{64};

}  // namespace

Floats::Floats(size_t count)
    : data_(static_cast<float*>(::operator new[](count * sizeof(float), kCacheLine))),
      size_(count) {
  uint32_t bits = 1;
  for (size_t i = 0; i < count; ++i) {
    bits = bits * 1664525u + 1013904223u;
    data_[i] = static_cast<float>(static_cast<int32_t>(bits)) * 0x1p-32f;
  }
}

void Floats::Free::operator()(float* data) const {
  ::operator delete[](data, kCacheLine);
}

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
      state.counters["GFLOPS"] = operations / timing.seconds * 1e-9;
    }
  };
  benchmark::RegisterBenchmark((workload + "/" + contestant).c_str(), run)
      ->UseManualTime()
      ->Iterations(1)
      ->Unit(benchmark::kMicrosecond);
}

void add_peaks() {
  const auto chains = [] { multiply_add_chains(5000); };
  for (const bool wide : {true, false}) {
    nnlib::vector_allow_wide(wide);
    if (wide == nnlib::vector_wide()) {
      add_benchmark("peak", wide ? "multiply-add" : "multiply-add narrow",
                    static_cast<double>(multiply_add_chains(5000)), chains, wide);
    }
  }
  nnlib::vector_allow_wide(true);
  add_benchmark("peak", "one chain", static_cast<double>(multiply_add_chain(5000)),
                [] { multiply_add_chain(5000); });
  auto floats = std::make_shared<Floats>(size_t{64} << 20);
  add_benchmark("peak", "reads of 256 MiB", 0,
                [floats] { read_floats(floats->data(), floats->size()); });
}

}  // namespace bench

int main(int argc, char** argv) {
  bench::add_peaks();
  bench::add_runtime();
  bench::add_naive_loops();
#if BENCH_PEERS
  bench::add_peers();
#endif
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return EXIT_SUCCESS;
}
