#include <gtest/gtest.h>

#include <vector>

#include <mplsfwd/Fal/MplsHwConfig.h>
#include <mplsfwd/Fal/MplsHwStatus.h>

namespace {

using Fal::VrfId;
using L2Adj = Mpls::Hardware::L2Adjacency;

Mpls::RouteKey key(std::uint32_t label) {
   return Mpls::RouteKey(Wire::MplsLabel(label));
}
Kor::Ptr<L2Adj> adj(std::uint64_t index) {
   return Kor::make<L2Adj>(index);
}

// Counts every notification of a per-VRF configuration or status.
template <class Table>
struct Watch : Table::NotifieeConst {
   explicit Watch(Kor::Ptr<Table> t) : Table::NotifieeConst(t) {}
   void onMplsRouting() override { ++routing; }
   void onL2Adjacency(const Fal::L2AdjacencyPtr& a) override { adjs.push_back(a); }
   void onRoute(const Mpls::RouteKey& k) override { routes.push_back(k); }
   int routing = 0;
   std::vector<Fal::L2AdjacencyPtr> adjs;
   std::vector<Mpls::RouteKey> routes;
};

struct StatusWatch : Watch<Fal::MplsHwVrfStatus> {
   using Watch::Watch;
   void onUnprogrammedReason() override { ++reason; }
   void onUnprogrammedRoute(const Mpls::RouteKey& k) override { unprogRoutes.push_back(k); }
   void onUnprogrammedAdjacency(const Fal::L2AdjacencyPtr&) override { ++unprogAdjs; }
   int reason = 0;
   std::vector<Mpls::RouteKey> unprogRoutes;
   int unprogAdjs = 0;
};

class HwVrfTables : public ::testing::Test {
 protected:
   Kor::Ptr<Fal::MplsHwConfig> config = Fal::mplsHwConfigFactory("config");
   Kor::Ptr<Fal::MplsHwVrfConfig> vrf = config->vrfConfigIs(VrfId(1));
   Watch<Fal::MplsHwVrfConfig> watch{vrf};
};

TEST_F(HwVrfTables, RoutesNotifyOnlyOnChangeAndDeleteAnswersWhatWasThere) {
   auto a = adj(1);
   vrf->routeIs(Fal::MplsHwRoute(key(16), a, 1));
   vrf->routeIs(Fal::MplsHwRoute(key(16), a, 1));
   EXPECT_EQ(watch.routes.size(), 1u);
   vrf->routeIs(Fal::MplsHwRoute(key(16), a, 2));
   EXPECT_EQ(watch.routes.size(), 2u);
   EXPECT_TRUE(!vrf->routeDel(key(99)));  // absent: empty and silent
   EXPECT_EQ(vrf->routeDel(key(16)).version(), 2u);
   EXPECT_EQ(watch.routes.size(), 3u);
   EXPECT_TRUE(!vrf->route(key(16)));
}

TEST_F(HwVrfTables, EqualContentOtherAdjacencyObjectIsAChange) {
   auto a = adj(1);
   auto b = adj(1);  // same index and content, another object
   vrf->routeIs(Fal::MplsHwRoute(key(16), a, 1));
   vrf->routeIs(Fal::MplsHwRoute(key(16), b, 1));
   EXPECT_EQ(watch.routes.size(), 2u);
   EXPECT_EQ(vrf->route(key(16)).l2Adjacency(), b);
   // The table released its reference to the replaced adjacency.
   EXPECT_EQ(a->references(), 1);
}

TEST_F(HwVrfTables, L2AdjacencyCountRules) {
   auto a = adj(5);
   vrf->l2AdjacencyIs(a, 2);
   vrf->l2AdjacencyIs(a, 2);
   EXPECT_EQ(watch.adjs.size(), 1u);
   vrf->l2AdjacencyIs(a, 3);
   EXPECT_EQ(watch.adjs.size(), 2u);
   EXPECT_EQ(vrf->l2Adjacency(a), 3u);
   EXPECT_EQ(vrf->l2Adjacency(adj(6)), 0u);
   vrf->l2AdjacencyDel(adj(6));
   EXPECT_EQ(watch.adjs.size(), 2u);
   vrf->l2AdjacencyDel(a);
   EXPECT_EQ(watch.adjs.size(), 3u);
   watch.adjs.clear();
   EXPECT_EQ(a->references(), 1);  // the table let go of it
}

TEST_F(HwVrfTables, DeleteAllNotifiesPerEntry) {
   for (std::uint32_t l : {16, 17, 18}) {
      vrf->routeIs(Fal::MplsHwRoute(key(l), adj(l), 1));
   }
   vrf->l2AdjacencyIs(adj(1), 1);
   vrf->l2AdjacencyIs(adj(2), 1);
   watch.routes.clear();
   watch.adjs.clear();
   vrf->routeDelAll();
   vrf->l2AdjacencyDelAll();
   EXPECT_EQ(watch.routes.size(), 3u);
   EXPECT_EQ(watch.adjs.size(), 2u);
   EXPECT_EQ(vrf->routes(), 0u);
   EXPECT_EQ(vrf->l2Adjacencies(), 0u);
}

struct RootWatch : Fal::MplsHwConfig::NotifieeConst {
   using Fal::MplsHwConfig::NotifieeConst::NotifieeConst;
   void onVrfConfig(VrfId id) override { ids.push_back(id); }
   std::vector<VrfId> ids;
};

TEST(MplsHwConfig, VrfConfigIsGetsOrCreatesAndNotifiesOnCreationOnly) {
   auto config = Fal::mplsHwConfigFactory("c");
   RootWatch w(config);
   auto first = config->vrfConfigIs(VrfId(7));
   auto second = config->vrfConfigIs(VrfId(7));
   EXPECT_EQ(first, second);
   ASSERT_EQ(w.ids.size(), 1u);
   EXPECT_EQ(w.ids[0], VrfId(7));
   EXPECT_EQ(first->vrfId(), VrfId(7));
   EXPECT_FALSE(first->mplsRouting());
   EXPECT_EQ(config->vrfConfig(VrfId(8)), nullptr);
}

TEST(MplsHwStatus, UnprogrammedBookkeeping) {
   auto status = Fal::mplsHwStatusFactory("s");
   auto vrf = status->vrfStatusIs(VrfId(0));
   StatusWatch w(vrf);
   vrf->unprogrammedReasonIs(Fal::UnprogrammedReason::Success);
   EXPECT_EQ(w.reason, 0);
   vrf->unprogrammedReasonIs(Fal::UnprogrammedReason::RouteFull);
   EXPECT_EQ(w.reason, 1);
   vrf->unprogrammedRouteIs(key(16), true);
   vrf->unprogrammedRouteIs(key(16), true);
   vrf->unprogrammedRouteDel(key(17));
   EXPECT_EQ(w.unprogRoutes.size(), 1u);
   vrf->unprogrammedRouteIs(key(17), true);
   vrf->unprogrammedRouteDelAll();
   EXPECT_EQ(w.unprogRoutes.size(), 4u);
   auto a = adj(1);
   vrf->unprogrammedAdjacencyIs(a, true);
   vrf->unprogrammedAdjacencyIs(a, true);
   vrf->unprogrammedAdjacencyDel(a);
   EXPECT_EQ(w.unprogAdjs, 2);
   EXPECT_FALSE(vrf->unprogrammedAdjacencyHas(a));
}

}  // namespace
