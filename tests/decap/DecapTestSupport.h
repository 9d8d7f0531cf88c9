#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <mplsfwd/decap/FalMplsDecapHelper.h>
#include <mplsfwd/decap/FalMplsDecapSm.h>
#include <mplsfwd/log/TraceConfig.h>
#include <mplsfwd/log/TraceSink.h>
#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/TimerWheel.h>
#include <mplsfwd/mpls/LfibHwStatus.h>
#include <mplsfwd/mpls/LfibStatus.h>
#include <mplsfwd/mpls/LfibTrackingSm.h>
#include <mplsfwd/mpls/LfibTrackingStatus.h>
#include <mplsfwd/sim/DecapHelper.h>

namespace DecapTest {

inline Mpls::RouteKey key(std::uint32_t label) {
   return Mpls::RouteKey(Wire::MplsLabel(label));
}
inline Bridging::VlanId vlan(std::uint16_t v) {
   return Bridging::VlanId(v);
}

using Calls = std::vector<std::string>;

// One agent's worth of decap: simulated event loop, LFIB with its tracking state machine (route
// keys only), LFIB hardware status, the simulated platform's decap helper logging its calls and,
// once start() is called, the decap state machine. Traces of "MplsDecapSm" are captured at every
// level.
class DecapFixture : public ::testing::Test {
 protected:
   void SetUp() override {
      Log::TraceConfig::configIs("MplsDecapSm/0-9");
      traceScope.emplace(traces);
      helper = Kor::make<sim::DecapHelper>("helper", wheel);
      helper->callLogIs(true);
      helper->handleInitialized();
      trackingSm = Kor::make<Mpls::LfibTrackingSm>(lfib, tracking, Mpls::lfibTrackingRoutes_,
                                                   "DecapTracking");
   }
   void TearDown() override {
      sm = nullptr;
      trackingSm = nullptr;
      traceScope.reset();
      Log::TraceConfig::configIs("");
   }

   void start() {
      sm = Fal::mplsDecapSmFactory(helper, lfib, loop->scheduler(), tracking, hwStatus);
   }
   // Runs whatever is ready now, without moving time.
   void settle() { loop->runUntilIdle(); }

   // LFIB builders: one via set per route (index = label) holding the given vias.
   Mpls::LfibViaKey ipLookupVia(std::uint32_t index, const char* vrf,
                                Mpls::PayloadType payload = Mpls::payloadTypeIpv4_) {
      Mpls::LfibViaKey k(Mpls::viaTypeIpLookup_, index);
      lfib->ipLookupViaIs(Mpls::LfibIpLookupVia(k, L3::VrfName(vrf), payload));
      return k;
   }
   Mpls::LfibViaKey vlanVia(std::uint32_t index, std::uint16_t v) {
      Mpls::LfibViaKey k(Mpls::viaTypeVlan_, index);
      lfib->vlanViaIs(Mpls::LfibVlanVia(k, vlan(v)));
      return k;
   }
   Mpls::LfibViaKey floodVia(std::uint32_t index, std::uint16_t v) {
      Mpls::LfibViaKey k(Mpls::viaTypeEvpnVlanFlood_, index);
      lfib->evpnVlanFloodViaIs(Mpls::LfibEvpnVlanFloodVia(k, vlan(v)));
      return k;
   }
   Mpls::LfibViaKey vlanAwareVia(std::uint32_t index, std::uint32_t coll) {
      Mpls::LfibViaKey k(Mpls::viaTypeEvpnVlanAware_, index);
      lfib->evpnVlanAwareViaIs(Mpls::LfibEvpnVlanAwareVia(k, Mpls::LfibDot1qTagToVlanKey(coll)));
      return k;
   }
   Mpls::LfibViaKey vlanAwareFloodVia(std::uint32_t index, std::uint32_t coll) {
      Mpls::LfibViaKey k(Mpls::viaTypeEvpnVlanAwareFlood_, index);
      lfib->evpnVlanAwareFloodViaIs(
          Mpls::LfibEvpnVlanAwareFloodVia(k, Mpls::LfibDot1qTagToVlanKey(coll)));
      return k;
   }
   void route(std::uint32_t label, const Mpls::LfibViaKey& via) {
      const Mpls::LfibViaSetKey vs(via.viaType(), label);
      lfib->viaSetIs(Mpls::LfibViaSet(vs, {via}));
      lfib->lfibRouteIs(Mpls::LfibRoute(key(label), vs));
   }
   Kor::Ptr<Mpls::LfibDot1qTagToVlan> collection(
       std::uint32_t coll, std::initializer_list<std::pair<std::uint16_t, std::uint16_t>> tags) {
      auto c = lfib->dot1qTagToVlanCollIs(Mpls::LfibDot1qTagToVlanKey(coll));
      for (auto [tag, v] : tags) {
         c->dot1qTagToVlanIdIs(vlan(tag), Bridging::VlanIdOrNone(vlan(v)));
      }
      return c;
   }

   bool unprogrammed(std::uint32_t label) const {
      return hwStatus->unprogrammedRouteHas(key(label));
   }

   // The state machine's bookkeeping agrees with itself: each programmed key is held by exactly
   // the via map of its type, no via map holds a key of another type, and every VLAN-aware route
   // is indexed under its collection.
   void expectConsistent() const {
      for (const auto& [k, type] : sm->routeViaTypeMap()) {
         const int holders = sm->routeIpLookupViaHas(k) + sm->routeVlanViaHas(k) +
                             sm->routeEvpnVlanFloodViaHas(k) + sm->routeEvpnVlanAwareViaHas(k) +
                             sm->routeEvpnVlanAwareFloodViaHas(k);
         EXPECT_EQ(holders, 1) << k;
         switch (type) {
            case Mpls::viaTypeIpLookup_:
               EXPECT_TRUE(sm->routeIpLookupViaHas(k)) << k;
               break;
            case Mpls::viaTypeVlan_:
               EXPECT_TRUE(sm->routeVlanViaHas(k)) << k;
               break;
            case Mpls::viaTypeEvpnVlanFlood_:
               EXPECT_TRUE(sm->routeEvpnVlanFloodViaHas(k)) << k;
               break;
            case Mpls::viaTypeEvpnVlanAware_:
            case Mpls::viaTypeEvpnVlanAwareFlood_: {
               EXPECT_TRUE(type == Mpls::viaTypeEvpnVlanAware_
                               ? sm->routeEvpnVlanAwareViaHas(k)
                               : sm->routeEvpnVlanAwareFloodViaHas(k))
                   << k;
               ASSERT_TRUE(sm->vlanAwareRouteKeyToDot1qTagVlanKeyHas(k)) << k;
               auto set = sm->vlanAwareDot1qTagVlanToRouteKeySet(
                   sm->vlanAwareRouteKeyToDot1qTagVlanKey(k));
               ASSERT_TRUE(set) << k;
               EXPECT_TRUE(set->routeKeySet(k)) << k;
               break;
            }
            default:
               ADD_FAILURE() << "unexpected programmed type " << type << " for " << k;
         }
      }
      auto onlyOfType = [&](const auto& map, Mpls::LfibViaType type) {
         for (const auto& [k, via] : map) {
            EXPECT_EQ(sm->routeViaType(k), type) << k;
         }
      };
      onlyOfType(sm->routeIpLookupViaMap(), Mpls::viaTypeIpLookup_);
      onlyOfType(sm->routeVlanViaMap(), Mpls::viaTypeVlan_);
      onlyOfType(sm->routeEvpnVlanFloodViaMap(), Mpls::viaTypeEvpnVlanFlood_);
      onlyOfType(sm->routeEvpnVlanAwareViaMap(), Mpls::viaTypeEvpnVlanAware_);
      onlyOfType(sm->routeEvpnVlanAwareFloodViaMap(), Mpls::viaTypeEvpnVlanAwareFlood_);
   }

   Log::MemoryTraceSink traces;
   std::optional<Log::TraceSinkScope> traceScope;
   Kor::Ptr<Loom::EventLoop> loop = Kor::make<Loom::EventLoop>();
   Kor::Ptr<Loom::TimerWheel> wheel = Kor::make<Loom::TimerWheel>("wheel", loop);
   Kor::Ptr<Mpls::LfibStatus> lfib = Kor::make<Mpls::LfibStatus>("lfib");
   Kor::Ptr<Mpls::LfibTrackingStatus> tracking = Kor::make<Mpls::LfibTrackingStatus>("tracking");
   Kor::Ptr<Mpls::LfibHwStatus> hwStatus = Kor::make<Mpls::LfibHwStatus>("lfibHwStatus");
   Kor::Ptr<Mpls::LfibTrackingSm> trackingSm;
   Kor::Ptr<sim::DecapHelper> helper;
   Kor::Ptr<Fal::MplsDecapSm> sm;
};

}  // namespace DecapTest
