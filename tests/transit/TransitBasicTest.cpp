#include <gtest/gtest.h>

#include "support/TransitTestCommon.h"

namespace {

using namespace TestSupport;

TEST(TransitBasic, RouteReachesHardwareOnceNextHopResolves) {
   TransitAgent a;
   auto set = a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10, 2000)});
   a.route(100, set);
   settleAndCheck(a);
   // Nothing is programmed before the next hop resolves.
   EXPECT_TRUE(!a.configRoute(100));
   ASSERT_TRUE(a.state());
   EXPECT_EQ(a.monitoredNhSm->entries(), 1u);

   a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
   settleAndCheck(a);
   Fal::MplsHwRoute r = a.configRoute(100);
   ASSERT_FALSE(!r);
   ASSERT_TRUE(r.l2Adjacency());
   EXPECT_EQ(r.l2Adjacency()->l2ViaSet().l2Vias(), 1u);
   EXPECT_TRUE(a.programmed(100));
   // Published once the platform confirmed it.
   auto hw = a.hwMplsStatus->route(Mpls::RouteKey(Wire::MplsLabel(100)));
   EXPECT_EQ(hw.routeKey(), Mpls::RouteKey(Wire::MplsLabel(100)));
   EXPECT_FALSE(hw.unprogrammed());
   EXPECT_EQ(a.vrfConfig()->l2Adjacencies(), 1u);
}

TEST(TransitBasic, DeletionReleasesEverything) {
   TransitAgent a;
   a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
   auto set = a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)});
   a.route(100, set);
   settleAndCheck(a);
   ASSERT_TRUE(a.programmed(100));
   a.routeDel(100);
   settleAndCheck(a);
   EXPECT_TRUE(!a.configRoute(100));
   EXPECT_EQ(a.vrfConfig()->l2Adjacencies(), 0u);
   EXPECT_EQ(a.monitoredNhSm->entries(), 0u);
   EXPECT_EQ(a.hwMplsStatus->routeMap().size(), 0u);
   EXPECT_EQ(a.hwMplsStatus->l2AdjacencyMap().size(), 0u);
   EXPECT_EQ(a.hwMplsStatus->adjacencyMap().size(), 0u);
   // The VRF state is kept while routing is on, but holds nothing.
   if (auto s = a.state()) {
      EXPECT_TRUE(s->empty());
   }
}

TEST(TransitBasic, RouteResolverModeAndSharedL2Adjacency) {
   TransitAgent a;
   a.connectedRoute("10.1.0.0", 24, kVlan10);
   a.neighbor("10.1.0.5", kVlan10, "00:00:00:00:00:05");
   auto v1 = a.mplsVia(1, "10.1.0.5", Wire::IntfId(), 3000);
   auto v2 = a.mplsVia(2, "10.1.0.5", Wire::IntfId(), 3000);
   a.route(100, a.viaSet(1, {v1}));
   a.route(101, a.viaSet(2, {v2}));
   settleAndCheck(a);
   ASSERT_TRUE(a.programmed(100));
   ASSERT_TRUE(a.programmed(101));
   EXPECT_EQ(a.configRoute(100).l2Adjacency(), a.configRoute(101).l2Adjacency());
   EXPECT_EQ(a.vrfConfig()->l2Adjacencies(), 1u);
   EXPECT_EQ(a.routeReactorConfig->watchedAddrs(), 1u);
}

}  // namespace
