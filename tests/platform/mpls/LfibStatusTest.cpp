#include <gtest/gtest.h>

#include <map>
#include <vector>

#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/mpls/HardwareStatus.h>
#include <mplsfwd/mpls/LfibHwStatus.h>
#include <mplsfwd/mpls/LfibStatus.h>
#include <mplsfwd/mpls/LfibTrackingSm.h>
#include <mplsfwd/mpls/MplsStatus.h>

namespace {

using namespace Mpls;

RouteKey key(std::uint32_t label) {
   return RouteKey(Wire::MplsLabel(label));
}
LfibViaSetKey vlanSet(std::uint32_t i) {
   return LfibViaSetKey(viaTypeVlan_, i);
}
LfibViaKey vlanViaKey(std::uint32_t i) {
   return LfibViaKey(viaTypeVlan_, i);
}

LfibViaSet setOf(LfibViaSetKey k, std::initializer_list<LfibViaKey> vias) {
   return LfibViaSet(k, vias);
}

TEST(LfibStatus, AbsentLookupsYieldDefaultsAndIndicesFollowChanges) {
   auto lfib = Kor::make<LfibStatus>("lfib");
   EXPECT_EQ(lfib->lfibRoute(key(16)), LfibRoute());
   EXPECT_EQ(lfib->viaSet(vlanSet(1)).vias(), 0u);
   EXPECT_EQ(lfib->vlanVia(vlanViaKey(1)), LfibVlanVia());

   lfib->lfibRouteIs(LfibRoute(key(16), vlanSet(1)));
   lfib->lfibRouteIs(LfibRoute(key(17), vlanSet(1)));
   EXPECT_EQ(lfib->routeKeysOfViaSet(vlanSet(1)).size(), 2u);
   // Moving a route to another via set moves it in the index.
   lfib->lfibRouteIs(LfibRoute(key(17), vlanSet(2)));
   EXPECT_EQ(lfib->routeKeysOfViaSet(vlanSet(1)).size(), 1u);
   EXPECT_EQ(lfib->routeKeysOfViaSet(vlanSet(2)).count(key(17)), 1u);
   lfib->lfibRouteDel(key(16));
   EXPECT_TRUE(lfib->routeKeysOfViaSet(vlanSet(1)).empty());
   // The index is a list: taking routes out of its middle, head and tail keeps the rest linked.
   for (std::uint32_t label : {20, 21, 22, 23, 24, 25}) {
      lfib->lfibRouteIs(LfibRoute(key(label), vlanSet(3)));
   }
   for (std::uint32_t label : {22, 25, 21}) {
      lfib->lfibRouteDel(key(label));
   }
   lfib->lfibRouteIs(LfibRoute(key(20), vlanSet(2)));
   std::vector<std::uint32_t> users;
   for (const RouteKey& k : lfib->routeKeysOfViaSet(vlanSet(3))) {
      users.push_back(k.topLabel().value());
   }
   EXPECT_EQ(users, (std::vector<std::uint32_t>{24, 23}));
   EXPECT_EQ(lfib->routeKeysOfViaSet(vlanSet(2)).size(), 2u);
   EXPECT_EQ(lfib->routeKeysOfViaSet(vlanSet(3)).count(key(20)), 0u);

   lfib->viaSetIs(setOf(vlanSet(1), {vlanViaKey(5), vlanViaKey(6)}));
   lfib->viaSetIs(setOf(vlanSet(2), {vlanViaKey(5)}));
   EXPECT_EQ(lfib->viaSetsOfVia(vlanViaKey(5)).size(), 2u);
   lfib->viaSetIs(setOf(vlanSet(1), {vlanViaKey(6)}));
   EXPECT_EQ(lfib->viaSetsOfVia(vlanViaKey(5)).size(), 1u);
   lfib->viaSetDel(vlanSet(2));
   EXPECT_TRUE(lfib->viaSetsOfVia(vlanViaKey(5)).empty());
}

TEST(LfibStatus, DeletedViaSetRecordsAreReusedWithoutMixingSets) {
   auto lfib = Kor::make<LfibStatus>("lfib");
   auto expectSets = [&](const std::map<std::uint32_t, std::uint32_t>& viaOfSet) {
      EXPECT_EQ(lfib->viaSets(), viaOfSet.size());
      for (std::uint32_t i = 1; i <= 5; ++i) {
         auto it = viaOfSet.find(i);
         const LfibViaSet* stored = lfib->viaSetPtr(vlanSet(i));
         ASSERT_EQ(stored != nullptr, it != viaOfSet.end()) << i;
         EXPECT_EQ(lfib->viaSet(vlanSet(i)),
                   stored ? setOf(vlanSet(i), {vlanViaKey(it->second)}) : LfibViaSet(vlanSet(i)));
      }
   };
   for (std::uint32_t i : {1, 2, 3}) {
      lfib->viaSetIs(setOf(vlanSet(i), {vlanViaKey(10 + i)}));
   }
   lfib->viaSetDel(vlanSet(2));
   lfib->viaSetIs(setOf(vlanSet(4), {vlanViaKey(14)}));
   lfib->viaSetIs(setOf(vlanSet(5), {vlanViaKey(15)}));
   lfib->viaSetIs(setOf(vlanSet(1), {vlanViaKey(21)}));
   expectSets({{1, 21}, {3, 13}, {4, 14}, {5, 15}});
   EXPECT_TRUE(lfib->viaSetsOfVia(vlanViaKey(12)).empty());
   // A set's routes may come before it and stay after it.
   lfib->lfibRouteIs(LfibRoute(key(16), vlanSet(2)));
   lfib->lfibRouteIs(LfibRoute(key(17), vlanSet(3)));
   expectSets({{1, 21}, {3, 13}, {4, 14}, {5, 15}});
   // Emptied and filled again.
   lfib->viaSetDelAll();
   expectSets({});
   EXPECT_EQ(lfib->routeKeysOfViaSet(vlanSet(3)).size(), 1u);
   lfib->viaSetIs(setOf(vlanSet(2), {vlanViaKey(12)}));
   expectSets({{2, 12}});
   EXPECT_EQ(lfib->routeKeysOfViaSet(vlanSet(2)).size(), 1u);
   lfib->lfibRouteDel(key(16));
   EXPECT_TRUE(lfib->routeKeysOfViaSet(vlanSet(2)).empty());
   expectSets({{2, 12}});
}

struct LfibWatch : LfibStatus::NotifieeConst {
   using LfibStatus::NotifieeConst::NotifieeConst;
   void onLfibRoute(const RouteKey&) override { ++routes; }
   void onVlanVia(const LfibViaKey&) override { ++vias; }
   void onDot1qTagToVlanColl(const LfibDot1qTagToVlanKey&) override { ++colls; }
   int routes = 0, vias = 0, colls = 0;
};

TEST(LfibStatus, NotifiesOnlyOnRealChange) {
   auto lfib = Kor::make<LfibStatus>("lfib");
   LfibWatch w(lfib);
   lfib->lfibRouteIs(LfibRoute(key(16), vlanSet(1)));
   lfib->lfibRouteIs(LfibRoute(key(16), vlanSet(1)));
   lfib->lfibRouteDel(key(99));
   lfib->vlanViaIs(LfibVlanVia(vlanViaKey(1), Bridging::VlanId(10)));
   lfib->vlanViaIs(LfibVlanVia(vlanViaKey(1), Bridging::VlanId(10)));
   lfib->vlanViaIs(LfibVlanVia(vlanViaKey(1), Bridging::VlanId(20)));
   auto coll = lfib->dot1qTagToVlanCollIs(LfibDot1qTagToVlanKey(1));
   EXPECT_EQ(lfib->dot1qTagToVlanCollIs(LfibDot1qTagToVlanKey(1)), coll);
   EXPECT_EQ(w.routes, 1);
   EXPECT_EQ(w.vias, 2);
   EXPECT_EQ(w.colls, 1);
   lfib->lfibRouteDel(key(16));
   EXPECT_EQ(w.routes, 2);
}

TEST(LfibStatus, ARouteWithoutALabelIsRefusedAndChangesNothing) {
   auto lfib = Kor::make<LfibStatus>("lfib");
   LfibWatch w(lfib);
   EXPECT_THROW(lfib->lfibRouteIs(LfibRoute(RouteKey(), vlanSet(1))), Kor::RangeError);
   EXPECT_FALSE(lfib->lfibRouteHas(RouteKey()));
   EXPECT_TRUE(lfib->routeKeysOfViaSet(vlanSet(1)).empty());
   EXPECT_EQ(w.routes, 0);
   // The edges of the label space are ordinary routes.
   lfib->lfibRouteIs(LfibRoute(key(0), vlanSet(1)));
   lfib->lfibRouteIs(LfibRoute(key(Wire::MplsLabel::kMax), vlanSet(1)));
   EXPECT_EQ(lfib->routeKeysOfViaSet(vlanSet(1)).size(), 2u);
   std::vector<std::uint32_t> labels;
   for (const auto& [k, route] : lfib->lfibRouteMap()) {
      labels.push_back(k.topLabel().value());
   }
   EXPECT_EQ(labels, (std::vector<std::uint32_t>{0, Wire::MplsLabel::kMax}));
}

class Tracking : public ::testing::Test {
 protected:
   Kor::Ptr<LfibStatus> lfib = Kor::make<LfibStatus>("lfib");
   Kor::Ptr<LfibTrackingStatus> status = Kor::make<LfibTrackingStatus>("tracking");
};

TEST_F(Tracking, ViaSetModeBacklogsExistingAndChangedViaSets) {
   lfib->viaSetIs(setOf(vlanSet(1), {vlanViaKey(5)}));
   lfib->lfibRouteIs(LfibRoute(key(16), vlanSet(1)));
   auto sm = Kor::make<LfibTrackingSm>(lfib, status, lfibTrackingViaSets_, "t");
   EXPECT_EQ(status->viaSetKeyBacklogSet().size(), 1u);
   EXPECT_TRUE(status->routeKeyBacklogSet().empty());
   status->viaSetKeyBacklogDel(vlanSet(1));
   // A via change reaches every via set that names it.
   lfib->viaSetIs(setOf(vlanSet(2), {vlanViaKey(5)}));
   status->viaSetKeyBacklogDel(vlanSet(2));
   lfib->vlanViaIs(LfibVlanVia(vlanViaKey(5), Bridging::VlanId(10)));
   EXPECT_EQ(status->viaSetKeyBacklogSet().size(), 2u);
   // Route changes are not this mode's business.
   lfib->lfibRouteIs(LfibRoute(key(17), vlanSet(1)));
   EXPECT_TRUE(status->routeKeyBacklogSet().empty());
}

TEST_F(Tracking, ViaSetsTheOwnerSkipsStayOffTheViaSetBacklogButTheirRoutesAreQueued) {
   lfib->lfibRouteIs(LfibRoute(key(16), vlanSet(1)));
   auto sm = Kor::make<LfibTrackingSm>(lfib, status, lfibTrackingRoutesAndViaSets_, "t");
   status->routeKeyBacklogDel(key(16));
   std::vector<LfibViaSetKey> asked;
   sm->viaSetSkipIs([&](const LfibViaSetKey& k) {
      asked.push_back(k);
      return k == vlanSet(1);
   });
   lfib->viaSetIs(setOf(vlanSet(1), {vlanViaKey(5)}));
   lfib->viaSetIs(setOf(vlanSet(2), {vlanViaKey(5)}));
   EXPECT_EQ(status->viaSetKeyBacklogSet(), LfibTrackingStatus::ViaSetKeyBacklog{vlanSet(2)});
   EXPECT_TRUE(status->routeKeyBacklog(key(16)));
   EXPECT_EQ(asked, (std::vector<LfibViaSetKey>{vlanSet(1), vlanSet(2)}));
   // Without a skip every changed set is queued again.
   sm->viaSetSkipIs({});
   lfib->vlanViaIs(LfibVlanVia(vlanViaKey(5), Bridging::VlanId(10)));
   EXPECT_EQ(status->viaSetKeyBacklogSet().size(), 2u);
}

TEST_F(Tracking, RouteModeFollowsViaSetsAndViasDownToRoutes) {
   lfib->lfibRouteIs(LfibRoute(key(16), vlanSet(1)));
   auto sm = Kor::make<LfibTrackingSm>(lfib, status, lfibTrackingRoutes_, "t");
   ASSERT_EQ(status->routeKeyBacklogSet().size(), 1u);
   status->routeKeyBacklogDel(key(16));
   lfib->viaSetIs(setOf(vlanSet(1), {vlanViaKey(5)}));
   EXPECT_TRUE(status->routeKeyBacklog(key(16)));
   status->routeKeyBacklogDel(key(16));
   lfib->vlanViaIs(LfibVlanVia(vlanViaKey(5), Bridging::VlanId(10)));
   EXPECT_TRUE(status->routeKeyBacklog(key(16)));
   EXPECT_TRUE(status->viaSetKeyBacklogSet().empty());
   // Once the machine is gone, nothing more is tracked.
   status->routeKeyBacklogDel(key(16));
   sm = nullptr;
   lfib->lfibRouteIs(LfibRoute(key(18), vlanSet(1)));
   EXPECT_TRUE(status->routeKeyBacklogSet().empty());
}

TEST(MplsStatus, PwAdjacencyLookupByKeyType) {
   auto status = Kor::make<Status>("mpls");
   status->lfibPwAdjacencyIs(PwAdjacency(7, Wire::PseudowireIntfId::portPseudowireIntfId(1)));
   EXPECT_EQ(status->getPwAdjacency(AdjacencyKey(adjacencyTypePseudowire_, 7)).index(), 7u);
   EXPECT_EQ(status->getPwAdjacency(AdjacencyKey(adjacencyTypeMpls_, 7)), PwAdjacency());
   EXPECT_EQ(status->getPwAdjacency(AdjacencyKey(adjacencyTypePseudowire_, 8)), PwAdjacency());
}

TEST(HardwareStatus, InstantiatingCollectionsAndDeleteAll) {
   auto hw = Kor::make<Hardware::Status>("hw");
   struct W : Hardware::Status::NotifieeConst {
      using Hardware::Status::NotifieeConst::NotifieeConst;
      void onL2Adjacency(std::uint64_t) override { ++n; }
      int n = 0;
   } w(hw);
   auto a = hw->l2AdjacencyIs(3);
   EXPECT_EQ(hw->l2AdjacencyIs(3), a);
   EXPECT_EQ(a->index(), 3u);
   hw->l2AdjacencyIs(4);
   hw->l2AdjacencyDelAll();
   EXPECT_EQ(w.n, 4);
   EXPECT_EQ(hw->l2Adjacency(3), nullptr);
}

}  // namespace
