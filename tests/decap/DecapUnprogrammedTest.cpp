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

}  // namespace
