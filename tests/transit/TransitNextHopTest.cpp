// Next-hop resolution: shared L2 adjacencies, unresolved next hops, the ARP VRF. Resolution through
// the IP routes, neighbour and via moves and in-place updates are the examples
// next-hops-through-ip-routes.json, next-hop-moves.json and shared-adjacency-mac-change.json.
#include <gtest/gtest.h>

#include "support/TransitTestCommon.h"

namespace {

using namespace TestSupport;

// Beyond the ECMP example: one next hop of a shared pair alone has its own adjacency, two vias to
// the same neighbour and label make one L2 via, each next hop is watched once, and the shared
// adjacency is kept by the user that remains.
TEST(TransitNextHop, EcmpViaSetsWithTheSameNextHopsShareOneL2Adjacency) {
   TransitAgent a;
   a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
   a.neighbor("10.0.1.2", kVlan20, "00:00:00:00:01:02", 20, Wire::IntfId::ethernet(2));
   a.route(100, a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10, 500),
                             a.mplsVia(2, "10.0.1.2", kVlan20, 500)}));
   a.route(101, a.viaSet(2, {a.mplsVia(3, "10.0.1.2", kVlan20, 500),
                             a.mplsVia(4, "10.0.0.2", kVlan10, 500)}));
   a.route(102, a.viaSet(3, {a.mplsVia(5, "10.0.0.2", kVlan10, 500)}));
   a.route(104, a.viaSet(5, {a.mplsVia(8, "10.0.0.2", kVlan10, 800),
                             a.mplsVia(9, "10.0.0.2", kVlan10, 800)}));
   settleAndCheck(a);
   EXPECT_EQ(a.configRoute(104).l2Adjacency()->l2ViaSet().l2Vias(), 1u);
   EXPECT_EQ(a.vrfConfig()->l2Adjacencies(), 3u);
   auto shared = a.configRoute(100).l2Adjacency();
   EXPECT_EQ(a.configRoute(101).l2Adjacency(), shared);
   EXPECT_NE(a.configRoute(102).l2Adjacency(), shared);
   EXPECT_EQ(a.state()->l2Adjacency(shared->index())->l3Adjacencies(), 2u);
   EXPECT_EQ(a.monitoredNhSm->entries(), 2u);
   a.routeDel(100);
   settleAndCheck(a);
   EXPECT_EQ(a.configRoute(101).l2Adjacency(), shared);
}

TEST(TransitNextHop, AViaSetIsProgrammedOnlyWhileAllItsNextHopsResolve) {
   TraceCapture traces;
   TransitAgent a;
   a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
   a.route(100,
           a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10), a.mplsVia(2, "10.0.1.2", kVlan20)}));
   settleAndCheck(a);
   EXPECT_TRUE(!a.configRoute(100));
   EXPECT_EQ(a.vrfConfig()->l2Adjacencies(), 0u);
   EXPECT_TRUE(traces.contains("nexthop not resolved"));
   // Both next hops are watched, so the missing one can bring the set up.
   EXPECT_EQ(a.monitoredNhSm->entries(), 2u);
   a.neighbor("10.0.1.2", kVlan20, "00:00:00:00:01:02");
   settleAndCheck(a);
   ASSERT_TRUE(a.programmed(100));
   EXPECT_EQ(a.configRoute(100).l2Adjacency()->l2ViaSet().l2Vias(), 2u);

   // One goes again: the route is unprogrammed, and published so, until it returns.
   a.neighborDel("10.0.0.2", kVlan10);
   settleAndCheck(a);
   EXPECT_TRUE(!a.configRoute(100));
   EXPECT_EQ(a.vrfConfig()->l2Adjacencies(), 0u);
   EXPECT_TRUE(a.hwMplsStatus->route(TransitAgent::key(100)).unprogrammed());
   a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
   settleAndCheck(a);
   EXPECT_TRUE(a.programmed(100));
}

TEST(TransitNextHop, ArpVrfOfTheInterfaceIsUsedWhenTheNeighbourNamesNone) {
   TransitAgent a;
   a.l3Status->l3IntfArpVrfIdIs(kVlan20, Fal::VrfId(7));
   Fal::NextHopInfo info(Fal::invalidVrfId(), Wire::EthAddr::parse("00:00:00:00:01:02"),
                         Bridging::VlanId(20), Wire::IntfId::ethernet(4));
   a.l3Status->nextHopInfoIs(Fal::NextHopKey(Wire::IpGenAddr::parse("10.0.1.2"), kVlan20), info);
   a.route(100, a.viaSet(1, {a.mplsVia(1, "10.0.1.2", kVlan20)}));
   settleAndCheck(a);
   EXPECT_TRUE(a.programmed(100));
   EXPECT_TRUE(
       a.monitoredNhSm->entryHas(Fal::VrfId(7), Wire::IpGenAddr::parse("10.0.1.2"), kVlan20));
}

TEST(TransitNextHop, TheDefaultRoutePermissionIsPublished) {
   TransitAgent a;
   for (bool allow : {true, false, true}) {
      a.agent.mplsStatus()->nexthopResolutionAllowDefaultRouteIs(allow);
      settleAndCheck(a);
      EXPECT_EQ(a.hwMplsStatus->nexthopResolutionAllowDefaultRoute(), allow);
   }
}

}  // namespace
