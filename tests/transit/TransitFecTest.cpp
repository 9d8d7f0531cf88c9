// Forwarding into FECs: the machine's own FECs for via sets that go the FEC way, external FECs,
// backup via sets, the hardware FEC id hand-shake, the route helper, and the FEC id allocator.
#include <gtest/gtest.h>

#include <mplsfwd/sim/State.h>

#include "support/TransitTestCommon.h"

namespace {

using namespace TestSupport;

const auto kOwnFec = Memtab::Fib::AdjType::mplsNexthopAdj_;

TransitAgent::Options fecOptions() {
   TransitAgent::Options o;
   o.fecForwarding = true;
   return o;
}

Memtab::Fib::FecId externalFec(std::uint64_t index) {
   return Memtab::Fib::FecId::fecIdForAdjType(Memtab::Fib::AdjType::fibAdj_, index);
}

struct FecTest : ::testing::Test {
   FecTest() : a(fecOptions()) {
      a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
      a.neighbor("10.0.1.2", kVlan20, "00:00:00:00:01:02");
   }
   // A regular via set of the source that the platform forwards through the FIB.
   Mpls::LfibViaSetKey fibSet(std::uint32_t index, const std::vector<Mpls::LfibViaKey>& vias,
                              Mpls::LfibViaSetKey backup = Mpls::LfibViaSetKey()) {
      return a.viaSet(index, vias, backup, Mpls::lfibSourceOspfSr_);
   }
   Memtab::Fib::FecId fecOf(const Mpls::LfibViaSetKey& set) const {
      return a.state() ? a.state()->lFibViaSetToFecId(set) : Memtab::Fib::FecId();
   }
   TransitAgent a;
};

TEST_F(FecTest, AViaSetOfTheFibSourceGetsItsOwnFecAndItsRoutesGoThroughTheHelper) {
   auto set = fibSet(
       1, {a.mplsVia(1, "10.0.0.2", kVlan10, 2000), a.mplsVia(2, "10.0.1.2", kVlan20, 2001)});
   a.fecAnswersIs(false);
   a.route(100, set);
   settleAndCheck(a);
   // The FEC and its request are published before the answer comes.
   Memtab::Fib::FecId fecId = fecOf(set);
   ASSERT_TRUE(fecId.isValid());
   EXPECT_EQ(fecId.adjType(), kOwnFec);
   ASSERT_TRUE(a.fecRequest->fecPtr(fecId));
   Memtab::Fib::Fec fec = a.fecRequest->fec(fecId);
   EXPECT_EQ(fec.vias(), 2u);
   EXPECT_EQ(fec.via(Memtab::Fib::ViaIndex(0)).nextHop(), Wire::IpGenAddr::parse("10.0.0.2"));
   EXPECT_EQ(fec.via(Memtab::Fib::ViaIndex(1)).intf(), kVlan20);
   EXPECT_FALSE(fec.backupFecId().isValid());
   // Nothing goes through the hardware configuration (the FEC example's); the helper has the
   // route before the answer.
   ASSERT_TRUE(a.helper->routeHas(TransitAgent::key(100)));
   EXPECT_EQ(a.helper->routeMap().at(TransitAgent::key(100)).fecId, fecId.value());
   EXPECT_EQ(a.helper->routeMap().at(TransitAgent::key(100)).labelAction,
             Wire::MplsLabelAction::swap);
   auto info = a.state()->extFecInfo(fecId);
   ASSERT_TRUE(info);
   EXPECT_EQ(info->hwId(), 0u);

   // The answer puts the dependent adjacency up for review and records the hardware id.
   std::uint64_t reviewed = a.state()->l3AdjReviewed();
   a.fecAnswersIs(true);
   settleAndCheck(a);
   EXPECT_EQ(info->hwId(), a.agent.fecResponse()->hwFecId(fecId).hwFecId());
   EXPECT_NE(info->hwId(), 0u);
   EXPECT_GT(a.state()->l3AdjReviewed(), reviewed);
   EXPECT_FALSE(a.stateRoute(100)->unprogrammed());
}

TEST_F(FecTest, RepublishingAnUnchangedFecWritesNothing) {
   struct Writes : Fal::FecIdToHwFecIdRequest::NotifieeConst {
      using Fal::FecIdToHwFecIdRequest::NotifieeConst::NotifieeConst;
      void onFec(Memtab::Fib::FecId) override { ++n; }
      void onHwFecIdRequest(Memtab::Fib::FecId) override { ++n; }
      int n = 0;
   } writes(a.fecRequest);
   auto set = fibSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)});
   a.fecAnswersIs(false);
   a.route(100, set);
   settleAndCheck(a);
   EXPECT_EQ(writes.n, 2);  // the FEC and its request
   // The answer has the adjacency reviewed, which publishes the same FEC and request again.
   std::uint64_t reviewed = a.state()->l3AdjReviewed();
   a.fecAnswersIs(true);
   settleAndCheck(a);
   EXPECT_GT(a.state()->l3AdjReviewed(), reviewed);
   EXPECT_EQ(writes.n, 2);
}

TEST_F(FecTest, TheLastRouteOfAViaSetWithdrawsItsFecWhoseNumberComesBackOnlyAfterTenSeconds) {
   auto set1 = fibSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)});
   auto set2 = fibSet(2, {a.mplsVia(2, "10.0.1.2", kVlan20)});
   auto set3 = fibSet(3, {a.mplsVia(3, "10.0.0.2", kVlan10, 3000)});
   a.route(100, set1);
   a.route(103, set1);
   settleAndCheck(a);
   Memtab::Fib::FecId first = fecOf(set1);
   ASSERT_TRUE(first.isValid());
   ASSERT_TRUE(a.helper->routeHas(TransitAgent::key(100)));
   // The routes of one via set share its FEC.
   EXPECT_EQ(a.state()->extFecInfo(first)->dependentRouteKeySet().size(), 2u);
   EXPECT_EQ(a.fecRequest->fecMap().size(), 1u);
   a.routeDel(103);
   settleAndCheck(a);
   EXPECT_TRUE(a.fecRequest->fecPtr(first));

   a.routeDel(100);
   settleAndCheck(a);
   EXPECT_EQ(a.helper->routes(), 0u);
   EXPECT_FALSE(a.fecRequest->fecPtr(first));
   EXPECT_EQ(a.fecRequest->hwFecIdRequest(first), Fal::HwFecIdRequest());
   EXPECT_EQ(a.agent.fecResponse()->hwFecId(first), Fal::FecToHwFecId());
   EXPECT_FALSE(a.sm()->numAllocator()->isAllocated(first.index()));

   // Within the quarantine a new via set gets another number...
   a.route(101, set2);
   settleAndCheck(a, 2.0);
   Memtab::Fib::FecId second = fecOf(set2);
   ASSERT_TRUE(second.isValid());
   EXPECT_NE(second.index(), first.index());
   // ...and after it the released one again.
   settleAndCheck(a, 10.0);
   a.route(102, set3);
   settleAndCheck(a);
   EXPECT_EQ(fecOf(set3).index(), first.index());
   EXPECT_TRUE(a.helper->routeHas(TransitAgent::key(102)));
}

TEST_F(FecTest, TunnelAndNexthopGroupViaSetsGoTheFecWay) {
   auto tunnel = Wire::DynamicTunnelIntfId::dynamicTunnelIntfId(3);
   auto nhg = Wire::FecIdIntfId::nexthopGroupIdIntfId(9);
   auto tunnelSet = a.viaSet(1, {a.mplsViaWith(1, "10.0.0.2", tunnel, {100}),
                                 a.mplsViaWith(2, "10.0.1.2", tunnel, {200})});
   auto nhgSet = a.viaSet(2, {a.mplsViaWith(3, "0.0.0.0", nhg, {300})});
   a.route(100, tunnelSet);
   a.route(101, nhgSet);
   settleAndCheck(a);
   EXPECT_EQ(a.vrfConfig()->routes(), 0u);
   ASSERT_TRUE(fecOf(tunnelSet).isValid());
   ASSERT_TRUE(fecOf(nhgSet).isValid());
   EXPECT_EQ(a.fecRequest->fec(fecOf(tunnelSet)).vias(), 2u);
   EXPECT_EQ(a.fecRequest->fec(fecOf(nhgSet)).via(Memtab::Fib::ViaIndex(0)).intf(), nhg);
   EXPECT_TRUE(a.helper->routeHas(TransitAgent::key(100)));
   EXPECT_TRUE(a.helper->routeHas(TransitAgent::key(101)));
}

TEST_F(FecTest, HelperRefusalIsRecordedAsRouteFullAndRetried) {
   auto set = fibSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)});
   a.helper->refuseNextIs(1, Mpls::lfibHwProgrammingResourceFull_);
   a.route(100, set);
   settleAndCheck(a);
   EXPECT_FALSE(a.helper->routeHas(TransitAgent::key(100)));
   EXPECT_TRUE(a.vrfStatus()->unprogrammedRouteHas(TransitAgent::key(100)));
   EXPECT_EQ(a.vrfStatus()->unprogrammedReason(), Fal::UnprogrammedReason::RouteFull);
   EXPECT_EQ(a.state()->numUnprogrammedRoute(), 1u);
   EXPECT_EQ(a.logged("ROUTING_MPLS_RESOURCE_FULL"), 1u);
   EXPECT_TRUE(a.stateRoute(100)->unprogrammed());
   // The simulator's view of the route names the way it was refused on.
   sim::RouteView view = sim::routeView(a.agent, TransitAgent::key(100));
   EXPECT_EQ(view.path, "fec");
   EXPECT_EQ(view.reason, "returnCode 1");

   settleAndCheck(a, 11.0);
   EXPECT_TRUE(a.helper->routeHas(TransitAgent::key(100)));
   EXPECT_FALSE(a.vrfStatus()->unprogrammedRouteHas(TransitAgent::key(100)));
   EXPECT_EQ(a.state()->numUnprogrammedRoute(), 0u);
   EXPECT_EQ(a.logged("ROUTING_MPLS_RESOURCE_NORMAL"), 1u);
   EXPECT_FALSE(a.stateRoute(100)->unprogrammed());
}

TEST_F(FecTest, ExternalFecViaSetForwardsIntoTheNamedFecWithoutOwningIt) {
   auto fecId = externalFec(77);
   a.route(100, a.extFecViaSet(5, fecId));
   a.route(101, a.extFecViaSet(6, fecId));  // a second via set into the same FEC
   settleAndCheck(a);
   ASSERT_TRUE(a.helper->routeHas(TransitAgent::key(100)));
   EXPECT_EQ(a.helper->routeMap().at(TransitAgent::key(100)).fecId, fecId.value());
   EXPECT_EQ(a.helper->routeMap().at(TransitAgent::key(100)).labelAction,
             Wire::MplsLabelAction::pop);
   EXPECT_EQ(a.fecRequest->hwFecIdRequest(fecId), Fal::HwFecIdRequest(fecId));
   // The FEC itself is another agent's: not published here, no number taken.
   EXPECT_FALSE(a.fecRequest->fecPtr(fecId));
   EXPECT_TRUE(a.state()->lFibViaSetToFecIdMap().empty());
   EXPECT_NE(a.state()->extFecInfo(fecId)->hwId(), 0u);
   EXPECT_EQ(a.state()->extFecInfo(fecId)->dependentL3AdjacencySet().size(), 2u);

   // The record and the request stay while one of the two uses the FEC.
   a.routeDel(100);
   settleAndCheck(a);
   EXPECT_FALSE(a.helper->routeHas(TransitAgent::key(100)));
   EXPECT_EQ(a.fecRequest->hwFecIdRequest(fecId), Fal::HwFecIdRequest(fecId));
   EXPECT_TRUE(a.helper->routeHas(TransitAgent::key(101)));
   a.routeDel(101);
   settleAndCheck(a);
   EXPECT_EQ(a.fecRequest->hwFecIdRequest(fecId), Fal::HwFecIdRequest());
   EXPECT_FALSE(a.state() && a.state()->extFecInfo(fecId));
}

TEST_F(FecTest, ABackupViaSetIsReviewedFirstAndNamedInThePrimarysFec) {
   TraceCapture traces;
   auto backup = a.viaSet(2, {a.mplsVia(2, "10.0.1.2", kVlan20, 2002)});
   auto primary = a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10, 2001)}, backup);
   a.route(100, primary);
   settleAndCheck(a);
   EXPECT_TRUE(traces.contains("not yet up for review, kicking off review and backing off"));
   auto p = a.l3Adj(primary);
   auto b = a.l3Adj(backup);
   ASSERT_TRUE(p);
   ASSERT_TRUE(b);
   EXPECT_EQ(p->backupAdj(), b);
   EXPECT_TRUE(b->primaryAdj(p->index()));
   // Both sides go the FEC way, even of a source that would not (the example's FECs).
   EXPECT_EQ(a.helper->routeMap().at(TransitAgent::key(100)).fecId, fecOf(primary).value());
   // Once the primary goes, the backup has no user left and goes too.
   a.routeDel(100);
   settleAndCheck(a);
   EXPECT_FALSE(a.l3Adj(backup));
}

// The primary itself does not change when its backup arrives: the arrival alone must bring the
// primary back, and a backup that comes and goes again must not leave it programmed.
TEST_F(FecTest, ABackupViaSetMissingFromTheLfibHoldsThePrimaryBackUntilItArrives) {
   TraceCapture traces;
   Mpls::LfibViaSetKey backup(Mpls::viaTypeMplsIp_, 2, Mpls::lfibSourceStatic_);
   auto primary = a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)}, backup);
   a.route(100, primary);
   settleAndCheck(a);
   EXPECT_TRUE(traces.contains("backup viaSet idx 2 viaType viaTypeMplsIp missing from lfib"));
   EXPECT_FALSE(a.helper->routeHas(TransitAgent::key(100)));
   EXPECT_TRUE(a.stateRoute(100)->unprogrammed());

   // The backup arrives; the primary itself does not change.
   a.viaSet(2, {a.mplsVia(2, "10.0.1.2", kVlan20)});
   settleAndCheck(a);
   EXPECT_TRUE(a.helper->routeHas(TransitAgent::key(100)));
   EXPECT_FALSE(a.stateRoute(100)->unprogrammed());
   EXPECT_EQ(a.fecRequest->fec(fecOf(primary)).backupFecId(), fecOf(backup));
}

TEST_F(FecTest, ABackupViaSetAlsoUsedByItsOwnRouteStaysWhileEitherNeedsIt) {
   auto backup = a.viaSet(2, {a.mplsVia(2, "10.0.1.2", kVlan20)});
   auto primary = a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)}, backup);
   a.route(100, primary);
   a.route(200, backup);
   settleAndCheck(a);
   EXPECT_EQ(a.helper->routeMap().at(TransitAgent::key(200)).fecId, fecOf(backup).value());
   a.routeDel(100);
   settleAndCheck(a);
   ASSERT_TRUE(a.l3Adj(backup));
   EXPECT_FALSE(a.l3Adj(primary));
   // No longer anybody's backup, the set is an ordinary one again: the route moves from the
   // helper to a hardware adjacency and the FECs go.
   EXPECT_TRUE(a.programmed(200));
   EXPECT_FALSE(a.helper->routeHas(TransitAgent::key(200)));
   EXPECT_TRUE(a.fecRequest->fecMap().empty());
}

TEST_F(FecTest, AViaSetMovingBetweenTheTwoWaysLeavesNothingBehind) {
   // Programmed through a hardware L2 adjacency first.
   a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)});
   Mpls::LfibViaSetKey set(Mpls::viaTypeMplsIp_, 1, Mpls::lfibSourceStatic_);
   a.route(100, set);
   settleAndCheck(a);
   ASSERT_TRUE(a.programmed(100));
   ASSERT_FALSE(a.helper->routeHas(TransitAgent::key(100)));

   // The via set gains a backup: it now has to go the FEC way, and the helper is out of room
   // just then; the retry brings it in.
   auto backup = a.viaSet(2, {a.mplsVia(2, "10.0.1.2", kVlan20)});
   a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)}, backup);
   a.helper->refuseNextIs(1, Mpls::lfibHwProgrammingResourceFull_);
   settleAndCheck(a);
   EXPECT_TRUE(!a.configRoute(100));
   EXPECT_FALSE(a.helper->routeHas(TransitAgent::key(100)));
   EXPECT_TRUE(a.vrfStatus()->unprogrammedRouteHas(TransitAgent::key(100)));
   EXPECT_TRUE(a.stateRoute(100)->unprogrammed());
   settleAndCheck(a, 11.0);
   EXPECT_TRUE(a.helper->routeHas(TransitAgent::key(100)));
   EXPECT_EQ(a.state()->numUnprogrammedRoute(), 0u);
   EXPECT_EQ(a.vrfConfig()->l2Adjacencies(), 0u);

   // And back: the backup goes, the hardware adjacency returns and the helper lets go.
   a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)});
   settleAndCheck(a);
   EXPECT_TRUE(a.programmed(100));
   EXPECT_FALSE(a.helper->routeHas(TransitAgent::key(100)));
   EXPECT_TRUE(a.fecRequest->fecMap().empty());

   // The route itself moves between a via set of each way, there and back.
   auto fib = fibSet(3, {a.mplsVia(3, "10.0.0.2", kVlan10)});
   a.route(100, fib);
   settleAndCheck(a);
   EXPECT_TRUE(a.helper->routeHas(TransitAgent::key(100)));
   EXPECT_TRUE(!a.configRoute(100));
   a.route(100, set);
   settleAndCheck(a);
   EXPECT_TRUE(a.programmed(100));
   EXPECT_FALSE(a.helper->routeHas(TransitAgent::key(100)));
   EXPECT_TRUE(a.fecRequest->fecMap().empty());
}

TEST(TransitFecAbsent, BackupAndTunnelViaSetsAreSkippedWithoutFecForwarding) {
   TraceCapture traces;
   TransitAgent a;
   a.neighbor("10.0.0.2", kVlan10, "00:00:00:00:00:02");
   a.neighbor("10.0.1.2", kVlan20, "00:00:00:00:01:02");
   auto backup = a.viaSet(2, {a.mplsVia(2, "10.0.1.2", kVlan20)});
   a.route(100, a.viaSet(1, {a.mplsVia(1, "10.0.0.2", kVlan10)}, backup));
   auto tunnel = Wire::DynamicTunnelIntfId::dynamicTunnelIntfId(3);
   a.route(101, a.viaSet(3, {a.mplsViaWith(3, "10.0.0.2", tunnel, {100})}));
   a.route(102, a.extFecViaSet(4, externalFec(5)));
   settleAndCheck(a);
   EXPECT_TRUE(traces.contains("is in a backup relation, which needs forwarding into FECs"));
   EXPECT_TRUE(traces.contains("holds tunnel vias, which need forwarding into FECs"));
   EXPECT_TRUE(traces.contains("External FEC not supported on this platform; skipping l3 adj"));
   EXPECT_EQ(a.vrfConfig()->routes(), 0u);
   for (std::uint32_t label : {100u, 101u, 102u}) {
      ASSERT_TRUE(a.stateRoute(label)) << label;
      EXPECT_TRUE(a.stateRoute(label)->unprogrammed()) << label;
   }
}

}  // namespace
