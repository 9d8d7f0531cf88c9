// What a neighbour's MAC change costs the hardware: with the in-place adjacency update, one
// reprogramming per L2 adjacency through the neighbour and no route work at all, however many
// routes use it; without it, every route through the neighbour moves to a new adjacency and the
// others stay as they are.
#include <gtest/gtest.h>

#include "support/TransitTestCommon.h"

#include <map>
#include <set>

namespace {

using namespace TestSupport;

const Wire::IntfId kVlan30 = Wire::IntfId::vlan(30);
const Wire::EthAddr kOldMac = Wire::EthAddr::parse("00:00:00:00:00:02");
const Wire::EthAddr kNewMac = Wire::EthAddr::parse("00:00:00:00:00:99");
constexpr std::uint32_t kRoutesPerSet = 50;

bool carries(const Fal::L2AdjacencyPtr& adj, const Wire::EthAddr& mac) {
   for (const auto& via : adj->l2ViaSet()) {
      if (via.macAddr() == mac) {
         return true;
      }
   }
   return false;
}

// Six via sets of their own labels (so six L2 adjacencies, none shared), fifty routes each. The
// neighbour 10.0.0.2 is in sets 1 to 3 (alone, in an ECMP pair, and behind a route-resolver
// gateway); sets 4 to 6 never reach it.
struct Fabric {
   explicit Fabric(bool inPlace) : toggle(inPlace) {
      a.neighbor("10.0.0.2", kVlan10, kOldMac.stringValue());
      a.neighbor("10.0.1.2", kVlan20, "00:00:00:00:01:02", 20, Wire::IntfId::ethernet(2));
      a.neighbor("10.0.2.2", kVlan30, "00:00:00:00:02:02", 30, Wire::IntfId::ethernet(3));
      a.ipRoute("10.50.0.0", 16, "10.0.0.2", kVlan10);
      std::vector<Mpls::LfibViaSetKey> sets = {
          a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10, 501)}),
          a.viaSet(
              2, {a.mplsVia(2, "10.0.0.2", kVlan10, 502), a.mplsVia(3, "10.0.1.2", kVlan20, 502)}),
          a.viaSet(3, {a.mplsVia(4, "10.50.0.7", Wire::IntfId(), 503)}),
          a.viaSet(4, {a.mplsVia(5, "10.0.1.2", kVlan20, 504)}),
          a.viaSet(
              5, {a.mplsVia(6, "10.0.1.2", kVlan20, 505), a.mplsVia(7, "10.0.2.2", kVlan30, 505)}),
          a.viaSet(6, {a.mplsVia(8, "10.0.2.2", kVlan30, 506)}),
      };
      for (std::uint32_t s = 0; s < sets.size(); ++s) {
         for (std::uint32_t i = 0; i < kRoutesPerSet; ++i) {
            a.route(labelOf(s, i), sets[s]);
         }
      }
      settleAndCheck(a);
   }

   static std::uint32_t labelOf(std::uint32_t set, std::uint32_t i) { return 1000 * (set + 1) + i; }

   std::map<std::uint32_t, Fal::MplsHwRoute> configRoutes() const {
      std::map<std::uint32_t, Fal::MplsHwRoute> out;
      for (std::uint32_t s = 0; s < 6; ++s) {
         for (std::uint32_t i = 0; i < kRoutesPerSet; ++i) {
            out.emplace(labelOf(s, i), a.configRoute(labelOf(s, i)));
         }
      }
      return out;
   }

   std::map<Fal::L2AdjacencyPtr, std::uint32_t> adjacencyCounts() const {
      std::map<Fal::L2AdjacencyPtr, std::uint32_t> out;
      for (const auto& [adj, count] : a.vrfConfig()->l2AdjacencyMap()) {
         out.emplace(adj, count);
      }
      return out;
   }

   ToggleScope toggle;
   TransitAgent a;
};

TEST(TransitMacChangeCost, InPlaceUpdateReprogramsEachAdjacencyOnceAndTouchesNoRoute) {
   Fabric f(true);
   TransitAgent& a = f.a;
   const auto routesBefore = f.configRoutes();
   const auto countsBefore = f.adjacencyCounts();
   ASSERT_EQ(countsBefore.size(), 6u);
   std::set<Fal::L2AdjacencyPtr> through;
   for (const auto& [adj, count] : countsBefore) {
      if (carries(adj, kOldMac)) {
         through.insert(adj);
      }
   }
   ASSERT_EQ(through.size(), 3u);
   const std::uint64_t reviewed = a.state()->routeKeyReviewed();
   const std::uint64_t published = a.state()->routeKeyPublished();
   const std::uint64_t routeWrites = a.chip.routeWrites();
   const std::uint64_t adjWrites = a.chip.adjacencyWrites();
   const std::uint64_t adjDeletes = a.chip.adjacencyDeletes();
   const std::uint64_t lastIndex = a.sm()->adjacencyIndex();

   a.neighbor("10.0.0.2", kVlan10, kNewMac.stringValue());
   settleAndCheck(a);

   // The hardware configuration holds the very same routes: same adjacency, same version.
   EXPECT_EQ(f.configRoutes(), routesBefore);
   // The same adjacencies, those through the neighbour reprogrammed exactly once.
   const auto countsAfter = f.adjacencyCounts();
   ASSERT_EQ(countsAfter.size(), countsBefore.size());
   for (const auto& [adj, count] : countsBefore) {
      ASSERT_TRUE(countsAfter.contains(adj));
      EXPECT_EQ(countsAfter.at(adj), through.contains(adj) ? count + 1 : count) << adj->index();
      EXPECT_FALSE(carries(adj, kOldMac)) << adj->index();
      EXPECT_EQ(carries(adj, kNewMac), through.contains(adj)) << adj->index();
      EXPECT_EQ(a.vrfStatus()->l2Adjacency(adj), countsAfter.at(adj)) << adj->index();
   }
   // No route was looked at again, none was published again, none was written to the chip, and
   // no adjacency was created.
   EXPECT_EQ(a.state()->routeKeyReviewed(), reviewed);
   EXPECT_EQ(a.state()->routeKeyPublished(), published);
   EXPECT_EQ(a.chip.routeWrites(), routeWrites);
   EXPECT_EQ(a.chip.adjacencyWrites(), adjWrites + through.size());
   EXPECT_EQ(a.chip.adjacencyDeletes(), adjDeletes);
   EXPECT_EQ(a.sm()->adjacencyIndex(), lastIndex);
   for (const auto& [label, route] : routesBefore) {
      EXPECT_TRUE(a.programmed(label)) << label;
   }

   // And back: the same adjacencies once more, still no route.
   a.neighbor("10.0.0.2", kVlan10, kOldMac.stringValue());
   settleAndCheck(a);
   EXPECT_EQ(f.configRoutes(), routesBefore);
   for (const auto& [adj, count] : countsBefore) {
      EXPECT_EQ(a.vrfConfig()->l2Adjacency(adj), through.contains(adj) ? count + 2 : count)
          << adj->index();
   }
   EXPECT_EQ(a.state()->routeKeyReviewed(), reviewed);
   EXPECT_EQ(a.chip.routeWrites(), routeWrites);
}

TEST(TransitMacChangeCost, WithoutInPlaceUpdateOnlyTheRoutesThroughTheNeighbourMove) {
   Fabric f(false);
   TransitAgent& a = f.a;
   const auto routesBefore = f.configRoutes();
   const std::uint64_t routeWrites = a.chip.routeWrites();
   const std::uint64_t adjDeletes = a.chip.adjacencyDeletes();

   a.neighbor("10.0.0.2", kVlan10, kNewMac.stringValue());
   settleAndCheck(a);

   const auto routesAfter = f.configRoutes();
   for (const auto& [label, before] : routesBefore) {
      const Fal::MplsHwRoute& after = routesAfter.at(label);
      ASSERT_FALSE(!after) << label;
      EXPECT_TRUE(a.programmed(label)) << label;
      EXPECT_FALSE(carries(after.l2Adjacency(), kOldMac)) << label;
      const bool through = label < Fabric::labelOf(3, 0);
      if (through) {
         EXPECT_NE(after.l2Adjacency(), before.l2Adjacency()) << label;
      } else {
         EXPECT_EQ(after, before) << label;
      }
   }
   EXPECT_EQ(a.chip.routeWrites(), routeWrites + 3 * kRoutesPerSet);
   EXPECT_EQ(a.chip.adjacencyDeletes(), adjDeletes + 3);
   EXPECT_EQ(a.vrfConfig()->l2Adjacencies(), 6u);
}

}  // namespace
