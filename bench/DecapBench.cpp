// The decap state machine draining a backlog of 100,000 decap routes of mixed via types into the
// stub helper (every create accepted), on a real-time event loop so that the backlog task yields
// on the scheduler's real quantum. Reports routes per second and the longest single run of the
// backlog task, which must stay near the quantum however large the backlog.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <vector>

#include <mplsfwd/decap/FalMplsDecapHelper.h>
#include <mplsfwd/decap/FalMplsDecapSm.h>
#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/TimerWheel.h>
#include <mplsfwd/mpls/LfibHwStatus.h>
#include <mplsfwd/mpls/LfibStatus.h>
#include <mplsfwd/mpls/LfibTrackingStatus.h>

#include "FloorReporter.h"

namespace {

constexpr std::uint32_t kRoutes = 100000;
constexpr std::uint32_t kFirstLabel = 16;
constexpr std::uint32_t kCollections = 64;
constexpr std::uint16_t kTagsPerCollection = 4;

Mpls::RouteKey routeKey(std::uint32_t i) {
   return Mpls::RouteKey(Wire::MplsLabel(kFirstLabel + i));
}

// The floor: recording 100,000 route keys in a hash map, the least that any per-route
// bookkeeping of this many routes costs.
void BM_Floor_RecordRouteKeys(benchmark::State& state) {
   for (auto _ : state) {
      Kor::HashMap<Mpls::RouteKey, Mpls::LfibViaType> map;
      map.reserve(kRoutes);
      for (std::uint32_t i = 0; i < kRoutes; ++i) {
         map.emplace(routeKey(i), Mpls::viaTypeVlan_);
      }
      benchmark::DoNotOptimize(map.size());
   }
   state.SetItemsProcessed(state.iterations() * kRoutes);
}
BENCHMARK(BM_Floor_RecordRouteKeys)->Unit(benchmark::kMillisecond)->UseRealTime();

// An LFIB of kRoutes decap routes, one via set and one via each: 40 % IP lookup, 25 % VLAN,
// 20 % EVPN VLAN flood, 10 % EVPN VLAN-aware and 5 % VLAN-aware flood over 64 collections of 4
// tags (4 helper calls per VLAN-aware route).
struct DecapSetup {
   DecapSetup() {
      for (std::uint32_t c = 0; c < kCollections; ++c) {
         auto coll = lfib->dot1qTagToVlanCollIs(Mpls::LfibDot1qTagToVlanKey(c));
         for (std::uint16_t t = 1; t <= kTagsPerCollection; ++t) {
            coll->dot1qTagToVlanIdIs(Bridging::VlanId(t),
                                     Bridging::VlanIdOrNone(Bridging::VlanId(100 + t)));
         }
      }
      const L3::VrfName vrfs[] = {"red", "blue", "green"};
      for (std::uint32_t i = 0; i < kRoutes; ++i) {
         const std::uint32_t slot = i % 20;
         Mpls::LfibViaKey via;
         const auto vlan = Bridging::VlanId(static_cast<std::uint16_t>(1 + i % 4000));
         const Mpls::LfibDot1qTagToVlanKey coll(i % kCollections);
         if (slot < 8) {
            via = Mpls::LfibViaKey(Mpls::viaTypeIpLookup_, i);
            lfib->ipLookupViaIs(Mpls::LfibIpLookupVia(via, vrfs[i % 3], Mpls::payloadTypeIpv4_));
         } else if (slot < 13) {
            via = Mpls::LfibViaKey(Mpls::viaTypeVlan_, i);
            lfib->vlanViaIs(Mpls::LfibVlanVia(via, vlan));
         } else if (slot < 17) {
            via = Mpls::LfibViaKey(Mpls::viaTypeEvpnVlanFlood_, i);
            lfib->evpnVlanFloodViaIs(Mpls::LfibEvpnVlanFloodVia(via, vlan));
         } else if (slot < 19) {
            via = Mpls::LfibViaKey(Mpls::viaTypeEvpnVlanAware_, i);
            lfib->evpnVlanAwareViaIs(Mpls::LfibEvpnVlanAwareVia(via, coll));
         } else {
            via = Mpls::LfibViaKey(Mpls::viaTypeEvpnVlanAwareFlood_, i);
            lfib->evpnVlanAwareFloodViaIs(Mpls::LfibEvpnVlanAwareFloodVia(via, coll));
         }
         const Mpls::LfibViaSetKey viaSet(via.viaType(), i);
         lfib->viaSetIs(Mpls::LfibViaSet(viaSet, {via}));
         lfib->lfibRouteIs(Mpls::LfibRoute(routeKey(i), viaSet));
      }
   }

   void fillBacklog() {
      for (std::uint32_t i = 0; i < kRoutes; ++i) {
         tracking->routeKeyBacklogIs(routeKey(i));
      }
   }
   Kor::Ptr<Fal::MplsDecapSm> newSm() {
      return Fal::mplsDecapSmFactory(helper, lfib, loop->scheduler(), tracking, hwStatus);
   }

   // Runs the loop one task at a time until nothing is ready, timing each run on the wall clock
   // (what the time box bounds) and on this thread's CPU clock (the same without the time the
   // thread was descheduled on a busy machine).
   void drain() {
      while (!loop->scheduler()->idle()) {
         const auto t0 = std::chrono::steady_clock::now();
         const double cpu0 = threadCpuMs();
         loop->runUntilIdle(1);
         const double ms =
             std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0)
                 .count();
         longestRunMs = std::max(longestRunMs, ms);
         longestRunCpuMs = std::max(longestRunCpuMs, threadCpuMs() - cpu0);
         ++runs;
      }
   }
   static double threadCpuMs() {
      timespec ts{};
      clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
      return static_cast<double>(ts.tv_sec) * 1e3 + static_cast<double>(ts.tv_nsec) * 1e-6;
   }

   Kor::Ptr<Loom::EventLoop> loop =
       Kor::make<Loom::EventLoop>(Loom::EventLoop::TimeMode::monotonic);
   Kor::Ptr<Loom::TimerWheel> wheel = Kor::make<Loom::TimerWheel>("wheel", loop);
   Kor::Ptr<Mpls::LfibStatus> lfib = Kor::make<Mpls::LfibStatus>("lfib");
   Kor::Ptr<Mpls::LfibTrackingStatus> tracking = Kor::make<Mpls::LfibTrackingStatus>("tracking");
   Kor::Ptr<Mpls::LfibHwStatus> hwStatus = Kor::make<Mpls::LfibHwStatus>("lfibHwStatus");
   Kor::Ptr<FalHelper::MplsDecapHelperStub> helper =
       Kor::make<FalHelper::MplsDecapHelperStub>("stub", wheel);
   double longestRunMs = 0.0;
   double longestRunCpuMs = 0.0;
   std::uint64_t runs = 0;
};

void report(benchmark::State& state, const DecapSetup& setup) {
   state.SetItemsProcessed(state.iterations() * kRoutes);
   state.counters["longest_run_ms"] = setup.longestRunMs;
   state.counters["longest_run_cpu_ms"] = setup.longestRunCpuMs;
   state.counters["quantum_ms"] = setup.loop->scheduler()->quantum() * 1e3;
   state.counters["runs_per_drain"] =
       static_cast<double>(setup.runs) / static_cast<double>(state.iterations());
}

// A fresh state machine takes up a full backlog: every route is created.
void BM_DecapBacklogCreate(benchmark::State& state) {
   DecapSetup setup;
   Kor::Ptr<Fal::MplsDecapSm> sm;
   for (auto _ : state) {
      state.PauseTiming();
      sm = nullptr;
      setup.fillBacklog();
      sm = setup.newSm();
      state.ResumeTiming();
      setup.drain();
   }
   // After the loop: not timed.
   if (setup.helper->createLabelToVrfCount() == 0 ||
       !setup.tracking->routeKeyBacklogSet().empty() || sm->routeViaTypeMap().size() != kRoutes) {
      state.SkipWithError("the backlog was not programmed");
   }
   sm = nullptr;
   report(state, setup);
}
BENCHMARK(BM_DecapBacklogCreate)->Unit(benchmark::kMillisecond)->UseRealTime();

// Every route already programmed comes back on the backlog: each is deleted, then created again.
void BM_DecapBacklogReprogram(benchmark::State& state) {
   DecapSetup setup;
   setup.fillBacklog();
   auto sm = setup.newSm();
   setup.drain();
   setup.longestRunMs = 0.0;
   setup.longestRunCpuMs = 0.0;
   setup.runs = 0;
   for (auto _ : state) {
      state.PauseTiming();
      setup.fillBacklog();
      state.ResumeTiming();
      setup.drain();
   }
   if (setup.helper->deleteLabelToVrfCount() == 0 || sm->routeViaTypeMap().size() != kRoutes) {
      state.SkipWithError("the backlog was not reprogrammed");
   }
   sm = nullptr;
   report(state, setup);
}
BENCHMARK(BM_DecapBacklogReprogram)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

MPLSFWD_BENCHMARK_MAIN();
