// The FEC id service, the route helper and the decap helper.
#include <gtest/gtest.h>

#include <mplsfwd/sim/DecapHelper.h>
#include <mplsfwd/sim/FecIdService.h>
#include <mplsfwd/sim/RouteHelper.h>

namespace {

Memtab::Fib::FecId fec(std::uint64_t index) {
   return Memtab::Fib::FecId::fecIdForAdjType(Memtab::Fib::AdjType::mplsNexthopAdj_, index);
}

// Checks, inside the notification of every answer change, that the request is still there.
class AnswerWatcher : public Fal::FecIdToHwFecIdResponse::NotifieeConst {
 public:
   AnswerWatcher(Kor::Ptr<const Fal::FecIdToHwFecIdResponse> r,
                 Kor::Ptr<const Fal::FecIdToHwFecIdRequest> q)
       : Fal::FecIdToHwFecIdResponse::NotifieeConst(std::move(r)), request_(std::move(q)) {}
   void onHwFecId(Memtab::Fib::FecId id) override {
      ++changes;
      bool answered = !(notifier()->hwFecId(id) == Fal::FecToHwFecId());
      bool requested = !(request_->hwFecIdRequest(id) == Fal::HwFecIdRequest());
      if (answered && !requested) {
         ++answersWithoutRequest;
      }
   }
   int changes = 0;
   int answersWithoutRequest = 0;

 private:
   Kor::Ptr<const Fal::FecIdToHwFecIdRequest> request_;
};

struct FecBed : ::testing::Test {
   Kor::Ptr<Loom::EventLoop> loop = Kor::make<Loom::EventLoop>();
   Kor::Ptr<Fal::FecIdToHwFecIdRequest> req = Kor::make<Fal::FecIdToHwFecIdRequest>("req");
   Kor::Ptr<Fal::FecIdToHwFecIdResponse> resp = Kor::make<Fal::FecIdToHwFecIdResponse>("resp");
   sim::FecIdService service{loop};
   AnswerWatcher watcher{resp, req};
   FecBed() { service.serve(req, resp); }
};

TEST_F(FecBed, AnswersAfterTheNotificationAndWithdrawsWhenTheRequestGoes) {
   req->hwFecIdRequestIs(Fal::HwFecIdRequest(fec(1)));
   EXPECT_EQ(resp->hwFecId(fec(1)), Fal::FecToHwFecId()) << "not inside the request's notification";
   loop->runUntilIdle();
   Fal::HwFecId first = resp->hwFecId(fec(1)).hwFecId();
   EXPECT_NE(first, 0u);
   req->hwFecIdRequestDel(fec(1));
   EXPECT_NE(resp->hwFecId(fec(1)), Fal::FecToHwFecId()) << "withdrawn later, not at once";
   loop->runUntilIdle();
   EXPECT_EQ(resp->hwFecId(fec(1)), Fal::FecToHwFecId());
   EXPECT_EQ(service.inUse(), 0u);
   req->hwFecIdRequestIs(Fal::HwFecIdRequest(fec(2)));
   loop->runUntilIdle();
   EXPECT_EQ(resp->hwFecId(fec(2)).hwFecId(), first) << "a freed hardware id is reused";
   EXPECT_EQ(watcher.answersWithoutRequest, 0);
}

TEST_F(FecBed, RequestsBeyondCapacityWaitInOrderForAFreedId) {
   service.capacityIs(1);
   req->hwFecIdRequestIs(Fal::HwFecIdRequest(fec(1)));
   req->hwFecIdRequestIs(Fal::HwFecIdRequest(fec(2)));
   loop->runUntilIdle();
   EXPECT_NE(resp->hwFecId(fec(1)), Fal::FecToHwFecId());
   EXPECT_EQ(resp->hwFecId(fec(2)), Fal::FecToHwFecId());
   EXPECT_EQ(service.waiting(), 1u);
   req->hwFecIdRequestDel(fec(1));
   loop->runUntilIdle();
   EXPECT_NE(resp->hwFecId(fec(2)), Fal::FecToHwFecId());
   EXPECT_EQ(service.waiting(), 0u);
   EXPECT_EQ(service.inUse(), 1u);
}

TEST_F(FecBed, ARequestWithdrawnBeforeItsAnswerIsNeverAnswered) {
   service.answerDelayIs(1.0);
   req->hwFecIdRequestIs(Fal::HwFecIdRequest(fec(1)));
   loop->advance(0.5);
   req->hwFecIdRequestDel(fec(1));
   loop->advance(2.0);
   EXPECT_EQ(watcher.changes, 0);
   EXPECT_EQ(service.inUse(), 0u);
}

TEST(SimDecapHelper, TablesShareOneCapacityAndRewritesNeedNoRoom) {
   auto loop = Kor::make<Loom::EventLoop>();
   auto wheel = Kor::make<Loom::TimerWheel>("wheel", loop);
   auto helper = Kor::make<sim::DecapHelper>("decap", wheel);
   helper->capacityIs(2);
   Wire::MplsLabel l1(16), l2(17), l3(18);
   EXPECT_EQ(helper->createLabelToVrfMapping(l1, "red", Mpls::payloadTypeIpv4_),
             Mpls::lfibHwProgrammingSuccess_);
   EXPECT_EQ(helper->createLabelToVlanMapping(l2, Bridging::VlanId(10), false),
             Mpls::lfibHwProgrammingSuccess_);
   EXPECT_EQ(
       helper->createLabelDot1qToVlanMapping(l3, Bridging::VlanId(5), Bridging::VlanId(50), false),
       Mpls::lfibHwProgrammingResourceFull_);
   EXPECT_EQ(helper->createLabelToVlanMapping(l2, Bridging::VlanId(11), true),
             Mpls::lfibHwProgrammingSuccess_)
       << "rewriting a present mapping needs no room";
   ASSERT_TRUE(helper->vlanMappingMap().contains(l2));
   EXPECT_EQ(helper->vlanMappingMap().find(l2)->second,
             (sim::VlanMapping{Bridging::VlanId(11), true}));
   helper->deleteLabelToVrfMapping(l1, "red", Mpls::payloadTypeIpv4_);
   EXPECT_EQ(
       helper->createLabelDot1qToVlanMapping(l3, Bridging::VlanId(5), Bridging::VlanId(50), false),
       Mpls::lfibHwProgrammingSuccess_);
   EXPECT_EQ(helper->mappings(), 2u);
   EXPECT_EQ(helper->mismatchedDeletes(), 0u);
}

TEST(SimDecapHelper, RefusalsAndDeletesWithOtherValuesAreReported) {
   auto loop = Kor::make<Loom::EventLoop>();
   auto wheel = Kor::make<Loom::TimerWheel>("wheel", loop);
   auto helper = Kor::make<sim::DecapHelper>("decap", wheel);
   helper->refuseNextIs(1, Mpls::lfibHwProgrammingNotReady_);
   EXPECT_EQ(helper->createLabelToVrfMapping(Wire::MplsLabel(16), "red", Mpls::payloadTypeIpv4_),
             Mpls::lfibHwProgrammingNotReady_);
   EXPECT_EQ(helper->createLabelToVrfMapping(Wire::MplsLabel(16), "red", Mpls::payloadTypeIpv4_),
             Mpls::lfibHwProgrammingSuccess_);
   helper->deleteLabelToVrfMapping(Wire::MplsLabel(16), "blue", Mpls::payloadTypeIpv4_);
   EXPECT_EQ(helper->mismatchedDeletes(), 1u);
   ASSERT_EQ(helper->mismatches().size(), 1u);
   EXPECT_NE(helper->mismatches()[0].find("blue"), std::string::npos);
   EXPECT_EQ(helper->mappings(), 0u);
}

TEST(SimRouteHelper, SharesTheChipsRouteCapacity) {
   auto loop = Kor::make<Loom::EventLoop>();
   auto config = Fal::mplsHwConfigFactory("config");
   auto status = Fal::mplsHwStatusFactory("status");
   sim::Chip chip(loop, config, status);
   chip.routeCapacityIs(1);
   auto helper = Kor::make<sim::RouteHelper>("routes", chip);
   Mpls::RouteKey k1(Wire::MplsLabel(100)), k2(Wire::MplsLabel(200));
   EXPECT_EQ(helper->updateRoute(k1, Wire::MplsLabelAction::swap, Mpls::payloadTypeMpls_, 7,
                                 Wire::AddressingMethod::indirect),
             Mpls::lfibHwProgrammingSuccess_);
   EXPECT_FALSE(chip.routeRoom());
   EXPECT_EQ(helper->updateRoute(k2, Wire::MplsLabelAction::swap, Mpls::payloadTypeMpls_, 8,
                                 Wire::AddressingMethod::indirect),
             Mpls::lfibHwProgrammingResourceFull_);
   EXPECT_TRUE(helper->refusedMap().contains(k2));
   helper->deleteRoute(k1);
   EXPECT_TRUE(chip.routeRoom());
   EXPECT_EQ(helper->updateRoute(k2, Wire::MplsLabelAction::swap, Mpls::payloadTypeMpls_, 8,
                                 Wire::AddressingMethod::indirect),
             Mpls::lfibHwProgrammingSuccess_);
   EXPECT_FALSE(helper->refusedMap().contains(k2));
}

}  // namespace
