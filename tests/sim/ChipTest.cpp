// The simulated chip on its own: the platform side of the per-VRF hardware tables.
#include <gtest/gtest.h>

#include <mplsfwd/sim/Chip.h>

namespace {

struct ChipBed : ::testing::Test {
   ChipBed() {
      vrf = config->vrfConfigIs(Fal::VrfId(0));
      vrf->mplsRoutingIs(true);
   }

   // An L2 adjacency of one via out of `intf`.
   Fal::L2AdjacencyPtr adj(std::uint64_t index, Wire::IntfId intf = Wire::IntfId::ethernet(1)) {
      auto a = Kor::make<Mpls::Hardware::L2Adjacency>(index);
      Mpls::Hardware::L2ViaSet set;
      set.l2ViaIs(Mpls::Hardware::L2Via(Bridging::VlanId(10), intf,
                                        Wire::EthAddr::parse("00:00:00:00:00:01"),
                                        Wire::MplsLabelOperation{Wire::MplsLabel(2000)},
                                        Wire::IpGenAddr::parse("10.0.0.1")),
                  true);
      a->l2ViaSetIs(set);
      return a;
   }
   static Mpls::RouteKey key(std::uint32_t label) { return Mpls::RouteKey(Wire::MplsLabel(label)); }
   Fal::MplsHwRoute route(std::uint32_t label, const Fal::L2AdjacencyPtr& a,
                          std::uint64_t version = 1) {
      Fal::MplsHwRoute r(key(label), a, version);
      vrf->routeIs(r);
      return r;
   }
   Kor::Ptr<Fal::MplsHwVrfStatus> status() const { return hwStatus->vrfStatus(Fal::VrfId(0)); }
   bool programmed(std::uint32_t label) const { return status() && status()->routeHas(key(label)); }
   bool unprogrammed(std::uint32_t label) const {
      return status() && status()->unprogrammedRouteHas(key(label));
   }
   Fal::UnprogrammedReason reason(std::uint32_t label) const {
      return chip.routeReason(Fal::VrfId(0), key(label));
   }
   // The chip's books agree with the status tables.
   void checkInvariants() const {
      auto s = status();
      ASSERT_TRUE(s);
      EXPECT_EQ(chip.routesInHardware(), s->routes());
      EXPECT_EQ(chip.l2AdjacenciesInHardware(), s->l2Adjacencies());
      EXPECT_LE(s->routes(), chip.routeCapacity());
      for (const auto& [k, r] : s->routeMap()) {
         EXPECT_FALSE(s->unprogrammedRouteHas(k)) << k;
         EXPECT_TRUE(s->l2AdjacencyHas(r.l2Adjacency())) << k;
      }
   }
   void settle() { loop->runUntilIdle(); }

   Kor::Ptr<Loom::EventLoop> loop = Kor::make<Loom::EventLoop>();
   Kor::Ptr<Fal::MplsHwConfig> config = Fal::mplsHwConfigFactory("config");
   Kor::Ptr<Fal::MplsHwStatus> hwStatus = Fal::mplsHwStatusFactory("status");
   sim::Chip chip{loop, config, hwStatus};
   Kor::Ptr<Fal::MplsHwVrfConfig> vrf;
};

TEST_F(ChipBed, AnswersOneLoopStepLaterMirroringTheConfiguredRouteExactly) {
   auto a = adj(1);
   vrf->l2AdjacencyIs(a, 1);
   auto r = route(100, a, 7);
   EXPECT_FALSE(status()) << "the chip answers from its task, never inside the notification";
   settle();
   ASSERT_TRUE(status());
   EXPECT_TRUE(status()->mplsRouting());
   EXPECT_EQ(status()->route(key(100)), r) << "same key, same adjacency object, same version";
   EXPECT_EQ(status()->l2Adjacency(a), 1u);
   vrf->l2AdjacencyIs(a, 2);
   settle();
   EXPECT_EQ(status()->l2Adjacency(a), 2u) << "a reprogramming reaches the status";
   checkInvariants();
}

TEST_F(ChipBed, FullRouteTableRefusesWithRouteFullUntilASlotFrees) {
   chip.routeCapacityIs(1);
   auto a = adj(1);
   vrf->l2AdjacencyIs(a, 1);
   route(100, a);
   route(200, a);
   settle();
   EXPECT_TRUE(programmed(100));
   EXPECT_TRUE(unprogrammed(200));
   EXPECT_EQ(reason(200), Fal::UnprogrammedReason::RouteFull);
   EXPECT_EQ(status()->unprogrammedReason(), Fal::UnprogrammedReason::RouteFull);
   checkInvariants();

   vrf->routeDel(key(100));
   settle();
   EXPECT_FALSE(programmed(100));
   EXPECT_TRUE(unprogrammed(200)) << "the chip does not retry by itself; the library does";
   route(200, a, 2);
   settle();
   EXPECT_TRUE(programmed(200));
   EXPECT_FALSE(unprogrammed(200));
   EXPECT_EQ(reason(200), Fal::UnprogrammedReason::Success);
   checkInvariants();
}

TEST_F(ChipBed, FullAdjacencyTableRefusesTheAdjacencyAndTheRoutesThroughIt) {
   chip.l2AdjacencyCapacityIs(1);
   auto a1 = adj(1);
   auto a2 = adj(2);
   vrf->l2AdjacencyIs(a1, 1);
   vrf->l2AdjacencyIs(a2, 1);
   route(100, a1);
   route(200, a2);
   settle();
   EXPECT_TRUE(status()->l2AdjacencyHas(a1));
   EXPECT_TRUE(status()->unprogrammedAdjacencyHas(a2));
   EXPECT_EQ(chip.adjacencyReason(Fal::VrfId(0), a2), Fal::UnprogrammedReason::AdjacencyFull);
   EXPECT_TRUE(programmed(100));
   EXPECT_EQ(reason(200), Fal::UnprogrammedReason::AdjacencyFull);
   checkInvariants();

   chip.l2AdjacencyCapacityIs(2);
   settle();
   EXPECT_TRUE(status()->l2AdjacencyHas(a2)) << "a capacity change re-examines what was refused";
   EXPECT_FALSE(status()->unprogrammedAdjacencyHas(a2));
   EXPECT_TRUE(programmed(200));
   checkInvariants();
   vrf->routeDel(key(100));
   vrf->l2AdjacencyDel(a1);
   settle();
   EXPECT_FALSE(status()->l2AdjacencyHas(a1));
   checkInvariants();  // a deleted adjacency leaves the chip's count too
}

TEST_F(ChipBed, RefusesExactlyTheNextNRouteOperationsWithTheChosenReason) {
   auto a = adj(1);
   vrf->l2AdjacencyIs(a, 1);
   chip.refuseNextIs(sim::RefuseTarget::routes, 2, Fal::UnprogrammedReason::AdjacencyFull);
   route(100, a);
   route(200, a);
   route(300, a);
   settle();
   EXPECT_EQ(reason(100), Fal::UnprogrammedReason::AdjacencyFull);
   EXPECT_EQ(reason(200), Fal::UnprogrammedReason::AdjacencyFull);
   EXPECT_TRUE(programmed(300));
   EXPECT_EQ(chip.refusalsLeft(sim::RefuseTarget::routes), 0u);
   EXPECT_TRUE(status()->l2AdjacencyHas(a)) << "route refusals leave adjacencies alone";
   checkInvariants();
}

TEST_F(ChipBed, InterfaceNotReadyRefusesItsRoutesAndReadinessBringsThemBack) {
   auto a1 = adj(1, Wire::IntfId::ethernet(1));
   auto a3 = adj(3, Wire::IntfId::ethernet(3));
   vrf->l2AdjacencyIs(a1, 1);
   vrf->l2AdjacencyIs(a3, 1);
   chip.interfaceReadyIs(Wire::IntfId::ethernet(3), false);
   route(100, a1);
   route(300, a3);
   settle();
   EXPECT_TRUE(programmed(100));
   EXPECT_EQ(reason(300), Fal::UnprogrammedReason::InterfaceNotReady);
   chip.interfaceReadyIs(Wire::IntfId::ethernet(3), true);
   settle();
   EXPECT_TRUE(programmed(300)) << "no configuration change needed";
   EXPECT_FALSE(unprogrammed(300));
   chip.interfaceReadyIs(Wire::IntfId::ethernet(1), false);
   settle();
   EXPECT_EQ(reason(100), Fal::UnprogrammedReason::InterfaceNotReady)
       << "a programmed route through an interface that goes down is taken out";
   checkInvariants();
}

TEST(SimChip, StatusLeftWithoutConfigurationIsCleanedWhenTheChipStarts) {
   auto loop = Kor::make<Loom::EventLoop>();
   auto config = Fal::mplsHwConfigFactory("config");
   auto status = Fal::mplsHwStatusFactory("status");
   config->vrfConfigIs(Fal::VrfId(0));
   auto stale = Kor::make<Mpls::Hardware::L2Adjacency>(9);
   auto vs = status->vrfStatusIs(Fal::VrfId(0));
   vs->l2AdjacencyIs(stale, 1);
   vs->routeIs(Fal::MplsHwRoute(Mpls::RouteKey(Wire::MplsLabel(100)), stale, 1));
   sim::Chip chip(loop, config, status);
   loop->runUntilIdle();
   EXPECT_EQ(vs->routes(), 0u);
   EXPECT_EQ(vs->l2Adjacencies(), 0u);
}

}  // namespace
