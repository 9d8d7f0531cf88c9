// The transit machine at label-space scale: N routes over M via sets and K next hops, from the
// first LFIB write until every route is programmed and published, then one next-hop MAC change,
// with the in-place adjacency update on and off. Each run builds its own agent (outside the
// measured time) through the simulator's scale harness; the figures are its real-time
// measurements, reported as counters.
#include <benchmark/benchmark.h>

#include <mplsfwd/sim/ScaleHarness.h>

#include "FloorReporter.h"

namespace {

void BM_TransitConverge(benchmark::State& state) {
   sim::ScaleOptions options;
   options.routes = static_cast<std::size_t>(state.range(0));
   options.viaSets = static_cast<std::size_t>(state.range(1));
   options.nextHops = static_cast<std::size_t>(state.range(2));
   options.inPlaceUpdate = state.range(3) != 0;
   sim::ScaleResult result;
   for (auto _ : state) {
      sim::ScaleHarness harness(options);
      result = harness.run();
      state.SetIterationTime(result.convergeSeconds);
   }
   if (!result.converged) {
      state.SkipWithError("did not converge");
      return;
   }
   state.counters["routesPerSecond"] = result.routesPerSecond;
   state.counters["bytesPerRoute"] = result.bytesPerRoute;
   state.counters["longestPassMs"] = result.longestPassMs;
   state.counters["macChangeMs"] = result.macChangeMs;
   state.counters["macChangeWorkMs"] = result.macChangeWorkMs;
   state.counters["l2Adjacencies"] = static_cast<double>(result.l2Adjacencies);
}

// Arguments: routes, via sets, next hops, in-place update.
BENCHMARK(BM_TransitConverge)
    ->Args({100000, 1000, 64, 0})
    ->Args({100000, 1000, 64, 1})
    ->Args({1048560, 1000, 64, 0})
    ->Args({1048560, 1000, 64, 1})
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// The floor: the same harness with the smallest LFIB, so the ratios show what scale costs.
void BM_Floor_TransitConvergeTiny(benchmark::State& state) {
   sim::ScaleOptions options;
   options.routes = 1000;
   options.viaSets = 10;
   options.nextHops = 4;
   for (auto _ : state) {
      sim::ScaleHarness harness(options);
      state.SetIterationTime(harness.run().convergeSeconds);
   }
}
BENCHMARK(BM_Floor_TransitConvergeTiny)
    ->Iterations(3)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace

MPLSFWD_BENCHMARK_MAIN();
