#include "LFibSmFixture.h"

#include <mplsfwd/mpls/FibVia.h>

namespace Fal {
// The work method that the death test below drives directly.
struct LFibSmTestAccess {
   static void freeDecapFecId(LFibSm& sm, Memtab::Fib::FecId fecId) { sm.freeDecapFecId(fecId); }
};
}  // namespace Fal

namespace PwTest {
namespace {

class LFibSmDecapTest : public LFibSmTest {
 protected:
   void SetUp() override {
      LFibSmTest::SetUp();
      pw->localConnectorInfoIs(vlanPw(1), connector(1, 10, 1001));
      pw->localConnectorInfoIs(vlanPw(2), connector(2, 20, 1002));
      pwAdj(1, vlanPw(1));
      pwAdj(2, vlanPw(2));
      pwAdj(3, portPw(3));
      start();
   }
};

TEST_F(LFibSmDecapTest, SecondRouteWithTheSameTopLabelAllocatesNothing) {
   lfib->lfibRouteIs(pwRoute(100, 1));
   answer(decapFecId(0));
   RequestWatch requests(req);
   DecapWatch records(decap);

   // The route comes again with another metric, then through another adjacency of the same
   // pseudowire.
   lfib->lfibRouteIs(pwRoute(100, 1, 20));
   pwAdj(11, vlanPw(1));
   lfib->lfibRouteIs(pwRoute(100, 11));

   EXPECT_EQ(sm->dstPortFecRequested(label(100)), decapFecId(0));
   EXPECT_EQ(allocated(), 1u);
   EXPECT_EQ(sm->numAllocatorStatus()->highWaterMark(), 1u);
   EXPECT_EQ(requests.fecWrites + requests.requestWrites, 0);
   EXPECT_TRUE(records.labels.empty());
   EXPECT_TRUE(traced(": cachedFecId:"));
   EXPECT_EQ(ipStatus->lfibRoute(key(100)), pwRoute(100, 11));
   expectConsistent();
}

TEST_F(LFibSmDecapTest, DeletionBeforeTheAnswerFreesTheFecAtOnceButNotForReuseWithinTenSeconds) {
   lfib->lfibRouteIs(pwRoute(100, 1));
   lfib->lfibRouteDel(key(100));

   EXPECT_TRUE(req->fecMap().empty());
   EXPECT_TRUE(req->hwFecIdRequestMap().empty());
   EXPECT_EQ(allocated(), 0u);
   EXPECT_EQ(sm->numAllocatorStatus()->quarantined(), 1u);
   EXPECT_EQ(sm->fecIdToDecapInfos(), 0u);
   EXPECT_EQ(sm->pwIntfIdToFecIds(), 0u);
   EXPECT_TRUE(traced(": immediate free of labelFecId"));
   EXPECT_FALSE(ipStatus->lfibRouteHas(key(100)));
   expectConsistent();

   // Just short of the quarantine, the freed index is not handed out again.
   loop->advance(9.9);
   lfib->lfibRouteIs(pwRoute(101, 2));
   EXPECT_EQ(sm->dstPortFecRequested(label(101)), decapFecId(1));
   loop->advance(0.1);
   lfib->lfibRouteIs(pwRoute(102, 1));
   EXPECT_EQ(sm->dstPortFecRequested(label(102)), decapFecId(0));
   expectConsistent();
}

TEST_F(LFibSmDecapTest, DeletionAfterTheAnswerFreesTheFecOnlyWhenTheAnswerIsWithdrawn) {
   lfib->lfibRouteIs(pwRoute(100, 1));
   const FecId fecId = decapFecId(0);
   answer(fecId);
   lfib->lfibRouteDel(key(100));

   // The request and the decap record go at once; the index stays taken while the platform
   // still knows the FEC, however long that is.
   EXPECT_TRUE(req->hwFecIdRequestMap().empty());
   EXPECT_TRUE(req->fecMap().empty());
   EXPECT_FALSE(decapped(100));
   EXPECT_TRUE(traced(": deleting hw fec request:"));
   loop->advance(60.0);
   EXPECT_TRUE(sm->numAllocator()->isAllocated(0));
   EXPECT_EQ(sm->fecIdToDecapInfo(fecId), FalPw::PwDecapInfo(label(100), vlanPw(1)));
   expectConsistent();

   withdraw(fecId);
   EXPECT_FALSE(sm->numAllocator()->isAllocated(0));
   EXPECT_EQ(sm->numAllocatorStatus()->quarantined(), 1u);
   EXPECT_EQ(sm->fecIdToDecapInfos(), 0u);
   EXPECT_TRUE(traced(": deleting from decapInfoTable"));
   expectConsistent();

   lfib->lfibRouteIs(pwRoute(101, 1));
   EXPECT_EQ(sm->dstPortFecRequested(label(101)), decapFecId(1));
   loop->advance(10.0);
   lfib->lfibRouteIs(pwRoute(102, 1));
   EXPECT_EQ(sm->dstPortFecRequested(label(102)), decapFecId(0));
   expectConsistent();
}

TEST_F(LFibSmDecapTest, LabelBackBeforeTheOldAnswerIsWithdrawnKeepsItsNewRecord) {
   lfib->lfibRouteIs(pwRoute(100, 1));
   answer(decapFecId(0));
   lfib->lfibRouteDel(key(100));
   lfib->lfibRouteIs(pwRoute(100, 1));
   EXPECT_EQ(sm->dstPortFecRequested(label(100)), decapFecId(1));
   answer(decapFecId(1));
   ASSERT_TRUE(decapped(100));

   // The old FEC's answer goes: the old index is freed, the label's new record stays.
   withdraw(decapFecId(0));
   EXPECT_TRUE(decapped(100));
   EXPECT_FALSE(sm->numAllocator()->isAllocated(0));
   EXPECT_EQ(allocated(), 1u);
   expectConsistent();
}

TEST_F(LFibSmDecapTest, PlatformAnsweringFromInsideTheRequestIsHandledWithoutDoubleFree) {
   ImmediateFecIdService platform(req, resp);
   DecapWatch records(decap);
   lfib->lfibRouteIs(pwRoute(100, 1));
   EXPECT_EQ(decap->labelToPwDecapInfo(label(100)), FalPw::PwDecapInfo(label(100), vlanPw(1)));
   expectConsistent();

   // The answer to the FEC's deletion comes while the request is being withdrawn: the label's
   // record, gone already, is not written back.
   lfib->lfibRouteDel(key(100));
   EXPECT_FALSE(decapped(100));
   EXPECT_EQ(records.labels.size(), 2u);
   EXPECT_EQ(allocated(), 0u);
   EXPECT_EQ(sm->numAllocatorStatus()->quarantined(), 1u);
   expectConsistent();
}

TEST_F(LFibSmDecapTest, AnswerLostWhileRequestedRemovesTheRecordUntilAnsweredAgain) {
   lfib->lfibRouteIs(pwRoute(100, 1));
   answer(decapFecId(0));
   withdraw(decapFecId(0));
   EXPECT_FALSE(decapped(100));
   // The FEC is still wanted: nothing is freed, the request stands.
   EXPECT_TRUE(sm->numAllocator()->isAllocated(0));
   EXPECT_EQ(req->hwFecIdRequest(decapFecId(0)), Fal::HwFecIdRequest(decapFecId(0)));
   expectConsistent();
   answer(decapFecId(0), 778);
   EXPECT_TRUE(decapped(100));
   expectConsistent();
}

TEST_F(LFibSmDecapTest, AnswerToAFecNeverRequestedIsTracedAndIgnored) {
   answer(decapFecId(55));
   withdraw(decapFecId(55));
   EXPECT_TRUE(traced("no request for fecId"));
   EXPECT_EQ(decap->labelToPwDecapInfos(), 0u);
   EXPECT_EQ(allocated(), 0u);
   expectConsistent();
}

TEST_F(LFibSmDecapTest, AdjacencyChangesReachTheRoutesThatUseIt) {
   lfib->lfibRouteIs(pwRoute(100, 1));
   answer(decapFecId(0));
   ASSERT_TRUE(decapped(100));

   // The adjacency now names a port pseudowire: the VLAN state goes first, then the port record.
   pwAdj(1, portPw(4));
   EXPECT_EQ(decap->labelToPwDecapInfo(label(100)), FalPw::PwDecapInfo(label(100), portPw(4)));
   EXPECT_TRUE(req->hwFecIdRequestMap().empty());
   withdraw(decapFecId(0));
   EXPECT_EQ(decap->labelToPwDecapInfo(label(100)), FalPw::PwDecapInfo(label(100), portPw(4)));
   expectConsistent();

   // The adjacency goes: the route waits for it again, with nothing installed.
   lfib->lfibPwAdjacencyDel(1);
   EXPECT_FALSE(decapped(100));
   EXPECT_FALSE(ipStatus->lfibRouteHas(key(100)));
   EXPECT_EQ(sm->pwNonExistingAdj(1), Fal::LFibSm::RouteKeySet{key(100)});
   pwAdj(1, vlanPw(2));
   EXPECT_EQ(req->fec(sm->dstPortFecRequested(label(100))).via(0).vlanId(), Bridging::VlanId(1002));
   expectConsistent();
}

TEST_F(LFibSmDecapTest, RouteThatStopsEndingAPseudowireLosesItsDecapStateButStaysCopied) {
   lfib->lfibRouteIs(pwRoute(300, 3));
   lfib->lfibRouteIs(mplsRoute(300, 5));
   EXPECT_FALSE(decapped(300));
   EXPECT_FALSE(sm->labelToDecapInfo(label(300)));
   EXPECT_EQ(ipStatus->lfibRoute(key(300)), mplsRoute(300, 5));
   expectConsistent();
}

TEST_F(LFibSmDecapTest, FreeingAFecThatIsStillRequestedIsAProgrammingError) {
   lfib->lfibRouteIs(pwRoute(100, 1));
   EXPECT_DEATH(Fal::LFibSmTestAccess::freeDecapFecId(*sm, decapFecId(0)),
                "dstPortToHwFecIdRequest\\(\\)->hwFecIdRequest\\( fecId \\) == "
                "Fal::HwFecIdRequest\\(\\)");
   EXPECT_DEATH(Fal::LFibSmTestAccess::freeDecapFecId(
                    *sm, FecId::fecIdForAdjType(Memtab::Fib::AdjType::fibAdj_, 1)),
                "fecId.adjType\\(\\) == Memtab::Fib::AdjType::pwDecapAdj_");
}

}  // namespace
}  // namespace PwTest
