#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

#include "DecapTestSupport.h"

namespace {

using namespace DecapTest;

using DecapSm = DecapFixture;

TEST_F(DecapSm, ConstructionTakesUpWhatTheBacklogAlreadyHolds) {
   route(16, vlanVia(1, 10));
   route(17, ipLookupVia(2, "red"));
   ASSERT_EQ(tracking->routeKeyBacklogSet().size(), 2u);
   start();
   // Nothing happens in the constructor itself: the backlog task is only scheduled.
   EXPECT_TRUE(helper->callTexts().empty());
   EXPECT_TRUE(sm->reviewRouteKeyBacklog()->scheduled());
   EXPECT_FALSE(sm->reviewUnprogrammed()->pending());

   settle();
   EXPECT_EQ(helper->takeCalls(),
             (Calls{"createLabelToVlan(16,10,false)", "createLabelToVrf(17,red,1)"}));
   EXPECT_TRUE(tracking->routeKeyBacklogSet().empty());
   expectConsistent();
}

TEST_F(DecapSm, AChangeIsDeleteOfWhatWasProgrammedThenCreate) {
   start();
   route(16, vlanVia(1, 10));
   route(17, floodVia(2, 30));
   route(18, ipLookupVia(3, "red", Mpls::payloadTypeIpv4_));
   settle();
   helper->takeCalls();
   // Each via changes under the same via key; then route 16 moves to a via set of another type.
   const std::vector<std::pair<std::function<void()>, Calls>> changes = {
       {[&] { vlanVia(1, 20); },
        {"deleteLabelToVlan(16,10,false)", "createLabelToVlan(16,20,false)"}},
       {[&] { floodVia(2, 31); },
        {"deleteLabelToVlan(17,30,true)", "createLabelToVlan(17,31,true)"}},
       {[&] { ipLookupVia(3, "blue", Mpls::payloadTypeIpv6_); },
        {"deleteLabelToVrf(18,red,1)", "createLabelToVrf(18,blue,2)"}},
       {[&] { route(16, ipLookupVia(4, "green")); },
        {"deleteLabelToVlan(16,20,false)", "createLabelToVrf(16,green,1)"}},
   };
   for (const auto& [change, calls] : changes) {
      change();
      settle();
      EXPECT_EQ(helper->takeCalls(), calls);
      expectConsistent();
   }
   EXPECT_EQ(sm->routeViaType(key(16)), Mpls::viaTypeIpLookup_);
}

TEST_F(DecapSm, RemovedRouteIsDeletedOnceAndViaSetLossIsTraced) {
   start();
   route(16, vlanVia(1, 10));
   route(17, ipLookupVia(2, "red"));
   route(18, vlanVia(3, 30));
   settle();
   helper->takeCalls();

   lfib->lfibRouteDel(key(16));
   settle();
   EXPECT_EQ(helper->takeCalls(), Calls{"deleteLabelToVlan(16,10,false)"});
   EXPECT_EQ(traces.count("route was deleted"), 1u);
   EXPECT_FALSE(sm->routeViaTypeHas(key(16)));

   traces.clear();
   lfib->viaSetDel(Mpls::LfibViaSetKey(Mpls::viaTypeIpLookup_, 17));
   settle();
   EXPECT_EQ(helper->takeCalls(), Calls{"deleteLabelToVrf(17,red,1)"});
   EXPECT_TRUE(traces.contains("via set was deleted"));

   // A via set written back empty, as it was before anything was set, reads as deleted too.
   traces.clear();
   lfib->viaSetIs(Mpls::LfibViaSet(Mpls::LfibViaSetKey(Mpls::viaTypeVlan_, 18)));
   settle();
   EXPECT_EQ(helper->takeCalls(), Calls{"deleteLabelToVlan(18,30,false)"});
   EXPECT_TRUE(traces.contains("via set was deleted"));
   EXPECT_TRUE(sm->routeViaTypeMap().empty());
   expectConsistent();
}

TEST_F(DecapSm, BacklogKeyWithNothingProgrammedAndNoRouteCallsNothing) {
   start();
   settle();
   tracking->routeKeyBacklogIs(key(99));
   settle();
   EXPECT_TRUE(helper->callTexts().empty());
   EXPECT_FALSE(tracking->routeKeyBacklog(key(99)));
   EXPECT_TRUE(traces.contains("route was not programmed"));
   EXPECT_TRUE(traces.contains("route was deleted"));
}

TEST_F(DecapSm, BadOrUnsupportedInputIsTracedAndSkipped) {
   start();
   // Transit route (MPLS via): not this machine's business.
   route(16, Mpls::LfibViaKey(Mpls::viaTypeMplsIp_, 1));
   // EVPN Ethernet segment: skipped by name.
   route(17, Mpls::LfibViaKey(Mpls::viaTypeEvpnEthernetSegment_, 2));
   // The via set names a VLAN via that the LFIB does not hold.
   route(18, Mpls::LfibViaKey(Mpls::viaTypeVlan_, 3));
   // A via set with no vias (but not the empty record: it has a set type).
   lfib->viaSetIs(
       Mpls::LfibViaSet(Mpls::LfibViaSetKey(Mpls::viaTypeVlan_, 19), Mpls::viaSetTypeEcmp_));
   lfib->lfibRouteIs(Mpls::LfibRoute(key(19), Mpls::LfibViaSetKey(Mpls::viaTypeVlan_, 19)));
   // A route whose via set was never published.
   lfib->lfibRouteIs(Mpls::LfibRoute(key(20), Mpls::LfibViaSetKey(Mpls::viaTypeVlan_, 77)));
   // And one good route among them.
   route(21, vlanVia(4, 40));
   settle();

   EXPECT_EQ(helper->takeCalls(), Calls{"createLabelToVlan(21,40,false)"});
   EXPECT_EQ(traces.count("Skipping unsupported via type "), 2u);  // MPLS and the empty set
   EXPECT_TRUE(traces.contains("Skipping unsupported via type viaTypeMplsIp"));
   EXPECT_TRUE(tracking->routeKeyBacklogSet().empty());
   EXPECT_EQ(hwStatus->unprogrammedRoutes(), 0u);
   ASSERT_EQ(sm->routeViaTypeMap().size(), 1u);
   EXPECT_TRUE(sm->routeViaTypeHas(key(21)));

   // The absent via arrives: now the route is programmed.
   vlanVia(3, 30);
   settle();
   EXPECT_EQ(helper->takeCalls(), Calls{"createLabelToVlan(18,30,false)"});
   expectConsistent();
}

TEST_F(DecapSm, ManyChangesBeforeTheTaskRunsCostOneRun) {
   start();
   settle();
   const auto runs = sm->reviewRouteKeyBacklog()->runCount();
   for (std::uint32_t l = 16; l < 26; ++l) {
      route(l, vlanVia(l, 100));
   }
   EXPECT_EQ(tracking->routeKeyBacklogSet().size(), 10u);
   settle();
   EXPECT_EQ(sm->reviewRouteKeyBacklog()->runCount(), runs + 1);
   EXPECT_EQ(helper->calls("create vlan"), 10u);
   EXPECT_FALSE(sm->reviewRouteKeyBacklog()->scheduled());
}

TEST_F(DecapSm, BacklogTaskYieldsAndContinuesFromWhatIsLeft) {
   start();
   settle();
   for (std::uint32_t l = 100; l < 150; ++l) {
      route(l, vlanVia(l, 10));
   }
   const auto runs = sm->reviewRouteKeyBacklog()->runCount();
   // Every read of the time moves it 1 ms on; the quantum is 5 ms.
   loop->autoAdvancePerReadIs(0.001);
   EXPECT_EQ(loop->runUntilIdle(1), 1u);
   const std::size_t done = helper->calls("create vlan");
   EXPECT_GT(done, 0u);
   EXPECT_LT(done, 50u);
   EXPECT_EQ(tracking->routeKeyBacklogSet().size(), 50u - done);
   EXPECT_TRUE(sm->reviewRouteKeyBacklog()->scheduled());
   EXPECT_TRUE(traces.contains("yielding"));
   // Done in label order, from the backlog's start.
   ASSERT_FALSE(helper->callTexts().empty());
   EXPECT_EQ(helper->callTexts().front(), "createLabelToVlan(100,10,false)");
   EXPECT_EQ(*tracking->routeKeyBacklogSet().begin(), key(100 + std::uint32_t(done)));

   // A key that comes meanwhile before the rest is taken at the next run's start.
   route(20, vlanVia(20, 10));
   helper->takeCalls();
   EXPECT_EQ(loop->runUntilIdle(1), 1u);
   ASSERT_FALSE(helper->callTexts().empty());
   EXPECT_EQ(helper->callTexts().front(), "createLabelToVlan(20,10,false)");

   loop->autoAdvancePerReadIs(0.0);
   settle();
   EXPECT_TRUE(tracking->routeKeyBacklogSet().empty());
   EXPECT_EQ(helper->calls("create vlan"), 51u);
   EXPECT_EQ(sm->routeViaTypeMap().size(), 51u);
   EXPECT_GT(sm->reviewRouteKeyBacklog()->runCount(), runs + 2);
   expectConsistent();
}

}  // namespace
