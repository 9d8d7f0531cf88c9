#include <gtest/gtest.h>

#include <string>
#include <vector>

#include <mplsfwd/kor/Ptr.h>
#include <mplsfwd/l3/L3Status.h>

namespace {

Wire::IpGenAddr ip(const char* text) {
   return Wire::IpGenAddr::parse(text);
}

// Records every notification as "<attribute> <key>", in order.
struct L3Recorder : Fal::L3Status::NotifieeConst {
   using Fal::L3Status::NotifieeConst::NotifieeConst;
   void onNextHopInfo(const Fal::NextHopKey& k) override {
      events.push_back("nextHopInfo " + k.nextHop().stringValue() + "%" + k.l3Intf().stringValue());
   }
   void onL3IntfArpVrfId(Wire::IntfId i) override {
      events.push_back("l3IntfArpVrfId " + i.stringValue());
   }
   void onIntfIdToL3Id(Wire::IntfId i) override {
      events.push_back("intfIdToL3Id " + i.stringValue());
   }
   void onResolvedV4(const Fal::VrfAndIpAddr& k) override {
      events.push_back("resolvedV4 " + k.ipAddr().stringValue());
   }
   void onResolvedV6(const Fal::VrfAndIpGenAddr& k) override {
      events.push_back("resolvedV6 " + k.ipGenAddr().stringValue());
   }
   void onVrfName(Fal::VrfId id) override {
      events.push_back("vrfName " + id.stringValue());
      // What a reactor sees when it is called: the new state, reverse index included.
      seenName.push_back(notifier()->vrfName(id).stringValue());
   }
   std::vector<std::string> events;
   std::vector<std::string> seenName;
};

using Events = std::vector<std::string>;

Fal::NextHopInfo resolvedInfo(std::uint8_t lastMacByte) {
   return Fal::NextHopInfo(Fal::VrfId(0), Wire::EthAddr({0, 0, 0, 0, 0, lastMacByte}),
                           Bridging::VlanId(10), Wire::IntfId::ethernet(3));
}

TEST(L3StatusTest, NextHopInfoNotifiesOnlyOnRealChange) {
   auto st = Kor::make<Fal::L3Status>("l3");
   L3Recorder r(st);
   Fal::NextHopKey k(ip("10.0.0.1"), Wire::IntfId::vlan(10));
   EXPECT_FALSE(st->nextHopInfo(k).resolved());  // absent reads unresolved
   EXPECT_EQ(st->nextHopInfo(k).vrfId(), Fal::invalidVrfId());

   st->nextHopInfoIs(k, resolvedInfo(1));
   st->nextHopInfoIs(k, resolvedInfo(1));  // same: silent
   st->nextHopInfoIs(k, resolvedInfo(2));  // MAC moved: one notification
   st->nextHopInfoDel(Fal::NextHopKey(ip("10.0.0.1"), Wire::IntfId::vlan(11)));  // absent: silent
   EXPECT_EQ(r.events, (Events{"nextHopInfo 10.0.0.1%Vlan10", "nextHopInfo 10.0.0.1%Vlan10"}));
   EXPECT_EQ(st->nextHopInfo(k), resolvedInfo(2));

   st->nextHopInfoDel(k);
   st->nextHopInfoDel(k);
   EXPECT_EQ(r.events.size(), 3u);
   EXPECT_FALSE(st->nextHopInfoHas(k));
   EXPECT_EQ(st->nextHopInfos(), 0u);
}

TEST(L3StatusTest, InterfaceTablesDefaultAndNotify) {
   auto st = Kor::make<Fal::L3Status>("l3");
   L3Recorder r(st);
   auto vlan10 = Wire::IntfId::vlan(10);
   EXPECT_EQ(st->l3IntfArpVrfId(vlan10), Fal::VrfId(0));
   EXPECT_EQ(st->intfIdToL3Id(vlan10), 0u);

   st->l3IntfArpVrfIdIs(vlan10, Fal::VrfId(5));
   st->l3IntfArpVrfIdIs(vlan10, Fal::VrfId(5));
   st->intfIdToL3IdIs(vlan10, 77);
   st->intfIdToL3IdIs(vlan10, 77);
   st->intfIdToL3IdIs(vlan10, 78);
   EXPECT_EQ(st->l3IntfArpVrfId(vlan10), Fal::VrfId(5));
   EXPECT_EQ(st->intfIdToL3Id(vlan10), 78u);
   EXPECT_EQ(r.events,
             (Events{"l3IntfArpVrfId Vlan10", "intfIdToL3Id Vlan10", "intfIdToL3Id Vlan10"}));

   st->l3IntfArpVrfIdDel(vlan10);
   st->intfIdToL3IdDel(Wire::IntfId::vlan(11));
   EXPECT_EQ(r.events.size(), 4u);
   EXPECT_EQ(st->l3IntfArpVrfId(vlan10), Fal::VrfId(0));
}

TEST(L3StatusTest, ResolvedTablesNotifyPerFamily) {
   auto st = Kor::make<Fal::L3Status>("l3");
   L3Recorder r(st);
   Fal::ResolvedNexthop gw(L3::IpPrefix::parse("10.0.0.0/8"), ip("10.9.9.9"),
                           Wire::IntfId::ethernet(1), Fal::NexthopType::gateway);
   for (std::uint32_t i = 1; i <= 3; ++i) {
      st->resolvedV4Is(Fal::VrfAndIpAddr(Fal::VrfId(0), Wire::IpAddr(0x0a000000 + i)), gw);
   }
   Fal::VrfAndIpGenAddr v6(Fal::VrfId(0), ip("2001:db8::1"));
   st->resolvedV6Is(v6, Fal::ResolvedNexthop());  // a new entry, even with the default value
   st->resolvedV6Is(v6, Fal::ResolvedNexthop());
   ASSERT_EQ(r.events.size(), 4u);
   EXPECT_EQ(r.events.back(), "resolvedV6 2001:db8::1");
   EXPECT_TRUE(st->resolvedV6Has(v6));
   EXPECT_EQ(st->resolvedV4s(), 3u);
}

TEST(L3StatusTest, VrfNameReverseLookupFollowsRenamesAndDeletes) {
   auto st = Kor::make<Fal::L3Status>("l3");
   L3Recorder r(st);
   EXPECT_FALSE(st->vrfIdOf("default").has_value());
   EXPECT_EQ(st->vrfName(Fal::VrfId(1)), L3::VrfName());

   st->vrfNameIs(Fal::VrfId(1), "default");
   st->vrfNameIs(Fal::VrfId(2), "red");
   st->vrfNameIs(Fal::VrfId(2), "red");  // silent
   EXPECT_EQ(st->vrfIdOf("default"), Fal::VrfId(1));
   EXPECT_EQ(st->vrfIdOf("red"), Fal::VrfId(2));

   st->vrfNameIs(Fal::VrfId(2), "blue");  // rename: old name gone, new name found
   EXPECT_FALSE(st->vrfIdOf("red").has_value());
   EXPECT_EQ(st->vrfIdOf("blue"), Fal::VrfId(2));
   EXPECT_EQ(r.events, (Events{"vrfName 1", "vrfName 2", "vrfName 2"}));
   EXPECT_EQ(r.seenName, (Events{"default", "red", "blue"}));

   st->vrfNameDel(Fal::VrfId(2));
   st->vrfNameDel(Fal::VrfId(2));
   EXPECT_FALSE(st->vrfIdOf("blue").has_value());
   EXPECT_EQ(st->vrfIdOf("default"), Fal::VrfId(1));
   EXPECT_EQ(r.events.size(), 4u);
   EXPECT_EQ(st->vrfNames(), 1u);
}

TEST(L3StatusTest, VrfNameGivenToTwoIdsAnswersWithTheRemainingOne) {
   auto st = Kor::make<Fal::L3Status>("l3");
   // A rename that moves a name from id 7 to id 3 may briefly give it to both.
   st->vrfNameIs(Fal::VrfId(7), "green");
   st->vrfNameIs(Fal::VrfId(3), "green");
   EXPECT_EQ(st->vrfIdOf("green"), Fal::VrfId(3));
   st->vrfNameIs(Fal::VrfId(3), "olive");
   EXPECT_EQ(st->vrfIdOf("green"), Fal::VrfId(7));
   st->vrfNameIs(Fal::VrfId(7), "lime");
   EXPECT_FALSE(st->vrfIdOf("green").has_value());
   EXPECT_EQ(st->vrfIdOf("olive"), Fal::VrfId(3));
}

}  // namespace
