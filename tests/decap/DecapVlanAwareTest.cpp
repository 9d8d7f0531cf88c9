#include <gtest/gtest.h>

#include <algorithm>

#include "DecapTestSupport.h"

namespace {

using namespace DecapTest;

// Tags of a collection are walked in its hash order, which the tests do not rely on: where
// several tags of one route are programmed in one walk, compare the calls as sorted lists.
Calls sorted(Calls calls) {
   std::sort(calls.begin(), calls.end());
   return calls;
}

struct DecapVlanAware : DecapFixture {
   // Route 16 (plain) and route 17 (flooding) on collection 5: tag 10 -> VLAN 100, 20 -> 200.
   void twoRoutesOnOneCollection() {
      collection(5, {{10, 100}, {20, 200}});
      start();
      route(16, vlanAwareVia(1, 5));
      route(17, vlanAwareFloodVia(2, 5));
      settle();
   }
   Kor::Ptr<Mpls::LfibDot1qTagToVlan> coll(std::uint32_t k) {
      return lfib->dot1qTagToVlanColl(Mpls::LfibDot1qTagToVlanKey(k));
   }
   Kor::Ptr<Fal::VlanAwareProgrammedRouteSet> programmed(std::uint32_t label) {
      return sm->vlanAwareRouteKeyToDot1qTagVlanProgrammed(key(label));
   }
};

TEST_F(DecapVlanAware, ChangedTagIsDeletedThenCreatedPerRouteAndTheOtherTagIsLeftAlone) {
   twoRoutesOnOneCollection();
   helper->takeCalls();
   traces.clear();
   coll(5)->dot1qTagToVlanIdIs(vlan(10), Bridging::VlanIdOrNone(vlan(101)));
   // Handled at once by the collection's reactor, in route order.
   EXPECT_EQ(
       helper->takeCalls(),
       (Calls{"deleteLabelDot1qToVlan(16,10,false)", "createLabelDot1qToVlan(16,10,101,false)",
              "deleteLabelDot1qToVlan(17,10,true)", "createLabelDot1qToVlan(17,10,101,true)"}));
   EXPECT_EQ(traces.count(" dot1qTag 20 vlanId 200 : Already Programmed "), 2u);
   EXPECT_EQ(traces.count(" dot1qTag 10 changing vlanId from 100 to 101"), 2u);
   EXPECT_EQ(programmed(17)->dot1qTagToVlanId(vlan(10)), Bridging::VlanIdOrNone(vlan(101)));
   expectConsistent();
}

TEST_F(DecapVlanAware, CollectionRemovalCallsNothingAndRouteDeletionUndoesItsTags) {
   twoRoutesOnOneCollection();
   helper->takeCalls();
   lfib->dot1qTagToVlanCollDel(Mpls::LfibDot1qTagToVlanKey(5));
   EXPECT_TRUE(helper->callTexts().empty());
   EXPECT_FALSE(sm->dot1qTagToVlanCollHas(Mpls::LfibDot1qTagToVlanKey(5)));
   EXPECT_EQ(programmed(16)->dot1qTags(), 2u);

   lfib->lfibRouteDel(key(16));
   settle();
   EXPECT_EQ(sorted(helper->takeCalls()),
             (Calls{"deleteLabelDot1qToVlan(16,10,false)", "deleteLabelDot1qToVlan(16,20,false)"}));
   EXPECT_FALSE(programmed(16));
   EXPECT_FALSE(sm->vlanAwareRouteKeyToDot1qTagVlanKeyHas(key(16)));
   // The collection's route-key set stays, without the route.
   auto set = sm->vlanAwareDot1qTagVlanToRouteKeySet(Mpls::LfibDot1qTagToVlanKey(5));
   ASSERT_TRUE(set);
   EXPECT_FALSE(set->routeKeySet(key(16)));
   EXPECT_TRUE(set->routeKeySet(key(17)));
   expectConsistent();

   // A route that moves to another collection leaves the first one's set.
   collection(8, {{40, 400}});
   route(17, vlanAwareFloodVia(3, 8));
   settle();
   EXPECT_EQ(helper->takeCalls().size(), 3u);  // two deletes on 5, one create on 8
   EXPECT_EQ(set->routeKeys(), 0u);
   EXPECT_EQ(sm->vlanAwareDot1qTagVlanToRouteKeySets(), 2u);
   expectConsistent();
}

}  // namespace
