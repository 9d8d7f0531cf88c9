#include "LFibSmFixture.h"

namespace PwTest {
namespace {

// Records the writable status's notifications in order, as "route 16", "adj 5", ...
struct CopyWatch : Mpls::Status::NotifieeConst {
   using Mpls::Status::NotifieeConst::NotifieeConst;
   void onLfibRoute(const Mpls::RouteKey& k) override {
      events.push_back("route " + k.topLabel().stringValue());
   }
   void onLfibAdjacency(std::uint64_t i) override { events.push_back("adj " + std::to_string(i)); }
   void onLfibExtFecAdjacency(std::uint64_t i) override {
      events.push_back("ext " + std::to_string(i));
   }
   void onNexthopResolutionAllowDefaultRoute() override { events.push_back("allowDefault"); }
   std::vector<std::string> events;
};

Mpls::LfibViaSet viaSet(std::uint32_t index) {
   return Mpls::LfibViaSet(Mpls::LfibViaSetKey(Mpls::viaTypeMplsIp_, index),
                           {Mpls::LfibViaKey(Mpls::viaTypeMplsIp_, index)});
}

TEST_F(LFibSmTest, StartUpClearsStaleStateThenReplaysRoutesAdjacenciesAndExtFecAdjacencies) {
   // What an earlier incarnation left: decap records, a request, copies the LFIB no longer has.
   decap->labelToPwDecapInfoIs(label(900), FalPw::PwDecapInfo(label(900), portPw(9)));
   decap->labelToPwDecapInfoIs(label(901), FalPw::PwDecapInfo(label(901), vlanPw(9)));
   req->fecIs(Memtab::Fib::Fec(decapFecId(40)));
   req->hwFecIdRequestIs(Fal::HwFecIdRequest(decapFecId(40)));
   ipStatus->lfibRouteIs(mplsRoute(950, 1));
   ipStatus->lfibAdjacencyIs(95, viaSet(95));
   ipStatus->lfibExtFecAdjacencyIs(96, FecId(12), Wire::MplsLabelAction::pop);

   // The LFIB now, published in an order unlike the replay's.
   lfib->lfibExtFecAdjacencyIs(7, FecId(99), Wire::MplsLabelAction::swap);
   lfib->lfibAdjacencyIs(5, viaSet(5));
   lfib->lfibRouteIs(mplsRoute(17, 5));
   pwAdj(3, portPw(3));
   lfib->lfibRouteIs(pwRoute(16, 3));
   lfib->nexthopResolutionAllowDefaultRouteIs(true);

   CopyWatch copies(ipStatus);
   start();

   EXPECT_TRUE(sm->initialized());
   EXPECT_EQ(copies.events,
             (std::vector<std::string>{"allowDefault", "route 16", "route 17", "route 950", "adj 5",
                                       "adj 95", "ext 7", "ext 96"}));
   EXPECT_TRUE(ipStatus->nexthopResolutionAllowDefaultRoute());
   EXPECT_EQ(ipStatus->lfibRouteMap().size(), 2u);
   EXPECT_EQ(ipStatus->lfibAdjacency(5), viaSet(5));
   EXPECT_FALSE(ipStatus->lfibAdjacencyHas(95));
   EXPECT_EQ(ipStatus->lfibExtFecAdjacency(7), lfib->lfibExtFecAdjacency(7));
   EXPECT_FALSE(ipStatus->lfibExtFecAdjacencyHas(96));

   // Only the replayed port pseudowire is decapsulated; the stale request is gone.
   EXPECT_FALSE(decapped(900));
   EXPECT_FALSE(decapped(901));
   EXPECT_EQ(decap->labelToPwDecapInfo(label(16)), FalPw::PwDecapInfo(label(16), portPw(3)));
   EXPECT_TRUE(req->hwFecIdRequestMap().empty());
   EXPECT_TRUE(req->fecMap().empty());
   expectConsistent();
}

TEST_F(LFibSmTest, CopiesIntoTheWritableStatusFollowAddsChangesAndDeletes) {
   start();
   lfib->lfibRouteIs(mplsRoute(16, 5));
   lfib->lfibAdjacencyIs(5, viaSet(5));
   lfib->lfibExtFecAdjacencyIs(6, FecId(42), Wire::MplsLabelAction::swap);
   lfib->nexthopResolutionAllowDefaultRouteIs(true);
   EXPECT_EQ(ipStatus->lfibRoute(key(16)), mplsRoute(16, 5));
   EXPECT_EQ(ipStatus->lfibAdjacency(5), viaSet(5));
   EXPECT_EQ(ipStatus->lfibExtFecAdjacency(6), lfib->lfibExtFecAdjacency(6));
   EXPECT_TRUE(ipStatus->nexthopResolutionAllowDefaultRoute());

   lfib->lfibRouteIs(mplsRoute(16, 8));
   lfib->lfibAdjacencyIs(5, viaSet(6));
   lfib->lfibExtFecAdjacencyIs(6, FecId(43), Wire::MplsLabelAction::pop);
   lfib->nexthopResolutionAllowDefaultRouteIs(false);
   EXPECT_EQ(ipStatus->lfibRoute(key(16)), mplsRoute(16, 8));
   EXPECT_EQ(ipStatus->lfibAdjacency(5), viaSet(6));
   EXPECT_EQ(ipStatus->lfibExtFecAdjacency(6).fecId(), FecId(43));
   EXPECT_FALSE(ipStatus->nexthopResolutionAllowDefaultRoute());

   lfib->lfibRouteDel(key(16));
   lfib->lfibAdjacencyDel(5);
   lfib->lfibExtFecAdjacencyDel(6);
   EXPECT_TRUE(ipStatus->lfibRouteMap().empty());
   EXPECT_TRUE(ipStatus->lfibAdjacencyMap().empty());
   EXPECT_TRUE(ipStatus->lfibExtFecAdjacencyMap().empty());
   // Transit routes never touch the decap side.
   EXPECT_EQ(decap->labelToPwDecapInfos(), 0u);
   EXPECT_TRUE(req->fecMap().empty());
   expectConsistent();
}

}  // namespace
}  // namespace PwTest
