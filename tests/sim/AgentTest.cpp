// The agent assembly and the simulated chip, end to end through the transit state machine.
#include <gtest/gtest.h>

#include "SimTestSupport.h"

using namespace SimTest;

// Through a restart the chip keeps its entries: what the new incarnation writes again the same way
// costs no hardware operation, what changed is written, and what it dropped goes only when the
// restart is reconciled.
TEST(SimAgent, RestartRewritesOnlyWhatChangedAndSweepsWhatWasDropped) {
   Bed bed;
   for (std::uint32_t n : {1, 2, 3}) {
      bed.neighbor(n);
      bed.transitRoute(100 * n, n, {n});
   }
   bed.settle();
   sim::Chip& chip = bed.agent.chip();
   const std::uint64_t routeWrites = chip.routeWrites();
   const std::uint64_t routeDeletes = chip.routeDeletes();
   const std::uint64_t adjWrites = chip.adjacencyWrites();
   const std::uint64_t adjDeletes = chip.adjacencyDeletes();
   chip.agentRestarting();
   // While the agent is down: route 200 is withdrawn and next hop 3 moves to another MAC.
   bed.cp.routeDel(label(200));
   bed.cp.neighbor(Bed::nh(3), Wire::IntfId::ethernet(3), mac("00:00:00:00:00:09"),
                   Bridging::VlanId(10), Wire::IntfId::ethernet(3));
   bed.agent.restart();
   bed.settle();
   ASSERT_EQ(bed.route(100).state, sim::RouteState::programmed);
   ASSERT_EQ(bed.route(300).state, sim::RouteState::programmed);
   EXPECT_EQ(bed.route(200).state, sim::RouteState::absent);
   EXPECT_EQ(chip.routeWrites() - routeWrites, 1u) << "route 300, to the new MAC";
   EXPECT_EQ(chip.adjacencyWrites() - adjWrites, 1u) << "the adjacency to the new MAC";
   EXPECT_EQ(chip.routeDeletes() - routeDeletes, 0u);
   EXPECT_EQ(chip.adjacencyDeletes() - adjDeletes, 0u);
   chip.agentReconciled();
   EXPECT_EQ(chip.routeDeletes() - routeDeletes, 1u) << "route 200";
   EXPECT_EQ(chip.adjacencyDeletes() - adjDeletes, 2u) << "route 200's and the old MAC's";
   EXPECT_FALSE(chip.reconciling());
}
