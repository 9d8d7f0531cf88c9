#include <gtest/gtest.h>

#include "DecapTestSupport.h"
#include "MplsDecapSmTestAccess.h"

namespace {

using namespace DecapTest;

using DecapUnprogrammed = DecapFixture;

TEST_F(DecapUnprogrammed, NothingIsScheduledWhileTheListIsEmpty) {
   start();
   route(16, vlanVia(1, 10));
   settle();
   Fal::MplsDecapSmTestAccess::maybeScheduleUnprogrammedReview(*sm);
   EXPECT_FALSE(sm->reviewUnprogrammed()->pending());
   EXPECT_EQ(loop->nextWakeUp(), Loom::EventLoop::never());
}

TEST_F(DecapUnprogrammed, LaterFailuresNeverPushAPendingReviewBack) {
   start();
   settle();
   helper->answerIs(Mpls::lfibHwProgrammingResourceFull_);
   route(16, vlanVia(1, 10));
   settle();
   ASSERT_TRUE(sm->reviewUnprogrammed()->pending());
   EXPECT_EQ(sm->reviewUnprogrammed()->time(), 5.0);

   loop->advance(2.0);
   route(17, vlanVia(2, 20));
   settle();
   EXPECT_TRUE(unprogrammed(17));
   EXPECT_EQ(sm->reviewUnprogrammed()->time(), 5.0);
   helper->takeCalls();

   // Both are retried at 5 s, the second after only 3 s of waiting.
   loop->advance(2.9);
   EXPECT_TRUE(helper->callTexts().empty());
   loop->advance(0.1);
   EXPECT_EQ(helper->callTexts(),
             (Calls{"createLabelToVlan(16,10,false)", "createLabelToVlan(17,20,false)"}));
   EXPECT_EQ(helper->callTimes(), (std::vector<double>{5.0, 5.0}));
}

TEST_F(DecapUnprogrammed, ARefusedRouteIsRetriedEveryIntervalWithTheNewestReason) {
   start();
   helper->answerIs(Mpls::lfibHwProgrammingFailed_);
   route(16, ipLookupVia(1, "red"));
   settle();
   EXPECT_EQ(reason(16), 2u);
   helper->takeCalls();

   loop->advance(5.0);
   EXPECT_EQ(helper->takeCalls(), Calls{"createLabelToVrf(16,red,1)"});
   EXPECT_EQ(reason(16), 2u);
   ASSERT_TRUE(sm->reviewUnprogrammed()->pending());
   EXPECT_EQ(sm->reviewUnprogrammed()->time(), 10.0);

   helper->answerIs(Mpls::lfibHwProgrammingNotReady_);
   loop->advance(5.0);
   EXPECT_EQ(helper->takeCalls().size(), 1u);
   EXPECT_EQ(reason(16), 3u);

   // The helper accepts at the next pass: out of the list, programmed, no further review.
   helper->answerIs(Mpls::lfibHwProgrammingSuccess_);
   loop->advance(4.9);
   EXPECT_TRUE(unprogrammed(16));
   loop->advance(0.1);
   EXPECT_EQ(helper->takeCalls(), Calls{"createLabelToVrf(16,red,1)"});
   EXPECT_FALSE(unprogrammed(16));
   EXPECT_EQ(sm->routeViaType(key(16)), Mpls::viaTypeIpLookup_);
   EXPECT_FALSE(sm->reviewUnprogrammed()->pending());
   loop->advance(60.0);
   EXPECT_TRUE(helper->callTexts().empty());
   expectConsistent();
}

TEST_F(DecapUnprogrammed, ReasonAboveThreeAtARetryTakesTheRouteOffTheList) {
   start();
   helper->answerIs(Mpls::lfibHwProgrammingFailed_);
   route(16, floodVia(1, 10));
   settle();
   helper->answerIs(static_cast<Mpls::LfibHwProgrammingReturnCode>(9));
   loop->advance(5.0);
   EXPECT_EQ(helper->takeCalls().size(), 2u);
   EXPECT_FALSE(unprogrammed(16));
   EXPECT_FALSE(sm->routeViaTypeHas(key(16)));
   EXPECT_FALSE(sm->reviewUnprogrammed()->pending());
}

TEST_F(DecapUnprogrammed, ARouteGoneFromTheLfibLeavesTheListWithoutAHelperCall) {
   start();
   helper->answerIs(Mpls::lfibHwProgrammingFailed_);
   route(16, vlanVia(1, 10));
   route(17, vlanVia(2, 20));
   settle();
   ASSERT_EQ(hwStatus->unprogrammedRoutes(), 2u);
   helper->takeCalls();
   // The LFIB drops route 16 without the change reaching the backlog (the tracking machine is
   // gone), so only the review can notice.
   trackingSm = nullptr;
   lfib->lfibRouteDel(key(16));
   ASSERT_TRUE(tracking->routeKeyBacklogSet().empty());
   loop->advance(5.0);
   EXPECT_EQ(helper->takeCalls(), Calls{"createLabelToVlan(17,20,false)"});
   EXPECT_FALSE(unprogrammed(16));
   EXPECT_TRUE(unprogrammed(17));
}

TEST_F(DecapUnprogrammed, ABacklogDeleteTakesAWaitingRouteOffTheList) {
   start();
   helper->answerIs(Mpls::lfibHwProgrammingFailed_);
   route(16, vlanVia(1, 10));
   settle();
   ASSERT_TRUE(unprogrammed(16));
   helper->takeCalls();
   lfib->lfibRouteDel(key(16));
   settle();
   EXPECT_TRUE(helper->callTexts().empty());
   EXPECT_FALSE(unprogrammed(16));
   // The review still fires as planned and finds nothing.
   loop->advance(5.0);
   EXPECT_TRUE(helper->callTexts().empty());
   EXPECT_FALSE(sm->reviewUnprogrammed()->pending());
}

TEST_F(DecapUnprogrammed, ReviewYieldsAndStartsAgainFromTheFirstKeyAfterTheInterval) {
   start();
   helper->answerIs(Mpls::lfibHwProgrammingFailed_);
   for (std::uint32_t l = 100; l < 120; ++l) {
      route(l, vlanVia(l, 10));
   }
   settle();
   ASSERT_EQ(hwStatus->unprogrammedRoutes(), 20u);
   helper->takeCalls();
   helper->answerIs(Mpls::lfibHwProgrammingSuccess_);

   // Each read of the time moves it 1 ms on (quantum 5 ms): the review at 5 s runs once, yields
   // and plans its continuation an interval later.
   loop->autoAdvancePerReadIs(0.001);
   loop->advanceTo(5.0);
   EXPECT_EQ(sm->reviewUnprogrammed()->runCount(), 1u);
   const std::size_t done = helper->callTexts().size();
   EXPECT_GT(done, 0u);
   EXPECT_LT(done, 20u);
   EXPECT_EQ(hwStatus->unprogrammedRoutes(), 20u - done);
   EXPECT_EQ(helper->callTexts().front(), "createLabelToVlan(100,10,false)");
   ASSERT_TRUE(sm->reviewUnprogrammed()->armed());
   EXPECT_NEAR(sm->reviewUnprogrammed()->time() - loop->now(), 5.0, 0.01);

   loop->autoAdvancePerReadIs(0.0);
   helper->takeCalls();
   loop->advance(5.0);
   ASSERT_FALSE(helper->callTexts().empty());
   EXPECT_EQ(helper->callTexts().front(),
             "createLabelToVlan(" + std::to_string(100 + done) + ",10,false)");
   EXPECT_EQ(hwStatus->unprogrammedRoutes(), 0u);
   EXPECT_EQ(sm->routeViaTypeMap().size(), 20u);
   EXPECT_FALSE(sm->reviewUnprogrammed()->pending());
   expectConsistent();
}

TEST_F(DecapUnprogrammed, TheRetryIntervalCanBeChanged) {
   start();
   sm->defaultUnprogrammedRetryIntervalIs(1.5);
   helper->answerIs(Mpls::lfibHwProgrammingFailed_);
   route(16, vlanVia(1, 10));
   settle();
   helper->takeCalls();
   loop->advance(1.5);
   loop->advance(1.5);
   EXPECT_EQ(helper->callTimes(), (std::vector<double>{1.5, 3.0}));
}

}  // namespace
