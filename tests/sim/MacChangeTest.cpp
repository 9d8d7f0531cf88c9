// A neighbour's MAC change through the whole simulated agent: what the chip is asked to write.
// With the in-place adjacency update the chip reprograms the adjacencies through the neighbour and
// no route; without it, it writes every route through the neighbour and nothing else.
#include <gtest/gtest.h>

#include <mplsfwd/log/ToggleService.h>

#include "SimTestSupport.h"

namespace {

using SimTest::Bed;

const char* const kInPlace = "InPlaceMplsAdjacencyUpdate";

struct ToggleScope {
   explicit ToggleScope(bool on) { Log::ToggleService::toggleIs(kInPlace, on); }
   ~ToggleScope() { Log::ToggleService::toggleDel(kInPlace); }
};

// Next hop 1 is in sets 1 and 2; set 3 goes through next hops 2 and 3 only. Twenty routes each.
void build(Bed& bed) {
   for (std::uint32_t n : {1u, 2u, 3u}) {
      bed.neighbor(n);
   }
   bed.transitRoute(100, 1, {1}, 501);
   bed.transitRoute(200, 2, {1, 2}, 502);
   bed.transitRoute(300, 3, {2, 3}, 503);
   for (std::uint32_t set = 1; set <= 3; ++set) {
      for (std::uint32_t i = 1; i < 20; ++i) {
         bed.cp.route(SimTest::label(set * 100 + i), SimTest::mplsSet(set));
      }
   }
   bed.settle();
}

void moveNeighbourOne(Bed& bed) {
   bed.cp.neighbor(Bed::nh(1), Wire::IntfId::ethernet(1), SimTest::mac("00:00:00:00:00:99"),
                   Bridging::VlanId(10), Wire::IntfId::ethernet(1));
   bed.settle();
}

void expectEveryRouteProgrammedAsConfigured(Bed& bed) {
   auto config = bed.agent.defaultVrfConfig();
   auto status = bed.agent.defaultVrfStatus();
   ASSERT_TRUE(config && status);
   EXPECT_EQ(status->routes(), 60u);
   for (std::uint32_t set = 1; set <= 3; ++set) {
      for (std::uint32_t i = 0; i < 20; ++i) {
         auto key = SimTest::key(set * 100 + i);
         EXPECT_EQ(status->route(key), config->route(key)) << key;
         for (const auto& via : config->route(key).l2Adjacency()->l2ViaSet()) {
            EXPECT_NE(via.macAddr(), Bed::nhMac(1)) << key;
         }
      }
   }
}

TEST(SimMacChange, InPlaceUpdateWritesTheAdjacenciesAndNoRoute) {
   ToggleScope toggle(true);
   Bed bed;
   build(bed);
   ASSERT_EQ(bed.agent.defaultVrfStatus()->routes(), 60u);
   const std::uint64_t routeWrites = bed.agent.chip().routeWrites();
   const std::uint64_t adjWrites = bed.agent.chip().adjacencyWrites();
   const std::uint64_t adjDeletes = bed.agent.chip().adjacencyDeletes();

   moveNeighbourOne(bed);

   EXPECT_EQ(bed.agent.chip().routeWrites(), routeWrites);
   EXPECT_EQ(bed.agent.chip().adjacencyWrites(), adjWrites + 2);
   EXPECT_EQ(bed.agent.chip().adjacencyDeletes(), adjDeletes);
   expectEveryRouteProgrammedAsConfigured(bed);
}

TEST(SimMacChange, WithoutInPlaceUpdateTheRoutesThroughTheNeighbourAreWritten) {
   ToggleScope toggle(false);
   Bed bed;
   build(bed);
   const std::uint64_t routeWrites = bed.agent.chip().routeWrites();
   const std::uint64_t adjDeletes = bed.agent.chip().adjacencyDeletes();

   moveNeighbourOne(bed);

   EXPECT_EQ(bed.agent.chip().routeWrites(), routeWrites + 40);
   EXPECT_EQ(bed.agent.chip().adjacencyDeletes(), adjDeletes + 2);
   expectEveryRouteProgrammedAsConfigured(bed);
}

}  // namespace
