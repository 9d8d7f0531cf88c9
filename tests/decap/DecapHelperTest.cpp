#include <gtest/gtest.h>

#include <cstdlib>
#include <set>

#include <mplsfwd/decap/FalMplsDecapHelper.h>
#include <mplsfwd/loom/EventLoop.h>
#include <mplsfwd/loom/TimerWheel.h>
#include <mplsfwd/mpls/LfibDot1qTagToVlan.h>

namespace {

using FalHelper::MplsDecapHelper;
using FalHelper::MplsDecapHelperWithDot1qMap;

Kor::Ptr<const Mpls::LfibDot1qTagToVlan> record(std::uint32_t index) {
   return Kor::make<Mpls::LfibDot1qTagToVlan>(Mpls::LfibDot1qTagToVlanKey(index));
}

// Every test here starts and ends as a normal agent, whatever a failed test left behind.
class NoopAgentGuard {
 public:
   NoopAgentGuard() { unsetenv("FAL_NOOP_AGENT"); }
   ~NoopAgentGuard() { unsetenv("FAL_NOOP_AGENT"); }
};

struct StubTest : ::testing::Test {
   NoopAgentGuard guard;
   Kor::Ptr<Loom::EventLoop> loop = Kor::make<Loom::EventLoop>();
   Kor::Ptr<Loom::TimerWheel> wheel = Kor::make<Loom::TimerWheel>("wheel", loop);
};

// ---------------------------------------------------------------------------------------------
// Dot1q map ids.

struct Dot1qMapTest : StubTest {
   void SetUp() override { helper->handleInitialized(); }

   // The two maps are exact inverses, and the allocator holds exactly their ids.
   void expectInverse() const {
      EXPECT_EQ(helper->allocatedMapIdMap().size(), helper->dot1qMapIdMap().size());
      for (const auto& [key, id] : helper->dot1qMapIdMap()) {
         auto rec = helper->allocatedMapId(id);
         ASSERT_TRUE(rec) << id;
         EXPECT_EQ(rec->key(), key);
         EXPECT_TRUE(helper->numAllocator()->isAllocated(id.value())) << id;
      }
      EXPECT_EQ(helper->numAllocator()->status()->allocated(), helper->allocatedMapIdMap().size());
   }

   Kor::Ptr<MplsDecapHelperWithDot1qMap> helper =
       Kor::make<MplsDecapHelperWithDot1qMap>("withMap", wheel);
};

TEST_F(Dot1qMapTest, SameKeySharesOneIdAndAllocatesNothingMore) {
   const auto first = helper->createDot1qMapping(record(7));
   ASSERT_TRUE(first.isValid());
   helper->handleInitialized();  // a second initialization keeps the allocator and its ids
   // Another record object with the same key.
   const auto second = helper->createDot1qMapping(record(7));
   EXPECT_EQ(second, first);
   EXPECT_EQ(helper->numAllocator()->status()->allocated(), 1u);
   const auto other = helper->createDot1qMapping(record(8));
   EXPECT_NE(other, first);
   EXPECT_EQ(helper->dot1qMapId(Mpls::LfibDot1qTagToVlanKey(7)), first);
   EXPECT_EQ(helper->dot1qMapId(Mpls::LfibDot1qTagToVlanKey(9)),
             Fal::Dot1qTagToVlanMapId(0xFFFFFFFFu));
   expectInverse();
}

TEST_F(Dot1qMapTest, RangeIsOneTo255AndThe256thKeyGetsTheInvalidId) {
   std::set<std::uint32_t> ids;
   for (std::uint32_t k = 0; k < 255; ++k) {
      const auto id = helper->createDot1qMapping(record(1000 + k));
      ASSERT_TRUE(id.isValid()) << "key " << k;
      ids.insert(id.value());
   }
   ASSERT_EQ(ids.size(), 255u);
   EXPECT_EQ(*ids.begin(), 1u);  // never 0
   EXPECT_EQ(*ids.rbegin(), 255u);
   const auto refused = helper->createDot1qMapping(record(5000));
   EXPECT_EQ(refused.value(), 0xFFFFFFFFu);
   EXPECT_FALSE(helper->dot1qMapIdMap().contains(Mpls::LfibDot1qTagToVlanKey(5000)));
   // A key that already holds an id still gets it when the range is full.
   EXPECT_EQ(helper->createDot1qMapping(record(1000)).value(),
             helper->dot1qMapId(Mpls::LfibDot1qTagToVlanKey(1000)).value());
   expectInverse();
}

TEST_F(Dot1qMapTest, DeleteFreesTheKeyAndTheIdComesBackOnlyAfterTheExpiry) {
   for (std::uint32_t k = 0; k < 255; ++k) {
      helper->createDot1qMapping(record(k));
   }
   const auto id = helper->dot1qMapId(Mpls::LfibDot1qTagToVlanKey(3));
   helper->deleteDot1qMapping(id);
   EXPECT_FALSE(helper->allocatedMapId(id));
   EXPECT_FALSE(helper->dot1qMapIdMap().contains(Mpls::LfibDot1qTagToVlanKey(3)));
   expectInverse();
   // Held back for 10 s of the wheel's clock.
   EXPECT_FALSE(helper->createDot1qMapping(record(900)).isValid());
   loop->advance(9.5);
   EXPECT_FALSE(helper->createDot1qMapping(record(900)).isValid());
   loop->advance(0.5);
   EXPECT_EQ(helper->createDot1qMapping(record(900)), id);
   expectInverse();
}

TEST_F(Dot1qMapTest, DeleteOfAnUnknownIdChangesNothing) {
   const auto id = helper->createDot1qMapping(record(1));
   helper->deleteDot1qMapping(Fal::Dot1qTagToVlanMapId(id.value() + 1));
   helper->deleteDot1qMapping(Fal::Dot1qTagToVlanMapId(0xFFFFFFFFu));
   EXPECT_EQ(helper->allocatedMapIdMap().size(), 1u);
   EXPECT_EQ(helper->numAllocator()->status()->allocated(), 1u);
   // Deleting twice is the same as once.
   helper->deleteDot1qMapping(id);
   helper->deleteDot1qMapping(id);
   EXPECT_TRUE(helper->allocatedMapIdMap().empty());
   EXPECT_EQ(helper->numAllocator()->status()->allocated(), 0u);
   expectInverse();
}

// ---------------------------------------------------------------------------------------------
// Unimplemented operations: abort in a normal agent, quiet failure in a no-op agent.

using DecapHelperDeathTest = StubTest;

TEST_F(DecapHelperDeathTest, EveryUnimplementedOperationAbortsWithItsName) {
   auto base = Kor::make<MplsDecapHelper>("base");
   const Wire::MplsLabel l(16);
   const Bridging::VlanId v(10);
   EXPECT_DEATH(base->createLabelToVlanMapping(l, v, false),
                "^Unimplemented createLabelToVlanMapping\n");
   EXPECT_DEATH(base->deleteLabelToVlanMapping(l, v, false),
                "^Unimplemented delLabelToVlanMapping\n");
   EXPECT_DEATH(base->createDot1qMapping(record(1)), "^Unimplemented createDot1qMapping\n");
   EXPECT_DEATH(base->deleteDot1qMapping(Fal::Dot1qTagToVlanMapId(1)),
                "^Unimplemented deleteDot1qMapping\n");
   EXPECT_DEATH(base->createLabelDot1qToVlanMapping(l, v, Bridging::VlanIdOrNone(), false),
                "^Unimplemented createLabelDot1qToVlanMapping\n");
   EXPECT_DEATH(base->deleteLabelDot1qToVlanMapping(l, v, false),
                "^Unimplemented deleteLabelDot1qToVlanMapping\n");
   EXPECT_DEATH(base->createLabelToVrfMapping(l, L3::VrfName("red"), Mpls::payloadTypeIpv4_),
                "^Unimplemented createLabelToVrfMapping\n");
   EXPECT_DEATH(base->deleteLabelToVrfMapping(l, L3::VrfName("red"), Mpls::payloadTypeIpv4_),
                "^Unimplemented deleteLabelToVrfMapping\n");

   // The dot1q-map variant implements the id operations but not the label operations.
   auto withMap = Kor::make<MplsDecapHelperWithDot1qMap>("withMap", wheel);
   EXPECT_DEATH(withMap->createLabelToVrfMapping(l, L3::VrfName("red"), Mpls::payloadTypeIpv4_),
                "^Unimplemented createLabelToVrfMapping\n");
   // ...and its id operations need initialization first.
   EXPECT_DEATH(withMap->createDot1qMapping(record(1)), "^initialized\\(\\)\n");
   EXPECT_DEATH(withMap->deleteDot1qMapping(Fal::Dot1qTagToVlanMapId(1)), "^initialized\\(\\)\n");

   auto forwarding = Kor::make<FalHelper::MplsForwardingHelper>("forwarding");
   const std::uint64_t value = 5;
   EXPECT_DEATH(forwarding->createOrUpdateMplsRoute(l, value),
                "^Unimplemented createOrUpdateMplsRoute\n");
   EXPECT_DEATH(forwarding->deleteMplsRoute(l), "^Unimplemented deleteMplsRoute\n");
}

TEST_F(StubTest, NoopAgentAnswersQuietly) {
   auto base = Kor::make<MplsDecapHelper>("base");
   auto forwarding = Kor::make<FalHelper::MplsForwardingHelper>("forwarding");
   const Wire::MplsLabel l(16);
   const Bridging::VlanId v(10);
   // Any value counts, the empty one included.
   setenv("FAL_NOOP_AGENT", "", 1);
   EXPECT_EQ(base->createLabelToVlanMapping(l, v, false), 2u);
   EXPECT_EQ(base->createLabelDot1qToVlanMapping(l, v, Bridging::VlanIdOrNone(), true), 2u);
   EXPECT_EQ(base->createLabelToVrfMapping(l, L3::VrfName("red"), Mpls::payloadTypeIpv4_), 2u);
   EXPECT_EQ(base->createDot1qMapping(record(1)).value(), 0xFFFFFFFFu);
   base->deleteLabelToVlanMapping(l, v, false);
   base->deleteLabelDot1qToVlanMapping(l, v, false);
   base->deleteLabelToVrfMapping(l, L3::VrfName("red"), Mpls::payloadTypeIpv4_);
   base->deleteDot1qMapping(Fal::Dot1qTagToVlanMapId(1));
   EXPECT_EQ(forwarding->createOrUpdateMplsRoute(l, 5), 2u);
   forwarding->deleteMplsRoute(l);
   // The transit helper pretends success instead.
   auto smHelper = Kor::make<FalHelper::MplsSmHelper>("smHelper");
   EXPECT_EQ(smHelper->updateRoute(Mpls::RouteKey(l), Wire::MplsLabelAction::pop,
                                   Mpls::payloadTypeIpv4_, 5, Wire::AddressingMethod::direct),
             0u);
}

}  // namespace
