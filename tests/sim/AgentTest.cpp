// The agent assembly and the simulated chip, end to end through the transit state machine.
#include <gtest/gtest.h>

#include "SimTestSupport.h"

using namespace SimTest;

TEST(SimAgent, TransitRouteIsProgrammedOnlyAfterTheChipAnswers) {
   Bed bed;
   bed.neighbor(1);
   bed.transitRoute(100, 1, {1});
   // Nothing reaches hardware before the loop runs.
   EXPECT_EQ(bed.route(100).state, sim::RouteState::absent);
   bed.settle();
   auto r = bed.route(100);
   ASSERT_EQ(r.state, sim::RouteState::programmed);
   EXPECT_EQ(r.path, "adjacency");
   ASSERT_EQ(r.vias.size(), 1u);
   EXPECT_EQ(r.vias[0].macAddr(), Bed::nhMac(1));
   EXPECT_EQ(r.vias[0].l2Intf(), Wire::IntfId::ethernet(1));
   EXPECT_EQ(bed.agent.chip().routesInHardware(), 1u);
   EXPECT_EQ(bed.agent.chip().l2AdjacenciesInHardware(), 1u);
}

TEST(SimAgent, RouteTableFullThenRecoveredLogsFullOnceAndNormalOnce) {
   sim::AgentOptions options;
   options.transitRetryInterval = 10.0;
   Bed bed(options);
   bed.agent.chip().routeCapacityIs(1);
   bed.neighbor(1);
   bed.transitRoute(100, 1, {1});
   bed.transitRoute(200, 1, {1});
   bed.settle();
   auto first = bed.route(100);
   auto second = bed.route(200);
   EXPECT_EQ(first.state, sim::RouteState::programmed);
   ASSERT_EQ(second.state, sim::RouteState::unprogrammed);
   EXPECT_EQ(second.reason, "RouteFull");
   EXPECT_EQ(bed.agent.logSink().count("ROUTING_MPLS_RESOURCE_FULL"), 1u);
   EXPECT_EQ(bed.agent.logSink().count("ROUTING_MPLS_RESOURCE_NORMAL"), 0u);

   bed.agent.chip().routeCapacityIs(10);
   bed.settle(11.0);
   EXPECT_EQ(bed.route(200).state, sim::RouteState::programmed);
   EXPECT_EQ(bed.agent.logSink().count("ROUTING_MPLS_RESOURCE_FULL"), 1u);
   EXPECT_EQ(bed.agent.logSink().count("ROUTING_MPLS_RESOURCE_NORMAL"), 1u);
}
