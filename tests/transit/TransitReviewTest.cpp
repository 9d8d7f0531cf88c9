// The review cycle: the hardware's answers, the retry of unprogrammed routes and its cadence, the
// resource log messages, and time-boxed passes that yield.
#include <gtest/gtest.h>

#include "MplsSmTestAccess.h"
#include "support/TransitTestCommon.h"

namespace {

using namespace TestSupport;

const char* const kFull = "ROUTING_MPLS_RESOURCE_FULL";
const char* const kNormal = "ROUTING_MPLS_RESOURCE_NORMAL";

// An agent with one resolved next hop and one via set that routes can use.
struct ReviewTest : ::testing::Test {
   ReviewTest() {
      a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
      set = a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)});
   }
   void routes(std::uint32_t first, std::uint32_t n) {
      for (std::uint32_t label = first; label < first + n; ++label) {
         a.route(label, set);
      }
   }
   std::size_t programmedCount(std::uint32_t first, std::uint32_t n) const {
      std::size_t count = 0;
      for (std::uint32_t label = first; label < first + n; ++label) {
         count += a.programmed(label) ? 1 : 0;
      }
      return count;
   }
   TransitAgent a;
   Mpls::LfibViaSetKey set;
};

TEST_F(ReviewTest, UnprogrammedRoutesAreRetriedEveryTenSeconds) {
   a.chip.routeCapacityIs(2);
   routes(100, 3);
   settleAndCheck(a);
   ASSERT_EQ(programmedCount(100, 3), 2u);
   ASSERT_EQ(a.state()->numUnprogrammedRoute(), 1u);
   EXPECT_DOUBLE_EQ(a.state()->unprogrammedRetryInterval(), 10.0);
   EXPECT_TRUE(a.stateRoute(100)->unprogrammed() || a.stateRoute(101)->unprogrammed() ||
               a.stateRoute(102)->unprogrammed());

   // Between two retries nothing is tried; each retry, about every ten seconds from the first
   // report, tries the one unprogrammed route once.
   std::uint64_t attempts = a.routeAttempts();
   std::uint64_t retried = a.state()->unprogRouteRetried();
   for (int period = 1; period <= 3; ++period) {
      a.loop->advanceTo(10.0 * period - 0.1);
      checkTransitInvariants(a);
      EXPECT_EQ(a.routeAttempts(), attempts) << "period " << period;
      a.loop->advanceTo(10.0 * period + 0.1);
      checkTransitInvariants(a);
      EXPECT_EQ(a.routeAttempts(), attempts + 1) << "period " << period;
      EXPECT_EQ(a.state()->unprogRouteRetried(), retried + 1) << "period " << period;
      attempts = a.routeAttempts();
      retried = a.state()->unprogRouteRetried();
   }
   EXPECT_EQ(programmedCount(100, 3), 2u);
}

TEST_F(ReviewTest, RetryDropsToTheReviewIntervalOnceARouteGetsIn) {
   a.chip.refuseNextIs(sim::RefuseTarget::routes, 1, Fal::UnprogrammedReason::RouteFull);
   routes(100, 1);
   settleAndCheck(a, 2.0);
   ASSERT_FALSE(a.programmed(100));
   ASSERT_EQ(a.state()->numUnprogrammedRoute(), 1u);

   // A new route gets in: the waiting one follows within milliseconds instead of waiting for its
   // ten seconds.
   a.route(200, set);
   a.settle(0.01);
   EXPECT_TRUE(a.programmed(200));
   EXPECT_TRUE(a.programmed(100));
   EXPECT_EQ(a.state()->numUnprogrammedRoute(), 0u);
   checkTransitInvariants(a);
}

TEST_F(ReviewTest, ResourceFullAndNormalAreLoggedOncePerEpisode) {
   a.chip.refuseNextIs(sim::RefuseTarget::routes, 2, Fal::UnprogrammedReason::RouteFull);
   routes(100, 2);
   settleAndCheck(a);
   ASSERT_EQ(a.state()->numUnprogrammedRoute(), 2u);
   EXPECT_EQ(a.vrfStatus()->unprogrammedReason(), Fal::UnprogrammedReason::RouteFull);
   settleAndCheck(a, 11.0);
   EXPECT_EQ(programmedCount(100, 2), 2u);
   EXPECT_EQ(a.logged(kFull), 1u);
   EXPECT_EQ(a.logged(kNormal), 1u);
   EXPECT_EQ(a.vrfStatus()->unprogrammedReason(), Fal::UnprogrammedReason::Success);

   // A second episode, this time for want of adjacency room.
   a.chip.refuseNextIs(sim::RefuseTarget::routes, 1, Fal::UnprogrammedReason::AdjacencyFull);
   routes(300, 1);
   settleAndCheck(a);
   EXPECT_EQ(a.logged(kFull), 2u);
   settleAndCheck(a, 11.0);
   EXPECT_TRUE(a.programmed(300));
   EXPECT_EQ(a.logged(kNormal), 2u);
}

TEST_F(ReviewTest, InterfaceNotReadyLogsNothingButStillResetsTheReason) {
   TraceCapture traces;
   a.chip.refuseNextIs(sim::RefuseTarget::routes, 1, Fal::UnprogrammedReason::InterfaceNotReady);
   routes(100, 1);
   settleAndCheck(a);
   ASSERT_EQ(a.state()->numUnprogrammedRoute(), 1u);
   EXPECT_EQ(a.vrfStatus()->unprogrammedReason(), Fal::UnprogrammedReason::InterfaceNotReady);
   EXPECT_TRUE(traces.contains("Schedule review for unprog routes, reason InterfaceNotReady"));
   settleAndCheck(a, 11.0);
   EXPECT_TRUE(a.programmed(100));
   EXPECT_EQ(a.logged(kFull), 0u);
   EXPECT_EQ(a.logged(kNormal), 0u);
   EXPECT_EQ(a.vrfStatus()->unprogrammedReason(), Fal::UnprogrammedReason::Success);
   EXPECT_TRUE(traces.contains("Resource-Normal"));
}

TEST_F(ReviewTest, AdjacencyTableFullHoldsItsRoutesUntilThereIsRoom) {
   a.neighbor("10.0.0.3", kVlan10, "00:00:00:00:00:03");
   auto set2 = a.viaSet(2, {a.mplsVia(2, "10.0.0.3", kVlan10)});
   a.chip.l2AdjacencyCapacityIs(1);
   routes(100, 2);
   a.route(200, set2);
   settleAndCheck(a);
   // One of the two L2 adjacencies fits; the routes of the other cannot be programmed.
   EXPECT_EQ(a.vrfStatus()->l2Adjacencies(), 1u);
   EXPECT_EQ(a.vrfStatus()->unprogrammedAdjacencyMap().size(), 1u);
   EXPECT_EQ(a.state()->numUnprogrammedAdj(), 1u);
   EXPECT_EQ(a.logged(kFull), 1u);
   std::size_t programmed = programmedCount(100, 2) + (a.programmed(200) ? 1 : 0);
   EXPECT_TRUE(programmed == 2 || programmed == 1) << programmed;

   a.chip.l2AdjacencyCapacityIs(2);
   settleAndCheck(a, 11.0);
   EXPECT_EQ(programmedCount(100, 2), 2u);
   EXPECT_TRUE(a.programmed(200));
   EXPECT_EQ(a.state()->numUnprogrammedAdj(), 0u);
   EXPECT_EQ(a.state()->numUnprogrammedRoute(), 0u);
   EXPECT_EQ(a.logged(kNormal), 1u);
}

TEST_F(ReviewTest, AnAdjacencyDeletedInTheRetryingPassIsNotProgrammedAgain) {
   // Two next hops, room for one L2 adjacency and one route: one adjacency and the routes
   // through it cannot be programmed, and one route through the other cannot either.
   a.neighbor("10.0.0.3", kVlan10, "00:00:00:00:00:03");
   auto set2 = a.viaSet(2, {a.mplsVia(2, "10.0.0.3", kVlan10)});
   a.chip.l2AdjacencyCapacityIs(1);
   a.chip.routeCapacityIs(1);
   routes(100, 2);
   a.route(200, set2);
   a.route(201, set2);
   settleAndCheck(a);
   auto status = a.vrfStatus();
   ASSERT_EQ(status->unprogrammedAdjacencyMap().size(), 1u);
   auto refused = status->unprogrammedAdjacencyMap().begin()->first;
   bool firstSetRefused = a.configRoute(100).l2Adjacency() == refused;
   ASSERT_TRUE(firstSetRefused || a.configRoute(200).l2Adjacency() == refused);

   // Just before the retry is due, the refused adjacency's next hop goes: the pass that deletes
   // the adjacency is also the one that retries the unprogrammed ones.
   a.loop->advanceTo(9.9995);
   a.neighborDel(firstSetRefused ? "10.0.0.2" : "10.0.0.3", kVlan10);
   settleAndCheck(a);
   EXPECT_FALSE(a.vrfConfig()->l2AdjacencyHas(refused));
   EXPECT_FALSE(status->l2AdjacencyHas(refused));
   EXPECT_FALSE(status->unprogrammedAdjacencyHas(refused));
}

TEST_F(ReviewTest, APassThatRunsOutOfTimeYieldsAndContinuesAtTheNextWakeUp) {
   TraceCapture traces;
   settleAndCheck(a);
   routes(1000, 200);
   // Every read of the time moves it on by a millisecond: a pass gets about 25 reads.
   a.loop->autoAdvancePerReadIs(0.001);
   std::uint64_t passes = a.sm()->reviewCount();
   a.settle(5.0);
   a.loop->autoAdvancePerReadIs(0.0);
   settleAndCheck(a);
   EXPECT_GT(traces.count("vrf review yielding"), 3u);
   EXPECT_GT(a.sm()->reviewCount() - passes, 3u);
   EXPECT_EQ(programmedCount(1000, 200), 200u);
   // Each pass stopped near its budget: one item may run over, never a whole batch.
   EXPECT_LT(a.sm()->longestReviewPass(), a.sm()->reviewQuanta() + 0.02);
}

TEST_F(ReviewTest, ForcedReprogrammingRewritesEveryRouteWithANewVersion) {
   routes(100, 3);
   settleAndCheck(a);
   std::uint64_t version = a.configRoute(100).version();
   std::uint64_t writes = a.chip.routeWrites();
   Fal::MplsSmTestAccess::doForceRouteReprogramming(*a.sm());
   settleAndCheck(a);
   EXPECT_GT(a.configRoute(100).version(), version);
   EXPECT_EQ(a.chip.routeWrites(), writes + 3);
   EXPECT_EQ(programmedCount(100, 3), 3u);
}

}  // namespace
