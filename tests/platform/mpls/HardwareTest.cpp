#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include <mplsfwd/kor/Collections.h>
#include <mplsfwd/kor/Errors.h>
#include <mplsfwd/kor/TextForm.h>
#include <mplsfwd/mpls/HardwareAdjacency.h>
#include <mplsfwd/mpls/HardwareL2Adjacency.h>
#include <mplsfwd/mpls/HardwareStatus.h>

namespace {

using Mpls::Hardware::Adjacency;
using Mpls::Hardware::L2Adjacency;
using Mpls::Hardware::L2Via;
using Mpls::Hardware::L2ViaSet;

L2Via l2Via(std::uint16_t vlan, std::uint32_t eth, const char* mac, std::uint32_t label,
            const char* nh) {
   Wire::MplsLabelOperation labels;
   if (label != Wire::MplsLabel::kNoLabel) {
      labels.push(Wire::MplsLabel(label));
   }
   return L2Via(Bridging::VlanId(vlan), Wire::IntfId::ethernet(eth), Wire::EthAddr::parse(mac),
                labels, Wire::IpGenAddr::parse(nh));
}

TEST(HardwareL2Via, EveryFieldTakesPartInEqualityOrderAndHash) {
   L2Via base = l2Via(10, 1, "00:00:00:00:00:01", 16, "10.0.0.1");
   std::vector<L2Via> variants = {
       l2Via(11, 1, "00:00:00:00:00:01", 16, "10.0.0.1"),
       l2Via(10, 2, "00:00:00:00:00:01", 16, "10.0.0.1"),
       l2Via(10, 1, "00:00:00:00:00:02", 16, "10.0.0.1"),
       l2Via(10, 1, "00:00:00:00:00:01", 17, "10.0.0.1"),
       l2Via(10, 1, "00:00:00:00:00:01", 16, "10.0.0.2"),
   };
   for (const L2Via& v : variants) {
      EXPECT_NE(v, base) << v;
      EXPECT_NE(v.hash(), base.hash()) << v;
      EXPECT_TRUE(base < v) << v;
      EXPECT_FALSE(v < base) << v;
   }
   EXPECT_EQ(base, l2Via(10, 1, "00:00:00:00:00:01", 16, "10.0.0.1"));
   EXPECT_EQ(base.hash(), l2Via(10, 1, "00:00:00:00:00:01", 16, "10.0.0.1").hash());
   // The VLAN is the most significant field.
   EXPECT_LT(l2Via(10, 9, "ff:ff:ff:ff:ff:ff", 99, "10.0.0.9"),
             l2Via(11, 1, "00:00:00:00:00:01", 16, "10.0.0.1"));
}

TEST(HardwareL2Via, Text) {
   EXPECT_EQ(Kor::toText(l2Via(10, 1, "00:11:22:33:44:55", 16, "10.0.0.1")),
             "hw l2 via vlan 10 intf Ethernet1 mac 00:11:22:33:44:55 labels [16] nexthop 10.0.0.1");
   EXPECT_EQ(L2Via().stringValue().rfind("hw l2 via ", 0), 0u);
}

TEST(HardwareL2ViaSet, SetSemanticsAndCanonicalOrder) {
   L2Via a = l2Via(10, 1, "00:00:00:00:00:01", 16, "10.0.0.1");
   L2Via b = l2Via(20, 2, "00:00:00:00:00:02", 17, "10.0.0.2");
   L2ViaSet ab;
   ab.l2ViaIs(a, true);
   ab.l2ViaIs(b, true);
   ab.l2ViaIs(a, true);
   EXPECT_EQ(ab.l2Vias(), 2u);
   L2ViaSet ba;
   ba.l2ViaIs(b, true);
   ba.l2ViaIs(a, true);
   EXPECT_EQ(ab, ba);  // insertion order does not matter
   EXPECT_EQ(ab.stringValue(), ba.stringValue());
   EXPECT_EQ(*ab.begin(), a);
   ba.l2ViaIs(a, false);
   EXPECT_FALSE(ba.l2Via(a));
   EXPECT_TRUE(ba.l2Via(b));
   EXPECT_NE(ab, ba);
   EXPECT_NE(ab.hash(), ba.hash());
   ba.l2ViaIs(a, false);  // removing an absent via changes nothing
   EXPECT_EQ(ba.l2Vias(), 1u);
}

// Sets of L2 vias are the keys under which adjacencies are shared: hashed and ordered by content.
TEST(HardwareL2ViaSet, ServesAsSharingKey) {
   L2Via a = l2Via(10, 1, "00:00:00:00:00:01", 16, "10.0.0.1");
   L2Via b = l2Via(20, 2, "00:00:00:00:00:02", 17, "10.0.0.2");
   L2ViaSet onlyA, onlyB, both, bothAgain;
   onlyA.l2ViaIs(a, true);
   onlyB.l2ViaIs(b, true);
   both.l2ViaIs(a, true);
   both.l2ViaIs(b, true);
   bothAgain.l2ViaIs(b, true);
   bothAgain.l2ViaIs(a, true);
   EXPECT_LT(L2ViaSet(), onlyA);
   EXPECT_LT(onlyA, both);  // a prefix orders first
   EXPECT_LT(both, onlyB);
   Kor::HashMap<L2ViaSet, int> byHash{{onlyA, 1}, {onlyB, 1}, {both, 1}, {L2ViaSet(), 1}};
   Kor::OrderedMap<L2ViaSet, int> byOrder(byHash.begin(), byHash.end());
   byHash[bothAgain] = 2;
   byOrder[bothAgain] = 2;
   EXPECT_EQ(byHash.size(), 4u);
   EXPECT_EQ(byOrder.size(), 4u);
   EXPECT_EQ(byHash.at(both), 2);
   EXPECT_EQ(byOrder.at(both), 2);
}

TEST(HardwareAdjacency, ViasAreASetAndL2AdjacencyIsShared) {
   Adjacency::Ptr adj = Kor::make<Adjacency>(3);
   Mpls::Hardware::Via v;
   v.nextHopIs(Wire::IpGenAddr::parse("10.0.0.1"));
   v.labelStackIs(Wire::MplsLabelOperation{Wire::MplsLabel(16)});
   Mpls::Hardware::Via w = v;
   w.l3IntfIs(Wire::IntfId::vlan(10));
   adj->viaIs(v, true);
   adj->viaIs(v, true);
   adj->viaIs(w, true);
   EXPECT_EQ(adj->vias(), 2u);
   EXPECT_TRUE(adj->via(v));
   adj->viaIs(v, false);
   EXPECT_FALSE(adj->via(v));
   EXPECT_EQ(adj->vias(), 1u);
   adj->viaDelAll();
   EXPECT_EQ(adj->vias(), 0u);

   L2Adjacency::Ptr l2 = Kor::make<L2Adjacency>(9);
   adj->l2AdjacencyIs(l2);
   EXPECT_EQ(adj->l2Adjacency(), l2);
   EXPECT_EQ(l2->references(), 2);
   adj->l2AdjacencyIs(nullptr);
   EXPECT_EQ(l2->references(), 1);
}

TEST(HardwareVia, EveryFieldCounts) {
   Mpls::Hardware::Via v;
   std::vector<Mpls::Hardware::Via> variants(8);
   variants[0].nextHopIs(Wire::IpGenAddr::parse("10.0.0.1"));
   variants[1].resolvedAddrIs(Wire::IpGenAddr::parse("10.0.0.1"));
   variants[2].labelStackIs(Wire::MplsLabelOperation{Wire::MplsLabel(16)});
   variants[3].l3IntfIs(Wire::IntfId::vlan(10));
   variants[4].vlanIdIs(Bridging::VlanId(10));
   variants[5].macAddrIs(Wire::EthAddr::parse("00:00:00:00:00:01"));
   variants[6].l2IntfIs(Wire::IntfId::ethernet(1));
   variants[7].flagsIs(1);
   Kor::HashSet<Mpls::Hardware::Via> hashed{v};
   Kor::OrderedSet<Mpls::Hardware::Via> ordered{v};
   for (const auto& x : variants) {
      EXPECT_NE(x, v) << x;
      EXPECT_TRUE(v < x) << x;
      hashed.insert(x);
      ordered.insert(x);
   }
   EXPECT_EQ(hashed.size(), 9u);
   EXPECT_EQ(ordered.size(), 9u);
}

// The status keeps a route without its label; every field must come back, and a change of any
// one of them alone must be stored and announced.
TEST(HardwareStatus, RoutesKeepEveryFieldAndAnnounceEachChange) {
   struct Count : Mpls::Hardware::Status::NotifieeConst {
      using NotifieeConst::NotifieeConst;
      void onRoute(const Mpls::RouteKey&) override { ++changes; }
      int changes = 0;
   };
   auto status = Kor::make<Mpls::Hardware::Status>(Kor::Name("hw"));
   Count count(status);
   const Mpls::RouteKey key(Wire::MplsLabel(1048575));
   Mpls::Hardware::Route r(key);
   std::vector<std::function<void(Mpls::Hardware::Route&)>> changes = {
       [](auto& x) { x.adjacencyIndexIs(0xfedcba9876543210); },
       [](auto& x) { x.l2AdjacencyIndexIs(0x7fffffff00000001); },
       [](auto& x) { x.metricIs(0xffffffff); },
       [](auto& x) { x.versionIs(0x8000000000000001); },
       [](auto& x) { x.unprogrammedIs(true); },
   };
   status->routeIs(r);
   for (const auto& change : changes) {
      change(r);
      status->routeIs(r);
      status->routeIs(r);
      EXPECT_EQ(status->route(key), r);
   }
   EXPECT_EQ(count.changes, 1 + static_cast<int>(changes.size()));
   for (const auto& [k, stored] : status->routeMap()) {
      EXPECT_EQ(k, key);
      EXPECT_EQ(stored, r);
   }
   EXPECT_EQ(status->route(Mpls::RouteKey(Wire::MplsLabel(16))), Mpls::Hardware::Route());
   EXPECT_THROW(status->routeIs(Mpls::Hardware::Route()), Kor::RangeError);
   // The top bit of the L2 adjacency index is where the flag is kept: refused, not stored.
   r.l2AdjacencyIndexIs(std::uint64_t(1) << 63);
   EXPECT_THROW(status->routeIs(r), Kor::RangeError);
   EXPECT_EQ(count.changes, 1 + static_cast<int>(changes.size()));
}

}  // namespace
