// Hot paths of the platform runtime: a keyed mutator with a reactor attached, the per-route table
// candidates at label-space scale, number allocation and release, and a disabled trace point.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <unordered_map>
#include <vector>

#include <mplsfwd/Fal/MplsHwConfig.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/log/Trace.h>
#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/NumAllocator.h>
#include <mplsfwd/mpls/LfibDecapVias.h>
#include <mplsfwd/mpls/RouteKey.h>

#include "FloorReporter.h"

namespace {

// The floor: a lookup in a small plain std::unordered_map of integers, the least any keyed
// operation of the runtime can cost.
void BM_Floor_StdMapFind(benchmark::State& state) {
   std::unordered_map<std::uint32_t, std::uint32_t> map;
   for (std::uint32_t i = 0; i < 1024; ++i) {
      map.emplace(i * 7919u, i);
   }
   std::uint32_t i = 0;
   std::uint64_t sum = 0;
   for (auto _ : state) {
      sum += map.find((i++ & 1023u) * 7919u)->second;
   }
   benchmark::DoNotOptimize(sum);
}
BENCHMARK(BM_Floor_StdMapFind);

struct RouteWatch : Fal::MplsHwVrfConfig::NotifieeConst {
   using Fal::MplsHwVrfConfig::NotifieeConst::NotifieeConst;
   void onRoute(const Mpls::RouteKey&) override { ++seen; }
   std::uint64_t seen = 0;
};

// routeIs on a table of N routes, each call a real change (the version rises), one reactor.
void BM_KeyedMutatorWithReactor(benchmark::State& state) {
   const auto n = static_cast<std::uint32_t>(state.range(0));
   auto config = Fal::mplsHwConfigFactory("bench");
   auto vrf = config->vrfConfigIs(Fal::VrfId(0));
   auto adj = Kor::make<Mpls::Hardware::L2Adjacency>(1);
   for (std::uint32_t l = 0; l < n; ++l) {
      vrf->routeIs(Fal::MplsHwRoute(Mpls::RouteKey(Wire::MplsLabel(16 + l)), adj, 0));
   }
   RouteWatch watch(vrf);
   std::uint64_t version = 1;
   std::uint32_t l = 0;
   for (auto _ : state) {
      vrf->routeIs(Fal::MplsHwRoute(Mpls::RouteKey(Wire::MplsLabel(16 + l)), adj, version));
      if (++l == n) {
         l = 0;
         ++version;
      }
   }
   benchmark::DoNotOptimize(watch.seen);
}
BENCHMARK(BM_KeyedMutatorWithReactor)->Arg(1 << 10)->Arg(1048560);

// Label keys in a scrambled order, so that table accesses do not walk memory in sequence.
std::vector<Mpls::RouteKey> scrambledKeys(std::uint32_t n) {
   std::vector<Mpls::RouteKey> keys;
   keys.reserve(n);
   for (std::uint32_t i = 0; i < n; ++i) {
      keys.emplace_back(
          Wire::MplsLabel(16 + static_cast<std::uint32_t>((std::uint64_t{i} * 2654435761u) % n)));
   }
   return keys;
}

// The per-route table candidates: the node-based hash map, the open-addressing one, and the
// array indexed by label that the per-route tables use.
using NodeRouteMap = Kor::HashMap<Mpls::RouteKey, std::uint64_t>;
using FlatRouteMap = Kor::FlatHashMap<Mpls::RouteKey, std::uint64_t>;
using DenseRouteMap = Mpls::DenseRouteMap<std::uint64_t>;

// A lookup by route key in a table of N routes.
template <class Map>
void BM_RouteLookup(benchmark::State& state) {
   const auto n = static_cast<std::uint32_t>(state.range(0));
   Map map;
   map.reserve(n);
   for (std::uint32_t l = 0; l < n; ++l) {
      map.try_emplace(Mpls::RouteKey(Wire::MplsLabel(16 + l)), l);
   }
   auto keys = scrambledKeys(n);
   std::size_t i = 0;
   std::uint64_t sum = 0;
   for (auto _ : state) {
      sum += map.find(keys[i])->second;
      if (++i == n) {
         i = 0;
      }
   }
   benchmark::DoNotOptimize(sum);
}
BENCHMARK(BM_RouteLookup<NodeRouteMap>)->Arg(1 << 10)->Arg(1048560);
BENCHMARK(BM_RouteLookup<FlatRouteMap>)->Arg(1 << 10)->Arg(1048560);
BENCHMARK(BM_RouteLookup<DenseRouteMap>)->Arg(1 << 10)->Arg(1048560);

// Filling an empty table with N routes in scrambled order, without reserving, then emptying it
// again: what a table costs over a full LFIB download and withdrawal. Time is per route.
template <class Map>
void BM_RouteFillAndDrain(benchmark::State& state) {
   const auto n = static_cast<std::uint32_t>(state.range(0));
   auto keys = scrambledKeys(n);
   for (auto _ : state) {
      Map map;
      for (std::uint32_t i = 0; i < n; ++i) {
         map.try_emplace(keys[i], i);
      }
      for (std::uint32_t i = 0; i < n; ++i) {
         map.erase(keys[i]);
      }
      benchmark::DoNotOptimize(map.size());
   }
   state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * n);
}
BENCHMARK(BM_RouteFillAndDrain<NodeRouteMap>)->Arg(1048560)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RouteFillAndDrain<FlatRouteMap>)->Arg(1048560)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RouteFillAndDrain<DenseRouteMap>)->Arg(1048560)->Unit(benchmark::kMillisecond);

// A backlog of N route keys queued in scrambled order, then drained in key order the way the decap
// machine's task walks it: take the first key at or after the last one handled, erase it. The
// ordered set of nodes it was, against the bit per label it is. Time is per route.
using OrderedBacklog = Kor::OrderedSet<Mpls::RouteKey>;
using DenseBacklog = Mpls::DenseRouteKeySet;

template <class Set>
void BM_BacklogFillAndDrain(benchmark::State& state) {
   const auto n = static_cast<std::uint32_t>(state.range(0));
   auto keys = scrambledKeys(n);
   for (auto _ : state) {
      Set backlog;
      for (std::uint32_t i = 0; i < n; ++i) {
         backlog.insert(keys[i]);
      }
      auto it = backlog.begin();
      while (it != backlog.end()) {
         const Mpls::RouteKey k = *it;
         backlog.erase(k);
         it = backlog.upper_bound(k);
      }
      benchmark::DoNotOptimize(backlog.size());
   }
   state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * n);
}
BENCHMARK(BM_BacklogFillAndDrain<OrderedBacklog>)->Arg(1048560)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BacklogFillAndDrain<DenseBacklog>)->Arg(1048560)->Unit(benchmark::kMillisecond);

// A table of vias (a decap route brings its own) filled with N vias and emptied again, the
// node-based hash map against the open-addressing one. Time is per via.
using NodeViaMap = Kor::HashMap<Mpls::LfibViaKey, Mpls::LfibVlanVia>;
using FlatViaMap = Kor::FlatHashMap<Mpls::LfibViaKey, Mpls::LfibVlanVia>;

template <class Map>
void BM_ViaFillAndDrain(benchmark::State& state) {
   const auto n = static_cast<std::uint32_t>(state.range(0));
   auto keys = scrambledKeys(n);
   for (auto _ : state) {
      Map map;
      for (std::uint32_t i = 0; i < n; ++i) {
         Mpls::LfibViaKey key(Mpls::viaTypeVlan_, keys[i].topLabel().value(),
                              Mpls::lfibSourceEvpn_);
         map.try_emplace(key, Mpls::LfibVlanVia(key, Bridging::VlanId(100)));
      }
      for (std::uint32_t i = 0; i < n; ++i) {
         map.erase(Mpls::LfibViaKey(Mpls::viaTypeVlan_, keys[i].topLabel().value(),
                                    Mpls::lfibSourceEvpn_));
      }
      benchmark::DoNotOptimize(map.size());
   }
   state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * n);
}
BENCHMARK(BM_ViaFillAndDrain<NodeViaMap>)->Arg(1048560)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ViaFillAndDrain<FlatViaMap>)->Arg(1048560)->Unit(benchmark::kMillisecond);

// One allocation and one release over the 32-bit range with a 10 s quarantine, time not moving:
// the steady state of a FEC id allocator under churn.
void BM_AllocatorGetRelease(benchmark::State& state) {
   auto loop = Kor::make<Loom::EventLoop>();
   auto config = Kor::make<Loom::NumAllocatorConfig>(Loom::Range(0, 4294967295u), 10.0);
   auto status = Kor::make<Loom::NumAllocatorStatus>();
   Loom::NumAllocator allocator(config, status, loop->clockIs("bench"));
   std::vector<std::uint64_t> held;
   for (int i = 0; i < 1024; ++i) {
      held.push_back(allocator.allocateNumber());
   }
   std::size_t i = 0;
   for (auto _ : state) {
      allocator.releaseNumber(held[i]);
      held[i] = allocator.allocateNumber();
      if (++i == held.size()) {
         i = 0;
      }
   }
   benchmark::DoNotOptimize(held.data());
}
BENCHMARK(BM_AllocatorGetRelease);

Log::Trace benchTrace("RuntimeBench");

std::uint64_t expensive(std::uint64_t x) {
   // Never runs: a disabled trace evaluates none of its arguments.
   for (int i = 0; i < 100; ++i) {
      x = x * 6364136223846793005ULL + 1442695040888963407ULL;
   }
   return x;
}

void BM_DisabledTrace(benchmark::State& state) {
   std::uint64_t i = 0;
   for (auto _ : state) {
      TRACE9(benchTrace, "value " << expensive(i) << " of " << i);
      benchmark::DoNotOptimize(++i);
   }
}
BENCHMARK(BM_DisabledTrace);

}  // namespace

MPLSFWD_BENCHMARK_MAIN();
