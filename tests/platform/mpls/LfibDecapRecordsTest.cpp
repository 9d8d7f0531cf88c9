#include <gtest/gtest.h>

#include <vector>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/mpls/HardwareRoute.h>
#include <mplsfwd/mpls/LfibDecapVias.h>
#include <mplsfwd/mpls/LfibDot1qTagToVlan.h>

namespace {

using namespace Mpls;
using Bridging::VlanId;
using Bridging::VlanIdOrNone;

TEST(LfibDecapVias, ComparisonIsByValueOverAllFields) {
   LfibViaKey k1(viaTypeIpLookup_, 1, lfibSourceBgp_);
   LfibViaKey k2(viaTypeIpLookup_, 2, lfibSourceBgp_);
   LfibIpLookupVia red(k1, L3::VrfName("red"), payloadTypeIpv4_);
   EXPECT_EQ(red, LfibIpLookupVia(k1, L3::VrfName("red"), payloadTypeIpv4_));
   EXPECT_EQ(red.hash(), LfibIpLookupVia(k1, L3::VrfName("red"), payloadTypeIpv4_).hash());
   EXPECT_NE(red, LfibIpLookupVia(k2, L3::VrfName("red"), payloadTypeIpv4_));
   EXPECT_NE(red, LfibIpLookupVia(k1, L3::VrfName("blue"), payloadTypeIpv4_));
   EXPECT_NE(red, LfibIpLookupVia(k1, L3::VrfName("red"), payloadTypeIpv6_));
   EXPECT_NE(red, LfibIpLookupVia());
   EXPECT_THROW(LfibIpLookupVia(k1, L3::VrfName(std::string(101, 'v'))), Kor::RangeError);
   EXPECT_EQ(Kor::toText(red),
             "LfibIpLookupVia via viaTypeIpLookup index 1 source bgp vrfName red payloadType "
             "payloadTypeIpv4");

   LfibViaKey kv(viaTypeVlan_, 1, lfibSourceEvpn_);
   EXPECT_EQ(LfibVlanVia(kv, VlanId(10)), LfibVlanVia(kv, VlanId(10)));
   EXPECT_NE(LfibVlanVia(kv, VlanId(10)), LfibVlanVia(kv, VlanId(11)));
   EXPECT_NE(LfibVlanVia(kv, VlanId(10)), LfibVlanVia());
   EXPECT_EQ(Kor::toText(LfibVlanVia(kv, VlanId(10))),
             "LfibVlanVia via viaTypeVlan index 1 source evpn vlanId 10");

   LfibViaKey kf(viaTypeEvpnVlanFlood_, 1, lfibSourceEvpn_);
   EXPECT_NE(LfibEvpnVlanFloodVia(kf, VlanId(10)), LfibEvpnVlanFloodVia(kf, VlanId(11)));

   LfibViaKey ka(viaTypeEvpnVlanAware_, 1, lfibSourceEvpn_);
   LfibEvpnVlanAwareVia aware(ka, LfibDot1qTagToVlanKey(3));
   EXPECT_EQ(aware.dot1qTagToVlanKey(), LfibDot1qTagToVlanKey(3));
   EXPECT_NE(aware, LfibEvpnVlanAwareVia(ka, LfibDot1qTagToVlanKey(4)));
   EXPECT_EQ(Kor::toText(aware),
             "LfibEvpnVlanAwareVia via viaTypeEvpnVlanAware index 1 source evpn "
             "dot1qTagToVlanKey 3");
   LfibViaKey kaf(viaTypeEvpnVlanAwareFlood_, 1, lfibSourceEvpn_);
   EXPECT_NE(LfibEvpnVlanAwareFloodVia(kaf, LfibDot1qTagToVlanKey(3)),
             LfibEvpnVlanAwareFloodVia(kaf, LfibDot1qTagToVlanKey(4)));

   LfibViaKey kp(viaTypePseudowire_, 1, lfibSourcePseudowire_);
   LfibPwVia pw(kp, Wire::PseudowireIntfId::portPseudowireIntfId(5));
   EXPECT_NE(pw, LfibPwVia(kp, Wire::PseudowireIntfId::vlanPseudowireIntfId(5)));
   EXPECT_EQ(Kor::toText(pw),
             "LfibPwVia via viaTypePseudowire index 1 source pseudowire pwIntfId Pseudowire5");
}

struct TagRecorder : LfibDot1qTagToVlan::NotifieeConst {
   using LfibDot1qTagToVlan::NotifieeConst::NotifieeConst;
   void onDot1qTagToVlanId(VlanId tag) override { tags.push_back(tag.value()); }
   void onDot1qTagToVlanColl() override { ++whole; }
   std::vector<int> tags;
   int whole = 0;
};

TEST(LfibDot1qTagToVlan, EntryChangesNotifyOncePerRealChange) {
   auto coll = Kor::make<LfibDot1qTagToVlan>(LfibDot1qTagToVlanKey(3));
   TagRecorder r(coll);
   EXPECT_EQ(coll->key(), LfibDot1qTagToVlanKey(3));
   EXPECT_TRUE(coll->dot1qTagToVlanId(VlanId(10)).isNone());  // absent tag
   coll->dot1qTagToVlanIdIs(VlanId(10), VlanId(100));
   coll->dot1qTagToVlanIdIs(VlanId(10), VlanId(100));
   coll->dot1qTagToVlanIdIs(VlanId(20), VlanId(200));
   coll->dot1qTagToVlanIdIs(VlanId(10), VlanId(101));
   EXPECT_EQ(r.tags, (std::vector<int>{10, 20, 10}));
   EXPECT_EQ(coll->dot1qTagToVlanId(VlanId(10)), VlanIdOrNone(VlanId(101)));
   EXPECT_TRUE(coll->dot1qTagToVlanIdHas(VlanId(20)));
   coll->dot1qTagToVlanIdDel(VlanId(30));
   EXPECT_EQ(r.tags.size(), 3u);
   coll->dot1qTagToVlanIdDel(VlanId(20));
   EXPECT_FALSE(coll->dot1qTagToVlanIdHas(VlanId(20)));
   EXPECT_EQ(r.tags, (std::vector<int>{10, 20, 10, 20}));
   EXPECT_EQ(r.whole, 0);
}

TEST(LfibDot1qTagToVlan, DeleteAllGoesEntryByEntryAndReplaceIsOneEvent) {
   auto coll = Kor::make<LfibDot1qTagToVlan>(LfibDot1qTagToVlanKey(1));
   coll->dot1qTagToVlanIdIs(VlanId(10), VlanId(100));
   coll->dot1qTagToVlanIdIs(VlanId(20), VlanIdOrNone());
   TagRecorder r(coll);
   EXPECT_EQ(Kor::toText(*coll), "LfibDot1qTagToVlan 1 {10: 100, 20: none}");
   coll->dot1qTagToVlanIdDelAll();
   EXPECT_EQ(r.tags.size(), 2u);
   EXPECT_EQ(coll->dot1qTags(), 0u);

   LfibDot1qTagToVlan::TagMap map{{VlanId(1), VlanId(2)}, {VlanId(3), VlanId(4)}};
   coll->dot1qTagToVlanIdIs(map);
   EXPECT_EQ(r.whole, 1);
   coll->dot1qTagToVlanIdIs(map);
   EXPECT_EQ(r.whole, 1);
   EXPECT_EQ(coll->dot1qTags(), 2u);
   EXPECT_EQ(coll->dot1qTagToVlanId(VlanId(3)), VlanIdOrNone(VlanId(4)));
   EXPECT_EQ(r.tags.size(), 2u);
}

TEST(HardwareRoute, ValueWithEveryFieldInEquality) {
   Hardware::Route base(RouteKey(Wire::MplsLabel(16)));
   EXPECT_EQ(base.routeKey(), RouteKey(Wire::MplsLabel(16)));
   EXPECT_EQ(Hardware::Route().key(), RouteKey());
   std::vector<Hardware::Route> variants(5, base);
   variants[0].adjacencyIndexIs(1);
   variants[1].l2AdjacencyIndexIs(1);
   variants[2].metricIs(1);
   variants[3].versionIs(1);
   variants[4].unprogrammedIs(true);
   Kor::HashSet<Hardware::Route> all{base};
   for (const auto& v : variants) {
      EXPECT_NE(v, base) << v;
      all.insert(v);
   }
   EXPECT_EQ(all.size(), 6u);
   EXPECT_EQ(Kor::toText(variants[3]),
             "hw route 16 adj 0 l2 adj 0 metric 0 version 1 unprogrammed false");
}

}  // namespace
