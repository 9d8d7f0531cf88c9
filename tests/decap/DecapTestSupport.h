#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
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

namespace DecapTest {

inline Mpls::RouteKey key(std::uint32_t label) {
   return Mpls::RouteKey(Wire::MplsLabel(label));
}
inline Bridging::VlanId vlan(std::uint16_t v) {
   return Bridging::VlanId(v);
}

// The stub, logging every label operation in call order as a short text, with the time of the
// call, and optionally answering a scripted sequence of return codes for dot1q creates.
class RecordingStub : public FalHelper::MplsDecapHelperStub {
 public:
   RecordingStub(const Kor::Name& name, Kor::Ptr<const Loom::TimerWheel> wheel)
       : FalHelper::MplsDecapHelperStub(name, wheel), wheel_(std::move(wheel)) {}

   Mpls::LfibHwProgrammingReturnCode createLabelToVlanMapping(Wire::MplsLabel label,
                                                              Bridging::VlanId vlanId,
                                                              bool flood) override {
      log("createLabelToVlan(" + label.stringValue() + "," + vlanId.stringValue() + "," +
          flag(flood) + ")");
      return MplsDecapHelperStub::createLabelToVlanMapping(label, vlanId, flood);
   }
   void deleteLabelToVlanMapping(Wire::MplsLabel label, Bridging::VlanId vlanId,
                                 bool flood) override {
      log("deleteLabelToVlan(" + label.stringValue() + "," + vlanId.stringValue() + "," +
          flag(flood) + ")");
      MplsDecapHelperStub::deleteLabelToVlanMapping(label, vlanId, flood);
   }
   Mpls::LfibHwProgrammingReturnCode createLabelDot1qToVlanMapping(Wire::MplsLabel label,
                                                                   Bridging::VlanId dot1qTag,
                                                                   Bridging::VlanIdOrNone vlanId,
                                                                   bool flood) override {
      log("createLabelDot1qToVlan(" + label.stringValue() + "," + dot1qTag.stringValue() + "," +
          vlanId.stringValue() + "," + flag(flood) + ")");
      auto rc = MplsDecapHelperStub::createLabelDot1qToVlanMapping(label, dot1qTag, vlanId, flood);
      if (!dot1qRcs.empty()) {
         rc = dot1qRcs.front();
         dot1qRcs.pop_front();
      }
      return rc;
   }
   void deleteLabelDot1qToVlanMapping(Wire::MplsLabel label, Bridging::VlanId dot1qTag,
                                      bool flood) override {
      log("deleteLabelDot1qToVlan(" + label.stringValue() + "," + dot1qTag.stringValue() + "," +
          flag(flood) + ")");
      MplsDecapHelperStub::deleteLabelDot1qToVlanMapping(label, dot1qTag, flood);
   }
   Mpls::LfibHwProgrammingReturnCode createLabelToVrfMapping(
       Wire::MplsLabel label, L3::VrfName vrfName, Mpls::PayloadType payloadType) override {
      log("createLabelToVrf(" + label.stringValue() + "," + vrfName.stringValue() + "," +
          std::to_string(unsigned(payloadType)) + ")");
      return MplsDecapHelperStub::createLabelToVrfMapping(label, vrfName, payloadType);
   }
   void deleteLabelToVrfMapping(Wire::MplsLabel label, L3::VrfName vrfName,
                                Mpls::PayloadType payloadType) override {
      log("deleteLabelToVrf(" + label.stringValue() + "," + vrfName.stringValue() + "," +
          std::to_string(unsigned(payloadType)) + ")");
      MplsDecapHelperStub::deleteLabelToVrfMapping(label, vrfName, payloadType);
   }

   // The calls since the last take, and forget them.
   std::vector<std::string> take() {
      std::vector<std::string> out;
      out.swap(calls);
      times.clear();
      return out;
   }

   std::vector<std::string> calls;
   std::vector<double> times;
   std::deque<Mpls::LfibHwProgrammingReturnCode> dot1qRcs;

 private:
   static std::string flag(bool b) { return b ? "true" : "false"; }
   void log(std::string text) {
      calls.push_back(std::move(text));
      times.push_back(wheel_->loop()->now());
   }
   Kor::Ptr<const Loom::TimerWheel> wheel_;
};

using Calls = std::vector<std::string>;

// One agent's worth of decap: simulated event loop, LFIB with its tracking state machine (route
// keys only), LFIB hardware status, a recording stub helper and, once start() is called, the
// decap state machine. Traces of "MplsDecapSm" are captured at every level.
class DecapFixture : public ::testing::Test {
 protected:
   void SetUp() override {
      Log::TraceConfig::configIs("MplsDecapSm/0-9");
      traceScope.emplace(traces);
      helper = Kor::make<RecordingStub>("stub", wheel);
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
   unsigned reason(std::uint32_t label) const {
      return unsigned(hwStatus->unprogrammedRoute(key(label)).reason());
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
   Kor::Ptr<RecordingStub> helper;
   Kor::Ptr<Fal::MplsDecapSm> sm;
};

}  // namespace DecapTest
